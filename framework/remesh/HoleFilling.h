// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/SurfaceReplacement.h"

#include <cstddef>
#include <vector>

namespace trovik {

/// How holes are filled.
enum class HoleFill {
    None,
    /// By a fan around the centre of the border.
    Flat,
    /// By rings of faces of about the size of those at the border, which continue the curvature of
    /// the surface.
    Smooth
};

/// Returns the holes of an oriented manifold: closed chains of border vertices, each in the order
/// in which faces that fill the hole traverse it. Sorted by their lowest vertex, which comes first.
std::vector<std::vector<uint32_t>> HolesOf(const PolygonMesh& mesh);

/// Fills the holes of an oriented manifold that have at most `maxEdges` border edges. Quads are
/// added if all faces are quads, otherwise triangles; a hole with an odd number of edges always
/// needs one triangle. The new faces and vertices have no sources and no UVs. \return the number of
/// filled holes. \throw Cancelled.
std::size_t FillHoles(NewSurface& surface,
                      HoleFill fill,
                      std::size_t maxEdges,
                      JobControl* job = nullptr);

}  // namespace trovik
