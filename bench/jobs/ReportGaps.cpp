// SPDX-License-Identifier: Apache-2.0

/// \file
/// Measures the latency of cancellation: the longest time between two reports to a JobControl, and
/// between the last report and the return, for each long operation on a mesh of about a million
/// quads. The target is 200 ms; docs/performance.md has the results.
///
///   report-gaps [LEVELS] [FILTER]
///
/// LEVELS is the number of subdivisions of a plane of 16 x 16 quads, 6 by default. With FILTER,
/// only the operations whose names contain it are measured. Each operation runs three times. The
/// output is from the run with the smallest maximum gap, because other processes can only lengthen
/// gaps. `cpu ms` is the longest gap in CPU time of the calling thread, on which other processes
/// have less effect than on wall-clock time.
#include "framework/baking/MapDisplacement.h"
#include "framework/baking/MapFile.h"
#include "framework/document/Document.h"
#include "framework/errors/Cancelled.h"
#include "framework/files/MeshFiles.h"
#include "framework/images/ImageFile.h"
#include "framework/jobs/JobControl.h"
#include "framework/journal/Journal.h"
#include "framework/multires/LevelSource.h"
#include "framework/render/RenderImage.h"
#include "framework/script/JournalRecovery.h"
#include "framework/script/ScriptRunner.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <memory>
#include <string>

namespace trovik::bench {
namespace {

using Clock = std::chrono::steady_clock;

double MillisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// Returns the CPU time of the calling thread in milliseconds.
double ProcessorTime() {
    timespec now = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) * 1e-6;
}

/// Records the longest gap between reports.
class GapRecorder final : public JobControl {
public:
    bool Report(uint64_t done, uint64_t total, const char* phase) override {
        char text[200];
        std::snprintf(text,
                      sizeof text,
                      "%s %llu/%llu",
                      phase,
                      static_cast<unsigned long long>(done),
                      static_cast<unsigned long long>(total));
        End(text);
        ++reports;
        return true;
    }
    void End(const std::string& now) {
        const double gap = MillisecondsSince(last);
        const double cpu = ProcessorTime() - lastCpu;
        longest = std::max(longest, gap);
        if (cpu > longestCpu) {
            longestCpu = cpu;
            place = previous + " -> " + now;
        }
        previous = now;
        last = Clock::now();
        lastCpu = ProcessorTime();
    }

    double longest = 0.0;
    double longestCpu = 0.0;
    std::string place;
    uint64_t reports = 0;
    const Clock::time_point start = Clock::now();

private:
    std::string previous = "call";
    Clock::time_point last = start;
    double lastCpu = ProcessorTime();
};

constexpr unsigned baseSide = 16;

/// Returns a plane that is symmetric in x and has UVs over the unit square.
PolygonMesh Plane() {
    PolygonMesh mesh;
    constexpr float side = baseSide;
    for (unsigned y = 0; y <= baseSide; ++y) {
        for (unsigned x = 0; x <= baseSide; ++x) {
            const auto u = static_cast<float>(x);
            const auto v = static_cast<float>(y);
            mesh.positions.push_back({u - side / 2.0f, v, 0.0f});
            mesh.attributes.uvs.push_back({0.01f + 0.98f * u / side, 0.01f + 0.98f * v / side});
        }
    }
    for (unsigned y = 0; y < baseSide; ++y) {
        for (unsigned x = 0; x < baseSide; ++x) {
            const unsigned corner = y * (baseSide + 1) + x;
            mesh.faceSizes.push_back(4);
            for (const unsigned vertex :
                 {corner, corner + 1, corner + baseSide + 2, corner + baseSide + 1})
                mesh.faceVertices.push_back(vertex);
        }
    }
    mesh.attributes.cornerUvs = mesh.faceVertices;
    return mesh;
}

class Measurement {
public:
    Measurement(uint32_t levelCount, std::string nameFilter)
        : levels(levelCount),
          filter(std::move(nameFilter)),
          folder(std::filesystem::temp_directory_path() / "trovik-report-gaps") {
        std::filesystem::create_directories(folder);
        std::printf("%-22s %10s %10s %8s %8s  %s\n",
                    "operation",
                    "total ms",
                    "gap ms",
                    "cpu ms",
                    "reports",
                    "between");
    }
    ~Measurement() { std::filesystem::remove_all(folder); }
    Measurement(const Measurement&) = delete;
    Measurement& operator=(const Measurement&) = delete;

