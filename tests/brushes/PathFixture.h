// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/PathDabs.h"
#include "tests/brushes/LoopFixture.h"

#include <vector>

namespace trovik::test {

/// A grid of 16 x 16 units, seen from above. Paths place dabs on it, which move no vertices.
class PathFixture {
public:
    PathFixture();

    /// \return the dabs.
    std::vector<RecordingBrush::Dab> InView(const std::vector<PathSample>& samples,
                                            const DabDynamics& dynamics = {},
                                            uint64_t seed = 0);
    std::vector<RecordingBrush::Dab> OnSurface(const std::vector<PathSample>& samples,
                                               const DabDynamics& dynamics = {},
                                               uint64_t seed = 0);

    /// A view centred on the grid: 20 pixels are one unit, and pixel (400, 300) shows the centre
    /// (8, 8).
    static StrokeView FromAbove();

    RecordingBrush brush;
    LoopFixture bench;
    StrokeView view = FromAbove();
    float radius = 0.5f;
    float spacing = 0.5f;

private:
    std::vector<RecordingBrush::Dab> Run(PathSpace space,
                                         const std::vector<PathSample>& samples,
                                         const DabDynamics& dynamics,
                                         uint64_t seed);
};

PathSample Sample(float x, float y, float pressure = 1.0f, double time = 0.0);
/// Splits each segment of a path into this many parts of equal length.
std::vector<PathSample> Finer(const std::vector<PathSample>& samples, int parts);

}  // namespace trovik::test
