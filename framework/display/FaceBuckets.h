// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/LevelMesh.h"

#include <cstdint>
#include <span>
#include <vector>

namespace trovik {

/// Divides the faces of a level into compact buckets of 2048 to 4096 faces by repeated median
/// splits along the longest axis, and triangulates each bucket with its own 16-bit vertex indices.
/// A smaller level is a single bucket.
///
/// All triangles of a face start at the same vertex, and the triangles of other faces do not start
/// there, so the vertex can store the flags of the face. For a consistently oriented quad mesh,
/// this requires no additional vertices. A triangle mesh has about twice as many faces as vertices,
/// so about half of its faces require a duplicated vertex.
///
/// Stores indices only, not positions, and is valid until the faces or vertices of the level are
/// renumbered. The division depends only on the positions at the time of construction. May be read
/// by several threads.
class TROVIK_API FaceBuckets {
public:
    static constexpr uint32_t maxFaces = 4096;
    /// The entry in FlagFaces for a vertex at which no triangle starts.
    static constexpr uint32_t noFace = 0xffffffffu;

    /// Cost: O(n log n) for n faces. Memory: about 30 bytes per face.
    explicit FaceBuckets(const LevelMesh& level);

    uint32_t Count() const { return static_cast<uint32_t>(firstVertex.size()) - 1; }
    uint32_t BucketOf(uint32_t face) const { return bucketOfFace[face]; }

    /// Total number of vertices in the buckets before this one.
    uint32_t FirstVertex(uint32_t bucket) const { return firstVertex[bucket]; }
    uint32_t VertexCount(uint32_t bucket) const {
        return firstVertex[bucket + 1] - firstVertex[bucket];
    }
    /// For each vertex of the bucket, its vertex number in the level.
    std::span<const uint32_t> Vertices(uint32_t bucket) const {
        return {vertices.data() + firstVertex[bucket], VertexCount(bucket)};
    }
    /// For each vertex of the bucket, the face whose flags it stores, or noFace.
    std::span<const uint32_t> FlagFaces(uint32_t bucket) const {
        return {flagFaces.data() + firstVertex[bucket], VertexCount(bucket)};
    }
    /// Triangles as triples of vertex numbers within the bucket; the first vertex of each triple
    /// stores the flags of its face. A quad consists of the triangles (0, 1, 2) and (0, 2, 3), as
    /// for picking.
    std::span<const uint16_t> Triangles(uint32_t bucket) const {
        return {triangles.data() + firstIndex[bucket], firstIndex[bucket + 1] - firstIndex[bucket]};
    }

private:
    class Builder;

    std::vector<uint32_t> bucketOfFace;
    std::vector<uint32_t> firstVertex = {0};
    std::vector<uint32_t> firstIndex = {0};
    std::vector<uint32_t> vertices;
    std::vector<uint32_t> flagFaces;
    std::vector<uint16_t> triangles;
};

}  // namespace trovik
