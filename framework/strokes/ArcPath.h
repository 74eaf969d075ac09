// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/PathSample.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace trovik {

/// A polyline parametrised by arc length. Its values depend on the shape of the path and not on the
/// number of samples: a sample is dropped if it lies exactly on the straight segment between its
/// neighbours and has the pressure, tilt and (if timed) time interpolated there. Positions along a
/// straight segment are computed from the first sample on it, regardless of where the segment ends,
/// so an additional sample changes the values by less than single-precision rounding.
///
/// A path can grow. Adding samples does not change the values at lengths below Length(); only those
/// at Length() itself can change. Samples therefore need not be held back.
///
/// Lengths are in the units of the samples. Construction takes O(samples) time, and a query takes
/// O(log samples) time.
class TROVIK_API ArcPath {
public:
    /// If pressure, tilt or time changes while the pen stays at one position, selects the value
    /// before or after the change.
    enum class Side { Before, After };
    /// A pause: time passes from knot `first` to knot `last` while the pen stays at arc length
    /// `at`. The last pause of a path can still grow.
    struct Pause {
        double at;
        std::size_t first;
        std::size_t last;
    };

    /// \param timed  whether to store times, and therefore pauses.
    explicit ArcPath(const std::vector<PathSample>& samples, bool timed = false);

    /// Appends a sample to the path.
    void Add(const PathSample& sample);

    bool IsEmpty() const { return knots.empty(); }
    double Length() const { return reached.empty() ? 0.0 : reached.back(); }
    /// Returns the sample at an arc length, which is clamped to the range of the path. The path
    /// must not be empty.
    PathSample At(double at, Side side = Side::After) const;
    /// Direction of the path at an arc length, not normalised. Past the end, it is the direction of
    /// the last segment; before the start, and for a path of length 0, it is zero.
    Vector Along(double at, Side side = Side::After) const;
    /// Returns the sample at the given time during a pause.
    PathSample During(const Pause& rest, double time) const;

    /// Arc lengths at which the path turns by more than about 2.6 degrees, in ascending order.
    const std::vector<double>& Corners() const { return corners; }
    const std::vector<Pause>& Pauses() const { return rests; }
    /// Whether the path ends in a pause, which another sample at the same position would extend.
    bool IsPaused() const { return !rests.empty() && rests.back().last + 1 == knots.size(); }
    const std::vector<PathSample>& Knots() const { return knots; }
    /// Arc length at each knot.
    const std::vector<double>& Reached() const { return reached; }
    /// For each knot, the first sample on the segment that ends at the knot, and the arc length
    /// there. Positions on the segment are computed from them, because the last knot of a path can
    /// still move.
    const std::vector<PathSample>& Guides() const { return guides; }
    const std::vector<double>& GuidesReached() const { return guidesReached; }

private:
    std::vector<PathSample> knots;
    std::vector<double> reached;
    std::vector<PathSample> guides;
    std::vector<double> guidesReached;
    std::vector<double> corners;
    std::vector<Pause> rests;
    /// The last knot whose position differs from that of its predecessor; 0 if there is none.
    std::size_t lastMovingKnot = 0;
    bool timed;
};

}  // namespace trovik
