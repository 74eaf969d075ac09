// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <string>
#include <vector>

namespace trovik {

/// The colouring of the surface in a render.
enum class ShadingMode : int {
    /// Clay in soft studio light, with shadows and ambient occlusion.
    Clay,
    /// The colour of a lit sphere at the point with the same normal; see Matcap.
    Matcap,
    /// Grey, darker in cavities and brighter on ridges, by mean curvature.
    Cavity,
    /// Like Clay, with face normals instead of smooth normals.
    Flat,
    /// The normal in camera space: x to the right, y up, z towards the eye, mapped from -1 .. 1 to
    /// byte values 0 .. 255.
    Normals,
    /// A checkerboard in texture space: red increases with u, green with v.
    Uv,
    /// RenderMesh::vertexColors, lit from the eye. Not available by name, because commands and
    /// scripts render meshes without such colours.
    VertexColors,
};

/// Returns the mode names that commands and scripts use, in the order of the enumeration, which
/// continues with the modes without a name.
TROVIK_API const std::vector<std::string>& ShadingModeNames();
/// \throw HostError for a name that is not in ShadingModeNames.
TROVIK_API ShadingMode ShadingModeOf(const std::string& name);

}  // namespace trovik
