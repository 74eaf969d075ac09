// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/SurfaceAttributes.h"
#include "host/Api.h"

#include <array>
#include <cassert>
#include <cstdint>

namespace trovik {

struct PolygonMesh;

/// The rule by which texture coordinates and colours become finer: the point on an edge takes the
/// mean of its two ends, the point of a face the mean of its corners, and what a vertex has stays.
/// So values are bilinear over each quad of level 0, and a seam of the texture stays a seam.
///
/// The order of operations is stated, so that the two faces on an edge get the same bits:
/// edge (a + b) * 0.5, face ((a + b) + c [+ d ...]) * (1 / corners).

template <std::size_t count>
std::array<float, count> MeanOfTwo(const std::array<float, count>& a,
                                   const std::array<float, count>& b) {
    std::array<float, count> mean;
    for (std::size_t i = 0; i < count; ++i) {
        mean[i] = (a[i] + b[i]) * 0.5f;
    }
    return mean;
}

/// Values at the corners of a face; of a triangle the fourth means nothing.
template <std::size_t count>
using CornerValues = std::array<std::array<float, count>, 4>;

template <std::size_t count>
std::array<float, count> FaceMean(const CornerValues<count>& values, std::uint32_t corners) {
    std::array<float, count> mean = values[0];
    const float share = 1.0f / static_cast<float>(corners);
    for (std::size_t i = 0; i < count; ++i) {
        for (std::uint32_t corner = 1; corner < corners; ++corner) {
            mean[i] += values[corner][i];
        }
        mean[i] *= share;
    }
    return mean;
}

/// Values at the corners of child `child` of a face of 3 or 4 corners, in the child's own order;
/// see LevelMesh for how children lie.
template <std::size_t count>
CornerValues<count> ChildValues(const CornerValues<count>& parent,
                                std::uint32_t corners,
                                std::uint32_t child) {
    const std::uint32_t turned = corners == 4 ? child : 0;
    const std::uint32_t after = (child + 1) % corners;
    const std::uint32_t before = (child + corners - 1) % corners;
    CornerValues<count> values;
    values[turned] = parent[child];
    values[(turned + 1) & 3u] = MeanOfTwo(parent[child], parent[after]);
    values[(turned + 2) & 3u] = FaceMean(parent, corners);
    values[(turned + 3) & 3u] = MeanOfTwo(parent[before], parent[child]);
    return values;
}

/// Values at the corners of face `face` of level `level`, from those of the face of level 0 that it
/// lies in. \param corners  of the faces of level 0.
template <std::size_t count>
CornerValues<count> FaceValues(CornerValues<count> base,
                               std::uint32_t corners,
                               std::uint32_t level,
                               std::uint32_t face) {
    // The digits of the number, the topmost first; only the first step can be from a triangle.
    for (std::uint32_t step = level; step-- > 0;) {
        const std::uint32_t sides = step + 1 == level ? corners : 4;
        const std::uint32_t digit = face >> (2 * step);
        base = ChildValues(base, sides, step + 1 == level ? digit % corners : digit & 3u);
    }
    return base;
}

/// The face of level 0 that face `face` of level `level` lies in.
inline std::uint32_t BaseFace(std::uint32_t corners, std::uint32_t level, std::uint32_t face) {
    assert(corners != 0);
    return level == 0 ? face : (face >> (2 * (level - 1))) / corners;
}

/// What level 0 carries when polygons are split into quads by one step (ToUniformFaces).
/// \param quads  the result of the split; its faces and vertices are final.
TROVIK_API SurfaceAttributes SplitIntoQuads(const PolygonMesh& polygons, const PolygonMesh& quads);

}  // namespace trovik
