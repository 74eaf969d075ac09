// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/PullStroke.h"

#include "framework/strokes/DabAtHit.h"
#include "framework/strokes/PathHit.h"

namespace trovik {

namespace {

PathSample Between(const PathSample& from, const PathSample& to, float fraction) {
    PathSample sample = to;
    sample.pressure = from.pressure + (to.pressure - from.pressure) * fraction;
    sample.tilt = from.tilt + (to.tilt - from.tilt) * fraction;
    return sample;
}

}  // namespace

PullStroke::PullStroke(StrokeLoop& strokeLoop,
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
      options(pathOptions),
      dynamics(dabDynamics),
      steps(strokeGeometry, strokeTree, strokeView, pathSpace, pathOptions, dabDynamics) {}

bool PullStroke::Begin(const PathSample& sample) {
    const auto hit = PathHit(geometry, tree, view, space, sample.position);
    if (!hit) return false;
    press = WorldPositionOf(geometry, *hit);
    if (space != PathSpace::View) offset = *press - sample.position;
    here = *press;
    last = *press;
    const float size = DabSize(loop, view, dynamics, options.radius, *press, sample);
    spacing = static_cast<double>(size) * options.spacing;
    return true;
}

Vector PullStroke::WorldOf(const PathSample& sample) const {
    return space == PathSpace::View ? view.PointAtDepthOf(*press, sample.position)
                                    : sample.position + offset;
}

bool PullStroke::Advance(PathDabs::Deadline deadline) {
    while (!waiting.empty()) {
        const PathSample& next = waiting.front();
        if (!press) {
            if (Begin(next)) passed = next;
            waiting.pop_front();
            continue;
        }
        const Vector end = WorldOf(next);
        const Vector from = here;
        const double length = (end - from).Length();
        const double left = spacing - way;
        if (!(length >= left)) {
            way += length;
            here = end;
            passed = next;
            waiting.pop_front();
            continue;
        }
        const auto fraction = static_cast<float>(length > 0.0 ? left / length : 1.0);
        passed = Between(passed, next, fraction);
        here = from + (end - from) * fraction;
        ApplyDab(here, passed);
        if (PathDabs::IsPast(deadline)) return false;
    }
    return true;
}

bool PullStroke::Finish(PathDabs::Deadline deadline) {
    if (!Advance(deadline)) return false;
    if (press && !(here == last)) ApplyDab(here, passed);
    return true;
}

void PullStroke::ApplyDab(const Vector& to, const PathSample& sample) {
    steps.Take();
    Vector local;
    geometry.Transform().WorldToLocal(&local, &last, 1.0f);
    const auto nearest = tree.Nearest(local);
    const Vector from = last;
    last = to;
    way = 0.0;
    if (!nearest) return;
    // The held point is that of the pointer, even where the surface did not follow it completely.
    PickHit hit = *nearest;
    hit.position = local;
    StrokeDab dab = DabAt(geometry, hit);
    dab.position += to - from;
    dab.size = DabSize(loop, view, dynamics, options.radius, from, sample);
    dab.pressure = dynamics.strengthCurve.At(sample.pressure);
    dab.strength = options.strength(dab.pressure);
    dab.keepPosition = true;
    loop.Dab(dab);
    ++count;
    spacing = static_cast<double>(dab.size) * options.spacing;
    if (options.progress) options.progress();
}

}  // namespace trovik
