// SPDX-License-Identifier: Apache-2.0

/// \file Measures the same dab on increasingly large meshes. The cost of a dab, a pick and a refit
/// must not grow with the mesh. The cost of refining, saving and loading may grow in proportion to
/// the mesh, but no faster.
///
///    trovik-ladder OUT.json [MILLIONS...]     e.g. 1 4 16 64; the default is 1 4 16
///
/// Each step runs in its own process (`--step`), so that its memory is measured separately.
#include "framework/picking/PatchTree.h"
#include "framework/scene/SceneFile.h"
#include "tests/fixture/StrokeFixture.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <string>

namespace trovik::bench {
namespace {

using Json = nlohmann::ordered_json;

constexpr unsigned baseSide = 125;
constexpr double coveredVertices = 100000.0;

/// Returns the CPU time of this process, summed over all threads, in seconds.
double Now() {
    timespec time;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

template <class Work>
double Seconds(Work work) {
    const double begin = Now();
    work();
    return Now() - begin;
}

template <class Work>
double LeastOf(int repetitions, Work work) {
    double least = std::numeric_limits<double>::max();
    for (int i = 0; i < repetitions; ++i) least = std::min(least, Seconds(work));
    return least;
}

/// Returns the value of a line in /proc/self/status, in bytes.
double StatusBytes(const std::string& key) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind(key + ":", 0) == 0) return std::stod(line.substr(key.size() + 1)) * 1024.0;
    return 0.0;
}

void Save(test::StrokeFixture& bench, const PolygonMesh& imported, const std::string& path) {
    const SceneSettings settings;
    SaveScene(path, {*bench.geometry, imported, *bench.brush, settings});
}

void MeasureDabs(test::StrokeFixture& bench, unsigned levels, Json& out) {
    const float cell = std::ldexp(1.0f, -static_cast<int>(levels));
    const auto radius = static_cast<float>(std::sqrt(coveredVertices / 3.14159265)) * cell;
    bench.Activate(Tool::Sculpt, 2);
    const uint32_t middle = baseSide / 2 * (baseSide + 1) + baseSide / 2;
    const SurfacePoint hit = bench.HitVertex(middle);
    const auto dab = [&] { bench.Dab(hit, radius, 0.001f); };
    bench.Begin();
    out["firstDabSeconds"] = Seconds(dab);
    out["dabSeconds"] = LeastOf(300, dab);
    const uint32_t records = *bench.brush->CurrentChange()->recordCount;
    if (records < coveredVertices * 0.99) throw std::runtime_error("fewer records than vertices");

    const uint32_t patchLevel = bench.brush->patchMeshLevel;
    const std::vector<FaceVisit> visited = bench.geometry->Level(patchLevel)->LastFaceWalk();
    PatchTree tree(&bench.Mesh());
    out["refitSeconds"] = LeastOf(10, [&] { tree.Refit(patchLevel, visited); });
    constexpr int picks = 10000;
    uint32_t number = 1;
    int missed = 0;
    out["pickSeconds"] =
        LeastOf(3,
                [&] {
                    for (int i = 0; i < picks; ++i) {
                        number = number * 1664525u + 1013904223u;
                        constexpr float span = (baseSide - 1.0f) / 65536.0f;
                        Ray ray;
                        ray.origin = Vector(0.5f + static_cast<float>(number >> 16) * span,
                                            0.5f + static_cast<float>(number & 0xffffu) * span,
                                            5.0f);
                        ray.direction = Vector(0.01f, 0.02f, -1.0f);
                        missed += tree.Pick(ray).has_value() ? 0 : 1;
                    }
                }) /
        picks;
    if (missed > picks / 10) throw std::runtime_error("rays missed the surface");
    out["treeBytesPerVertex"] =
        static_cast<double>(tree.Bytes()) / static_cast<double>(bench.Mesh().VertexCount());
    out["endStrokeSeconds"] = Seconds([&] { bench.End(); });
}

/// Measures one mesh, from import to loading.
Json Step(unsigned levels) {
    Json out;
    const double memoryBefore = StatusBytes("VmRSS");
    const PolygonMesh imported = test::FlatGrid(baseSide);
    std::unique_ptr<test::StrokeFixture> bench;
    out["refineSeconds"] =
        Seconds([&] { bench = std::make_unique<test::StrokeFixture>(imported, levels); });
    const auto vertices = static_cast<double>(bench->Mesh().VertexCount());
    out["vertices"] = vertices;
    out["bytesPerVertex"] = (StatusBytes("VmRSS") - memoryBefore) / vertices;
    MeasureDabs(*bench, levels, out);
    // Undo steps are compressed in the background; this waits for the final size.
    bench->geometry->History().Settle();
    out["bytesPerVertexAfterStroke"] = (StatusBytes("VmRSS") - memoryBefore) / vertices;
    LevelGeometry& geometry = *bench->geometry;
    out["levelDownSeconds"] = Seconds([&] { geometry.BindLevel(levels - 1); });
    out["levelUpSeconds"] = Seconds([&] { geometry.BindLevel(levels); });

    const std::string path =
        (std::filesystem::temp_directory_path() / ("ladder-" + std::to_string(levels) + ".trovik"))
            .string();
    out["saveSeconds"] = Seconds([&] { Save(*bench, imported, path); });
    out["fileBytesPerVertex"] = static_cast<double>(std::filesystem::file_size(path)) / vertices;
    out["peakBytesPerVertex"] = StatusBytes("VmHWM") / vertices;
    bench.reset();
    LoadedScene loaded;
    out["loadSeconds"] = Seconds([&] { loaded = LoadScene(path, nullptr); });
    std::filesystem::remove(path);
    if (loaded.geometry->Level(levels)->VertexCount() != vertices)
        throw std::runtime_error("the loaded mesh has a different number of vertices");
    return out;
}

/// Returns the number of subdivisions of the base grid that give about this many million vertices;
/// 0 if this size is not supported.
unsigned LevelsFor(const std::string& millions) {
    if (millions == "1") return 3;
    if (millions == "4") return 4;
    if (millions == "16") return 5;
    return millions == "64" ? 6 : 0;
}

int Run(int count, char** arguments) {
    if (count == 4 && std::string(arguments[1]) == "--step") {
        std::ofstream(arguments[3]) << Step(LevelsFor(arguments[2]));
        return 0;
    }
    if (count < 2) {
        std::cerr << "usage: trovik-ladder OUT.json [1] [4] [16] [64]\n";
        return 2;
    }
    std::vector<std::string> steps(arguments + 2, arguments + count);
    if (steps.empty()) steps = {"1", "4", "16"};
    const std::string path = arguments[1];
    Json all;
    for (const std::string& step : steps) {
        if (LevelsFor(step) == 0) {
            std::cerr << "trovik-ladder: a size of " << step
                      << " million vertices is not supported\n";
            return 2;
        }
        const std::string part = path + ".step";
        const std::string command =
            "'" + std::string(arguments[0]) + "' --step " + step + " '" + part + "'";
        if (std::system(command.c_str()) != 0) return 1;
        all[step] = Json::parse(std::ifstream(part));
        std::filesystem::remove(part);
        std::cout << step << " million: " << all[step].dump(2) << std::endl;
        std::ofstream(path) << all.dump(2) << '\n';
    }
    return 0;
}

}  // namespace
}  // namespace trovik::bench

int main(int count, char** arguments) {
    try {
        return trovik::bench::Run(count, arguments);
    } catch (const std::exception& error) {
        std::cerr << "trovik-ladder: " << error.what() << '\n';
        return 1;
    }
}
