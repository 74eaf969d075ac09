// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/PathDabs.h"

#include "framework/strokes/DabAtHit.h"
#include "framework/strokes/DabStrength.h"
#include "framework/strokes/PathHit.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

/// Minimum dab radius, as a fraction of the brush radius.
constexpr float smallestDab = 0.01f;
/// Slightly less than 1. Otherwise, rounding would decide whether a path whose length is a multiple
/// of the spacing ends with a dab.
constexpr double nearEnough = 1.0 - 1e-4;

}  // namespace

bool PathDabs::IsPast(Deadline deadline) {
    return deadline != noDeadline && std::chrono::steady_clock::now() >= deadline;
}

PathDabs::PathDabs(StrokeLoop& strokeLoop,
                   LevelGeometry& strokeGeometry,
                   const PatchTree& strokeTree,
                   const StrokeView& strokeView,
                   PathSpace pathSpace,
                   const PathOptions& pathOptions,
                   const DabDynamics& dabDynamics)
    : loop(strokeLoop),
      geometry(strokeGeometry),
      tree(strokeTree),
      view(strokeView),
      space(pathSpace),
      path({}, dabDynamics.airbrush > 0.0f),
      options(pathOptions),
      dynamics(dabDynamics),
      steps(strokeGeometry, strokeTree, strokeView, pathSpace, pathOptions, dabDynamics) {}

bool PathDabs::Advance(Deadline deadline) { return Go(false, deadline); }

bool PathDabs::Finish(Deadline deadline) { return Go(true, deadline); }

/// \return false if it stopped at the deadline.
bool PathDabs::Go(bool isWhole, Deadline deadline) {
    if (path.IsEmpty()) return true;
    steps.CheckLength(path.Knots().front().position, path.Length());
    if (!hasBegun) {
        if (!isWhole && !(path.Length() > 0.0) && path.Pauses().empty()) return true;
        hasBegun = true;
        Arrive(0.0);
    }
    while (true) {
        const PauseResult rested = Pause(isWhole, deadline);
        if (rested != PauseResult::GoesOn) return rested == PauseResult::Waits;
        if (!(walked < path.Length())) return true;
        const auto& corners = path.Corners();
        while (corner < corners.size() && corners[corner] <= walked) ++corner;
        double next = walked + Step();
        if (isWhole) next = std::min(next, path.Length());
        if (corner < corners.size()) next = std::min(next, corners[corner]);
        bool isCertain = isWhole;
        if (rest < path.Pauses().size()) {
            next = std::min(next, path.Pauses()[rest].at);
            isCertain = isCertain || next == path.Pauses()[rest].at;
        }
        if (!isCertain && !(next < path.Length())) return true;
        const unsigned before = count;
        Walk(next);
        if (count != before && IsPast(deadline)) return false;
    }
}

/// Returns a step length that is small enough for dab positions to depend on the spacing and not on
/// the steps.
double PathDabs::Step() const {
    if (space == PathSpace::View) return 0.5;
    const float radius = here ? RadiusAt(*here) : options.radius;
    return 0.25 * std::min(options.spacing, 1.0f) * radius;
}

std::optional<PickHit> PathDabs::HitAt(const Vector& position) const {
    return PathHit(geometry, tree, view, space, position);
}

/// Advances by one step, or to the first dab within that step.
void PathDabs::Walk(double next) {
    steps.Take();
    const double timeNow = path.At(walked, ArcPath::Side::After).time;
    const PathSample ahead = path.At(next, ArcPath::Side::Before);
    double dabAt = next;
    bool due = false;
    const auto hit = HitAt(ahead.position);
    if (hit && here) {
        const double length = (WorldPositionOf(geometry, *hit) - *here).Length();
        if (way + length >= spacing * nearEnough) {
            due = true;
            const double fraction =
                length > 0.0 ? std::clamp((spacing - way) / length, 0.0, 1.0) : 1.0;
            dabAt = walked + (next - walked) * fraction;
        }
    }
    if (here && dynamics.airbrush > 0.0f && ahead.time > timeNow) {
        const double fraction = (DueTime() - timeNow) / (ahead.time - timeNow);
        const double at = walked + (next - walked) * std::max(fraction, 0.0);
        if (fraction <= 1.0 && at < dabAt) {
            due = true;
            dabAt = at;
        }
    }
    if (due) {
        const PathSample there = path.At(dabAt, ArcPath::Side::Before);
        const auto dabHit = dabAt == next ? hit : HitAt(there.position);
        walked = dabAt;
        if (dabHit) {
            ApplyDabAt(*dabHit, there);
            return;
        }
        here.reset();
        return;
    }
    if (hit && here) {
        way += (WorldPositionOf(geometry, *hit) - *here).Length();
        here = WorldPositionOf(geometry, *hit);
        walked = next;
    } else {
        here.reset();
        Arrive(next);
    }
}

