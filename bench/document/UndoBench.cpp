// SPDX-License-Identifier: Apache-2.0

/// \file
/// Measures document operations after a stroke on planes of 1, 4 and 16 million quads: undoing and
/// redoing the stroke, switching to the level below, and switching to the level above if it has
/// detail that rotates with the surface. The cost should depend on the stroke, not on the mesh. The
/// first argument of each benchmark is the number of subdivisions of a plane of 16 x 16 quads; the
/// second is the number of vertices under the dab. `copy` is the lower bound for switching to the
/// level above: it copies the positions and normals of the fine vertices that move with the coarse
/// ones.
#include "framework/document/Document.h"
#include "framework/strokes/DabAtHit.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <ctime>
#include <memory>
#include <utility>
#include <vector>

namespace trovik::bench {
namespace {

constexpr unsigned baseSide = 16;

PolygonMesh Plane() {
    PolygonMesh mesh;
    for (unsigned y = 0; y <= baseSide; ++y)
        for (unsigned x = 0; x <= baseSide; ++x)
            mesh.positions.push_back({static_cast<float>(x), static_cast<float>(y), 0.0f});
    for (unsigned y = 0; y < baseSide; ++y) {
        for (unsigned x = 0; x < baseSide; ++x) {
            const unsigned corner = y * (baseSide + 1) + x;
            mesh.faceSizes.push_back(4);
            for (const unsigned vertex :
                 {corner, corner + 1, corner + baseSide + 2, corner + baseSide + 1})
                mesh.faceVertices.push_back(vertex);
        }
    }
    return mesh;
}

using Clock = std::chrono::steady_clock;

/// One document is shared by all benchmarks of a size, because building the levels takes longer
/// than the benchmarks.
class Scene {
public:
    static Scene& Of(benchmark::State& state) {
        static std::unique_ptr<Scene> scene;
        const auto levels = static_cast<uint32_t>(state.range(0));
        if (scene == nullptr || scene->top != levels) {
            scene.reset();
            scene = std::make_unique<Scene>(levels);
        }
        return *scene;
    }

    explicit Scene(uint32_t levels) : document("plane", Plane()), top(levels) {
        for (uint32_t i = 0; i < levels; ++i) document.Subdivide();
        document.SelectTool("Wax");
    }

    /// Applies a stroke with one dab on this many vertices of the bound level, at a different point
    /// each time.
    void Stroke(int64_t vertices) {
        const double faces = document.Geometry().Bound()->faceCount;
        const double area = static_cast<double>(vertices) * baseSide * baseSide / faces;
        const float offset = static_cast<float>(strokes++ % 7) * 0.31f;
        const auto hit = document.Tree().Nearest({6.0f + offset, 7.3f + offset, 0.0f});
        StrokeDab dab = DabAt(document.Geometry(), *hit);
        dab.size = static_cast<float>(std::sqrt(area / 3.14159265));
        dab.strength = 0.02f;
        const uint64_t before = document.Totals().verticesMoved;
        document.Loop().Begin(BrushOperation::ModifierNone);
        document.Loop().Dab(dab);
        document.Loop().End();
        moved = document.Totals().verticesMoved - before;
    }

    /// Adds detail to the top level, which must be bound, in the area of the strokes.
    void Roughen() {
        if (std::exchange(isRough, true)) return;
        LevelMesh& level = *document.Geometry().Bound();
        uint32_t random = 1;
        for (uint32_t vertex = 0; vertex < level.VertexCount(); ++vertex) {
            const Vector p = level.Position(vertex);
            if (std::max(std::fabs(p.x - 7.0f), std::fabs(p.y - 8.0f)) > 3.0f) continue;
            random = random * 1664525u + 1013904223u;
            const float height = static_cast<float>(random >> 8) * 1e-11f;
            level.SetPosition(vertex, p + Vector(0.0f, 0.0f, height));
        }
        document.RefreshSurface();
    }

