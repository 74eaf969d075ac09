// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/HoleFilling.h"

#include <cstdint>

namespace trovik {

/// Settings of a repair. The steps run in the order of the members.
struct MeshRepair {
    /// Merges vertices within this distance of each other, in world units; 0 merges only vertices
    /// at the same position.
    float weld = 0.0f;
    /// Removes vertices without faces, and degenerate and duplicate faces.
    bool cleans = true;
    /// Removes connected components with fewer faces than this number,
    uint32_t minPieceFaces = 0;
    /// or with less than this fraction of all faces.
    float minPieceShare = 0.0f;
    /// Makes the orientation of the faces consistent, and flips closed components whose normals
    /// point inwards.
    bool orients = true;
    HoleFill holes = HoleFill::None;
    /// Fills only holes with at most this number of border edges.
    uint32_t maxHoleEdges = 1u << 30;
};

/// Replaces the mesh by a repaired one. Notes list what was repaired; a warning reports that
/// nothing had to be repaired. Throws HostError if no faces would remain.
TROVIK_API SurfaceOperation RepairMesh(const MeshRepair& settings);

/// Defects of a mesh that RepairMesh can repair.
struct MeshDefects {
    std::size_t coincidentVertices = 0;
    std::size_t degenerateFaces = 0;
    std::size_t duplicateFaces = 0;
    std::size_t pieces = 0;
    /// Pieces with less than one per cent of the faces of the mesh.
    std::size_t smallPieces = 0;
    std::size_t misorientedFaces = 0;
    std::size_t holes = 0;
    /// Border edges of the largest hole.
    std::size_t largestHole = 0;
};

/// Examines a mesh that CheckPolygonMesh accepts. Cost: O(n log n).
TROVIK_API MeshDefects FindDefects(const PolygonMesh& mesh, JobControl* job = nullptr);

/// A defect in words, and the step of a stroke script that repairs it.
struct DefectAdvice {
    std::string defect;
    std::string step;
};
TROVIK_API std::vector<DefectAdvice> AdviceFor(const MeshDefects& defects);

}  // namespace trovik
