// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/PathResampler.h"

#include <algorithm>
#include <limits>

namespace trovik {

namespace {

constexpr double maxShortSteps = 200000.0;
constexpr double maxLongSteps = 50000.0;
constexpr double infinite = std::numeric_limits<double>::infinity();

}  // namespace

PathResampler::PathResampler(const ArcPath& sampledPath, double sampleStep, double needed)
    : path(sampledPath), step(sampleStep), ahead(needed), most(maxShortSteps) {}

double PathResampler::NextStop(bool isWhole) const {
    double at = isWhole ? path.Length() : infinite;
    if (NextStep() < path.Length()) at = std::min(at, NextStep());
    if (corner < path.Corners().size()) at = std::min(at, path.Corners()[corner]);
    if (rest < path.Pauses().size()) at = std::min(at, path.Pauses()[rest].at);
    return at;
}

void PathResampler::Pass(double at) {
    while (corner < path.Corners().size() && path.Corners()[corner] <= at) ++corner;
    while (NextStep() <= at) {
        count += 1.0;
        if (count < most) continue;
        base = NextStep();
        count = 0.0;
        step *= 4.0;
        most = maxLongSteps;
    }
}

void PathResampler::Take(const std::function<Vector(double at)>& position,
                         bool isWhole,
                         std::vector<PathSample>& out) {
    while (!path.IsEmpty() && !isDone) {
        const double at = NextStop(isWhole);
        const bool isPause = rest < path.Pauses().size() && path.Pauses()[rest].at == at;
        if (!isWhole && !(at + ahead < path.Length()) && !(isPause && ahead == 0.0)) return;
        if (isPause) {
            const ArcPath::Pause& pause = path.Pauses()[rest];
            if (knot == 0) {
                there = position(at);
                knot = pause.first;
            }
            for (; knot <= pause.last; ++knot) {
                out.push_back(path.Knots()[knot]);
                out.back().position = there;
            }
            // The pause may continue.
            if (!isWhole && rest + 1 == path.Pauses().size() && path.IsPaused()) return;
            knot = 0;
            ++rest;
        } else {
            PathSample sample = path.At(at, ArcPath::Side::Before);
            sample.position = position(at);
            out.push_back(sample);
            const PathSample after = path.At(at, ArcPath::Side::After);
            if (after.pressure != sample.pressure || !(after.tilt == sample.tilt)) {
                const Vector same = sample.position;
                sample = after;
                sample.position = same;
                out.push_back(sample);
            }
        }
        Pass(at);
        isDone = isWhole && at == path.Length();
    }
}

}  // namespace trovik
