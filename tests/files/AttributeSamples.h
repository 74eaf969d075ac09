// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/PolygonMesh.h"

#include <gtest/gtest.h>

#include <vector>

namespace trovik {

/// Returns two adjacent quads with a triangle below the left one and a pentagon above the right
/// one, in two groups and with two materials. There is a UV seam between the quads, and the
/// vertices have colours.
///
///      7 -- 8 -- 9
///      |  pent   |
///      3 -- 4 -- 5
///      | q0 | q1 |
///      0 -- 1 -- 2
///        \  |
///          6
inline PolygonMesh AttributedMesh() {
    PolygonMesh mesh;
    mesh.name = "sheet";
    mesh.positions = {{0, 0, 0},
                      {1, 0, 0.25f},
                      {2, 0, 0},
                      {0, 1, 0},
                      {1, 1, 0.5f},
                      {2, 1, 0},
                      {1, -1, 0},
                      {0.5f, 2, 0},
                      {1.5f, 2.5f, 0},
                      {2, 2, 0}};
    mesh.faceSizes = {4, 4, 3, 5};
    mesh.faceVertices = {0, 1, 4, 3, 1, 2, 5, 4, 0, 6, 1, 4, 5, 9, 8, 7};
    SurfaceAttributes& more = mesh.attributes;
    more.uvs = {{0, 0},
                {0.5f, 0},
                {0.5f, 0.5f},
                {0, 0.5f},
                {0.75f, 0.125f},
                {1, 0.125f},
                {1, 0.625f},
                {0.75f, 0.625f},
                {0.25f, -0.25f},
                {0.1f, 0.9f}};
    // The quads have different UVs along their common edge 1-4; the pentagon follows q1.
    more.cornerUvs = {0, 1, 2, 3, 4, 5, 6, 7, 0, 8, 1, 7, 6, 9, 9, 9};
    for (int vertex = 0; vertex < 10; ++vertex) {
        const auto shade = static_cast<float>(vertex * 25);
        more.colors.push_back({shade / 255.0f, 1.0f, (255.0f - shade) / 255.0f, 1.0f});
    }
    more.groupNames = {"left arm", "rest"};
    more.faceGroups = {0, 1, 0, 1};
    more.materialNames = {"skin", "cloth"};
    more.faceMaterials = {1, 1, 0, 0};
    return mesh;
}

/// Returns only the two quads, with the UV seam between them.
inline PolygonMesh TwoQuads() {
    PolygonMesh mesh = AttributedMesh();
    mesh.positions.resize(6);
    mesh.faceSizes = {4, 4};
    mesh.faceVertices.resize(8);
    mesh.attributes.cornerUvs.resize(8);
    mesh.attributes.colors.resize(6);
    mesh.attributes.faceGroups.resize(2);
    mesh.attributes.faceMaterials = {1, SurfaceAttributes::none};
    return mesh;
}

/// Returns the UV of each corner, by value.
inline std::vector<std::array<float, 2>> CornerUvValues(const PolygonMesh& mesh) {
    std::vector<std::array<float, 2>> values;
    for (const std::uint32_t uv : mesh.attributes.cornerUvs) {
        values.push_back(uv == SurfaceAttributes::none ? std::array<float, 2>{-1, -1}
                                                       : mesh.attributes.uvs[uv]);
    }
    return values;
}

inline std::vector<std::string> FaceNames(const std::vector<std::uint32_t>& numbers,
                                          const std::vector<std::string>& names) {
    std::vector<std::string> list;
    list.reserve(numbers.size());
    for (const std::uint32_t number : numbers) {
        list.push_back(number == SurfaceAttributes::none ? "-" : names[number]);
    }
    return list;
}

inline void ExpectSameGroups(const PolygonMesh& read, const PolygonMesh& written) {
    const SurfaceAttributes& a = read.attributes;
    const SurfaceAttributes& b = written.attributes;
    EXPECT_EQ(FaceNames(a.faceGroups, a.groupNames), FaceNames(b.faceGroups, b.groupNames));
    EXPECT_EQ(FaceNames(a.faceMaterials, a.materialNames),
              FaceNames(b.faceMaterials, b.materialNames));
}

}  // namespace trovik