    void All() {
        Edits();
        Files();
        Scenes();
        Maps();
        Renders();
        Recovery();
    }

private:
    using Work = std::function<void(JobControl*)>;

    std::string Path(const char* name) const { return (folder / name).string(); }

    /// \param prepare  called before each run; not measured.
    void Measure(
        const std::string& name, const Work& work, const std::function<void()>& prepare = [] {}) {
        if (name.find(filter) == std::string::npos) return;
        double shortest = std::numeric_limits<double>::infinity();
        std::string line;
        for (int run = 0; run < 3; ++run) {
            prepare();
            GapRecorder job;
            work(&job);
            job.End("return");
            if (job.longestCpu >= shortest) continue;
            shortest = job.longestCpu;
            char text[400];
            std::snprintf(text,
                          sizeof text,
                          "%-22s %10.0f %10.1f %8.1f %8llu  %s",
                          name.c_str(),
                          MillisecondsSince(job.start),
                          job.longest,
                          job.longestCpu,
                          static_cast<unsigned long long>(job.reports),
                          job.place.c_str());
            line = text;
        }
        std::puts(line.c_str());
        std::fflush(stdout);
    }

    std::unique_ptr<Document> Sculpted(uint32_t count) const {
        auto document = std::make_unique<Document>("plane", Plane());
        document->Subdivide(LevelGeometry::unlimitedBytes, nullptr, count);
        document->SelectTool("Sculpt");
        Stroke(*document);
        return document;
    }
    static void Stroke(Document& document) {
        document.Loop().Begin(BrushOperation::ModifierNone, 5);
        document.Loop().WholeMesh(0.3f, false);
        document.Loop().End();
    }

    void Edits() {
        std::unique_ptr<Document> document;
        const auto sculpted = [&] {
            document.reset();
            document = Sculpted(levels);
        };
        Measure(
            "subdivide",
            [&](JobControl* job) { document->Subdivide(LevelGeometry::unlimitedBytes, job); },
            [&] {
                document.reset();
                document = Sculpted(levels - 1);
            });
        Measure(
            "subdivide: all",
            [&](JobControl* job) {
                document->Subdivide(LevelGeometry::unlimitedBytes, job, levels);
            },
            [&] {
                document.reset();
                document = std::make_unique<Document>("plane", Plane());
            });
        Measure(
            "reset",
            [&](JobControl* job) { document->Reset(levels, LevelGeometry::unlimitedBytes, job); },
            sculpted);
        Measure(
            "level down", [&](JobControl* job) { document->BindLevel(0, job); }, sculpted);
        Measure(
            "level up",
            [&](JobControl* job) { document->BindLevel(levels, job); },
            [&] {
                sculpted();
                document->BindLevel(1);
                Stroke(*document);
            });
        Measure(
            "apply to base", [&](JobControl* job) { document->ApplyToBase(job); }, sculpted);
        Measure(
            "delete lower", [&](JobControl* job) { document->DeleteLevels(true, job); }, sculpted);
        Measure(
            "delete higher",
            [&](JobControl* job) { document->DeleteLevels(false, job); },
            [&] {
                sculpted();
                document->BindLevel(1);
            });
        const auto flattened = [&] {
            sculpted();
            document->DeleteLevels(true);
        };
        Measure(
            "unsubdivide", [&](JobControl* job) { document->Unsubdivide(job); }, flattened);
        Measure(
            "mirror by faces",
            [&](JobControl* job) { document->SetTopologicalMirror(job); },
            flattened);
        Measure(
            "symmetrize",
            [&](JobControl* job) { document->MakeSymmetric(0, SymmetrySide::Positive, job); },
            flattened);
        Measure(
            "displace",
            [&](JobControl* job) {
                DisplacementOptions options;
                options.path = Path("displacement.exr");
                document->Displace(options, job);
            },
            [&] {
                sculpted();
                FloatImage image;
                image.width = image.height = 2048;
                image.channels = 1;
                image.pixels.assign(std::size_t{2048} * 2048, 0.25f);
                WriteFloatImageFile(Path("displacement.exr"), image);
            });
    }

