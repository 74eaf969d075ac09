// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/brushes/PathSample.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace trovik {

/// A polyline by the length of the way along it. What it answers depends on the path and not on
/// how many samples tell it: a sample that lies exactly on the straight way between its neighbours,
/// with the pressure, tilt and (if timed) time that they give there, is taken out, so it changes no
/// bit; one that lies there but for rounding changes answers by rounding.
///
/// Lengths are in the samples' own units. Built in O(samples), asked in O(log samples).
class TROVIK_API ArcPath {
public:
    /// Of a place where the path changes its pressure, tilt or time without a way: as it comes
    /// there, or as it leaves.
    enum class Side { Before, After };
    /// The pen stays at `at` while time goes by, from one knot to another.
    struct Rest {
        double at;
        std::size_t first;
        std::size_t last;
    };

    /// \param timed  times count: rests are kept.
    explicit ArcPath(const std::vector<PathSample>& samples, bool timed = false);

    bool IsEmpty() const { return knots.empty(); }
    double Length() const { return reached.empty() ? 0.0 : reached.back(); }
    /// The path must not be empty; `at` is brought within it.
    PathSample At(double at, Side side = Side::After) const;
    /// Direction of the path, of any length; that of the last segment at its end; zero for a path
    /// without a way.
    Vector Along(double at) const;
    /// During a rest, by time.
    PathSample During(const Rest& rest, double time) const;

    /// Lengths at which the path turns by more than about 2.6 degrees, ascending.
    const std::vector<double>& Corners() const { return corners; }
    const std::vector<Rest>& Rests() const { return rests; }
    const std::vector<PathSample>& Knots() const { return knots; }
    /// Length of the way to each knot.
    const std::vector<double>& Reached() const { return reached; }

    /// A path with samples at every multiple of `step`, at corners, at both sides of rests and at
    /// the end; everything but the places is this path's. Steps are made longer where there would
    /// be more than 200000 of them.
    /// \param place  where the sample of a length lies.
    std::vector<PathSample> Resampled(double step,
                                      const std::function<Vector(double at)>& place) const;

private:
    void FindCorners();
    void FindRests();

    std::vector<PathSample> knots;
    std::vector<double> reached;
    std::vector<double> corners;
    std::vector<Rest> rests;
};

}  // namespace trovik
