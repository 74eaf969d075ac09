// SPDX-License-Identifier: Apache-2.0

/// \file
/// The weight on a string. Between two samples the pen goes straight, and the weight's way under a
/// taut string is then a tractrix: the half of the angle between string and way has a tangent that
/// falls by e for each length of the string. So the weight's place is exact at any moment, and a
/// sample more on the way changes nothing.
#include "framework/brushes/ArcPath.h"
#include "framework/brushes/PathShape.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace trovik {

namespace {

using Place = std::array<double, 3>;

double Dot(const Place& a, const Place& b) { return (a[0] * b[0] + a[1] * b[1]) + a[2] * b[2]; }
/// a + b * f.
Place Sum(const Place& a, const Place& b, double f) {
    return {a[0] + b[0] * f, a[1] + b[1] * f, a[2] + b[2] * f};
}

/// Steps of the pen in lengths of the string: short enough for chords to pass as the curve.
constexpr double stepShare = 1.0 / 16.0;

/// e^-x for 0 <= x <= stepShare by its series, which is the same on every machine.
double Decay(double x) {
    double term = 1.0;
    double sum = 1.0;
    for (int k = 1; k < 12; ++k) {
        term *= -x / k;
        sum += term;
    }
    return sum;
}

/// The string from the weight to the pen after the pen went `way` along `toward`.
struct String {
    double length;
    /// From weight to pen.
    Place pull{};

    /// Moves the pen. \return by how much the weight moved.
    Place Move(const Place& toward, double way) {
        const double ahead = Dot(pull, toward);
        const double room = length * length - Dot(pull, pull);
        const double slack = std::max(0.0, -ahead + std::sqrt(std::max(0.0, ahead * ahead + room)));
        const Place end = Sum(pull, toward, way);
        if (way <= slack) {
            pull = end;
            return {};
        }
        pull = Sum(pull, toward, slack);
        const double along = std::max(0.0, Dot(pull, toward));
        const Place aside = Sum(pull, toward, -along);
        const double breadth = std::sqrt(Dot(aside, aside));
        const double halfTangent = breadth / (length + along) * Decay((way - slack) / length);
        const double scale = 1.0 + halfTangent * halfTangent;
        pull = Sum({}, toward, length * (1.0 - halfTangent * halfTangent) / scale);
        if (breadth > 0.0) pull = Sum(pull, aside, length * 2.0 * halfTangent / scale / breadth);
        // Both from where the weight was.
        return Sum(end, pull, -1.0);
    }
};

}  // namespace

std::vector<PathSample> OnString(const std::vector<PathSample>& samples, float length, bool timed) {
    const ArcPath path(samples, timed);
    if (path.IsEmpty() || !(length > 0.0f)) return samples;
    const auto& knots = path.Knots();
    const auto& reached = path.Reached();
    const Vector& start = knots.front().place;
    Place weight{start.x, start.y, start.z};
    String string{length};
    double walked = 0.0;
    std::size_t next = 1;
    const double longest = stepShare * length;
    // Lengths come in ascending order, so that the pen is walked along once.
    return path.Resampled(longest, [&](double at) {
        while (walked < at && next < knots.size()) {
            const double until = std::min(at, reached[next]);
            const double whole = reached[next] - reached[next - 1];
            const Vector& from = knots[next - 1].place;
            const Vector& to = knots[next].place;
            while (whole > 0.0 && walked < until) {
                const double step = std::min(longest, until - walked);
                const Place toward{(static_cast<double>(to.x) - from.x) / whole,
                                   (static_cast<double>(to.y) - from.y) / whole,
                                   (static_cast<double>(to.z) - from.z) / whole};
                weight = Sum(weight, string.Move(toward, step), 1.0);
                walked = until - walked <= longest ? until : walked + step;
            }
            if (until == reached[next]) ++next;
        }
        return Vector(static_cast<float>(weight[0]),
                      static_cast<float>(weight[1]),
                      static_cast<float>(weight[2]));
    });
}

}  // namespace trovik