    void Files() {
        const auto document = Sculpted(levels);
        const LevelSource source(document->Geometry(), {});
        for (const char* name :
             {"mesh.obj", "mesh.ply", "mesh.stl", "mesh.gltf", "mesh.glb", "mesh.usda"})
            Measure(std::string("export ") + name,
                    [&](JobControl* job) { WriteMeshFile(Path(name), source, job); });
        for (const char* name : {"mesh.obj", "mesh.ply", "mesh.stl", "mesh.gltf", "mesh.glb"}) {
            if (!std::filesystem::exists(Path(name))) WriteMeshFile(Path(name), source);
            Measure(std::string("import ") + name, [&](JobControl* job) {
                const Document imported(Path(name), MeshSpace(), job);
            });
        }
    }

    void Scenes() {
        const auto document = Sculpted(levels);
        document->Save(Path("work.trovik"));
        Measure("save", [&](JobControl* job) { document->Save(Path("work.trovik"), job); });
        Measure("open", [&](JobControl* job) { Document::OpenScene(Path("work.trovik"), job); });
    }

    void Maps() {
        const auto document = Sculpted(levels);
        BakeOptions options;
        options.width = options.height = 2048;
        for (const MapKind kind : {MapKind::Displacement, MapKind::Normal}) {
            options.kind = kind;
            for (const char* name : {"map.exr", "map.png"}) {
                MapFileOptions file;
                file.path = Path(name);
                Measure(
                    std::string("bake ") + MapKindName(kind) + " " + name,
                    [&](JobControl* job) { BakeToFile(document->Geometry(), options, file, job); });
            }
        }
    }

    void Renders() {
        const auto document = Sculpted(levels);
        const std::vector<RenderMesh> meshes{document->ShownMesh()};
        const RenderCamera camera =
            FrameMeshes(meshes, Vector(0.3f, 0.2f, -1.0f), 35.0f, 4.0f / 3.0f);
        RenderOptions options;
        Measure("render", [&](JobControl* job) { RenderOnce(meshes, camera, options, job); });
        options.wireframe = true;
        options.width = 320;
        options.height = 240;
        Measure("render wireframe",
                [&](JobControl* job) { RenderOnce(meshes, camera, options, job); });
    }

    void Recovery() {
        if (std::string("recover").find(filter) == std::string::npos) return;
        const std::string mesh = Path("plane.obj");
        WriteObj(mesh, Plane());
        const std::string script = Path("work.json");
        std::ofstream(script)
            << R"({"mesh": "plane.obj", "levels": )" << levels
            << R"(, "steps": [{"tool": "Sculpt"}, {"stroke": {"wholeMesh": {"strength": 20}}}]})";
        const std::string journal = Path("work.journal");
        {
            ScriptRunner runner(script, folder.string(), {});
            runner.SetJournal({journal, false});
            runner.Run();
        }
        RecoveryOptions options;
        Measure("recover", [&](JobControl* job) {
            options.progress.job = job;
            RecoverJournal(journal, Path("recovered.trovik"), options);
        });
    }

    uint32_t levels;
    std::string filter;
    std::filesystem::path folder;
};

}  // namespace
}  // namespace trovik::bench

int main(int argc, char** argv) {
    const auto levels = static_cast<uint32_t>(argc > 1 ? std::atoi(argv[1]) : 6);
    trovik::bench::Measurement(levels, argc > 2 ? argv[2] : "").All();
    return 0;
}
