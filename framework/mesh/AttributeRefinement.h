// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/SurfaceAttributes.h"
#include "host/Api.h"

#include <array>
#include <cassert>
#include <cstdint>

namespace trovik {

struct PolygonMesh;

/// The refinement rule for texture coordinates and colours. An edge point gets the mean of the two
/// endpoints, a face point gets the mean of the corners, and an existing vertex keeps its value.
/// Values are therefore bilinear over each quad of level 0, and a texture seam stays a seam.
///
/// The order of operations is fixed, so that the two faces on an edge compute bit-identical values.
/// The value is (a + b) * 0.5 for an edge and ((a + b) + c [+ d ...]) * (1 / corners) for a face.

template <std::size_t count>
std::array<float, count> MeanOfTwo(const std::array<float, count>& a,
                                   const std::array<float, count>& b) {
    std::array<float, count> mean;
    for (std::size_t i = 0; i < count; ++i) {
        mean[i] = (a[i] + b[i]) * 0.5f;
    }
    return mean;
}

/// Values at the corners of a face. The fourth entry is unused for a triangle.
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

/// Returns the values at the corners of child `child` of a face with 3 or 4 corners, in the corner
/// order of the child. LevelMesh describes the layout of the children.
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

/// Returns the values at the corners of face `face` of level `level`, interpolated from the corner
/// values of the level-0 face that contains it.
/// \param corners  corner count per level-0 face.
template <std::size_t count>
CornerValues<count> FaceValues(CornerValues<count> base,
                               std::uint32_t corners,
                               std::uint32_t level,
                               std::uint32_t face) {
    // Visits the digits of the face number, most significant first. Only the first step can start
    // from a triangle.
    for (std::uint32_t step = level; step-- > 0;) {
        const std::uint32_t sides = step + 1 == level ? corners : 4;
        const std::uint32_t digit = face >> (2 * step);
        base = ChildValues(base, sides, step + 1 == level ? digit % corners : digit & 3u);
    }
    return base;
}

/// Returns the level-0 face that contains face `face` of level `level`.
inline std::uint32_t BaseFace(std::uint32_t corners, std::uint32_t level, std::uint32_t face) {
    assert(corners != 0);
    return level == 0 ? face : (face >> (2 * (level - 1))) / corners;
}

/// Returns the attributes of level 0 after one step that splits polygons into quads
/// (ToUniformFaces).
/// \param quads  the result of the split, with its final faces and vertices.
TROVIK_API SurfaceAttributes SplitIntoQuads(const PolygonMesh& polygons, const PolygonMesh& quads);

}  // namespace trovik
