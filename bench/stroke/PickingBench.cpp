// SPDX-License-Identifier: Apache-2.0

/// \file Measures picking on the benchmark mesh, and refitting the boxes of its pick tree after a
/// dab.
#include "bench/stroke/DabScene.h"
#include "framework/picking/PatchTree.h"

namespace trovik::bench {
namespace {

void Pick(benchmark::State& state) {
    DabScene scene(Tool::Sculpt, Variation::Plain, 10000);
    const PatchTree tree(&scene.mesh);
    uint32_t number = 0;
    uint32_t missed = 0;
    for (auto _ : state) {
        number = number * 1664525u + 1013904223u;
        Ray ray;
        ray.origin = Vector(0.5f + static_cast<float>(number >> 16) * (11.0f / 65536.0f),
                            0.5f + static_cast<float>(number & 0xffffu) * (11.0f / 65536.0f),
                            5.0f);
        ray.direction = Vector(0.01f, 0.02f, -1.0f);
        missed += tree.Pick(ray).has_value() ? 0u : 1u;
    }
    if (missed != 0) state.SkipWithError("a ray missed the surface");
}

void Refit(benchmark::State& state) {
    DabScene scene(Tool::Sculpt, Variation::Plain, state.range(0));
    PatchTree tree(&scene.mesh);
    scene.Begin();
    scene.Dab();
    const uint32_t patchLevel = scene.brush.patchMeshLevel;
    const std::vector<FaceVisit> visited = scene.bench.geometry->Level(patchLevel)->LastFaceWalk();
    for (auto _ : state) tree.Refit(patchLevel, visited);
    if (tree.BoxesRefitted() == 0) state.SkipWithError("no box was refitted");
    scene.End();
    scene.Report(state);
}

BENCHMARK(Pick)->Name("pick");
BENCHMARK(Refit)->Name("refit")->Arg(100000);

}  // namespace
}  // namespace trovik::bench
