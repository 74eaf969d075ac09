// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/PathSample.h"

#include <cstddef>
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
    /// By so much a sample, or its time, can be late, in seconds...
    double lateTime = 0.05;
    /// ...and by so many places.
    std::size_t latePlaces = 32;
};

/// Takes the faults of pens and their drivers out of a pointer stream, from press to release,
/// while it comes:
///
/// 1. Doubled samples (same place and time): the one stays whose pressure is nearest to that of the
///    sample before them; of those at the press the one with the least.
/// 2. Samples that come too late: one whose time lies before that of samples that came before it is
///    put where its time belongs, if the path becomes shorter by that, or else stays, because only
///    its time is wrong; so does one that is later than the limits.
/// 3. Times that still fall: neighbours share their mean until none falls (the ascending times that
///    are nearest by least squares), and between the middles of such groups times run evenly. A
///    time before that of samples that are decided becomes theirs.
/// 4. The blot: where pressure falls by a jump right after the press, the samples before the fall
///    get the pressures of a ramp, as steep as from the two samples behind it, and not below 0.
/// 5. The spike: where pressure rises by a jump right before the release, the samples from there on
///    take the pressure before it; samples behind a jump of place there are left out.
///
/// A stream without faults keeps its samples and their bits.
///
/// What a sample waits for, all at the same time: the next sample at another place or time (1, 2);
/// a sample `lateTime` after it by their times, or `latePlaces` more (2, 3; in a group of times
/// that fell, until that is so for the next group); the four samples behind it, or one
/// `settleTime` after it that is itself decided (5). The first samples also wait until the fifth
/// of them is decided, or one `settleTime` after the first (4). With 125 samples a second a sample
/// comes out 56 ms after it was drawn, and the press after 88 ms; with 1000 after 50 and 54 ms.
/// With `lateTime` 0 late samples are not put in order, and what is left are 4 samples.
///
/// Cost: O(latePlaces) a sample.
class TROVIK_API PointerFilter {
public:
    explicit PointerFilter(const PointerLimits& limits = {});

    /// Takes samples in the order in which they came. \return those that are certain by now and
    /// were not returned before.
    std::vector<PathSample> Add(const std::vector<PathSample>& given);
    /// After the release. \return the rest.
    std::vector<PathSample> Finish();

private:
    /// Neighbours whose times have the same mean.
    struct Pool {
        double sum;
        std::size_t first;
        std::size_t count;
        double Mean() const { return sum / static_cast<double>(count); }
        double Middle() const {
            return static_cast<double>(first) + 0.5 * static_cast<double>(count - 1);
        }
    };

    void AddOne(const PathSample& sample);
    /// Puts a sample where its time belongs. \param next  the one that came after it, or null.
    void Place(const PathSample& sample, const PathSample* next);
    /// Decides times. \param newest  of the sample that came last.
    void Settle(double newest, bool isWhole);
    std::vector<Pool> Pools() const;
    double TimeOf(std::size_t sample, const std::vector<Pool>& pools, std::size_t pool) const;
    /// Whether nothing at the press is to come.
    bool TakeBlot(bool isWhole);
    void TakeSpike();
    /// Whether the release cannot change this one, the first that is not out yet.
    bool IsBeforeTail(std::size_t sample) const;
    std::vector<PathSample> Out(bool isWhole);
    float StepTo(std::size_t a, std::size_t b) const;

    PointerLimits limits;
    /// The last sample, which a doubled one can replace, and the pressure before it.
    std::vector<PathSample> last;
    float before = 0.0f;
    /// All others in order, and their times as they came. The times of those from `settled` on are
    /// not decided yet.
    std::vector<PathSample> samples;
    std::vector<double> raw;
    std::size_t settled = 0;
    /// The first sample whose group is not wholly decided, and the groups before it: the very first
    /// and the last.
    std::size_t base = 0;
    std::vector<Pool> firstPool;
    std::vector<Pool> lastPool;
    bool isBlotDone = false;
    std::size_t given = 0;
};

/// A whole stream at once, by the same filter.
TROVIK_API std::vector<PathSample> Filtered(const std::vector<PathSample>& samples,
                                            const PointerLimits& limits = {});

}  // namespace trovik
