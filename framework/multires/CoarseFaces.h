// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

#include <cstdint>
#include <vector>

namespace trovik {

class JobControl;
class LevelMesh;

/// New numbers of faces: face f becomes face[f], its corner c corner (c + turn[f]) mod 4.
struct TROVIK_API FaceRenumbering {
    std::vector<uint32_t> face;
    std::vector<uint8_t> turn;

    FaceRenumbering Inverse() const;
    /// That of the faces' children, where each face is a quad of four.
    FaceRenumbering OfChildren() const;
    uint64_t Bytes() const { return face.capacity() * sizeof(uint32_t) + turn.capacity(); }
};

/// The faces of which a quad mesh is the Catmull-Clark refinement.
struct CoarseFaces {
    /// Corners of each face, 3 or 4.
    uint32_t corners = 4;
    /// Vertex numbers of the coarse mesh, corner by corner.
    std::vector<uint32_t> faceVertices;
    /// Per coarse vertex the vertex of the fine mesh that came from it, ascending.
    std::vector<uint32_t> fineVertices;
    /// From the fine faces' numbers to those that a refinement gives them.
    FaceRenumbering fineFaces;
    /// The same of the fine vertices; found when the refinement is made.
    std::vector<uint32_t> fineVertexMap;

    uint64_t Bytes() const {
        return (faceVertices.capacity() + fineVertices.capacity() + fineVertexMap.capacity()) *
                   sizeof(uint32_t) +
               fineFaces.Bytes();
    }
};

/// Recognises a refined mesh by how its faces hang together: each face has one corner that was a
/// vertex, one that is a face point, and between them two edge points, which have four faces, or
/// two on a border; face points have as many faces as coarse faces have corners. Where several
/// coarse meshes would do, as on a torus, the one that keeps the lowest vertex of the part's lowest
/// face wins. A mesh whose numbers come from a refinement keeps them.
/// \param level  level 0 of its geometry. \throw HostError telling why it is no refinement;
/// Cancelled.
/// Cost: O(faces log faces).
TROVIK_API CoarseFaces FindCoarseFaces(LevelMesh& level, JobControl* job = nullptr);

/// Positions of a coarse level whose refinement comes closest to the fine level's present ones, by
/// least squares over all fine vertices (conjugate gradients in double precision, a fixed order of
/// operations). A fine level that is an exact refinement gives its coarse level back but for
/// rounding.
/// \param finePositions  of the fine level's vertices. \throw Cancelled.
TROVIK_API std::vector<Vector> FitCoarsePositions(LevelMesh& coarse,
                                                  const LevelMesh& fine,
                                                  const std::vector<Vector>& finePositions,
                                                  JobControl* job = nullptr);

}  // namespace trovik
