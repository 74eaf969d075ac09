// SPDX-License-Identifier: Apache-2.0
#include "framework/jobs/JobPhase.h"
#include "framework/memory/FilledStore.h"
#include "framework/memory/SystemMemory.h"
#include "framework/mesh/LevelHierarchy.h"
#include "framework/mesh/VertexLanes.h"
#include "framework/mesh/VertexNeighbours.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace trovik {

void LevelMesh::FaceNormal(Vector* out, uint32_t face) {
    const uint32_t corners = CornersPerFace();
    const uint32_t* v = faceVertexIndices.array + face * corners;
    if (corners == 4)
        *out = (Position(v[2]) - Position(v[0])) & (Position(v[3]) - Position(v[1]));
    else
        *out = (Position(v[1]) - Position(v[0])) & (Position(v[2]) - Position(v[0]));
}

void LevelMesh::ComputeNormals(JobControl* job) {
    CountOutsideEdit();
    JobPhase phase(job, "Computing normals", uint64_t{faceCount} + vertexCount);
    std::vector<Vector> sums(vertexCount);
    const uint32_t corners = CornersPerFace();
    for (uint32_t face = 0; face < faceCount; ++face) {
        Vector normal;
        FaceNormal(&normal, face);
        const uint32_t* v = faceVertexIndices.array + face * corners;
        for (uint32_t k = 0; k < corners; ++k) sums[v[k]] += normal;
        phase.Add();
    }
    if (vertexNormals.fill != vertexCount) {
        ResizeStore(vertexNormals, vertexCount);
        PreferLargePages(vertexNormals.array, uint64_t{vertexCount} * sizeof(PackedNormal));
        std::fill_n(vertexNormals.array, vertexCount, PackedNormal{0, 0, 0, 0});
    }
    for (uint32_t v = 0; v < vertexCount; ++v) {
        PackNormal(vertexNormals.array[v], HWVector(sums[v]));
        phase.Add();
    }
    phase.Finish();
}

void LevelMesh::ComputeNormalsOf(const std::vector<uint32_t>& which, JobControl* job) {
    ComputeNormalsOf(IndexSet(which), FacesAt(*this, which), job);
}

void LevelMesh::ComputeNormalsOf(const IndexSet& which,
                                 const std::vector<uint32_t>& faces,
                                 JobControl* job) {
    CountOutsideEdit();
    JobPhase phase(job, "Updating normals", uint64_t{faces.size()} + which.Count());
    StoreNormalsOf(which, faces, phase);
    phase.Finish();
}

void LevelMesh::StoreNormalsOf(const IndexSet& which, const std::vector<uint32_t>& faces) {
    JobPhase unreported(nullptr, "Updating normals", 0);
    StoreNormalsOf(which, faces, unreported);
}

void LevelMesh::StoreNormalsOf(const IndexSet& which,
                               const std::vector<uint32_t>& faces,
                               JobPhase& phase) {
    std::vector<Vector> sums(which.Count());
    const uint32_t corners = CornersPerFace();
    // Sums in the same order as ComputeNormals, so that the results are bit-identical.
    for (const uint32_t face : faces) {
        Vector normal;
        FaceNormal(&normal, face);
        const uint32_t* v = faceVertexIndices.array + std::size_t{face} * corners;
        for (uint32_t k = 0; k < corners; ++k) {
            const uint32_t rank = which.RankOf(v[k]);
            if (rank != IndexSet::noRank) sums[rank] += normal;
        }
        phase.Add();
    }
    const std::vector<uint32_t> members = which.Members();
    const uint32_t ofLevel0 = hierarchy->Level(0)->vertexCount;
    for (std::size_t i = 0; i < members.size(); ++i) {
        phase.Add();
        const uint32_t vertex = members[i];
        if (vertex < ofLevel0 && LowestFaceOf(vertex) == openBorder) continue;
        PackNormal(vertexNormals.array[vertex], HWVector(sums[i]));
    }
}

}  // namespace trovik
