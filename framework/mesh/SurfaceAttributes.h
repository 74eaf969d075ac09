// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/MeshSpace.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace trovik {

/// What a surface carries beside its shape. Each list is empty where the surface has none of it.
struct SurfaceAttributes {
    /// In cornerUvs, faceGroups, faceMaterials and faceSmoothing: this one has none.
    static constexpr std::uint32_t none = 0xFFFFFFFFu;

    /// Places on the texture, v upwards.
    std::vector<std::array<float, 2>> uvs;
    /// Per corner a number into uvs or `none`. Corners of one vertex that name different values lie
    /// on a seam of the texture.
    std::vector<std::uint32_t> cornerUvs;
    /// Per vertex: red, green, blue, alpha from 0 to 1.
    std::vector<std::array<float, 4>> colors;
    /// Whether the fourth number of colors came from outside; otherwise it is 1.
    bool hasAlpha = false;
    /// Names of parts and of materials, and per face a number into them or `none`.
    std::vector<std::string> groupNames;
    std::vector<std::uint32_t> faceGroups;
    std::vector<std::string> materialNames;
    std::vector<std::uint32_t> faceMaterials;
    /// Files that define the materials (.mtl), absolute or relative to the working directory.
    std::vector<std::string> materialFiles;
    /// Per face the number of its smoothing group, 0 for none, or `none` if the file states
    /// nothing for it.
    std::vector<std::uint32_t> faceSmoothing;
    /// What the numbers of positions mean.
    MeshSpace space;

    /// Bytes held by the lists, names aside.
    std::uint64_t Bytes() const {
        return uvs.capacity() * sizeof uvs[0] + colors.capacity() * sizeof colors[0] +
               (cornerUvs.capacity() + faceGroups.capacity() + faceMaterials.capacity() +
                faceSmoothing.capacity()) *
                   sizeof(std::uint32_t);
    }
};

}  // namespace trovik
