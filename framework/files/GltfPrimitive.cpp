// SPDX-License-Identifier: Apache-2.0
#include "framework/files/GltfPrimitive.h"

#include <iterator>
#include <optional>
#include <string>

namespace trovik {

namespace {

/// Modes of a primitive. A negative mode means the default, a triangle list.
constexpr int triangleList = 4;
constexpr int strip = 5;
constexpr int fan = 6;

std::vector<std::array<float, 3>> ReadPositions(const GltfAccessors& accessors,
                                                const tinygltf::Primitive& primitive,
                                                const std::vector<double>& weights,
                                                const GltfLocation& location) {
    const auto position = primitive.attributes.find("POSITION");
    if (position == primitive.attributes.end()) {
        location.Refuse("it has no attribute POSITION");
    }
    std::vector<std::array<float, 3>> positions =
        accessors.Read<3>(position->second, std::nullopt, location);
    for (std::size_t target = 0; target < primitive.targets.size() && target < weights.size();
         ++target) {
        const auto offsets = primitive.targets[target].find("POSITION");
        if (offsets == primitive.targets[target].end() || weights[target] == 0.0) {
            continue;
        }
        const auto weight = static_cast<float>(weights[target]);
        const auto moves = accessors.Read<3>(offsets->second, positions.size(), location);
        for (std::size_t vertex = 0; vertex < positions.size(); ++vertex) {
            for (std::size_t axis = 0; axis < 3; ++axis) {
                positions[vertex][axis] += weight * moves[vertex][axis];
            }
        }
    }
    return positions;
}

}  // namespace

GltfVertices ReadGltfVertices(const GltfAccessors& accessors,
                              const tinygltf::Primitive& primitive,
                              const std::vector<double>& weights,
                              const GltfLocation& location) {
    const auto accessor = [&primitive](const char* name) -> std::optional<int> {
        const auto found = primitive.attributes.find(name);
        return found == primitive.attributes.end() ? std::nullopt
                                                   : std::optional<int>(found->second);
    };
    GltfVertices read;
    read.positions = ReadPositions(accessors, primitive, weights, location);
    const std::size_t count = read.positions.size();
    if (const auto normal = accessor("NORMAL")) {
        read.normals = accessors.Read<3>(*normal, count, location);
    }
    if (const auto uv = accessor("TEXCOORD_0")) {
        read.uvs = accessors.Read<2>(*uv, count, location);
    }
    if (const auto color = accessor("COLOR_0")) {
        read.colors = accessors.ReadColors(*color, count, location, read.hasAlpha);
    }
    return read;
}

bool HasTriangles(const tinygltf::Primitive& primitive) {
    return primitive.mode < 0 || (primitive.mode >= triangleList && primitive.mode <= fan);
}

std::vector<std::uint32_t> TriangleCorners(const GltfAccessors& accessors,
                                           const tinygltf::Primitive& primitive,
                                           std::size_t vertexCount,
                                           const GltfLocation& location) {
    const bool isStrip = primitive.mode == strip;
    const bool isFan = primitive.mode == fan;
    std::vector<std::uint32_t> order;
    if (primitive.indices >= 0) {
        order = accessors.ReadIndices(primitive.indices, vertexCount, location);
    } else {
        order.resize(vertexCount);
        for (std::size_t vertex = 0; vertex < vertexCount; ++vertex) {
            order[vertex] = static_cast<std::uint32_t>(vertex);
        }
    }
    if (!isStrip && !isFan) {
        if (order.size() % 3 != 0) {
            location.Refuse("its " + std::to_string(order.size()) +
                            " corners are not a multiple of three");
        }
        return order;
    }
    std::vector<std::uint32_t> corners;
    for (std::size_t last = 2; last < order.size(); ++last) {
        const std::size_t turned = isStrip ? last % 2 : 0;
        const std::size_t first = isFan ? 0 : last - 2;
        const std::uint32_t triangle[] = {order[isStrip ? first + turned : first],
                                          order[isStrip ? last - 1 - turned : last - 1],
                                          order[last]};
        // Strips are joined by intentionally degenerate triangles.
        if (triangle[0] != triangle[1] && triangle[1] != triangle[2] &&
            triangle[2] != triangle[0]) {
            corners.insert(corners.end(), std::begin(triangle), std::end(triangle));
        }
    }
    return corners;
}

}  // namespace trovik
