// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/ImprintStroke.h"

#include "framework/strokes/DabAtHit.h"
#include "framework/strokes/DabStrength.h"

namespace trovik {

ImprintStroke::ImprintStroke(StrokeLoop& strokeLoop,
                             LevelGeometry& strokeGeometry,
                             const PatchTree& strokeTree,
                             const StrokeView* strokeView,
                             DrawMode drawMode,
                             const PathOptions& pathOptions)
    : loop(strokeLoop),
      geometry(strokeGeometry),
      tree(strokeTree),
      view(strokeView),
      mode(drawMode),
      options(pathOptions) {}

void ImprintStroke::Press(const PathSample& sample) {
    Start(sample.position);
    Drag(sample);
}

void ImprintStroke::Drag(const PathSample& sample) {
    // Reverts the surface before picking, so that the copy is placed on the original surface.
    loop.RevertStroke();
    const auto copy =
        view != nullptr ? CopyInView(sample.position) : CopyOnSurface(sample.position);
    if (copy) ApplyCopy(*copy, sample.pressure);
}

std::optional<ImprintStroke::Copy> ImprintStroke::CopyInView(const Vector& pointer) const {
    const Vector middle = mode == DrawMode::FromCenter ? press : (press + pointer) * 0.5f;
    const auto hit = HitThrough(geometry, tree, *view, middle);
    if (!hit) return std::nullopt;
    const Vector world = WorldPositionOf(geometry, *hit);
    const Vector drag = view->PointAtDepthOf(world, pointer) - view->PointAtDepthOf(world, press);
    return Copy{*hit, drag.Length(), HeadingInView(geometry, *view, *hit, pointer - press)};
}

std::optional<ImprintStroke::Copy> ImprintStroke::CopyOnSurface(const Vector& pointer) const {
    const auto from = HitNear(geometry, tree, press);
    const auto to = HitNear(geometry, tree, pointer);
    if (!from || !to) return std::nullopt;
    const Vector start = WorldPositionOf(geometry, *from);
    const Vector end = WorldPositionOf(geometry, *to);
    const auto middle =
        mode == DrawMode::FromCenter ? from : HitNear(geometry, tree, (start + end) * 0.5f);
    if (!middle) return std::nullopt;
    return Copy{*middle, (end - start).Length(), end - start};
}

void ImprintStroke::ApplyCopy(const Copy& copy, float pressure) {
    float radius = mode == DrawMode::FromCenter ? copy.radius : copy.radius * 0.5f;
    if (!(radius > 0.0f)) radius = options.radius;
    StrokeDab dab = DabAt(geometry, copy.hit);
    dab.size = radius;
    dab.pressure = pressure;
    dab.strength =
        StrengthAtRadius(loop.Brush(), options.strength(pressure), options.radius, radius);
    dab.heading = copy.heading;
    loop.Dab(dab);
    ++count;
    if (options.progress) options.progress();
}

}  // namespace trovik
