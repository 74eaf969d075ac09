// SPDX-License-Identifier: Apache-2.0

/// \file Measures complete dabs: traversal, choice of the patch level, kernels, ghost cells,
/// normals and dirty box.
#include "bench/stroke/DabScene.h"

#include <string>

namespace trovik::bench {
namespace {

void LaterDab(benchmark::State& state, Tool tool, Variation variation) {
    DabScene scene(tool, variation, state.range(0));
    scene.Begin();
    scene.Dab();
    for (auto _ : state) scene.Dab();
    if (const char* wrong = scene.FaultReason()) state.SkipWithError(wrong);
    state.counters["records"] = static_cast<double>(*scene.brush.CurrentChange()->recordCount);
    scene.End();
    scene.Report(state);
}

/// Measures a later dab that fully processes every patch, including patches out of reach.
void VisitingDab(benchmark::State& state, Tool tool) {
    DabScene scene(tool, Variation::Plain, state.range(0));
    scene.brush.usesPatchCache = false;
    scene.Begin();
    scene.Dab();
    for (auto _ : state) scene.Dab();
    if (const char* wrong = scene.FaultReason()) state.SkipWithError(wrong);
    scene.End();
    scene.brush.usesPatchCache = true;
    scene.Report(state);
}

/// Measures the first dab of a stroke, which creates the undo records.
void FirstDab(benchmark::State& state, Tool tool) {
    DabScene scene(tool, Variation::Plain, state.range(0));
    const char* wrong = nullptr;
    for (auto _ : state) {
        state.PauseTiming();
        scene.Begin();
        state.ResumeTiming();
        scene.Dab();
        state.PauseTiming();
        if (wrong == nullptr) wrong = scene.FaultReason();
        scene.End();
        scene.RevertStroke();
        state.ResumeTiming();
    }
    if (wrong != nullptr) state.SkipWithError(wrong);
    scene.Report(state);
}

const bool registered = [] {
    for (const FamilyTool& family : families) {
        const std::string name = family.name;
        const Tool tool = family.tool;
        for (const Variation variation : {Variation::Plain,
                                          Variation::Stamp,
                                          Variation::Freeze,
                                          Variation::Layer,
                                          Variation::InactiveLayer,
                                          Variation::WorldSpace}) {
            benchmark::RegisterBenchmark(
                ("dab/" + name + "/" + NameOf(variation)).c_str(),
                [tool, variation](benchmark::State& state) { LaterDab(state, tool, variation); })
                ->Arg(10000)
                ->Arg(100000)
                ->Arg(1000000);
        }
        benchmark::RegisterBenchmark(("dab-visiting-all/" + name).c_str(),
                                     [tool](benchmark::State& state) { VisitingDab(state, tool); })
            ->Arg(10000)
            ->Arg(100000)
            ->Arg(1000000);
        benchmark::RegisterBenchmark(("first-dab/" + name).c_str(),
                                     [tool](benchmark::State& state) { FirstDab(state, tool); })
            ->Arg(10000)
            ->Arg(100000)
            ->Arg(1000000);
    }
    return true;
}();

}  // namespace
}  // namespace trovik::bench
