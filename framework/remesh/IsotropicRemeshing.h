// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/RemeshEstimate.h"
#include "framework/remesh/SurfaceReplacement.h"

#include <optional>

namespace trovik {

/// Which properties of a surface are kept when its triangles change.
struct KeptFeatures {
    /// Keeps the positions of all vertices of open borders.
    bool borders = true;
    /// Keeps the borders between face groups, materials and smoothing groups.
    bool groups = true;
    /// Keeps edges between faces whose normals form a larger angle than this, in degrees; 180 keeps
    /// none.
    float creaseAngle = 60.0f;
};

/// Which edges a remeshing changes.
enum class RemeshMode {
    /// Splits long edges and removes short ones.
    Both,
    /// Splits long edges. Existing vertices are not moved.
    Refine,
    /// Removes short edges, flips edges and relaxes vertices, but adds no vertices.
    Coarsen
};

/// Settings of an isotropic remeshing. Exactly one of `edgeLength` and `faces` must be set.
struct IsotropicRemeshing {
    /// Target length of the edges, in world units.
    std::optional<float> edgeLength = {};
    /// Number of triangles, including those of masked areas.
    std::optional<uint32_t> faces = {};
    RemeshMode mode = RemeshMode::Both;
    KeptFeatures kept = {};
    /// Keeps UVs and their seams. Otherwise, the new mesh has no UVs.
    bool keepsUvs = true;
};

/// Replaces the mesh by triangles with edges of about the same length and angles near 60 degrees,
/// after Botsch, Kobbelt: "A Remeshing Approach to Multiresolution Modeling" (2004): long edges are
/// split, short edges are collapsed, edges are flipped, and vertices are relaxed in the tangent
/// plane and projected onto the old surface. Quads are split into triangles first.
///
/// - The vertices of UV seams, borders of groups, open borders and creases stay on these: they
///   are old vertices or points on the old edges. Edges across them are not collapsed. If edges
///   become longer, these curves become polygons of the remaining vertices.
/// - Vertices that are masked by at least half, and edges between them, are kept.
/// - Results are deterministic, but not symmetric, even if the surface is.
///
/// If the number of faces cannot be reached within 5 %, a warning reports it. Throws HostError if
/// the settings are invalid, the surface has no area, or there is not enough memory.
TROVIK_API SurfaceOperation Remesh(const IsotropicRemeshing& settings);

}  // namespace trovik
