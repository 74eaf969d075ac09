// SPDX-License-Identifier: Apache-2.0

/// \file Measures the grab brush on one thread: motions of a region that is already held, which
/// replace the previous displacement and recompute the normals, and the press that gathers the
/// region.
#include "bench/stroke/DabScene.h"
#include "framework/grab/GrabBrush.h"

namespace trovik::bench {
namespace {

class GrabScene {
public:
    GrabScene(const char* tool, int64_t vertices)
        : scene(Tool::Sculpt, Variation::Plain, vertices) {
        brush.SetActiveConfiguration(QString::fromLatin1(tool));
        brush.SetThreads(1);
    }

    void Begin() {
        brush.BeginStroke(&scene.mesh, BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
    }
    /// Applies a dab. The displacement changes with each call and stays small.
    void Dab() {
        number = (number + 1) % 7;
        const float height = scene.radius * (0.001f + 0.001f * static_cast<float>(number));
        brush.ApplyDab(scene.hit,
                       scene.hit.position + Vector(0.0f, 0.0f, height),
                       scene.radius,
                       1.0f,
                       100.0f,
                       box);
    }
    void End() { brush.EndStroke(); }
    const char* FaultReason() const {
        const Vector middle = scene.mesh.Position(scene.mesh.faceVertexIndices[scene.hit.face * 4]);
        if (!(middle.z > 0.0f)) return "the region did not move";
        if (box.IsEmpty() || box.maxX - box.minX < 1.9f * scene.radius)
            return "too small a dirty box";
        return nullptr;
    }

    DabScene scene;
    GrabBrush brush;

private:
    unsigned number = 0;
    AxisAlignedBoundingBox box;
};

void Motion(benchmark::State& state, const char* tool) {
    GrabScene scene(tool, state.range(0));
    scene.Begin();
    scene.Dab();
    for (auto _ : state) scene.Dab();
    if (const char* wrong = scene.FaultReason()) state.SkipWithError(wrong);
    scene.End();
    scene.scene.Report(state);
}

/// Measures the press together with the first motion.
void Press(benchmark::State& state) {
    GrabScene scene("Grab", state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        scene.Begin();
        state.ResumeTiming();
        scene.Dab();
        state.PauseTiming();
        scene.End();
        scene.scene.RevertStroke();
        state.ResumeTiming();
    }
    scene.scene.Report(state);
}

BENCHMARK_CAPTURE(Motion, grab, "Grab")->Name("grab/motion")->Arg(10000)->Arg(100000)->Arg(1000000);
BENCHMARK_CAPTURE(Motion, elastic, "ElasticGrab")->Name("grab/elastic-motion")->Arg(10000);
BENCHMARK(Press)->Name("grab/press")->Arg(100000);

}  // namespace
}  // namespace trovik::bench
