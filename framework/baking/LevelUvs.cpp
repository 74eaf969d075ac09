// SPDX-License-Identifier: Apache-2.0
#include "framework/baking/LevelUvs.h"

#include "framework/errors/HostError.h"

namespace trovik {

LevelUvs::LevelUvs(const LevelGeometry& geometry, std::uint32_t ofLevel)
    : attributes(geometry.Attributes()),
      level(ofLevel),
      baseCorners(geometry.Level(0)->CornersPerFace()),
      baseFaces(geometry.Level(0)->faceCount) {
    if (attributes.cornerUvs.empty())
        throw HostError("the mesh has no texture coordinates (UVs), which a map requires");
}

bool LevelUvs::OfBase(std::uint32_t baseFace, CornerValues<2>& uvs) const {
    for (std::uint32_t corner = 0; corner < baseCorners; ++corner) {
        const std::uint32_t uv = attributes.cornerUvs[baseFace * baseCorners + corner];
        if (uv == SurfaceAttributes::none) return false;
        uvs[corner] = attributes.uvs[uv];
    }
    return true;
}

}  // namespace trovik
