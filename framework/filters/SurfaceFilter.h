// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/filters/PositionEdit.h"

namespace trovik {

/// A filter over all vertices of a level. The mask reduces its effect on each vertex.
struct SurfaceFilter {
    enum class Kind {
        /// Moves each vertex along its normal.
        Inflate,
        /// Moves each vertex towards the mean of its neighbours (NeighbourMeans). See Taubin: "A
        /// Signal Processing Approach to Fair Surface Design" (1995).
        Smooth,
        /// Like Smooth, but vertices move only within the surface. This evens out their spacing and
        /// keeps the shape. See Botsch, Kobbelt: "A Remeshing Approach to Multiresolution Modeling"
        /// (2004).
        Relax,
        /// Amplifies the difference between the surface and the smoothed surface.
        Sharpen
    };
    Kind kind = Kind::Smooth;
    /// Inflate: the distance in world units; if it is negative, vertices move inwards.
    float amount = 0.0f;
    /// Smooth, Relax: the fraction of the way to the mean per iteration, 0 to 1. Sharpen: the
    /// factor by which the difference is multiplied before it is added.
    float strength = 0.5f;
    /// Number of iterations of Smooth and Relax. For Sharpen, the number of smoothing iterations
    /// that produce the smoothed surface; with more iterations, larger details are sharpened.
    uint32_t iterations = 1;
};

/// Returns the edit for EditPositions. Its results depend only on the surface and the mask, not on
/// the number of threads. Cost: O(faces) per iteration.
TROVIK_API PositionEdit FilterSurface(const SurfaceFilter& filter);

}  // namespace trovik
