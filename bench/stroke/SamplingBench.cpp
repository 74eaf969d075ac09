// SPDX-License-Identifier: Apache-2.0

/// \file Measures how long it takes to sample the direction or plane of a dab: along a cross
/// through the hit, or over the whole area.
#include "bench/stroke/DabScene.h"

namespace trovik::bench {
namespace {

void Sampling(benchmark::State& state, bool alongCross) {
    PatchScene parts(Tool::Flatten, Variation::Plain, state.range(0));
    SwiftStroke& brush = parts.scene.brush;
    const bool before = brush.usePatchNormal;
    brush.setUsePatchNormal(alongCross);
    for (auto _ : state) brush.SamplePlane(parts.scene.hit);
    if (!(brush.directions[0].z > 0.99f)) state.SkipWithError("no upright plane");
    brush.setUsePatchNormal(before);
    parts.scene.Report(state);
}

BENCHMARK_CAPTURE(Sampling, cross, true)->Name("sample/cross")->Arg(100000);
BENCHMARK_CAPTURE(Sampling, area, false)->Name("sample/area")->Arg(100000);

}  // namespace
}  // namespace trovik::bench
