// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/AttributeRefinement.h"
#include "framework/multires/LevelGeometry.h"

namespace trovik {

/// Texture coordinates of a level's faces, refined from those of level 0 (AttributeRefinement.h).
/// Borrows the geometry.
class LevelUvs {
public:
    /// \throw HostError "the mesh has no texture coordinates ..." if level 0 has none.
    LevelUvs(const LevelGeometry& geometry, std::uint32_t level);

    /// Computes the UVs at the corners of a face of the level. For a triangle, the fourth value is
    /// undefined.
    /// \return false if a corner of the face's level-0 ancestor has no UVs.
    bool Of(std::uint32_t face, CornerValues<2>& uvs) const {
        if (!OfBase(BaseOf(face), uvs)) return false;
        uvs = FaceValues(uvs, baseCorners, level, face);
        return true;
    }
    /// Like Of, but for a face of level 0.
    bool OfBase(std::uint32_t baseFace, CornerValues<2>& uvs) const;
    /// Returns the level-0 ancestor of a face of the level.
    std::uint32_t BaseOf(std::uint32_t face) const { return BaseFace(baseCorners, level, face); }
    std::uint32_t BaseFaceCount() const { return baseFaces; }
    std::uint32_t BaseCorners() const { return baseCorners; }

private:
    const SurfaceAttributes& attributes;
    std::uint32_t level;
    std::uint32_t baseCorners;
    std::uint32_t baseFaces;
};

}  // namespace trovik
