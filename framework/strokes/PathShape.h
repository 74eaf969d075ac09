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

/// Each place becomes the mean of the places on `length` of the way around it; toward the ends of
/// as much as there is on both sides, so that the path begins and ends where it did. A straight way
/// stays as it is. Pressure, tilt and time stay at their length of the way.
TROVIK_API std::vector<PathSample> Smoothed(const std::vector<PathSample>& samples,
                                            float length,
                                            bool timed = false);

/// The way of a weight on a string of this length, of which the pen holds the other end: it stays
/// while the string is slack and then moves straight toward the pen. It begins where the pen does
/// and ends where it is when the pen is lifted, up to a string's length behind. The exact curve of
/// pursuit, whatever the number of samples.
TROVIK_API std::vector<PathSample> OnString(const std::vector<PathSample>& samples,
                                            float length,
                                            bool timed = false);

/// The straight line from the first place to the last. Pressure, tilt and time are those at the
/// same share of the way.
TROVIK_API std::vector<PathSample> Straightened(const std::vector<PathSample>& samples);

/// The centripetal Catmull-Rom curve through the places: it goes through each, has no kinks, makes
/// no loops between neighbours, and is a straight line through places on one. Pressure, tilt and
/// time run evenly from sample to sample. Places that repeat count once.
TROVIK_API std::vector<PathSample> CurveThrough(const std::vector<PathSample>& samples);

/// Each place within `distance` of the polyline `curve` moves to the nearest one on it, the first
/// of several; others stay. Where the pen comes near or leaves, the path goes straight between
/// both.
TROVIK_API std::vector<PathSample> Snapped(const std::vector<PathSample>& samples,
                                           const std::vector<Vector>& curve,
                                           float distance,
                                           bool timed = false);

}  // namespace trovik
