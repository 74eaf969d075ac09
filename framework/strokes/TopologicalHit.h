// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Matrix.h"
#include "host/Mesh.h"

#include <optional>

namespace trovik {

/// What lies across the topological mirror from a place of the surface.
struct TopologicalHit {
    /// On the same mesh, its mirror flag set.
    SurfacePoint hit;
    /// Takes points around the place to those around its image (mesh-local): turns over, keeps
    /// lengths and angles. Where the two faces are each other's reflection in the plane x = 0 it is
    /// that reflection, bit for bit.
    Matrix pointMap;
};

/// The place across: on the face across, with the same share of each corner. What the place is off
/// the face by, and its normal, are carried over in the frame of the two faces, so that they
/// follow a pose.
/// \return nothing where the face has no mirror image (Mesh::MirrorVertex answers -1).
/// Cost: O(level).
TROVIK_API std::optional<TopologicalHit> AcrossTopologicalMirror(const SurfacePoint& hit);

}  // namespace trovik
