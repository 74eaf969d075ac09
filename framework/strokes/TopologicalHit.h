// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Matrix.h"
#include "host/Mesh.h"

#include <optional>

namespace trovik {

/// The counterpart of a surface point under the topological mirror.
struct TopologicalHit {
    /// The mirrored hit, on the same mesh, with its mirror flag set.
    SurfacePoint hit;
    /// Maps points around the hit to those around its image (mesh-local): a reflection that
    /// preserves lengths and angles. If the two faces are reflections of each other in the plane x
    /// = 0, it is exactly that reflection.
    Matrix pointMap;
};

/// Returns the counterpart of a hit: on the mirrored face, with the same corner weights. The hit's
/// normal and its offset from the face are converted from the frame of one face to that of the
/// other, so that they are correct on a posed mesh as well.
/// \return nothing if the face has no mirror image (Mesh::MirrorVertex returns -1). Cost: O(level).
TROVIK_API std::optional<TopologicalHit> AcrossTopologicalMirror(const SurfacePoint& hit);

}  // namespace trovik
