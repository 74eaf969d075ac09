// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/ArcPath.h"

namespace trovik {

/// Resamples a path that can still grow. Samples are placed at every multiple of a step, at
/// corners, at both ends of each pause and at the end of the path. All values except the positions
/// are taken from the path.
///
/// The first 200000 steps have the requested length; after that, the step length is multiplied by
/// four every 50000 steps, so that an accidentally very long path does not exhaust memory.
class TROVIK_API PathResampler {
public:
    /// Borrows the path.
    /// \param ahead  the path length that must follow a sample before the sample's position can be
    /// computed.
    PathResampler(const ArcPath& path, double step, double ahead = 0.0);

    /// Appends the samples that are now final and have not been returned yet. While the pen pauses
    /// at the end of the path, samples of the pause are final immediately unless `ahead` is
    /// positive.
    /// \param position  returns the position of the sample at a length; called with ascending
    /// lengths.
    /// \param isWhole  whether the path is complete; if so, all samples are final.
    void Take(const std::function<Vector(double at)>& position,
              bool isWhole,
              std::vector<PathSample>& out);

private:
    double NextStep() const { return base + count * step; }
    /// The path length at the next sample; infinite if the sample is not final yet.
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
    /// While a pause is being resampled: the index of its next knot, and the position at which the
    /// pen rests. Otherwise, the index is 0.
    std::size_t knot = 0;
    Vector there;
    bool isDone = false;
};

}  // namespace trovik
