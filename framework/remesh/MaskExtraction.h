// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/SurfaceReplacement.h"

#include <cstdint>
#include <string>

namespace trovik {

/// Settings for making a part with a thickness from the masked part of a surface.
struct MaskExtraction {
    /// Where the new part is, relative to the surface.
    enum class Side { Outside, Inside, Both };

    /// In world units, along the vertex normals. If the scale of the transform differs between the
    /// axes, it is the largest thickness.
    float thickness = 0.0f;
    Side side = Side::Outside;
    /// Faces whose corners all have at least this mask weight are extracted; 0 to 1.
    float threshold = 0.5f;
    /// How often the border of the part is smoothed. Vertices stay on the old surface.
    uint32_t smoothIterations = 0;
    /// Whether the new part replaces the surface; otherwise, it is added as a component.
    bool replaces = false;
    /// Name of the new part's group. If empty, it is "Extracted", with a number if that exists.
    std::string group = {};
};

/// Makes a thick part from the masked part of the current level: two copies of its faces at a
/// distance of the thickness, and a strip of faces between their borders. The result is closed, and
/// the new part is not masked and not part of any layer. The current level becomes level 0.
///
/// All faces of the new part belong to one group. The outer copy keeps its UVs; both copies keep
/// colours, materials and smoothing groups. Borders of the surface itself are not smoothed.
///
/// Throws HostError if no face is masked.
TROVIK_API SurfaceOperation ExtractMasked(const MaskExtraction& settings);

}  // namespace trovik
