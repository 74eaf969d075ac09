// SPDX-License-Identifier: Apache-2.0
#include "framework/display/LodChoice.h"

#include <algorithm>

namespace trovik {

namespace {

/// Triangle count of a stride divided by that of the next larger stride.
constexpr double timeRatio = 4.0;
/// The stride shrinks only if the predicted time is below this fraction of the target.
constexpr double margin = 0.8;

}  // namespace

void LodChoice::FrameMeasured(uint32_t strideLog2, double seconds) {
    uint32_t needed = strideLog2;
    double predicted = seconds;
    while (predicted > options.targetSeconds && needed < options.maxStrideLog2) {
        predicted /= timeRatio;
        ++needed;
    }
    if (strideLog2 != moving)
        moving = std::max(moving, needed);
    else if (needed == moving && moving > 0 && timeRatio * seconds < margin * options.targetSeconds)
        --moving;
    else
        moving = needed;
}

}  // namespace trovik
