// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/PathSample.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace trovik {

/// A polyline by the length of the way along it. What it answers depends on the path and not on
/// how many samples tell it: a sample that lies exactly on the straight way between its neighbours,
/// with the pressure, tilt and (if timed) time that they give there, is taken out. A straight way
/// is measured by the first sample on it, wherever it ends, so that a sample more there changes
/// answers by less than the rounding to single precision.
///
/// A path can grow. What it answers for lengths below Length() stays what it is whatever samples
/// come later; what it answers for Length() itself can change. So samples are not held back for it.
///
/// Lengths are in the samples' own units. Built in O(samples), asked in O(log samples).
class TROVIK_API ArcPath {
public:
    /// Of a place where the path changes its pressure, tilt or time without a way: as it comes
    /// there, or as it leaves.
    enum class Side { Before, After };
    /// The pen stays at `at` while time goes by, from one knot to another. The last rest of a path
    /// can grow.
    struct Rest {
        double at;
        std::size_t first;
        std::size_t last;
    };

    /// \param timed  times count: rests are kept.
    explicit ArcPath(const std::vector<PathSample>& samples, bool timed = false);

    /// The path goes on to the sample.
    void Add(const PathSample& sample);

    bool IsEmpty() const { return knots.empty(); }
    double Length() const { return reached.empty() ? 0.0 : reached.back(); }
    /// The path must not be empty; `at` is brought within it.
    PathSample At(double at, Side side = Side::After) const;
    /// Direction of the path, of any length; after its end that of the last segment; zero before
    /// its beginning, and for a path without a way.
    Vector Along(double at, Side side = Side::After) const;
    /// During a rest, by time.
    PathSample During(const Rest& rest, double time) const;

    /// Lengths at which the path turns by more than about 2.6 degrees, ascending.
    const std::vector<double>& Corners() const { return corners; }
    const std::vector<Rest>& Rests() const { return rests; }
    /// Whether the last rest is at the end, and grows by a sample there.
    bool IsResting() const { return !rests.empty() && rests.back().last + 1 == knots.size(); }
    const std::vector<PathSample>& Knots() const { return knots; }
    /// Length of the way to each knot.
    const std::vector<double>& Reached() const { return reached; }
    /// The first sample on the way to each knot, and the length of the way to it: what measures
    /// that way, for a last knot can still go on.
    const std::vector<PathSample>& Guides() const { return guides; }
    const std::vector<double>& GuidesReached() const { return guidesReached; }

private:
    std::vector<PathSample> knots;
    std::vector<double> reached;
    std::vector<PathSample> guides;
    std::vector<double> guidesReached;
    std::vector<double> corners;
    std::vector<Rest> rests;
    /// The last knot that lies elsewhere than the one before it; 0 for none.
    std::size_t lastWay = 0;
    bool timed;
};

}  // namespace trovik
