// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/PathShape.h"

#include "framework/errors/HostError.h"
#include "framework/strokes/PathResampler.h"
#include "framework/strokes/PathStage.h"

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

/// The integral over arc length of the position relative to the path's first position. The path can
/// grow.
class PositionIntegral {
public:
    explicit PositionIntegral(const ArcPath& way) : path(way) {}

    /// Returns the integral up to an arc length, which must be less than the path's length until
    /// the path is complete.
    Place UpTo(double at) {
        const auto& reached = path.Reached();
        auto next = static_cast<std::size_t>(std::upper_bound(reached.begin(), reached.end(), at) -
                                             reached.begin());
        if (next == reached.size()) return SumTo(next - 1);
        next = std::max<std::size_t>(next, 1);
        const double way = at - reached[next - 1];
        const double fraction = way / (path.GuidesReached()[next] - reached[next - 1]);
        const Place from = Relative(path.Knots()[next - 1]);
        const Place there = from + (Relative(path.Guides()[next]) - from) * fraction;
        return SumTo(next - 1) + (from + there) * (0.5 * way);
    }

    Place First() const { return Of(path.Knots().front().position); }

private:
    Place Relative(const PathSample& sample) const { return Of(sample.position) - First(); }
    /// The integral up to a knot whose position can no longer change.
    Place SumTo(std::size_t knot) {
        const auto& knots = path.Knots();
        const auto& reached = path.Reached();
        if (sums.empty()) sums.push_back({});
        for (std::size_t i = sums.size(); i <= knot; ++i)
            sums.push_back(sums.back() + (Relative(knots[i - 1]) + Relative(knots[i])) *
                                             (0.5 * (reached[i] - reached[i - 1])));
        return sums[knot];
    }

    const ArcPath& path;
    std::vector<Place> sums;
};

/// A stage that changes the positions on a path but keeps their arc lengths.
class ResamplingStage : public PathStage {
public:
    /// \param stageWork  the purpose of the steps, for messages.
    ResamplingStage(
        double step, double ahead, bool timed, const char* stageWork, const StepPoll& stagePoll)
        : path({}, timed),
          poll(stagePoll),
          stepLength(step),
          work(stageWork),
          resampler(path, step, ahead) {}

    void Add(const PathSample& sample, std::vector<PathSample>& out) override {
        path.Add(sample);
        CheckStepCount(path.Length(), stepLength, work);
        Take(false, out);
    }
    void Finish(std::vector<PathSample>& out) override { Take(true, out); }

protected:
    virtual Vector PositionAt(double at) = 0;

    ArcPath path;
    StepPoll poll;

private:
    void Take(bool isWhole, std::vector<PathSample>& out) {
        resampler.Take([this](double at) { return PositionAt(at); }, isWhole, out);
    }

    double stepLength;
    const char* work;
    PathResampler resampler;
};

class Smoothing : public ResamplingStage {
public:
    Smoothing(float length, bool timed, const StepPoll& stagePoll = StepPoll())
        : ResamplingStage(length / 16.0, 0.5 * length, timed, "smoothing", stagePoll),
          integral(path),
          half(0.5 * length) {}

private:
    Vector PositionAt(double at) override {
        poll.Take();
        const double reach = std::min({half, at, path.Length() - at});
        // So close to an end, the mean equals the position, and the difference below would be
        // nothing but rounding error.
        if (reach < 1e-6 * half) return path.At(at).position;
        const Place before = integral.UpTo(at - reach);
        const Place sum = integral.UpTo(at + reach) - before;
        return ToVector(integral.First() + sum * (0.5 / reach));
    }

    PositionIntegral integral;
    double half;
};

