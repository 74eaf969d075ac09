// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/ArcPath.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

constexpr double cornerCosine = 0.999;
constexpr double mostSteps = 200000.0;

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
    return a.place == b.place && a.pressure == b.pressure && a.tilt == b.tilt &&
           (!timed || a.time == b.time);
}

/// The longest component of a way, and the same of a part of it.
double Greatest(const Way& whole, const Way& part, double& partOut) {
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

/// Whether `middle` says nothing that `from` and `to` do not say. Differences and products of
/// floats are exact in double precision, so that this is decided without rounding.
bool IsBetween(const PathSample& from, const PathSample& middle, const PathSample& to, bool timed) {
    const Way whole = Between(from.place, to.place);
    const Way part = Between(from.place, middle.place);
    if (whole.x * part.y != whole.y * part.x || whole.y * part.z != whole.z * part.y ||
        whole.z * part.x != whole.x * part.z)
        return false;
    double share = 0.0;
    const double all = Greatest(whole, part, share);
    // Strictly inside, or the pen turned round or rested there.
    if (all == 0.0 || share / all <= 0.0 || share / all >= 1.0) return false;
    const auto straight = [&](double a, double m, double b) {
        return (m - a) * all == (b - a) * share;
    };
    return straight(from.pressure, middle.pressure, to.pressure) &&
           straight(from.tilt.x, middle.tilt.x, to.tilt.x) &&
           straight(from.tilt.y, middle.tilt.y, to.tilt.y) &&
           (!timed || straight(from.time, middle.time, to.time));
}

float Mixed(float a, float b, double share) {
    return static_cast<float>(a + (static_cast<double>(b) - a) * share);
}

PathSample Mixed(const PathSample& a, const PathSample& b, double share) {
    PathSample mixed;
    mixed.place = {Mixed(a.place.x, b.place.x, share),
                   Mixed(a.place.y, b.place.y, share),
                   Mixed(a.place.z, b.place.z, share)};
    mixed.pressure = Mixed(a.pressure, b.pressure, share);
    mixed.tilt = {Mixed(a.tilt.x, b.tilt.x, share), Mixed(a.tilt.y, b.tilt.y, share), 0.0f};
    mixed.time = a.time + (b.time - a.time) * share;
    return mixed;
}

}  // namespace

ArcPath::ArcPath(const std::vector<PathSample>& samples, bool timed) {
    for (const PathSample& sample : samples) {
        if (!knots.empty() && SameBut(knots.back(), sample, timed)) continue;
        if (knots.size() > 1 && IsBetween(knots[knots.size() - 2], knots.back(), sample, timed))
            knots.back() = sample;
        else
            knots.push_back(sample);
    }
    reached.reserve(knots.size());
    for (std::size_t i = 0; i < knots.size(); ++i) {
        const double before = i == 0 ? 0.0 : reached.back();
        reached.push_back(i == 0 ? 0.0
                                 : before + Between(knots[i - 1].place, knots[i].place).Length());
    }
    FindCorners();
    if (timed) FindRests();
}

void ArcPath::FindCorners() {
    Way before{0.0, 0.0, 0.0};
    for (std::size_t i = 1; i < knots.size(); ++i) {
        const Way way = Between(knots[i - 1].place, knots[i].place);
        const double lengths = way.Length() * before.Length();
        if (way.Length() == 0.0) continue;
        if (lengths != 0.0 && way.Dot(before) < cornerCosine * lengths)
            corners.push_back(reached[i - 1]);
        before = way;
    }
}

void ArcPath::FindRests() {
    for (std::size_t i = 1; i < knots.size(); ++i) {
        if (reached[i] != reached[i - 1]) continue;
        if (!rests.empty() && rests.back().last == i - 1)
            rests.back().last = i;
        else
            rests.push_back({reached[i], i - 1, i});
    }
}

PathSample ArcPath::At(double at, Side side) const {
    const auto found = side == Side::After ? std::upper_bound(reached.begin(), reached.end(), at)
                                           : std::lower_bound(reached.begin(), reached.end(), at);
    const auto next = static_cast<std::size_t>(found - reached.begin());
    if (next == 0) return knots.front();
    if (next == knots.size()) return knots.back();
    const double share = (at - reached[next - 1]) / (reached[next] - reached[next - 1]);
    return Mixed(knots[next - 1], knots[next], share);
}

Vector ArcPath::Along(double at) const {
    auto next = static_cast<std::size_t>(std::upper_bound(reached.begin(), reached.end(), at) -
                                         reached.begin());
    next = std::min(next, knots.size() - 1);
    while (next > 0 && reached[next] == reached[next - 1]) --next;
    return next == 0 ? Vector() : knots[next].place - knots[next - 1].place;
}

PathSample ArcPath::During(const Rest& rest, double time) const {
    std::size_t i = rest.first + 1;
    while (i < rest.last && knots[i].time < time) ++i;
    const PathSample& from = knots[i - 1];
    const PathSample& to = knots[i];
    if (!(to.time > from.time)) return to;
    return Mixed(from, to, std::clamp((time - from.time) / (to.time - from.time), 0.0, 1.0));
}

std::vector<PathSample> ArcPath::Resampled(double step,
                                           const std::function<Vector(double at)>& place) const {
    std::vector<PathSample> samples;
    if (IsEmpty()) return samples;
    std::vector<double> stops = corners;
    for (const Rest& rest : rests) stops.push_back(rest.at);
    const double whole = Length();
    step = std::max(step, whole / mostSteps);
    for (double k = 0.0; k * step < whole; k += 1.0) stops.push_back(k * step);
    stops.push_back(whole);
    std::sort(stops.begin(), stops.end());
    stops.erase(std::unique(stops.begin(), stops.end()), stops.end());
    auto rest = rests.begin();
    for (const double at : stops) {
        const Vector there = place(at);
        PathSample sample = At(at, Side::Before);
        sample.place = there;
        if (rest != rests.end() && rest->at == at) {
            for (std::size_t i = rest->first; i <= rest->last; ++i) {
                sample = knots[i];
                sample.place = there;
                samples.push_back(sample);
            }
            ++rest;
            continue;
        }
        samples.push_back(sample);
        const PathSample after = At(at, Side::After);
        if (after.pressure == sample.pressure && after.tilt == sample.tilt) continue;
        sample = after;
        sample.place = there;
        samples.push_back(sample);
    }
    return samples;
}

}  // namespace trovik
