// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>

namespace trovik {

/// Chooses the stride of the grid patches from measured times, so that the view stays fluent while
/// the camera moves. Doubling the stride draws a quarter of the triangles. One stride holds for all
/// patches, since different ones side by side leave cracks.
///
/// Not synchronised; used by the thread that draws.
class TROVIK_API LodChoice {
public:
    struct Options {
        /// Seconds that drawing a frame may take while the camera moves.
        double targetSeconds = 0.008;
        /// Seconds after the last movement until frames are drawn at full detail.
        double restSeconds = 0.150;
        /// The largest stride is two to this power; at most the depth of the patches has an effect.
        uint32_t maxStrideLog2 = 4;
    };

    LodChoice() = default;
    explicit LodChoice(const Options& chosen) : options(chosen) {}

    /// The stride, as a power of two, for a frame.
    /// \param secondsAtRest  since the camera last moved; 0 while it moves.
    uint32_t StrideLog2(double secondsAtRest) const {
        return secondsAtRest >= options.restSeconds ? 0 : moving;
    }

    /// Adjusts the choice to the measured time of a frame. The stride grows as soon as a frame
    /// takes longer than the target, by as many steps as a quarter of the time for each would need.
    /// It shrinks by one step when four times the measured time would be below four fifths of the
    /// target, so that it does not alternate.
    /// \param strideLog2  with which the frame was drawn. Frames with another stride than the
    /// current choice can only raise it.
    void FrameMeasured(uint32_t strideLog2, double seconds);

private:
    Options options;
    /// While the camera moves.
    uint32_t moving = 0;
};

}  // namespace trovik
