// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/ArcPath.h"

namespace trovik {

/// Makes samples anew along a path that can still grow: at every multiple of a step, at corners, at
/// both sides of rests and at the end. Everything but the places is the path's.
///
/// The first 200000 steps are as long as they were asked for; from there on they become four times
/// as long each 50000, so that a path that is long by mistake does not fill the memory.
class TROVIK_API PathResampler {
public:
    /// Borrows the path.
    /// \param ahead  so far beyond a sample the path must be known before its place can be told.
    PathResampler(const ArcPath& path, double step, double ahead = 0.0);

    /// Appends the samples that are certain by now and were not taken before. While the pen rests
    /// at the path's end, samples of the rest are certain at once, unless something ahead is
    /// needed. \param place  where the sample of a length lies; lengths come in ascending order.
    /// \param isWhole  the path has come to its end; everything is certain.
    void Take(const std::function<Vector(double at)>& place,
              bool isWhole,
              std::vector<PathSample>& out);

private:
    double NextStep() const { return base + count * step; }
    /// The next length of a sample; infinite where none is known.
    double NextStop(bool isWhole) const;
    void Pass(double at);

    const ArcPath& path;
    double step;
    double ahead;
    /// Steps are counted from here.
    double base = 0.0;
    double count = 0.0;
    double most;
    std::size_t corner = 0;
    std::size_t rest = 0;
    /// The next knot of the rest that is being taken; 0: none is. And where it lies.
    std::size_t knot = 0;
    Vector there;
    bool isDone = false;
};

}  // namespace trovik
