// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

#include <optional>
#include <string>
#include <vector>

namespace trovik {

/// Maps pressure to a value with a smooth, piecewise cubic curve through control points. The curve
/// rises only where its points rise and falls only where they fall, so it never leaves their range.
/// It is constant before the first point and after the last one. Without points, it is the
/// identity. The slopes are computed as in Fritsch, Butland: "A Method for Constructing Local
/// Monotone Piecewise Cubic Interpolants" (1984).
class TROVIK_API PressureCurve {
public:
    struct Point {
        float pressure;
        float value;
    };
    static constexpr std::size_t minCurvePoints = 2;
    static constexpr std::size_t maxCurvePoints = 32;

    PressureCurve() = default;
    /// \throw HostError with the message from Flaw if the points are invalid.
    explicit PressureCurve(std::vector<Point> points);

    /// Describes why the points are invalid: a wrong number of points, a pressure or value outside
    /// 0 to 1, or pressures that are not in ascending order. Empty if they are valid.
    /// \param index  receives the index of the invalid point, or the number of points if that
    /// number is invalid.
    static std::optional<std::string> Flaw(const std::vector<Point>& points, std::size_t& index);

    float At(float pressure) const;
    bool IsIdentity() const { return points.empty(); }
    const std::vector<Point>& Points() const { return points; }

private:
    std::vector<Point> points;
    /// The curve's slope at each point.
    std::vector<float> slopes;
};

}  // namespace trovik
