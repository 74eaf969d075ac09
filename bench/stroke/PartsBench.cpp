// SPDX-License-Identifier: Apache-2.0

/// \file Measures the individual parts of a dab on the patches that it visits: kernels, ghost cells
/// and normals. The kernel is also compared with a version that uses run-time switches.
#include "bench/stroke/DabScene.h"
#include "kernels/PatchKernelTable.h"
#include "kernels/VertexStep.h"
#include "kernels/batch/VectorWidth.h"

#include <string>

namespace trovik::bench {
namespace {

void Kernel(benchmark::State& state, Tool tool, Variation variation) {
    PatchScene parts(tool, variation, state.range(0));
    SwiftStroke& brush = parts.scene.brush;
    const PatchKernelPointer kernel = patchKernels[brush.PatchSwitches().Index()];
    bool reached = true;
    for (auto _ : state) {
        ++brush.dabStamp;
        reached = false;
        for (const uint32_t patch : parts.patches) reached |= (brush.*kernel)(patch);
    }
    if (!reached) state.SkipWithError("the kernels reached nothing");
    parts.scene.Report(state);
}

void KernelByValue(benchmark::State& state, Tool tool) {
    PatchScene parts(tool, Variation::Plain, state.range(0));
    SwiftStroke& brush = parts.scene.brush;
    const RunTimeSwitches sw(brush.PatchSwitches(), true);
    bool reached = true;
    for (auto _ : state) {
        ++brush.dabStamp;
        reached = false;
        for (const uint32_t patch : parts.patches) {
            const uint32_t count = brush.BuildWorkList(patch);
            DabConstants dab(brush, false);
            for (uint32_t i = 0; i < count; ++i)
                reached |= StepVertex(sw, dab, brush.patchVertexList[i]);
            dab.StoreBounds();
        }
    }
    if (!reached) state.SkipWithError("the step reached nothing");
    parts.scene.Report(state);
}

void WorkList(benchmark::State& state) {
    PatchScene parts(Tool::Sculpt, Variation::Plain, state.range(0));
    for (auto _ : state)
        for (const uint32_t patch : parts.patches)
            benchmark::DoNotOptimize(parts.scene.brush.BuildWorkList(patch));
    parts.scene.Report(state);
}

void Ring(benchmark::State& state) {
    PatchScene parts(Tool::Sculpt, Variation::Plain, state.range(0));
    SwiftStroke& brush = parts.scene.brush;
    for (auto _ : state)
        for (const uint32_t patch : parts.patches) brush.FillPatchHalo(brush.patchMesh, patch);
    parts.scene.Report(state);
}

void Normals(benchmark::State& state, VectorWidth width) {
    if (!IsAvailable(width)) return state.SkipWithError("the processor lacks this width");
    const VectorWidth before = UseVectorWidth(width);
    PatchScene parts(Tool::Sculpt, Variation::Plain, state.range(0));
    SwiftStroke& brush = parts.scene.brush;
    for (auto _ : state)
        for (const uint32_t patch : parts.patches)
            brush.RefreshPatchNormals(brush.PatchSlice(patch));
    const uint32_t vertex = brush.PatchSlice(parts.patches.front())[0];
    if (parts.scene.mesh.vertexNormals[vertex].z < 32700) state.SkipWithError("no upright normal");
    parts.scene.Report(state);
    UseVectorWidth(before);
}

const bool registered = [] {
    for (const FamilyTool& family : families) {
        const Tool tool = family.tool;
        for (const Variation variation : {Variation::Plain,
                                          Variation::Stamp,
                                          Variation::Freeze,
                                          Variation::Layer,
                                          Variation::WorldSpace})
            benchmark::RegisterBenchmark(
                (std::string("kernel/") + family.name + "/" + NameOf(variation)).c_str(),
                [tool, variation](benchmark::State& state) { Kernel(state, tool, variation); })
                ->Arg(100000);
        benchmark::RegisterBenchmark(
            (std::string("kernel-by-value/") + family.name).c_str(),
            [tool](benchmark::State& state) { KernelByValue(state, tool); })
            ->Arg(100000);
    }
    benchmark::RegisterBenchmark("work-list", WorkList)->Arg(100000);
    benchmark::RegisterBenchmark("ring", Ring)->Arg(100000);
    benchmark::RegisterBenchmark("normals/four", [](benchmark::State& state) {
        Normals(state, VectorWidth::Four);
    })->Arg(100000);
    benchmark::RegisterBenchmark("normals/eight", [](benchmark::State& state) {
        Normals(state, VectorWidth::Eight);
    })->Arg(100000);
    return true;
}();

}  // namespace
}  // namespace trovik::bench
