// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/display/DisplayVertex.h"
#include "host/Vector.h"

#include <cstdint>
#include <span>

namespace trovik {

/// Mesh-local box around packed vertices. Coordinates that are NaN are left out; without any other
/// the box is empty. PatchTree::BoxOf gives the same box of a grid patch without reading vertices.
/// Cost: O(vertices).
TROVIK_API AxisAlignedBoundingBox BoxOf(std::span<const DisplayVertex> vertices);

/// A cone around the normals of triangles, mesh-local. The side from which a triangle's corners run
/// counterclockwise is its front.
struct TROVIK_API NormalCone {
    /// Unit length, or zero for triangles that face too many directions to be culled.
    Vector axis;
    /// Sine of the largest angle between the axis and a normal.
    float sinAngle = 1.0f;

    /// Whether a viewer at `eye` (mesh-local) can see only backs of the triangles, which must lie
    /// in `box`. False in doubt. For a renderer that does not draw backs. Cost: O(1).
    bool FacesAway(const AxisAlignedBoundingBox& box, const Vector& eye) const;
    /// The same for a parallel projection. \param direction  in which the viewer looks, mesh-local,
    /// of any length.
    bool FacesAwayFrom(const Vector& direction) const;
};

/// The cone of some triangles: of a patch at full detail, or at the stride that is drawn, since the
/// normals of coarser triangles may leave the cone of the finer ones. Degenerate triangles are left
/// out, as they are not drawn; positions that are not finite give a cone that is never culled.
/// Cost: O(triangles), some five times that of packing: for patches that did not change
/// lately.
TROVIK_API NormalCone ConeOf(std::span<const DisplayVertex> vertices,
                             std::span<const uint16_t> triangles);

}  // namespace trovik
