// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/MeshSpace.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace trovik {

/// Attributes of a surface other than its shape. A list is empty if the surface does not have the
/// attribute.
struct SurfaceAttributes {
    /// Marks an element without a value in cornerUvs, faceGroups, faceMaterials and faceSmoothing.
    static constexpr std::uint32_t none = 0xFFFFFFFFu;

    /// Texture coordinates; v points up.
    std::vector<std::array<float, 2>> uvs;
    /// Per corner: an index into uvs, or `none`. Corners of one vertex with different values lie on
    /// a texture seam.
    std::vector<std::uint32_t> cornerUvs;
    /// Per vertex: red, green, blue and alpha from 0 to 1.
    std::vector<std::array<float, 4>> colors;
    /// Whether alpha was imported; otherwise it is 1.
    bool hasAlpha = false;
    /// Names of groups and materials, and for each face an index into each list, or `none`.
    std::vector<std::string> groupNames;
    std::vector<std::uint32_t> faceGroups;
    std::vector<std::string> materialNames;
    std::vector<std::uint32_t> faceMaterials;
    /// Files that define the materials (.mtl), absolute or relative to the working directory.
    std::vector<std::string> materialFiles;
    /// Per face: the number of its smoothing group, 0 if it has no group, or `none` if the file
    /// does not specify one.
    std::vector<std::uint32_t> faceSmoothing;
    /// Unit and up axis of the positions.
    MeshSpace space;

    /// Bytes allocated by the lists, excluding the names.
    std::uint64_t Bytes() const {
        return uvs.capacity() * sizeof uvs[0] + colors.capacity() * sizeof colors[0] +
               (cornerUvs.capacity() + faceGroups.capacity() + faceMaterials.capacity() +
                faceSmoothing.capacity()) *
                   sizeof(std::uint32_t);
    }
};

}  // namespace trovik
