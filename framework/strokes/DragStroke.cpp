// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/DragStroke.h"

#include "framework/mesh/SurfaceNormal.h"
#include "framework/strokes/DabAtHit.h"
#include "framework/strokes/PathDabs.h"
#include "framework/strokes/PathHit.h"

namespace trovik {

namespace {

bool IsOn(const BrushOperation& brush, const char* name) {
    const auto* flag = dynamic_cast<const AttributeInstance<bool>*>(
        brush.AttributeByName(QString::fromLatin1(name)));
    return flag != nullptr && flag->IsVisible() && flag->Value();
}

/// Length of a unit normal's projection onto the view plane below which the pointer's motion
/// upwards is used instead: about 15 degrees between normal and line of sight.
constexpr float shortestProjection = 0.25f;

/// Converts a motion in the view plane to a length along a unit normal.
float AlongNormal(const StrokeView& view, const Vector& normal, const Vector& motion) {
    const Vector forward = (view.target - view.eye).Normalized();
    const Vector projected = normal - forward * (normal | forward);
    const float square = projected | projected;
    if (square > shortestProjection * shortestProjection) return (motion | projected) / square;
    const Matrix toWorld = view.ToWorld();
    const Vector up(toWorld.m[1][0], toWorld.m[1][1], toWorld.m[1][2]);
    return motion | up;
}

float ToTheRight(const StrokeView& view, const Vector& motion) {
    const Matrix toWorld = view.ToWorld();
    const Vector right(toWorld.m[0][0], toWorld.m[0][1], toWorld.m[0][2]);
    return motion | right;
}

}  // namespace

DragMotion DragMotionOf(const BrushOperation& brush) {
    const auto* mode = dynamic_cast<const AttributeInstance<int>*>(
        brush.AttributeByName(QStringLiteral("elasticmode")));
    if (mode != nullptr && mode->IsVisible() && mode->Value() != 0) return DragMotion::Amount;
    return IsOn(brush, "alongnormal") ? DragMotion::AlongNormal : DragMotion::Free;
}

DragStroke::DragStroke(StrokeLoop& strokeLoop,
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
      dynamics(dabDynamics) {}

void DragStroke::Press(const PathSample& sample) {
    if (press && press->position == sample.position && press->pressure == sample.pressure) return;
    if (held) loop.RevertStroke();
    press = sample;
    held.reset();
    const auto hit = PathHit(geometry, tree, view, space, sample.position);
    if (!hit) return;
    held = DabAt(geometry, *hit);
    if (!random) random = dynamics.randomSize > 0.0f ? loop.RandomFraction() : 0.0f;
    DabDynamics steady = dynamics;
    steady.randomSize = 0.0f;
    held->size = DabSize(loop, view, steady, options.radius, held->position, sample) *
                 (1.0f - dynamics.randomSize * *random);
    if (!(held->size > 0.0f)) held.reset();
    if (!held) return;
    held->keepPosition = true;
    normal = WorldNormal(geometry.Transform(), hit->normal);
}

Vector DragStroke::DisplacementTo(const Vector& pointer) const {
    const bool isView = space == PathSpace::View;
    Vector motion = pointer - press->position;
    if (isView)
        motion = view.PointAtDepthOf(held->position, pointer) -
                 view.PointAtDepthOf(held->position, press->position);
    switch (DragMotionOf(loop.Brush())) {
        case DragMotion::AlongNormal:
            return normal * (isView ? AlongNormal(view, normal, motion) : motion | normal);
        case DragMotion::Amount:
            return normal * (isView ? ToTheRight(view, motion) : motion | normal);
        case DragMotion::Free:
            break;
    }
    return motion;
}

void DragStroke::Drag(const PathSample& sample, float pressure) {
    if (!held) return;
    StrokeDab dab = *held;
    dab.position += DisplacementTo(sample.position);
    dab.pressure = dynamics.strengthCurve.At(pressure);
    dab.strength = options.strength(dab.pressure);
    loop.Dab(dab);
    ++count;
    if (options.progress) options.progress();
}

}  // namespace trovik
