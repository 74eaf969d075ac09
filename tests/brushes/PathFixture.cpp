// SPDX-License-Identifier: Apache-2.0
#include "tests/brushes/PathFixture.h"

#include "tests/meshes/MeshZoo.h"

#include <cmath>

namespace trovik::test {

PathFixture::PathFixture() : bench((HostKernel::Instance(), brush), FlatGrid(16)) {}

std::vector<RecordingBrush::Dab> PathFixture::InView(const std::vector<PathSample>& samples,
                                                     const DabDynamics& dynamics,
                                                     uint64_t seed) {
    return Run(PathSpace::View, samples, dynamics, seed);
}

std::vector<RecordingBrush::Dab> PathFixture::OnSurface(const std::vector<PathSample>& samples,
                                                        const DabDynamics& dynamics,
                                                        uint64_t seed) {
    return Run(PathSpace::Surface, samples, dynamics, seed);
}

std::vector<RecordingBrush::Dab> PathFixture::Run(PathSpace space,
                                                  const std::vector<PathSample>& samples,
                                                  const DabDynamics& dynamics,
                                                  uint64_t seed) {
    brush.dabs.clear();
    const PathOptions options = bench.Options(radius, spacing);
    bench.loop.Begin(BrushOperation::ModifierNone, seed);
    PathDabs dabs(bench.loop, bench.geometry, bench.tree, view, space, options, dynamics);
    for (const PathSample& sample : samples) dabs.Add(sample);
    dabs.Finish();
    bench.loop.End();
    return brush.dabs;
}

StrokeView PathFixture::FromAbove() {
    StrokeView view;
    view.width = 800;
    view.height = 600;
    view.target = {8.0f, 8.0f, 0.0f};
    view.verticalFieldOfView = 35.0f;
    view.eye = {8.0f, 8.0f, 15.0f / std::tan(17.5f * 0.017453293f)};
    return view;
}

PathSample Sample(float x, float y, float pressure, double time) {
    PathSample sample;
    sample.position = {x, y, 0.0f};
    sample.pressure = pressure;
    sample.time = time;
    return sample;
}

std::vector<PathSample> Finer(const std::vector<PathSample>& samples, int parts) {
    std::vector<PathSample> finer{samples.front()};
    for (std::size_t i = 1; i < samples.size(); ++i) {
        const PathSample& from = samples[i - 1];
        const PathSample& to = samples[i];
        for (int k = 1; k < parts; ++k) {
            const float share = static_cast<float>(k) / static_cast<float>(parts);
            PathSample sample = from;
            sample.position = from.position + (to.position - from.position) * share;
            sample.pressure = from.pressure + (to.pressure - from.pressure) * share;
            sample.tilt = from.tilt + (to.tilt - from.tilt) * share;
            sample.time = from.time + (to.time - from.time) * k / parts;
            finer.push_back(sample);
        }
        finer.push_back(to);
    }
    return finer;
}

}  // namespace trovik::test
