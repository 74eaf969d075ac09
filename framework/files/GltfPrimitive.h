// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/files/GltfAccessor.h"
#include "framework/files/GltfDocument.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace trovik {

/// The vertices of a primitive as stored in the file. A list is empty if the primitive does not
/// have the attribute; otherwise it has an entry for each position.
struct GltfVertices {
    /// The positions after morph targets have been applied.
    std::vector<std::array<float, 3>> positions;
    std::vector<std::array<float, 3>> normals;
    /// The values of TEXCOORD_0.
    std::vector<std::array<float, 2>> uvs;
    /// The values of COLOR_0.
    std::vector<std::array<float, 4>> colors;
    /// Whether the colours in the file have an alpha component.
    bool hasAlpha = false;
};

/// Reads the vertices of a primitive and applies its morph targets.
/// \param weights  weights of the morph targets.
/// \throw HostError with the file, the location and the reason.
GltfVertices ReadGltfVertices(const GltfAccessors& accessors,
                              const tinygltf::Primitive& primitive,
                              const std::vector<double>& weights,
                              const GltfLocation& location);

/// Returns whether the primitive is a list, strip or fan of triangles.
bool HasTriangles(const tinygltf::Primitive& primitive);

/// Returns the vertex indices of all corners of a triangle list, strip or fan.
/// \throw HostError with the file, the location and the reason.
std::vector<std::uint32_t> TriangleCorners(const GltfAccessors& accessors,
                                           const tinygltf::Primitive& primitive,
                                           std::size_t vertexCount,
                                           const GltfLocation& location);

}  // namespace trovik
