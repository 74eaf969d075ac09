// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/PathShape.h"

#include "framework/brushes/ArcPath.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace trovik {

namespace {

using Place = std::array<double, 3>;

Place Of(const Vector& v) { return {v.x, v.y, v.z}; }
Vector ToVector(const Place& p) {
    return {static_cast<float>(p[0]), static_cast<float>(p[1]), static_cast<float>(p[2])};
}
Place operator+(const Place& a, const Place& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
Place operator-(const Place& a, const Place& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
Place operator*(const Place& a, double f) { return {a[0] * f, a[1] * f, a[2] * f}; }
double Dot(const Place& a, const Place& b) { return (a[0] * b[0] + a[1] * b[1]) + a[2] * b[2]; }
double Length(const Place& a) { return std::sqrt(Dot(a, a)); }

/// The integral of the place over the way from the path's start, relative to its first place.
class PlaceIntegral {
public:
    explicit PlaceIntegral(const ArcPath& way) : path(way) {
        const auto& knots = path.Knots();
        const auto& reached = path.Reached();
        sums.push_back({});
        for (std::size_t i = 1; i < knots.size(); ++i)
            sums.push_back(sums.back() +
                           (Relative(i - 1) + Relative(i)) * (0.5 * (reached[i] - reached[i - 1])));
    }

    Place UpTo(double at) const {
        const auto& reached = path.Reached();
        auto next = static_cast<std::size_t>(std::upper_bound(reached.begin(), reached.end(), at) -
                                             reached.begin());
        if (next == reached.size()) return sums.back();
        next = std::max<std::size_t>(next, 1);
        const double way = at - reached[next - 1];
        const double share = way / (reached[next] - reached[next - 1]);
        const Place from = Relative(next - 1);
        const Place there = from + (Relative(next) - from) * share;
        return sums[next - 1] + (from + there) * (0.5 * way);
    }

    Place First() const { return Of(path.Knots().front().place); }

private:
    Place Relative(std::size_t i) const { return Of(path.Knots()[i].place) - First(); }

    const ArcPath& path;
    std::vector<Place> sums;
};

/// The curve's way between `from` and `to` is cut into so many chords.
constexpr int chords = 64;

/// The place at `t` of the span from b to c; each of the four has its parameter, and those of a and
/// d can be as far outside as they like.
Place OnSpan(const std::array<Place, 4>& p, const std::array<double, 4>& at, double t) {
    const auto mix = [&](const Place& a, const Place& b, double from, double to) {
        return a * ((to - t) / (to - from)) + b * ((t - from) / (to - from));
    };
    const Place a1 = mix(p[0], p[1], at[0], at[1]);
    const Place a2 = mix(p[1], p[2], at[1], at[2]);
    const Place a3 = mix(p[2], p[3], at[2], at[3]);
    const Place b1 = mix(a1, a2, at[0], at[2]);
    const Place b2 = mix(a2, a3, at[1], at[3]);
    return mix(b1, b2, at[1], at[2]);
}

float Between(float a, float b, double share) {
    return static_cast<float>(a + (static_cast<double>(b) - a) * share);
}

std::vector<Vector> PlacesOf(const std::vector<PathSample>& samples) {
    std::vector<Vector> places;
    places.reserve(samples.size());
    for (const PathSample& sample : samples) places.push_back(sample.place);
    return places;
}

std::vector<Vector> SmoothCurve(const std::vector<Vector>& points) {
    std::vector<PathSample> samples(points.size());
    for (std::size_t i = 0; i < points.size(); ++i) samples[i].place = points[i];
    return PlacesOf(CurveThrough(samples));
}

}  // namespace

std::vector<PathSample> Shaped(std::vector<PathSample> samples,
                               const PathShape& shape,
                               bool timed) {
    if (shape.line) samples = Straightened(samples);
    if (shape.curve) samples = CurveThrough(samples);
    if (!shape.snapTo.empty())
        samples = Snapped(samples,
                          shape.snapSmoothly ? SmoothCurve(shape.snapTo) : shape.snapTo,
                          shape.snapDistance,
                          timed);
    if (shape.smoothing > 0.0f) samples = Smoothed(samples, shape.smoothing, timed);
    if (shape.steady > 0.0f) samples = OnString(samples, shape.steady, timed);
    return samples;
}

std::vector<PathSample> Smoothed(const std::vector<PathSample>& samples, float length, bool timed) {
    const ArcPath path(samples, timed);
    if (path.IsEmpty() || !(length > 0.0f)) return samples;
    const PlaceIntegral integral(path);
    const double half = 0.5 * length;
    return path.Resampled(length / 16.0, [&](double at) {
        const double reach = std::min({half, at, path.Length() - at});
        // So near an end the mean is the place itself, and the difference below all rounding.
        if (reach < 1e-6 * half) return path.At(at).place;
        const Place sum = integral.UpTo(at + reach) - integral.UpTo(at - reach);
        return ToVector(integral.First() + sum * (0.5 / reach));
    });
}

std::vector<PathSample> Straightened(const std::vector<PathSample>& samples) {
    const ArcPath path(samples, true);
    if (path.IsEmpty() || path.Length() == 0.0) return samples;
    std::vector<PathSample> line = path.Knots();
    const Place first = Of(line.front().place);
    const Place way = Of(line.back().place) - first;
    for (std::size_t i = 1; i + 1 < line.size(); ++i)
        line[i].place = ToVector(first + way * (path.Reached()[i] / path.Length()));
    return line;
}

std::vector<PathSample> CurveThrough(const std::vector<PathSample>& samples) {
    std::vector<PathSample> through;
    for (const PathSample& sample : samples)
        if (through.empty() || !(through.back().place == sample.place)) through.push_back(sample);
    if (through.size() < 3) return through;
    const std::size_t last = through.size() - 1;
    const auto place = [&](std::size_t i, int step) {
        // Beyond its ends the path goes on as it came.
        if (step < 0 && i == 0) return Of(through[0].place) * 2.0 - Of(through[1].place);
        if (step > 0 && i == last)
            return Of(through[last].place) * 2.0 - Of(through[last - 1].place);
        return Of(through[step < 0 ? i - 1 : i + 1].place);
    };
    std::vector<PathSample> curve{through.front()};
    for (std::size_t i = 0; i < last; ++i) {
        const std::array<Place, 4> p{
            place(i, -1), Of(through[i].place), Of(through[i + 1].place), place(i + 1, 1)};
        std::array<double, 4> at{};
        for (std::size_t k = 1; k < 4; ++k) at[k] = at[k - 1] + std::sqrt(Length(p[k] - p[k - 1]));
        for (int k = 1; k < chords; ++k) {
            const double share = static_cast<double>(k) / chords;
            PathSample sample = through[i];
            sample.place = ToVector(OnSpan(p, at, at[1] + (at[2] - at[1]) * share));
            const PathSample& next = through[i + 1];
            sample.pressure = Between(sample.pressure, next.pressure, share);
            sample.tilt = {Between(sample.tilt.x, next.tilt.x, share),
                           Between(sample.tilt.y, next.tilt.y, share),
                           0.0f};
            sample.time += (next.time - sample.time) * share;
            curve.push_back(sample);
        }
        curve.push_back(through[i + 1]);
    }
    return curve;
}

std::vector<PathSample> Snapped(const std::vector<PathSample>& samples,
                                const std::vector<Vector>& curve,
                                float distance,
                                bool timed) {
    const ArcPath path(samples, timed);
    if (path.IsEmpty() || curve.empty() || !(distance > 0.0f)) return samples;
    return path.Resampled(distance / 16.0, [&](double at) {
        const Vector place = path.At(at).place;
        const Place from = Of(place);
        double least = static_cast<double>(distance) * distance;
        Place nearest = from;
        for (std::size_t i = 0; i < curve.size(); ++i) {
            const Place a = Of(curve[i]);
            const Place way = i == 0 ? Place{} : Of(curve[i - 1]) - a;
            const double square = Dot(way, way);
            const double share =
                square > 0.0 ? std::clamp(Dot(from - a, way) / square, 0.0, 1.0) : 0.0;
            const Place there = a + way * share;
            const double far = Dot(there - from, there - from);
            if (far > least || (far == least && nearest != from)) continue;
            least = far;
            nearest = there;
        }
        return ToVector(nearest);
    });
}

}  // namespace trovik
