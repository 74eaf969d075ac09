// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"
#include "host/Vector.h"

#include <vector>

namespace trovik {

class JobControl;

/// The surface that a pixel shows, which guides the filter. Means over the pixel's hits.
struct PixelGuide {
    Vector normal;
    Vector position;
    /// World size of the pixel at the surface; 0 where there is none.
    float footprint = 0.0f;
};

/// Sampled visibility of a pixel: fractions, 0 to 1, with the number of rays that each was
/// estimated from and the variance of its sampling error.
struct PixelVisibility {
    float openness = 1.0f;
    float opennessCount = 0.0f;
    float opennessVariance = 0.0f;
    float key = 1.0f;
    float keyCount = 0.0f;
    float keyVariance = 0.0f;
};

/// Rows above and below a pixel that its filtered value depends on.
inline constexpr int filterReach = 16;

/// Smooths the sampling noise of visibilities, in place. The variances are computed by the filter
/// itself.
///
/// Each value becomes a mean over pixels of the same surface (alike in normal, in the same plane)
/// whose values differ by no more than sampling errors do. So edges of surfaces stay sharp, and so
/// do edges of shadows as far as the samples resolve them; with more samples the filter fades.
/// An edge-avoiding a-trous wavelet filter: H. Dammertz, D. Sewtz, J. Hanika, H. P. A. Lensch,
/// "Edge-Avoiding A-Trous Wavelet Transform for Fast Global Illumination Filtering", High
/// Performance Graphics 2010; with the bound on differences by variance from C. Schied et al.,
/// "Spatiotemporal Variance-Guided Filtering", High Performance Graphics 2017.
///
/// Runs on all threads; results do not depend on their number.
/// \throw Cancelled.
/// \param guides, values  row by row, `width` * `height` of each.
TROVIK_API void FilterVisibility(int width,
                                 int height,
                                 const std::vector<PixelGuide>& guides,
                                 std::vector<PixelVisibility>& values,
                                 JobControl* job = nullptr);

}  // namespace trovik
