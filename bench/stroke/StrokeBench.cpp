// SPDX-License-Identifier: Apache-2.0

/// \file Measures the cost of a stroke apart from its dabs: its start, its end including the
/// creation of the undo step, and undo.
#include "bench/stroke/DabScene.h"

namespace trovik::bench {
namespace {

void BeginOfStroke(benchmark::State& state) {
    DabScene scene(Tool::Sculpt, Variation::Plain, 10000);
    for (auto _ : state) {
        scene.Begin();
        state.PauseTiming();
        scene.End();
        state.ResumeTiming();
    }
    if (scene.bench.geometry->History().CanUndo())
        state.SkipWithError("an empty stroke left a step");
}

void EndOfStroke(benchmark::State& state) {
    DabScene scene(Tool::Sculpt, Variation::Plain, state.range(0));
    bool undoable = true;
    for (auto _ : state) {
        state.PauseTiming();
        scene.Begin();
        scene.Dab();
        state.ResumeTiming();
        scene.End();
        state.PauseTiming();
        undoable = undoable && scene.bench.geometry->History().CanUndo();
        scene.RevertStroke();
        state.ResumeTiming();
    }
    if (!undoable) state.SkipWithError("no step to undo");
    scene.Report(state);
}

void Undo(benchmark::State& state) {
    DabScene scene(Tool::Sculpt, Variation::Plain, state.range(0));
    UndoHistory& history = scene.bench.geometry->History();
    const uint32_t vertex = scene.mesh.faceVertexIndices[scene.hit.face * 4];
    bool same = true;
    for (auto _ : state) {
        state.PauseTiming();
        const float before = scene.mesh.Position(vertex).z;
        scene.Begin();
        scene.Dab();
        scene.End();
        state.ResumeTiming();
        history.Undo(*scene.bench.geometry);
        state.PauseTiming();
        same = same && scene.mesh.Position(vertex).z == before;
        history.Clear();
        state.ResumeTiming();
    }
    if (!same) state.SkipWithError("undo left a change");
    scene.Report(state);
}

BENCHMARK(BeginOfStroke)->Name("begin-stroke");
BENCHMARK(EndOfStroke)->Name("end-stroke")->Arg(100000);
BENCHMARK(Undo)->Name("undo")->Arg(100000);

}  // namespace
}  // namespace trovik::bench
