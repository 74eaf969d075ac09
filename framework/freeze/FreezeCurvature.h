// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"

#include <vector>

namespace trovik {

/// Which bends of the surface an operation takes.
enum class BendSign : int {
    /// Hollow: the surface rises toward its normal around the vertex.
    Cavity,
    /// The surface falls away around the vertex.
    Ridge,
    Both,
};

struct CurvatureRange {
    BendSign sign = BendSign::Cavity;
    /// World units. A bend is the mean curvature times this size: a hollow ball of radius `size`
    /// bends by 1, one of twice the radius by 1/2; a ridge bends by less than 0.
    float size = 1.0f;
    /// Full share from `from` to `to`.
    float from = 0.25f;
    float to = 3.402823466e+38f;
    /// Outside, the share falls to 0 over this distance, evenly.
    float softness = 0.0f;
    /// Rings over which the bend is averaged; each ring as a step of BlurredFreeze.
    uint32_t rings = 0;
};

/// The bend of each vertex of the bound level, by world positions: the mean over its neighbours q
/// of the curvature of the surface toward them, 2 (q - p) . n / |q - p|^2, where n is its normal.
/// Neighbours count as for BlurredFreeze. 0 for a vertex of no face.
/// \param size, rings  see CurvatureRange. Cost: O(faces).
TROVIK_API std::vector<float> Bends(const LevelGeometry& geometry, float size, uint32_t rings);

/// Shares, 0 to 1, of the bound level's vertices.
TROVIK_API std::vector<float> SharesByCurvature(const LevelGeometry& geometry,
                                                const CurvatureRange& range);

}  // namespace trovik
