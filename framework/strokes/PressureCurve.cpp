// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/PressureCurve.h"

#include "framework/errors/HostError.h"

#include <algorithm>
#include <utility>

namespace trovik {

namespace {

bool IsFraction(float value) { return value >= 0.0f && value <= 1.0f; }

}  // namespace

std::optional<std::string> PressureCurve::Flaw(const std::vector<Point>& points,
                                               std::size_t& index) {
    index = points.size();
    if (points.size() < minCurvePoints || points.size() > maxCurvePoints)
        return "a pressure curve must have " + std::to_string(minCurvePoints) + " to " +
               std::to_string(maxCurvePoints) + " points";
    for (index = 0; index < points.size(); ++index) {
        if (!IsFraction(points[index].pressure) || !IsFraction(points[index].value))
            return "pressures and values must be between 0 and 1";
        if (index > 0 && !(points[index].pressure > points[index - 1].pressure))
            return "the pressures of curve points must be in ascending order";
    }
    return std::nullopt;
}

// A slope is the weighted harmonic mean of the slopes of the two adjacent chords, and 0 at a local
// extremum; at the ends, it is the slope of the chord. With these slopes, no span overshoots.
PressureCurve::PressureCurve(std::vector<Point> given) : points(std::move(given)) {
    std::size_t index = 0;
    if (const auto flaw = Flaw(points, index)) throw HostError(*flaw);
    const std::size_t last = points.size() - 1;
    const auto width = [&](std::size_t i) { return points[i + 1].pressure - points[i].pressure; };
    const auto chord = [&](std::size_t i) {
        return (points[i + 1].value - points[i].value) / width(i);
    };
    slopes.assign(points.size(), 0.0f);
    slopes[0] = chord(0);
    slopes[last] = chord(last - 1);
    for (std::size_t i = 1; i < last; ++i) {
        const float before = chord(i - 1);
        const float after = chord(i);
        if (!(before * after > 0.0f)) continue;
        const float w1 = 2.0f * width(i) + width(i - 1);
        const float w2 = width(i) + 2.0f * width(i - 1);
        slopes[i] = (w1 + w2) / (w1 / before + w2 / after);
    }
}

float PressureCurve::At(float pressure) const {
    if (points.empty()) return pressure;
    if (!(pressure > points.front().pressure)) return points.front().value;
    if (pressure >= points.back().pressure) return points.back().value;
    std::size_t i = 0;
    while (points[i + 1].pressure <= pressure) ++i;
    const Point& from = points[i];
    const Point& to = points[i + 1];
    const float width = to.pressure - from.pressure;
    const float t = (pressure - from.pressure) / width;
    const float u = 1.0f - t;
    // The span is evaluated in Bézier form, so that not even rounding can move the value outside
    // the range of the points.
    const float b1 = from.value + slopes[i] * width * (1.0f / 3.0f);
    const float b2 = to.value - slopes[i + 1] * width * (1.0f / 3.0f);
    const float value = ((from.value * u * u * u + 3.0f * b1 * u * u * t) + 3.0f * b2 * u * t * t) +
                        to.value * t * t * t;
    return std::clamp(value, std::min(from.value, to.value), std::max(from.value, to.value));
}

}  // namespace trovik
