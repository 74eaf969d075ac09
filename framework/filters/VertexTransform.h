// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/filters/PositionEdit.h"

#include <variant>

namespace trovik {

/// The point that a transform leaves in place.
enum class PivotKind {
    /// The centre of the bounding box, along the mesh's own axes, of the vertices that move.
    Centre,
    /// The mean position of the mask's border: of the edges between visible vertices with different
    /// amounts, weighted by the difference. For a masked torso, this is the shoulder of the arm.
    MaskBorder
};

/// A scale, then a rotation about an axis, then a translation of the unmasked vertices. Partly
/// masked vertices are scaled, rotated and translated by a fraction, so that a rotated limb is
/// bent and does not shrink.
struct VertexTransform {
    /// World space.
    Vector translation;
    /// World space, any length except 0; unused if the angle is 0.
    Vector axis{0.0f, 1.0f, 0.0f};
    /// Degrees; counterclockwise, seen against the direction of the axis.
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
/// and all vertices have the same amount. Cost: O(vertices), and O(faces) per blur.
TROVIK_API PositionEdit TransformVertices(const VertexTransform& transform);

/// Returns the pivot of a transform in world space; see VertexTransform::pivot.
/// \throw HostError as above.
TROVIK_API Vector PivotOf(LevelGeometry& geometry, const VertexTransform& transform);

}  // namespace trovik
