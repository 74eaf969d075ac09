// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/filters/PositionEdit.h"

#include <variant>

namespace trovik {

/// The point that a transform leaves in place.
enum class PivotKind {
    /// The centre of the bounding box of the vertices that move. The box is aligned with the mesh's
    /// own axes.
    Centre,
    /// The mean position of the mask's border, that is, of the edges between visible vertices with
    /// different amounts, weighted by the difference. If everything except an arm is masked, this
    /// is the shoulder.
    MaskBorder
};

/// Scales the unmasked vertices, then rotates them about an axis, then translates them. For a
/// partly masked vertex, the scale, the angle and the translation are each reduced according to the
/// mask, so that a rotated limb is bent and does not shrink.
struct VertexTransform {
    /// World space.
    Vector translation;
    /// World space, any length except 0; unused if the angle is 0.
    Vector axis{0.0f, 1.0f, 0.0f};
    /// In degrees, counterclockwise for a viewer towards whom the axis points.
    float angle = 0.0f;
    /// Factors along the world axes.
    Vector scale{1.0f, 1.0f, 1.0f};
    /// World space.
    std::variant<PivotKind, Vector> pivot = PivotKind::Centre;
    /// Number of times that the mask is blurred for this operation (BlurredFreeze), for a smooth
    /// transition. The mask itself does not change.
    uint32_t maskBlur = 0;
};

/// Returns the edit for EditPositions. The edit throws HostError if the pivot is the mask's border
/// and all vertices have the same amount. Cost: O(vertices), plus O(faces) per blur.
TROVIK_API PositionEdit TransformVertices(const VertexTransform& transform);

/// Returns the pivot of a transform in world space; see VertexTransform::pivot.
/// \throw HostError under the same conditions as the edit.
TROVIK_API Vector PivotOf(LevelGeometry& geometry, const VertexTransform& transform);

}  // namespace trovik
