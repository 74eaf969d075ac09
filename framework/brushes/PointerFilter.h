// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/brushes/PathSample.h"

#include <vector>

namespace trovik {

/// Where the filter tells a fault from what a hand does.
struct PointerLimits {
    /// A fall of pressure right after the press, or a rise right before the release, from one
    /// sample to the next, that is no hand's.
    float pressureJump = 0.25f;
    /// How long after the press and before the release these are looked for, in seconds...
    double settleTime = 0.06;
    /// ...and in samples, whichever is less.
    std::size_t settleSamples = 4;
    /// At the release: a step so many times as long as the longest of the eight before it...
    float placeJump = 3.0f;
    /// ...and at least of this length, in pixels.
    float shortestJump = 6.0f;
};

/// Takes the faults of pens and their drivers out of a pointer stream as it was recorded, from
/// press to release, in the order in which the samples came:
///
/// 1. Doubled samples (same place and time): the one stays whose pressure is nearest to that of the
///    sample before them; of those at the press the one with the least.
/// 2. Samples that come too late: one whose time lies before that of samples that came before it is
///    put where its time belongs, up to 32 places ahead, if the path becomes shorter by that, or
///    else stays, because only its time is wrong.
/// 3. Times that still fall: neighbours share their mean until none falls (the ascending times that
///    are nearest by least squares), and between the middles of such groups times run evenly.
/// 4. The blot: where pressure falls by a jump right after the press, the samples before the fall
///    get the pressures of a ramp, as steep as from the two samples behind it, and not below 0.
/// 5. The spike: where pressure rises by a jump right before the release, the samples from there on
///    take the pressure before it; samples behind a jump of place there are left out.
///
/// A stream without faults keeps its samples and their bits. Cost: O(samples).
TROVIK_API std::vector<PathSample> Filtered(const std::vector<PathSample>& samples,
                                            const PointerLimits& limits = {});

}  // namespace trovik