class Snapping : public ResamplingStage {
public:
    Snapping(std::vector<Vector> points,
             float reach,
             bool timed,
             const StepPoll& stagePoll = StepPoll())
        : ResamplingStage(reach / 16.0, 0.0, timed, "snapping", stagePoll),
          curve(std::move(points)),
          distance(reach) {}

private:
    Vector PositionAt(double at) override {
        const Place from = Of(path.At(at).position);
        double least = static_cast<double>(distance) * distance;
        Place nearest = from;
        for (std::size_t i = 0; i < curve.size(); ++i) {
            poll.Take();
            const Place a = Of(curve[i]);
            const Place way = i == 0 ? Place{} : Of(curve[i - 1]) - a;
            const double square = Dot(way, way);
            const double fraction =
                square > 0.0 ? std::clamp(Dot(from - a, way) / square, 0.0, 1.0) : 0.0;
            const Place there = a + way * fraction;
            const double far = Dot(there - from, there - from);
            if (far > least || (far == least && nearest != from)) continue;
            least = far;
            nearest = there;
        }
        return ToVector(nearest);
    }

    std::vector<Vector> curve;
    float distance;
};

/// Number of chords into which the curve between `from` and `to` is divided.
constexpr int chords = 64;

/// The position at parameter `t` of the span from b to c. Each of the four points has a parameter
/// value; those of a and d can be arbitrarily far outside the span. Evaluated as in Barry, Goldman:
/// "A Recursive Evaluation Algorithm for a Class of Catmull-Rom Splines" (1988).
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

float Between(float a, float b, double fraction) {
    return static_cast<float>(a + (static_cast<double>(b) - a) * fraction);
}

class Line : public PathStage {
public:
    void Add(const PathSample& sample, std::vector<PathSample>&) override {
        samples.push_back(sample);
    }
    void Finish(std::vector<PathSample>& out) override {
        const std::vector<PathSample> line = Straightened(samples);
        out.insert(out.end(), line.begin(), line.end());
    }

private:
    std::vector<PathSample> samples;
};

class Curve : public PathStage {
public:
    void Add(const PathSample& sample, std::vector<PathSample>& out) override {
        if (!through.empty() && through.back().position == sample.position) return;
        through.push_back(sample);
        if (static_cast<double>(through.size()) * chords > maxPathSteps)
            throw HostError("the curve through " + std::to_string(through.size()) +
                            " samples needs too many chords; the maximum for a stroke is " +
                            std::to_string(static_cast<long long>(maxPathSteps)));
        if (through.size() == 3) out.push_back(through.front());
        if (through.size() >= 3) Span(through.size() - 3, out);
    }
    void Finish(std::vector<PathSample>& out) override {
        if (through.size() < 3)
            out.insert(out.end(), through.begin(), through.end());
        else
            Span(through.size() - 2, out);
    }

private:
    /// Returns the neighbour of a position; beyond the ends, the path is extrapolated linearly.
    Place NeighbourOf(std::size_t i, int step) const {
        const std::size_t last = through.size() - 1;
        if (step < 0 && i == 0) return Of(through[0].position) * 2.0 - Of(through[1].position);
        if (step > 0 && i == last)
            return Of(through[last].position) * 2.0 - Of(through[last - 1].position);
        return Of(through[step < 0 ? i - 1 : i + 1].position);
    }
    /// The curve from one position to the next, without its first point.
    void Span(std::size_t i, std::vector<PathSample>& out) const {
        const PathSample& next = through[i + 1];
        const std::array<Place, 4> p{
            NeighbourOf(i, -1), Of(through[i].position), Of(next.position), NeighbourOf(i + 1, 1)};
        std::array<double, 4> at{};
        for (std::size_t k = 1; k < 4; ++k) at[k] = at[k - 1] + std::sqrt(Length(p[k] - p[k - 1]));
        for (int k = 1; k < chords; ++k) {
            const double fraction = static_cast<double>(k) / chords;
            PathSample sample = through[i];
            sample.position = ToVector(OnSpan(p, at, at[1] + (at[2] - at[1]) * fraction));
            sample.pressure = Between(sample.pressure, next.pressure, fraction);
            sample.tilt = {Between(sample.tilt.x, next.tilt.x, fraction),
                           Between(sample.tilt.y, next.tilt.y, fraction),
                           0.0f};
            sample.time += (next.time - sample.time) * fraction;
            out.push_back(sample);
        }
        out.push_back(next);
    }

