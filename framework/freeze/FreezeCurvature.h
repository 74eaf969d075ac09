// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"

#include <vector>

namespace trovik {

/// The sign of the curvature that an operation selects.
enum class CurvatureSign : int {
    /// Concave: the surface around the vertex rises in the direction of the normal.
    Cavity,
    /// Convex: the surface falls away around the vertex.
    Ridge,
    Both,
};

struct CurvatureRange {
    CurvatureSign sign = CurvatureSign::Cavity;
    /// In world units. Scaled curvature is the mean curvature times this size: it is 1 in a
    /// spherical hollow of radius `size`, 1/2 in a hollow of twice that radius, and negative on a
    /// ridge.
    float size = 1.0f;
    /// A vertex has mask weight 1 if its scaled curvature (negated for Ridge, absolute for Both) is
    /// in the range from `from` to `to`.
    float from = 0.25f;
    float to = 3.402823466e+38f;
    /// Width of the falloff outside that range, in scaled curvature: the weight falls linearly to 0
    /// over this width.
    float softness = 0.0f;
    /// Number of rings over which the curvature is averaged; each ring is one step of
    /// BlurredFreeze.
    uint32_t rings = 0;
};

/// Returns the scaled curvature at each vertex p of the bound level, computed from world positions:
/// the mean over its neighbours q of the curvature towards q, 2 (q - p) . n / |q - p|^2, times
/// `size`, where n is the normal at p. Neighbours are weighted as in BlurredFreeze. The result is 0
/// for a vertex without faces.
/// \param size, rings  see CurvatureRange. Cost: O(faces).
TROVIK_API std::vector<float> ScaledCurvatures(const LevelGeometry& geometry,
                                               float size,
                                               uint32_t rings);

/// Returns mask weights (0 to 1) that select vertices of the bound level by curvature.
TROVIK_API std::vector<float> WeightsByCurvature(const LevelGeometry& geometry,
                                                 const CurvatureRange& range);

}  // namespace trovik
