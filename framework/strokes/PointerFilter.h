// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/PathSample.h"

#include <cstddef>
#include <vector>

namespace trovik {

/// Thresholds that distinguish device faults from hand movements.
struct PointerLimits {
    /// A larger pressure drop between two samples right after the press, or a larger rise right
    /// before the release, counts as a fault.
    float pressureJump = 0.25f;
    /// Length of the intervals after the press and before the release in which these jumps are
    /// detected, in seconds.
    double settleTime = 0.06;
    /// Length of these intervals as a number of samples; the shorter of the two lengths applies.
    std::size_t settleSamples = 4;
    /// A position jump at the release is at least this many times as long as the longest of the
    /// eight steps before it.
    float positionJump = 3.0f;
    /// Minimum length of a position jump, in pixels.
    float minJumpPixels = 6.0f;
    /// The longest time in seconds by which a sample or its timestamp may be late.
    double lateTime = 0.05;
    /// Maximum delay of a late sample, as a number of samples.
    std::size_t lateSamples = 32;
};

/// Removes pen and driver faults from a pointer stream, from press to release, while the samples
/// arrive:
///
/// 1. Duplicate samples (equal position and time): the filter keeps the one whose pressure is
///    closest to that of the preceding sample; at the press, it keeps the one with the lowest
///    pressure.
/// 2. Late samples: if a sample is older than samples that arrived earlier, it is moved into time
///    order, provided that this shortens the path. Otherwise, only its time is wrong, and it is not
///    moved. A sample that exceeds the limits is not moved either.
/// 3. Times that still decrease: the times of consecutive samples are replaced with their mean
///    until no time decreases. The result is the ascending sequence closest to the original times
///    in the least-squares sense; see Ayer, Brunk, Ewing, Reid, Silverman: "An Empirical
///    Distribution Function for Sampling with Incomplete Information" (1955). Times between the
///    centres of such groups are interpolated linearly. A time that is earlier than that of a
///    finalised sample is replaced with the latest finalised time.
/// 4. Pressure spike at the press (blot): if pressure drops abruptly right after the press, the
///    pressures before the drop are replaced with a linear ramp, which has the slope between the
///    two samples after the drop and is clamped to at least 0.
/// 5. Pressure spike at the release: if pressure rises abruptly right before the release, the
///    samples after the rise get the pressure from before it. Samples after a position jump right
///    before the release are dropped.
///
/// A stream without faults passes through bit-identically.
///
/// A sample is returned once all of these conditions hold; the numbers refer to the list above:
///
/// - 1, 2: the next sample at another position or time has arrived.
/// - 2, 3: a sample whose time is `lateTime` later has arrived, or `lateSamples` more samples have
///   arrived. For a group of decreasing times, this must also hold for the next group.
/// - 5: the next four samples have their final times, or a sample `settleTime` later has its final
///   time.
/// - 4, for the first samples only: the fifth sample, or a sample `settleTime` after the first, has
///   its final time.
///
/// At 125 samples per second, a sample is returned 56 ms after it was drawn, and the first sample
/// after 88 ms; at 1000 samples per second, the delays are 50 ms and 54 ms. With a `lateTime` of 0,
/// late samples are not reordered, and the delay is 4 samples.
///
/// Cost: O(lateSamples) per sample.
class TROVIK_API PointerFilter {
public:
    explicit PointerFilter(const PointerLimits& limits = {});

    /// Adds samples in the order in which they arrived. \return the samples that are now final and
    /// have not been returned yet.
    std::vector<PathSample> Add(const std::vector<PathSample>& given);
    /// Ends the stream after the release. \return the remaining samples.
    std::vector<PathSample> Finish();

private:
    /// Consecutive samples that share a mean time.
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
    /// Inserts a sample in time order. \param next  the sample that arrived after it, or null.
    void Place(const PathSample& sample, const PathSample* next);
    /// Finalises times. \param newest  the time of the sample that arrived last.
    void Settle(double newest, bool isWhole);
    std::vector<Pool> Pools() const;
    double TimeOf(std::size_t sample, const std::vector<Pool>& pools, std::size_t pool) const;
    /// Corrects the blot.
    /// \return whether the samples right after the press are final.
    bool RemoveBlot(bool isWhole);
    void RemoveSpike();
    /// Returns whether the next sample to be returned can no longer be changed by the release.
    bool IsBeforeTail(std::size_t sample) const;
    std::vector<PathSample> Out(bool isWhole);
    float StepTo(std::size_t a, std::size_t b) const;

    PointerLimits limits;
    /// The last sample, which a duplicate can replace, and the pressure of the sample before it.
    std::vector<PathSample> last;
    float before = 0.0f;
    /// All earlier samples in order, and their original times. Times from index `settled` on are
    /// not final yet.
    std::vector<PathSample> samples;
    std::vector<double> raw;
    std::size_t settled = 0;
    /// The first sample of the first group that is not completely final, and the first and last of
    /// the groups before it.
    std::size_t base = 0;
    std::vector<Pool> firstPool;
    std::vector<Pool> lastPool;
    bool isBlotDone = false;
    std::size_t given = 0;
};

/// Filters a whole stream at once.
TROVIK_API std::vector<PathSample> Filtered(const std::vector<PathSample>& samples,
                                            const PointerLimits& limits = {});

}  // namespace trovik
