// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/ArcPath.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

constexpr double cornerCosine = 0.999;

struct Way {
    double x, y, z;
    double Dot(const Way& o) const { return (x * o.x + y * o.y) + z * o.z; }
    double Length() const { return std::sqrt(Dot(*this)); }
};

Way Between(const Vector& from, const Vector& to) {
    return {static_cast<double>(to.x) - from.x,
            static_cast<double>(to.y) - from.y,
            static_cast<double>(to.z) - from.z};
}

bool SameBut(const PathSample& a, const PathSample& b, bool timed) {
    return a.position == b.position && a.pressure == b.pressure && a.tilt == b.tilt &&
           (!timed || a.time == b.time);
}

/// The component of `whole` with the largest magnitude. \param partOut  receives the same component
/// of `part`.
double LargestComponent(const Way& whole, const Way& part, double& partOut) {
    double best = whole.x;
    partOut = part.x;
    if (std::fabs(whole.y) > std::fabs(best)) {
        best = whole.y;
        partOut = part.y;
    }
    if (std::fabs(whole.z) > std::fabs(best)) {
        best = whole.z;
        partOut = part.z;
    }
    return best;
}

/// Whether `middle` can be dropped, because it lies on the segment from `from` to `to` and has the
/// values interpolated there. Differences and products of floats are exact in double precision, so
/// the result has no rounding error.
bool IsBetween(const PathSample& from, const PathSample& middle, const PathSample& to, bool timed) {
    const Way whole = Between(from.position, to.position);
    const Way part = Between(from.position, middle.position);
    if (whole.x * part.y != whole.y * part.x || whole.y * part.z != whole.z * part.y ||
        whole.z * part.x != whole.x * part.z)
        return false;
    double fraction = 0.0;
    const double all = LargestComponent(whole, part, fraction);
    // The position must be strictly between the ends; otherwise, the pen reversed or paused there.
    if (all == 0.0 || fraction / all <= 0.0 || fraction / all >= 1.0) return false;
    const auto straight = [&](double a, double m, double b) {
        return (m - a) * all == (b - a) * fraction;
    };
    return straight(from.pressure, middle.pressure, to.pressure) &&
           straight(from.tilt.x, middle.tilt.x, to.tilt.x) &&
           straight(from.tilt.y, middle.tilt.y, to.tilt.y) &&
           (!timed || straight(from.time, middle.time, to.time));
}

float Mixed(float a, float b, double fraction) {
    return static_cast<float>(a + (static_cast<double>(b) - a) * fraction);
}

PathSample Mixed(const PathSample& a, const PathSample& b, double fraction) {
    PathSample mixed;
    mixed.position = {Mixed(a.position.x, b.position.x, fraction),
                      Mixed(a.position.y, b.position.y, fraction),
                      Mixed(a.position.z, b.position.z, fraction)};
    mixed.pressure = Mixed(a.pressure, b.pressure, fraction);
    mixed.tilt = {Mixed(a.tilt.x, b.tilt.x, fraction), Mixed(a.tilt.y, b.tilt.y, fraction), 0.0f};
    mixed.time = a.time + (b.time - a.time) * fraction;
    return mixed;
}

}  // namespace

ArcPath::ArcPath(const std::vector<PathSample>& samples, bool timesCount) : timed(timesCount) {
    for (const PathSample& sample : samples) Add(sample);
}

void ArcPath::Add(const PathSample& sample) {
    if (knots.empty()) {
        knots.push_back(sample);
        reached.push_back(0.0);
        guides.push_back(sample);
        guidesReached.push_back(0.0);
        return;
    }
    if (SameBut(knots.back(), sample, timed)) return;
    const std::size_t last = knots.size() - 1;
    if (last > 0 && IsBetween(knots[last - 1], knots[last], sample, timed)) {
        knots[last] = sample;
        reached[last] =
            reached[last - 1] + Between(knots[last - 1].position, sample.position).Length();
        // Positions cannot be computed along a segment that is too short to change the length of
        // the path.
        if (!(guidesReached[last] > reached[last - 1])) {
            guides[last] = sample;
            guidesReached[last] = reached[last];
        }
        return;
    }
    const Way way = Between(knots[last].position, sample.position);
    if (way.Length() != 0.0) {
        if (lastMovingKnot > 0) {
            const Way before =
                Between(knots[lastMovingKnot - 1].position, knots[lastMovingKnot].position);
            const double lengths = way.Length() * before.Length();
            if (lengths != 0.0 && way.Dot(before) < cornerCosine * lengths)
                corners.push_back(reached[last]);
        }
        lastMovingKnot = last + 1;
    } else if (timed) {
        if (!rests.empty() && rests.back().last == last)
            rests.back().last = last + 1;
        else
            rests.push_back({reached[last], last, last + 1});
    }
    knots.push_back(sample);
    reached.push_back(reached[last] + way.Length());
    guides.push_back(sample);
    guidesReached.push_back(reached.back());
}

PathSample ArcPath::At(double at, Side side) const {
    const auto found = side == Side::After ? std::upper_bound(reached.begin(), reached.end(), at)
                                           : std::lower_bound(reached.begin(), reached.end(), at);
    const auto next = static_cast<std::size_t>(found - reached.begin());
    if (next == 0) return knots.front();
    if (next == knots.size()) return knots.back();
    const double fraction = (at - reached[next - 1]) / (guidesReached[next] - reached[next - 1]);
    return Mixed(knots[next - 1], guides[next], fraction);
}

Vector ArcPath::Along(double at, Side side) const {
    const auto found = side == Side::After ? std::upper_bound(reached.begin(), reached.end(), at)
                                           : std::lower_bound(reached.begin(), reached.end(), at);
    auto next = static_cast<std::size_t>(found - reached.begin());
    next = std::min(next, knots.size() - 1);
    while (next > 0 && reached[next] == reached[next - 1]) --next;
    return next == 0 ? Vector() : guides[next].position - knots[next - 1].position;
}

PathSample ArcPath::During(const Pause& rest, double time) const {
    std::size_t i = rest.first + 1;
    while (i < rest.last && knots[i].time < time) ++i;
    const PathSample& from = knots[i - 1];
    const PathSample& to = knots[i];
    if (!(to.time > from.time)) return to;
    return Mixed(from, to, std::clamp((time - from.time) / (to.time - from.time), 0.0, 1.0));
}

}  // namespace trovik
