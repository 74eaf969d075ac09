// SPDX-License-Identifier: Apache-2.0

/// \file The stabiliser. The pen drags a weight on a cord. Between two samples, the pen moves in a
/// straight line, and the weight on a taut cord follows a tractrix: the tangent of half the angle
/// between cord and path decreases by a factor of e for each cord length that the pen moves. The
/// weight's position is therefore exact at any time, and an additional sample on the path does not
/// change it.
#include "framework/strokes/PathResampler.h"
#include "framework/strokes/PathStage.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace trovik {

namespace {

using Place = std::array<double, 3>;

double Dot(const Place& a, const Place& b) { return (a[0] * b[0] + a[1] * b[1]) + a[2] * b[2]; }
/// Returns a + b * f.
Place Sum(const Place& a, const Place& b, double f) {
    return {a[0] + b[0] * f, a[1] + b[1] * f, a[2] + b[2] * f};
}

/// Length of a pen step relative to the cord; it is short enough for chords to approximate the
/// curve well.
constexpr double stepFraction = 1.0 / 16.0;

/// Computes e^-x for 0 <= x <= stepFraction from its series, with identical results on every
/// machine.
double Decay(double x) {
    double term = 1.0;
    double sum = 1.0;
    for (int k = 1; k < 12; ++k) {
        term *= -x / k;
        sum += term;
    }
    return sum;
}

/// The cord from the weight to the pen.
struct String {
    double length;
    /// Vector from the weight to the pen.
    Place pull{};

    /// Moves the pen by `way` along `toward`. \return the vector by which the dragged weight moves.
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
        // `end` leads to the pen from the previous position of the weight, `pull` from the new one.
        return Sum(end, pull, -1.0);
    }
};

class Steady : public PathStage {
public:
    Steady(float length, bool timed, const StepPoll& stagePoll = StepPoll())
        : path({}, timed),
          longest(stepFraction * length),
          poll(stagePoll),
          resampler(path, longest),
          string{length} {}

    void Add(const PathSample& sample, std::vector<PathSample>& out) override {
        path.Add(sample);
        CheckStepCount(path.Length(), longest, "the stabiliser");
        Take(false, out);
    }
    void Finish(std::vector<PathSample>& out) override { Take(true, out); }

private:
    void Take(bool isWhole, std::vector<PathSample>& out) {
        resampler.Take([this](double at) { return PositionAt(at); }, isWhole, out);
    }

    // Lengths are requested in ascending order, so the path is traversed only once.
    Vector PositionAt(double at) {
        const auto& knots = path.Knots();
        const auto& reached = path.Reached();
        if (!hasBegun) {
            const Vector& start = knots.front().position;
            weight = {start.x, start.y, start.z};
            hasBegun = true;
        }
        while (walked < at && next < knots.size()) {
            const double until = std::min(at, reached[next]);
            const double whole = path.GuidesReached()[next] - reached[next - 1];
            const Vector& from = knots[next - 1].position;
            const Vector& to = path.Guides()[next].position;
            while (whole > 0.0 && walked < until) {
                poll.Take();
                const double step = std::min(longest, until - walked);
                const Place toward{(static_cast<double>(to.x) - from.x) / whole,
                                   (static_cast<double>(to.y) - from.y) / whole,
                                   (static_cast<double>(to.z) - from.z) / whole};
                weight = Sum(weight, string.Move(toward, step), 1.0);
                walked = until - walked <= longest ? until : walked + step;
            }
            if (until != reached[next]) continue;
            // The last segment can still grow.
            if (next + 1 == knots.size()) break;
            ++next;
        }
        return Vector(static_cast<float>(weight[0]),
                      static_cast<float>(weight[1]),
                      static_cast<float>(weight[2]));
    }

    ArcPath path;
    double longest;
    StepPoll poll;
    PathResampler resampler;
    String string;
    Place weight{};
    bool hasBegun = false;
    double walked = 0.0;
    std::size_t next = 1;
};

}  // namespace

std::unique_ptr<PathStage> StabiliserStage(float length, bool timed, const StepPoll& poll) {
    return std::make_unique<Steady>(length, timed, poll);
}

}  // namespace trovik
