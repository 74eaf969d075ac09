// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <vector>

namespace trovik {

/// The bit of Mesh::faceFlags that marks a hidden face. Only the host reads it.
inline constexpr uint8_t faceIsHidden = 4;

/// Consecutive faces of a level. The faces of a patch are consecutive, so most selections need only
/// a few runs.
struct FaceRun {
    uint32_t first = 0;
    uint32_t count = 0;

    bool operator==(const FaceRun&) const = default;
};

/// Appends `count` faces starting at `first`. Their numbers must be higher than those of all faces
/// already in the list.
inline void AppendFaces(std::vector<FaceRun>& runs, uint32_t first, uint32_t count) {
    if (!runs.empty() && runs.back().first + runs.back().count == first)
        runs.back().count += count;
    else
        runs.push_back({first, count});
}

/// Returns the number of faces in the runs.
inline uint64_t FacesIn(const std::vector<FaceRun>& runs) {
    uint64_t faces = 0;
    for (const FaceRun& run : runs) faces += run.count;
    return faces;
}

}  // namespace trovik
