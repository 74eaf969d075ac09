// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/PathSample.h"

#include <cstddef>
#include <vector>

namespace trovik {

/// Thresholds by which the filter distinguishes device faults from hand movements.
struct PointerLimits {
    /// Pressure drop right after the press, or rise right before the release, from one sample to
    /// the next, that counts as a fault.
    float pressureJump = 0.25f;
    /// Time after the press and before the release in which these jumps are detected, in seconds.
    double settleTime = 0.06;
    /// The same interval in samples; the shorter of the two applies.
    std::size_t settleSamples = 4;
    /// A position jump at the release is at least this many times as long as the longest of the
    /// eight steps before it.
    float positionJump = 3.0f;
    /// Minimum length of a position jump, in pixels.
    float minJumpPixels = 6.0f;
    /// Maximum delay of a late sample or of its time, in seconds.
    double lateTime = 0.05;
    /// Maximum delay of a late sample, in samples.
    std::size_t lateSamples = 32;
};

/// Removes the faults of pens and drivers from a pointer stream, from press to release, while the
/// samples arrive:
///
/// 1. Duplicate samples (equal position and time): the filter keeps the one whose pressure is
///    nearest to that of the sample before them; at the press it keeps the one with the lowest
///    pressure.
/// 2. Late samples: a sample whose time precedes that of samples that arrived before it is moved to
///    the position of its time if that shortens the path. Otherwise only its time is wrong, and it
///    stays; so does a sample that is later than the limits.
/// 3. Times that still decrease: neighbouring samples get the mean of their times until no time
///    decreases (the ascending
/// times nearest by least squares), and times between the centres of such groups are interpolated
/// linearly. A time earlier than that of already settled samples becomes the settled time.
/// 4. Pressure spike at the press (blot): if pressure drops by a jump right after the press, the
///    samples before the drop get the pressures of a ramp with the slope of the two samples after
///    it, at least 0.
/// 5. Pressure spike at the release: if pressure rises by a jump right before the release, the
///    samples from there on get the pressure before it; samples after a position jump there are
///    dropped.
///
/// A stream without faults passes unchanged, bit for bit.
///
/// A sample waits for all of these: the next sample at another position or time (1, 2); a sample
/// `lateTime` after it by their times, or `lateSamples` more samples (2, 3; in a group of
/// decreasing times until this holds for the next group); the four samples after it, or one
/// `settleTime` after it that is itself settled (5). The first samples also wait until the fifth of
/// them is settled, or one `settleTime` after the first (4). At 125 samples per second a sample is
/// returned 56 ms after it was drawn, and the press after 88 ms; at 1000 samples per second after
/// 50 and 54 ms. With `lateTime` 0 late samples are not reordered, and a delay of 4 samples
/// remains.
///
/// Cost: O(lateSamples) per sample.
class TROVIK_API PointerFilter {
public:
    explicit PointerFilter(const PointerLimits& limits = {});

    /// Adds samples in the order in which they arrived. \return the samples that have become
    /// certain and were not returned before.
    std::vector<PathSample> Add(const std::vector<PathSample>& given);
    /// Ends the stream after the release. \return the remaining samples.
    std::vector<PathSample> Finish();

private:
    /// Neighbouring samples that share a mean time.
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
    /// Inserts a sample at the index of its time. \param next  the sample that arrived after it, or
    /// null.
    void Place(const PathSample& sample, const PathSample* next);
    /// Settles times. \param newest  the time of the sample that arrived last.
    void Settle(double newest, bool isWhole);
    std::vector<Pool> Pools() const;
    double TimeOf(std::size_t sample, const std::vector<Pool>& pools, std::size_t pool) const;
    /// Corrects the blot. \return whether the press is settled.
    bool RemoveBlot(bool isWhole);
    void RemoveSpike();
    /// Whether the release cannot change this sample, the first one not yet returned.
    bool IsBeforeTail(std::size_t sample) const;
    std::vector<PathSample> Out(bool isWhole);
    float StepTo(std::size_t a, std::size_t b) const;

    PointerLimits limits;
    /// The last sample, which a duplicate can replace, and the pressure before it.
    std::vector<PathSample> last;
    float before = 0.0f;
    /// All earlier samples in order, and their original times. Times from index `settled` on are
    /// not settled yet.
    std::vector<PathSample> samples;
    std::vector<double> raw;
    std::size_t settled = 0;
    /// The first sample whose group is not completely settled, and the first and the last of the
    /// groups before it.
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
