// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"
#include "host/Vector.h"

#include <vector>

namespace trovik {

class JobControl;

/// The surface visible in a pixel, averaged over the pixel's hits. It guides the filter.
struct PixelGuide {
    Vector normal;
    Vector position;
    /// Size of the pixel at the surface, in world units; 0 if there is no hit.
    float footprint = 0.0f;
};

/// Sampled visibility of a pixel: fractions from 0 to 1, each with its number of rays and the
/// variance of its sampling error.
struct PixelVisibility {
    float openness = 1.0f;
    float opennessCount = 0.0f;
    float opennessVariance = 0.0f;
    float key = 1.0f;
    float keyCount = 0.0f;
    float keyVariance = 0.0f;
};

/// Number of rows above and below a pixel that affect its filtered value.
inline constexpr int filterReach = 16;

/// Smooths the sampling noise of visibilities, in place. The filter computes the variances itself.
///
/// Each value becomes a mean over pixels of the same surface (similar normal, same plane) whose
/// values differ by no more than the sampling error. Surface edges therefore stay sharp, and so do
/// shadow edges to the extent that the samples resolve them. The more samples there are, the
/// smaller the effect of the filter. The filter is described in Dammertz, Sewtz, Hanika, Lensch:
/// "Edge-Avoiding À-Trous Wavelet Transform for Fast Global Illumination Filtering" (2010). The
/// variance bound on differences is from Schied et al.: "Spatiotemporal Variance-Guided Filtering:
/// Real-Time Reconstruction for Path-Traced Global Illumination" (2017).
///
/// Uses all threads; the result does not depend on their number.
/// \throw Cancelled.
/// \param guides, values  `width` * `height` entries each, row by row.
TROVIK_API void FilterVisibility(int width,
                                 int height,
                                 const std::vector<PixelGuide>& guides,
                                 std::vector<PixelVisibility>& values,
                                 JobControl* job = nullptr);

}  // namespace trovik
