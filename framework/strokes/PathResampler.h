// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/ArcPath.h"

namespace trovik {

/// Resamples a path that can still grow: at every multiple of a step, at corners, at both ends of
/// pauses and at the end of the path. All values except the positions are those of the path.
///
/// The first 200000 steps have the requested length; after that the step length is multiplied by
/// four every 50000 steps, so that a path that is accidentally very long does not exhaust the
/// memory.
class TROVIK_API PathResampler {
public:
    /// Borrows the path.
    /// \param ahead  length of path that must be known beyond a sample before its position can be
    /// computed.
    PathResampler(const ArcPath& path, double step, double ahead = 0.0);

    /// Appends the samples that have become certain and were not returned before. While the pen
    /// pauses at the end of the path, samples of the pause are certain at once unless `ahead` is
    /// positive. \param place  returns the position of the sample at a length; called with
    /// ascending lengths.
    /// \param isWhole  the path is complete; all samples are certain.
    void Take(const std::function<Vector(double at)>& position,
              bool isWhole,
              std::vector<PathSample>& out);

private:
    double NextStep() const { return base + count * step; }
    /// The length of the next sample; infinite if it is not certain yet.
    double NextStop(bool isWhole) const;
    void Pass(double at);

    const ArcPath& path;
    double step;
    double ahead;
    /// Steps are counted from this length.
    double base = 0.0;
    double count = 0.0;
    double most;
    std::size_t corner = 0;
    std::size_t rest = 0;
    /// The next knot of the pause that is being resampled, 0 if there is none, and the position of
    /// the pause.
    std::size_t knot = 0;
    Vector there;
    bool isDone = false;
};

}  // namespace trovik
