// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/SurfaceReplacement.h"

namespace trovik {

/// Settings for pairing triangles into quads.
struct Quadrangulation {
    /// When each face is split into quads around its centre.
    enum class Split {
        /// If triangles are left, because a mesh consists of quads or of triangles only.
        IfNeeded,
        Always,
        /// If triangles are left, the operation is refused.
        Never
    };

    Split split = Split::IfNeeded;
    /// Largest angle between the normals of the triangles of a pair, in degrees.
    float maxAngle = 40.0f;
    /// Whether triangles of different groups, materials or smoothing groups are not paired.
    bool keepsGroups = true;
    /// Whether triangles are not paired across texture seams. Otherwise, a quad gets the UVs of one
    /// of its triangles at the two vertices that they share.
    bool keepsUvs = true;
};

/// Replaces a mesh of triangles by a mesh of quads with the same vertices: pairs of triangles
/// become quads. Pairs that form nearly square, flat quads are preferred; then pairs are exchanged
/// along augmenting paths, so that as few triangles as possible are left (TriangleMatching).
///
/// - Quads are convex. Triangles are not paired across the border of the area that is masked by at
///   least half.
/// - An interior vertex keeps at least three faces, unless triangles would then be left.
/// - Quads are in the order of their lower-numbered triangles.
///
/// If the mesh consists of quads already, nothing changes, and a warning reports it. Throws
/// HostError if triangles are left and must not be split.
TROVIK_API SurfaceOperation Quadrangulate(const Quadrangulation& settings);

}  // namespace trovik
