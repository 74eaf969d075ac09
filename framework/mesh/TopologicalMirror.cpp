// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/TopologicalMirror.h"

#include "framework/mesh/LevelMesh.h"

#include <algorithm>
#include <utility>

namespace trovik {

std::optional<TopologicalMirror::Corner> TopologicalMirror::Across(uint32_t level,
                                                                   uint32_t face,
                                                                   uint32_t corner) const {
    const bool quads = baseCorners == 4;
    // One base-4 digit per level below the first. In a triangle, the first digit is at most 2.
    const uint32_t digits = level == 0 ? 0 : (quads ? level : level - 1);
    uint32_t above = face >> (2 * digits);
    const uint32_t firstChild = !quads && level != 0 ? above % 3u : 0;
    if (!quads && level != 0) above /= 3u;

    const uint32_t image = images[above];
    if (image == openBorder) return std::nullopt;
    const uint32_t shift = image & 3u;
    if (level == 0) return Corner{image >> 2, (shift + baseCorners - corner) % baseCorners};

    uint32_t across = image >> 2;
    // The first corner of each child of a triangle is a corner of the triangle.
    if (!quads) across = across * 3u + (shift + 3u - firstChild) % 3u;
    const uint32_t childShift = quads ? shift : 0;
    for (uint32_t digit = digits; digit-- > 0;)
        across = across * 4u + ((childShift - (face >> (2 * digit))) & 3u);
    return Corner{across, (childShift - corner) & 3u};
}

bool TopologicalMirror::IsWhole() const {
    return std::find(images.begin(), images.end(), openBorder) == images.end();
}

std::unique_ptr<TopologicalMirror> TopologicalMirror::FromImages(const LevelMesh& base,
                                                                 std::vector<uint32_t> images) {
    if (images.size() != base.faceCount) return nullptr;
    for (uint32_t face = 0; face < base.faceCount; ++face) {
        const uint32_t image = images[face];
        if (image == openBorder) continue;
        const uint32_t shift = image & 3u;
        if (image >> 2 >= base.faceCount || shift >= base.CornersPerFace()) return nullptr;
        if (images[image >> 2] != face * 4 + shift) return nullptr;
    }
    auto mirror = std::make_unique<TopologicalMirror>();
    mirror->baseCorners = base.CornersPerFace();
    mirror->images = std::move(images);
    return mirror;
}

}  // namespace trovik
