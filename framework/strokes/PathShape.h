// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/PathSample.h"

#include <vector>

namespace trovik {

/// How a pen path is modified before dabs are applied along it. Lengths are in the units of the
/// samples: viewport pixels or world units.
struct PathShape {
    /// Control points of the curve to which the pen snaps when it is nearby; if empty, snapping is
    /// off.
    std::vector<Vector> snapTo;
    /// Distance within which the pen snaps.
    float snapDistance = 0.0f;
    /// Whether the snapping curve is smooth; otherwise, it is piecewise linear.
    bool snapSmoothly = false;
    /// Path length over which positions are averaged for smoothing.
    float smoothing = 0.0f;
    /// Distance by which the stabiliser (lazy brush) makes the brush lag behind the pen.
    float steady = 0.0f;
    /// Whether to replace the path with the straight line from the first to the last position.
    bool line = false;
    /// Whether to replace the path with a smooth curve through the samples.
    bool curve = false;
};

/// Applies a shape to a path: first the curve through the samples or the straight line, then
/// snapping, smoothing and the stabiliser. If none of them is set, returns the samples unchanged.
/// Throws HostError if the curve needs more than maxPathSteps (see PathSteps.h) chords, or if
/// snapping, smoothing or the stabiliser needs more than maxPathSteps steps. The length of a step
/// is 1/16 of the stage's length parameter.
/// \param timed  whether to store times; see ArcPath.
TROVIK_API std::vector<PathSample> Shaped(std::vector<PathSample> samples,
                                          const PathShape& shape,
                                          bool timed = false);

/// The straight line from the first to the last position. Pressure, tilt and time are those of the
/// path at the same fraction of its length.
TROVIK_API std::vector<PathSample> Straightened(const std::vector<PathSample>& samples);

/// The centripetal Catmull-Rom curve through the positions: it interpolates each position, is
/// smooth, has no loops between neighbours, and is a straight line if the positions are collinear.
/// Pressure, tilt and time are interpolated linearly from sample to sample. Consecutive equal
/// positions count as one. Throws HostError if the curve needs more than maxPathSteps chords. See
/// Catmull, Rom: "A Class of Local Interpolating Splines" (1974) and, for the centripetal
/// parameters, Yuksel, Schaefer, Keyser: "Parameterization and Applications of Catmull-Rom Curves"
/// (2011).
TROVIK_API std::vector<PathSample> CurveThrough(const std::vector<PathSample>& samples);

}  // namespace trovik
