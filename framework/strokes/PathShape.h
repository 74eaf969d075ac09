// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/PathSample.h"

#include <vector>

namespace trovik {

/// What becomes of the path of a pen before dabs are laid along it. Lengths are in the samples'
/// units: pixels of the viewport, or world units.
struct PathShape {
    /// The pen is drawn onto the curve through these points where it comes near; empty: nowhere.
    std::vector<Vector> snapTo;
    /// How near that is.
    float snapDistance = 0.0f;
    /// The curve is a smooth one through its points, and not straight from one to the next.
    bool snapSmoothly = false;
    /// Length of the way over which places are averaged.
    float smoothing = 0.0f;
    /// Length of the string on which the pen pulls the brush.
    float steady = 0.0f;
    /// Straight from the first place to the last.
    bool line = false;
    /// Along a smooth curve through the samples.
    bool curve = false;
};

/// The samples' path as the shape wants it: first the curve through the samples or the straight
/// line, then snapping, smoothing and the string. Without any of them the samples themselves.
/// This and the functions below throw HostError for a path that takes more than maxPathSteps (see
/// PathSteps.h), of a 16th of the length that they are given.
/// \param timed  times count, see ArcPath.
TROVIK_API std::vector<PathSample> Shaped(std::vector<PathSample> samples,
                                          const PathShape& shape,
                                          bool timed = false);

/// The straight line from the first place to the last. Pressure, tilt and time are those at the
/// same share of the way.
TROVIK_API std::vector<PathSample> Straightened(const std::vector<PathSample>& samples);

/// The centripetal Catmull-Rom curve through the places: it goes through each, has no kinks, makes
/// no loops between neighbours, and is a straight line through places on one. Pressure, tilt and
/// time run evenly from sample to sample. Places that repeat count once.
TROVIK_API std::vector<PathSample> CurveThrough(const std::vector<PathSample>& samples);

}  // namespace trovik
