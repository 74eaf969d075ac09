// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/PolygonMesh.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace trovik {

/// Returns a triangle, a quad, a pentagon and a face with 300 corners, with unused vertices in
/// between and coordinates of all magnitudes.
inline PolygonMesh MixedMesh() {
    constexpr std::uint32_t corners = 300;
    PolygonMesh mesh;
    mesh.name = "two words";
    std::mt19937 bits(20240917);
    const auto anyFloat = [&bits] {
        for (;;) {
            const float value = std::bit_cast<float>(static_cast<std::uint32_t>(bits()));
            if (value - value == 0.0f) {
                return value;
            }
        }
    };
    for (std::uint32_t vertex = 0; vertex < corners + 10; ++vertex) {
        mesh.positions.push_back({anyFloat(), anyFloat(), anyFloat()});
    }
    mesh.positions[0] = {0.1f, -0.0f, std::numeric_limits<float>::denorm_min()};
    mesh.positions[1] = {
        std::numeric_limits<float>::max(), std::numeric_limits<float>::min(), 16777217.0f};
    mesh.positions[2] = {1.0f / 3.0f, -2.0f / 3.0f, 1e-38f};
    mesh.faceSizes = {3, 4, corners, 5};
    mesh.faceVertices = {2, 0, 1, 8, 7, 5, 4};
    for (std::uint32_t corner = 0; corner < corners; ++corner) {
        mesh.faceVertices.push_back(corners + 9 - corner);
    }
    mesh.faceVertices.insert(mesh.faceVertices.end(), {9, 3, 1, 0, 6});
    return mesh;
}

inline void AddNormals(PolygonMesh& mesh) {
    for (std::size_t vertex = 0; vertex < mesh.positions.size(); ++vertex) {
        mesh.normals.push_back({0.6f, static_cast<float>(vertex) * 0.001f, -0.8f});
    }
}

inline std::vector<std::uint32_t> Bits(const std::vector<std::array<float, 3>>& vectors) {
    std::vector<std::uint32_t> bits;
    for (const std::array<float, 3>& vector : vectors) {
        for (const float coordinate : vector) {
            bits.push_back(std::bit_cast<std::uint32_t>(coordinate));
        }
    }
    return bits;
}

inline void ExpectSame(const PolygonMesh& read, const PolygonMesh& written) {
    EXPECT_EQ(Bits(read.positions), Bits(written.positions));
    EXPECT_EQ(Bits(read.normals), Bits(written.normals));
    EXPECT_EQ(read.faceSizes, written.faceSizes);
    EXPECT_EQ(read.faceVertices, written.faceVertices);
    EXPECT_EQ(read.name, written.name);
}

}  // namespace trovik