    std::vector<PathSample> through;
};

std::vector<Vector> SmoothCurve(const std::vector<Vector>& points) {
    std::vector<PathSample> samples(points.size());
    for (std::size_t i = 0; i < points.size(); ++i) samples[i].position = points[i];
    std::vector<Vector> positions;
    for (const PathSample& sample : CurveThrough(samples)) positions.push_back(sample.position);
    return positions;
}

}  // namespace

std::unique_ptr<PathStage> LineStage() { return std::make_unique<Line>(); }

std::unique_ptr<PathStage> CurveStage() { return std::make_unique<Curve>(); }

std::unique_ptr<PathStage> SnapStage(std::vector<Vector> curve,
                                     float distance,
                                     bool timed,
                                     const StepPoll& poll) {
    return std::make_unique<Snapping>(std::move(curve), distance, timed, poll);
}

std::unique_ptr<PathStage> SmoothingStage(float length, bool timed, const StepPoll& poll) {
    return std::make_unique<Smoothing>(length, timed, poll);
}

PathShaper::PathShaper(const PathShape& shape, bool timed, const std::function<void()>& polled) {
    const StepPoll poll(polled);
    if (shape.line) stages.push_back(LineStage());
    if (shape.curve) stages.push_back(CurveStage());
    if (!shape.snapTo.empty() && shape.snapDistance > 0.0f)
        stages.push_back(SnapStage(shape.snapSmoothly ? SmoothCurve(shape.snapTo) : shape.snapTo,
                                   shape.snapDistance,
                                   timed,
                                   poll));
    if (shape.smoothing > 0.0f) stages.push_back(SmoothingStage(shape.smoothing, timed, poll));
    if (shape.steady > 0.0f) stages.push_back(StabiliserStage(shape.steady, timed, poll));
}

PathShaper::~PathShaper() = default;
PathShaper::PathShaper(PathShaper&&) noexcept = default;
PathShaper& PathShaper::operator=(PathShaper&&) noexcept = default;

std::vector<PathSample> PathShaper::Add(const std::vector<PathSample>& samples) {
    std::vector<PathSample> given = samples;
    for (const auto& stage : stages) {
        std::vector<PathSample> out;
        for (const PathSample& sample : given) stage->Add(sample, out);
        given = std::move(out);
    }
    return given;
}

std::vector<PathSample> PathShaper::Finish() {
    std::vector<PathSample> given;
    for (const auto& stage : stages) {
        std::vector<PathSample> out;
        for (const PathSample& sample : given) stage->Add(sample, out);
        stage->Finish(out);
        given = std::move(out);
    }
    return given;
}

std::vector<PathSample> Shaped(std::vector<PathSample> samples,
                               const PathShape& shape,
                               bool timed) {
    PathShaper shaper(shape, timed);
    samples = shaper.Add(samples);
    const std::vector<PathSample> rest = shaper.Finish();
    samples.insert(samples.end(), rest.begin(), rest.end());
    return samples;
}

std::vector<PathSample> Straightened(const std::vector<PathSample>& samples) {
    const ArcPath path(samples, true);
    if (path.IsEmpty() || path.Length() == 0.0) return samples;
    std::vector<PathSample> line = path.Knots();
    const Place first = Of(line.front().position);
    const Place way = Of(line.back().position) - first;
    for (std::size_t i = 1; i + 1 < line.size(); ++i)
        line[i].position = ToVector(first + way * (path.Reached()[i] / path.Length()));
    return line;
}

std::vector<PathSample> CurveThrough(const std::vector<PathSample>& samples) {
    return Curve().Whole(samples);
}

}  // namespace trovik
