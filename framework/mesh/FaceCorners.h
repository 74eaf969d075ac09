// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace trovik {

/// Maximum number of corners per face. Modelling programs do not write larger faces, so a file that
/// contains a larger one is rejected as corrupt.
inline constexpr std::size_t maxFaceCorners = 1'000'000;

/// Returns a vertex that the face uses more than once, if there is one.
inline std::optional<std::uint32_t> RepeatedVertex(std::span<const std::uint32_t> corners) {
    constexpr std::size_t fewCorners = 16;
    if (corners.size() <= fewCorners) {
        for (std::size_t i = 1; i < corners.size(); ++i) {
            for (std::size_t j = 0; j < i; ++j) {
                if (corners[i] == corners[j]) {
                    return corners[i];
                }
            }
        }
        return std::nullopt;
    }
    std::vector<std::uint32_t> sorted(corners.begin(), corners.end());
    std::sort(sorted.begin(), sorted.end());
    const auto repeated = std::adjacent_find(sorted.begin(), sorted.end());
    return repeated == sorted.end() ? std::nullopt : std::optional(*repeated);
}

}  // namespace trovik
