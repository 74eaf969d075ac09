// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

#include <optional>
#include <string>
#include <vector>

namespace trovik {

/// What a pressure counts: a smooth curve through control points, cubic between two of them, that
/// rises only where its points rise and falls only where they fall, so it never leaves the range of
/// its points. Level before the first point and behind the last. Without points the pressure
/// itself.
class TROVIK_API PressureCurve {
public:
    struct Point {
        float pressure;
        float value;
    };
    static constexpr std::size_t fewestPoints = 2;
    static constexpr std::size_t mostPoints = 32;

    PressureCurve() = default;
    /// \throw HostError what Flaw tells.
    explicit PressureCurve(std::vector<Point> points);

    /// Why points make no curve: their number, a pressure or value outside 0 to 1, or pressures
    /// that do not ascend. \param index  the point at fault; their number when it is that.
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