    Document document;
    uint32_t top;
    uint64_t moved = 0;

private:
    bool isRough = false;
    unsigned strokes = 0;
};

double ThreadSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// Times the measured part of each benchmark iteration. Records the minimum wall-clock time, and
/// the minimum and median CPU time of the thread. The mean is not meaningful on a busy machine.
class Stopwatch {
public:
    explicit Stopwatch(benchmark::State& ofState) : state(ofState) {}
    template <typename Work>
    void Time(Work work) {
        const Clock::time_point start = Clock::now();
        const double before = ThreadSeconds();
        work();
        ofThread.push_back(ThreadSeconds() - before);
        const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
        state.SetIterationTime(seconds);
        ofWall.push_back(seconds);
    }
    void Report() {
        Report(ofWall, "fastest_ms", "median_ms");
        Report(ofThread, "fastest_thread_ms", "median_thread_ms");
    }

private:
    void Report(std::vector<double>& seconds, const char* fastest, const char* median) {
        std::sort(seconds.begin(), seconds.end());
        state.counters[fastest] = seconds.front() * 1e3;
        state.counters[median] = seconds[seconds.size() / 2] * 1e3;
    }

    benchmark::State& state;
    std::vector<double> ofWall;
    std::vector<double> ofThread;
};

void Report(benchmark::State& state, Scene& scene, Stopwatch& watch) {
    watch.Report();
    state.counters["vertices"] = static_cast<double>(scene.moved);
    state.counters["faces"] = static_cast<double>(scene.document.Geometry().Bound()->faceCount);
}

void Undo(benchmark::State& state) {
    Scene& scene = Scene::Of(state);
    scene.Stroke(state.range(1));
    Stopwatch watch(state);
    for (auto _ : state) {
        // When a user undoes a stroke, its undo step is usually already compressed.
        scene.document.Geometry().History().Settle();
        watch.Time([&] { scene.document.Undo(); });
        scene.document.Redo();
    }
    Report(state, scene, watch);
    scene.document.Undo();
}

void Redo(benchmark::State& state) {
    Scene& scene = Scene::Of(state);
    scene.Stroke(state.range(1));
    Stopwatch watch(state);
    for (auto _ : state) {
        scene.document.Undo();
        scene.document.Geometry().History().Settle();
        watch.Time([&] { scene.document.Redo(); });
    }
    Report(state, scene, watch);
    scene.document.Undo();
}

/// Switches to the level above or below after a stroke on the bound level.
void Switch(benchmark::State& state, bool down) {
    Scene& scene = Scene::Of(state);
    if (!down) scene.Roughen();
    const uint32_t from = down ? scene.top : scene.top - 1;
    const uint32_t to = down ? scene.top - 1 : scene.top;
    // Builds the trees of both levels.
    scene.document.BindLevel(to);
    scene.document.BindLevel(from);
    Stopwatch watch(state);
    for (auto _ : state) {
        scene.Stroke(state.range(1));
        watch.Time([&] { scene.document.BindLevel(to); });
        scene.document.BindLevel(from);
    }
    Report(state, scene, watch);
    scene.document.BindLevel(scene.top);
}

void Copy(benchmark::State& state) {
    const auto bytes =
        static_cast<std::size_t>(state.range(0)) * 4 * (sizeof(Vector) + sizeof(PackedNormal));
    const std::vector<char> from(bytes);
    std::vector<char> to(bytes);
    Stopwatch watch(state);
    for (auto _ : state) {
        watch.Time([&] { std::memcpy(to.data(), from.data(), bytes); });
        benchmark::ClobberMemory();
    }
    watch.Report();
}

const bool registered = [] {
    const auto add = [](const char* name, void (*run)(benchmark::State&), int64_t levels) {
        for (const int64_t vertices : {10000, 100000}) {
            benchmark::RegisterBenchmark(name, run)
                ->Args({levels, vertices})
                ->Iterations(15)
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
        }
    };
    for (const int64_t levels : {6, 7, 8}) {
        add("undo", Undo, levels);
        add("redo", Redo, levels);
        add(
            "switch-down", [](benchmark::State& state) { Switch(state, true); }, levels);
        add(
            "switch-up", [](benchmark::State& state) { Switch(state, false); }, levels);
    }
    benchmark::RegisterBenchmark("copy", Copy)->Arg(10000)->Iterations(200)->UseManualTime();
    return true;
}();

}  // namespace
}  // namespace trovik::bench
