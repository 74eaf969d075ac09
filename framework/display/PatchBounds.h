// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/display/DisplayVertex.h"
#include "host/Matrix.h"
#include "host/Vector.h"

#include <cstdint>
#include <span>

namespace trovik {

/// Returns the mesh-local bounding box of packed vertices. NaN coordinates are ignored; if all are
/// NaN, the box is empty. PatchTree::BoxOf returns the same box for a grid patch without reading
/// vertices. Cost: O(vertices).
TROVIK_API AxisAlignedBoundingBox BoxOf(std::span<const DisplayVertex> vertices);

/// Returns the axis-aligned bounding box of a box transformed by a matrix (row-vector convention);
/// empty if the box is empty.
TROVIK_API AxisAlignedBoundingBox TransformBox(const AxisAlignedBoundingBox& box,
                                               const Matrix& matrix);

/// A mesh-local cone that contains the normals of a set of triangles. The front of a triangle is
/// the side from which its corners appear in counterclockwise order. See Shirman, Abi-Ezzi: "The
/// Cone of Normals Technique for Fast Processing of Curved Patches" (1993).
struct TROVIK_API NormalCone {
    /// Unit vector, or zero if the triangles face in too many directions for the patch to be
    /// culled.
    Vector axis;
    /// Sine of the largest angle between the axis and a normal.
    float sinAngle = 1.0f;

    /// Whether a viewer at `eye` (mesh-local) can see only the back sides of the triangles, which
    /// must lie in `box`. Returns false if this is uncertain. Use it only if the renderer culls
    /// back faces. Cost: O(1).
    bool FacesAway(const AxisAlignedBoundingBox& box, const Vector& eye) const;
    /// Like FacesAway, for a parallel projection.
    /// \param direction  view direction in mesh-local space, of any length.
    bool FacesAwayFrom(const Vector& direction) const;
};

/// Computes the normal cone of some triangles. To cull a patch, pass the triangles at the stride
/// that is drawn, because the normals of coarser triangles may lie outside the cone of the finer
/// ones. Degenerate triangles are ignored, because they are not drawn. If a position is non-finite,
/// the cone never allows culling. Cost: O(triangles), about five times the cost of packing, so call
/// it only for patches that have not changed recently.
TROVIK_API NormalCone ConeOf(std::span<const DisplayVertex> vertices,
                             std::span<const uint16_t> triangles);

}  // namespace trovik
