// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>

namespace trovik {

/// Chooses the stride of the grid patches from measured frame times, so that camera movement stays
/// smooth. Doubling the stride draws a quarter of the triangles. All patches use the same stride,
/// because different strides in neighbouring patches leave cracks.
///
/// Not thread-safe; used by the drawing thread.
class TROVIK_API LodChoice {
public:
    struct Options {
        /// Target time for drawing a frame while the camera moves, in seconds.
        double targetSeconds = 0.008;
        /// Time from the last movement until frames are drawn at full detail, in seconds.
        double restSeconds = 0.150;
        /// Base-2 logarithm of the largest stride; values above the depth of the patches have no
        /// further effect.
        uint32_t maxStrideLog2 = 4;
    };

    LodChoice() = default;
    explicit LodChoice(const Options& chosen) : options(chosen) {}

    /// Returns the base-2 logarithm of the stride with which to draw a frame.
    /// \param secondsAtRest  time since the camera last moved; 0 while it is moving.
    uint32_t StrideLog2(double secondsAtRest) const {
        return secondsAtRest >= options.restSeconds ? 0 : moving;
    }

    /// Adapts the stride to the measured time of a frame. If a frame takes longer than the target,
    /// the stride grows at once by as many steps as are needed, on the assumption that each step
    /// quarters the time. It shrinks by one step only if the predicted time, which is four times
    /// the measured one, is below 80% of the target; the margin prevents oscillation.
    /// \param strideLog2  base-2 logarithm of the stride with which the frame was drawn. If it
    /// differs from the current choice, the measurement can only increase the stride.
    void FrameMeasured(uint32_t strideLog2, double seconds);

private:
    Options options;
    /// Base-2 logarithm of the stride while the camera moves.
    uint32_t moving = 0;
};

}  // namespace trovik
