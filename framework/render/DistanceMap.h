// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/render/RenderImage.h"

#include <vector>

namespace trovik {

/// Returns the colour of each distance for ShadingMode::VertexColors, as three numbers: from pale
/// yellow for 0 to dark red for `range` and above. The scale is "YlOrRd" of Harrower, Brewer:
/// "ColorBrewer.org" (2003); its lightness decreases with the distance, so it remains readable in
/// greyscale.
/// \param range  above 0.
TROVIK_API std::vector<float> DistanceColors(const std::vector<float>& distances, float range);

/// Draws the colour scale into the lower left corner of a render, with the distances at its ends
/// and in its middle. Draws nothing if the render is too small for the scale.
TROVIK_API void DrawDistanceLegend(RenderImage& picture, float range);

}  // namespace trovik
