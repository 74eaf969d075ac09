// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/SurfaceAttributes.h"
#include "host/MeshRecords.h"

#include <array>
#include <cstdint>
#include <vector>

namespace trovik {

/// The data of one vertex that an edit of the topology can change.
struct TriangleVertex {
    std::array<float, 3> position;
    PackedNormal normal;
    /// LevelMesh stores the lowest-numbered face of each vertex.
    uint32_t lowestFace;
    uint8_t freeze;
    uint8_t hiddenFreeze;
};

/// The data of one face that an edit of the topology can change.
struct TriangleFace {
    std::array<uint32_t, 3> vertices;
    /// The neighbours across the sides, as QuadEdgeNeighbour returns them.
    std::array<uint32_t, 3> neighbours;
    uint8_t flags;
};

/// The attributes of one face; SurfaceAttributes::none if the mesh does not have the attribute.
struct TriangleFaceAttributes {
    std::array<uint32_t, 3> uvs;
    uint32_t group;
    uint32_t material;
    uint32_t smoothing;
};

/// One of the two states, before and after an edit, of the vertices and faces that the edit
/// changed. TriangleEdit::Exchange exchanges it with the other state.
struct TriangleContent {
    /// Numbers of elements of the mesh in this state.
    uint32_t vertexCount = 0;
    uint32_t faceCount = 0;
    /// The changed vertices and faces, without duplicates. They include all that exist in only one
    /// of the states; data of elements that do not exist in this state are zero.
    std::vector<uint32_t> vertexNumbers;
    std::vector<TriangleVertex> vertices;
    std::vector<uint32_t> faceNumbers;
    std::vector<TriangleFace> faces;
    /// One per changed vertex; empty if the mesh has no colours.
    std::vector<std::array<float, 4>> colors;
    /// One per changed face; empty if the mesh has no attributes of faces.
    std::vector<TriangleFaceAttributes> attributes;
    /// The UVs after those that both states have.
    std::size_t uvCount = 0;
    std::vector<std::array<float, 2>> uvs;
};

}  // namespace trovik
