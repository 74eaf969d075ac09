// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

#include <cstdint>
#include <vector>

namespace trovik {

class JobControl;
class LevelMesh;

/// Face renumbering: face f becomes face[f], and its corner c becomes corner (c + turn[f]) mod 4.
struct TROVIK_API FaceRenumbering {
    std::vector<uint32_t> face;
    std::vector<uint8_t> turn;

    FaceRenumbering Inverse() const;
    /// Returns the renumbering of the children, provided that each face is a quad with four
    /// children.
    FaceRenumbering OfChildren() const;
    uint64_t Bytes() const { return face.capacity() * sizeof(uint32_t) + turn.capacity(); }
};

/// The faces whose Catmull-Clark refinement is a given quad mesh.
struct CoarseFaces {
    /// Number of corners of each face, 3 or 4.
    uint32_t corners = 4;
    /// Per corner: a vertex number of the coarse mesh.
    std::vector<uint32_t> faceVertices;
    /// Per coarse vertex: the corresponding vertex of the fine mesh, in ascending order.
    std::vector<uint32_t> fineVertices;
    /// Maps each fine face to the number that a refinement assigns to it.
    FaceRenumbering fineFaces;
    /// Maps each fine vertex to the number that a refinement assigns to it; filled when the
    /// refinement is built.
    std::vector<uint32_t> fineVertexMap;

    uint64_t Bytes() const {
        return (faceVertices.capacity() + fineVertices.capacity() + fineVertexMap.capacity()) *
                   sizeof(uint32_t) +
               fineFaces.Bytes();
    }
};

/// Recognises a refined mesh by its connectivity. In each face, one corner must be a coarse vertex,
/// the opposite corner a face point, and the other two corners edge points. An edge point has four
/// faces, or two on a border. A face point has as many faces as its coarse face has corners. If
/// several coarse meshes are possible, as on a torus, the function returns the one that keeps the
/// lowest-numbered vertex of each component's lowest-numbered face. If the mesh was numbered by a
/// refinement, its numbering is kept. The problem and a different algorithm are described in
/// Taubin: "Detecting and Reconstructing Subdivision Connectivity" (2002).
/// \param level  level 0 of its geometry.
/// \throw HostError with the reason if the mesh is not a refinement; Cancelled.
/// Cost: O(faces log faces).
TROVIK_API CoarseFaces FindCoarseFaces(LevelMesh& level, JobControl* job = nullptr);

/// Returns the positions of a coarse level whose refinement is the best least-squares fit to the
/// current positions of all vertices of the fine level. Uses conjugate gradients (Hestenes,
/// Stiefel: "Methods of Conjugate Gradients for Solving Linear Systems" (1952)) in double
/// precision, with a fixed order of operations. If the fine level is an exact refinement, the
/// result equals its coarse level up to rounding.
/// \param finePositions  positions of the fine level's vertices.
/// \throw Cancelled.
TROVIK_API std::vector<Vector> FitCoarsePositions(LevelMesh& coarse,
                                                  const LevelMesh& fine,
                                                  const std::vector<Vector>& finePositions,
                                                  JobControl* job = nullptr);

}  // namespace trovik
