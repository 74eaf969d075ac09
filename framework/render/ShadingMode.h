// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <string>
#include <vector>

namespace trovik {

/// How the surface of a render is coloured.
enum class ShadingMode : int {
    /// Clay in soft studio light, with shadows and ambient occlusion.
    Clay,
    /// The colour of a lit sphere where its normal is the same; see Matcap.
    Matcap,
    /// Grey, darker in cavities and brighter on ridges, by mean curvature.
    Cavity,
    /// As Clay, with the normal of each face instead of smooth normals.
    Flat,
    /// The normal in camera space: x to the right, y up, z to the eye, mapped from -1 .. 1 to
    /// byte values 0 .. 255.
    Normals,
    /// A checkerboard in texture space: red grows with u, green with v.
    Uv,
};

/// The names of the modes as commands and scripts take them, in the order of the enumeration.
TROVIK_API const std::vector<std::string>& ShadingModeNames();
/// \throw HostError for a name that is not in ShadingModeNames.
TROVIK_API ShadingMode ShadingModeOf(const std::string& name);

}  // namespace trovik