/// Handles the start of the path, or a position at which the path enters the mesh from outside.
void PathDabs::Arrive(double at) {
    walked = at;
    const PathSample sample = path.At(at, ArcPath::Side::Before);
    const auto hit = HitAt(sample.position);
    if (!hit) return;
    const Vector world = WorldPositionOf(geometry, *hit);
    const double away = count == 0 ? 0.0 : (world - last).Length();
    if (count == 0 || away >= spacing * nearEnough) {
        ApplyDabAt(*hit, sample);
        return;
    }
    here = world;
    way = away;
}

/// Applies the dabs that are due while the pen is paused at the current position.
PathDabs::PauseResult PathDabs::Pause(bool isWhole, Deadline deadline) {
    if (rest >= path.Pauses().size() || path.Pauses()[rest].at != walked)
        return PauseResult::GoesOn;
    const ArcPath::Pause& pause = path.Pauses()[rest];
    // Times are interpolated from knot to knot.
    for (knot = std::max(knot, pause.first + 1); knot <= pause.last; ++knot) {
        while (here && DueTime() <= path.Knots()[knot].time) {
            const double time = std::max(DueTime(), path.Knots()[pause.first].time);
            PathSample sample = path.During({pause.at, knot - 1, knot}, time);
            sample.time = time;
            const auto hit = HitAt(sample.position);
            if (hit)
                ApplyDabAt(*hit, sample);
            else
                here.reset();
            if (IsPast(deadline)) return PauseResult::Paused;
        }
    }
    if (!isWhole && rest + 1 == path.Pauses().size() && path.IsPaused()) return PauseResult::Waits;
    ++rest;
    return PauseResult::GoesOn;
}

double PathDabs::DueTime() const { return lastTime + 1.0 / static_cast<double>(dynamics.airbrush); }

void PathDabs::ApplyDabAt(const PickHit& hit, const PathSample& sample) {
    steps.Take();
    StrokeDab dab = DabAt(geometry, hit);
    dab.pressure = dynamics.strengthCurve.At(sample.pressure);
    dab.size = DabSize(loop, view, dynamics, options.radius, dab.position, sample);
    dab.strength =
        StrengthAtRadius(loop.Brush(), options.strength(dab.pressure), options.radius, dab.size);
    const float lean = std::min(sample.tilt.Length(), 1.0f);
    dab.strength *= 1.0f + dynamics.tiltToStrength * lean;
    // During a pause, the direction in which the path continues is not known yet.
    const bool isPaused = rest < path.Pauses().size() && path.Pauses()[rest].at == walked;
    const Vector along =
        path.Along(walked, isPaused ? ArcPath::Side::Before : ArcPath::Side::After);
    dab.heading = space == PathSpace::View ? HeadingInView(geometry, view, hit, along) : along;
    if (dynamics.tiltRotatesStamp) dab.stampTop = TiltInView(view, sample.tilt);
    last = dab.position;
    lastTime = sample.time;
    const float size = dab.size;
    loop.Dab(dab);
    ++count;
    spacing = std::max(loop.Spacing(size, options.spacing), size * 1e-3f);
    way = 0.0;
    // The dab has moved the surface beneath it.
    if (const auto ground = HitAt(sample.position))
        here = WorldPositionOf(geometry, *ground);
    else
        here.reset();
    if (options.progress) options.progress();
}

float PathDabs::RadiusAt(const Vector& position) const {
    return DabRadius(view, dynamics, options.radius, position);
}

float DabSize(StrokeLoop& loop,
              const StrokeView& view,
              const DabDynamics& dynamics,
              float radius,
              const Vector& position,
              const PathSample& sample) {
    const BrushOperation& brush = loop.Brush();
    float fraction = 1.0f;
    if (brush.strokeOptionD.Value() && brush.BrushSize() > 0.0f)
        fraction =
            brush.EffectiveBrushSize(dynamics.sizeCurve.At(sample.pressure)) / brush.BrushSize();
    const float lean = std::min(sample.tilt.Length(), 1.0f);
    fraction *= 1.0f + dynamics.tiltToSize * lean;
    if (dynamics.randomSize > 0.0f) fraction *= 1.0f - dynamics.randomSize * loop.RandomFraction();
    return DabRadius(view, dynamics, radius, position) * std::max(fraction, smallestDab);
}

float DabRadius(const StrokeView& view,
                const DabDynamics& dynamics,
                float radius,
                const Vector& position) {
    return dynamics.radiusPixels > 0.0f ? WorldLength(view, dynamics.radiusPixels, position)
                                        : radius;
}

float WorldLength(const StrokeView& view, float pixels, const Vector& position) {
    return pixels * view.PixelSizeAt(position);
}

Vector TiltInView(const StrokeView& view, const Vector& tilt) {
    const Matrix toWorld = view.ToWorld();
    const Vector right(toWorld.m[0][0], toWorld.m[0][1], toWorld.m[0][2]);
    const Vector up(toWorld.m[1][0], toWorld.m[1][1], toWorld.m[1][2]);
    return right * tilt.x - up * tilt.y;
}

}  // namespace trovik
