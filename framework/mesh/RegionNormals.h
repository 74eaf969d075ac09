// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/threads/WorkerThreads.h"
#include "host/HWVector.h"

#include <cstdint>
#include <vector>

namespace trovik {

class LevelMesh;

/// Recomputes the normals of a fixed region whose vertices move repeatedly. The connectivity is
/// gathered once, so that an update only reads positions and writes normals. The results are
/// bit-identical to those of LevelMesh::ComputeNormals for any number of threads.
///
/// Memory: 32 bytes per face and 24 bytes per vertex of the region, approximately.
class TROVIK_API RegionNormals {
public:
    /// Borrows the level, whose topology must not change. Cost: linear in the number of vertices.
    /// \param moved  the vertices that move, without duplicates.
    RegionNormals(LevelMesh& ofLevel, const std::vector<uint32_t>& moved);

    /// The vertices whose normals Update recomputes, in ascending order: all vertices of the faces
    /// around the moved ones.
    const std::vector<uint32_t>& Vertices() const { return vertices; }
    /// Recomputes the normals from the current positions.
    /// \param threads  maximum number of threads; see RunInParallel.
    void Update(unsigned threads = allWorkerThreads);

private:
    void UpdateFaces(std::size_t begin, std::size_t end);
    void UpdateVertices(std::size_t begin, std::size_t end);

    LevelMesh& level;
    std::vector<uint32_t> vertices;
    /// In ascending order, with their normals.
    std::vector<uint32_t> faces;
    std::vector<HWVector> faceNormals;
    /// For each vertex, the range of its faces in `facesOfVertices`, which contains indices into
    /// `faces` in ascending order.
    std::vector<uint32_t> firstFace;
    std::vector<uint32_t> facesOfVertices;
};

}  // namespace trovik
