// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/tessellation/EditableMesh.h"

/// \file Operations on single edges and vertices that improve a triangulation without folding the
/// surface. Each of them checks whether it is useful and valid, and otherwise changes nothing.
/// After Botsch, Kobbelt: "A Remeshing Approach to Multiresolution Modeling" (2004).
///
/// A face is valid if it is not degenerate and its normal is within about 75 degrees of the old
/// one; for a flip, within 45 degrees of the mean of the two old ones. If the old face was
/// degenerate, any normal is accepted. Costs: O(valence).
namespace trovik {

/// The lengths between which edges are left as they are, for a target length. Splitting an edge of
/// more than 4/3 of the target, or removing one of less than 4/5, brings the lengths closer to it.
struct EdgeLengths {
    explicit EdgeLengths(float target) : longest(target * (4.0f / 3.0f)), shortest(target * 0.8f) {}
    float longest;
    float shortest;
};

/// Twice the area of a face, as the length of its normal.
TROVIK_API Vector AreaNormalOf(const EditableMesh& mesh, uint32_t face);
/// The normalised sum of the area normals around a vertex; zero if it vanishes.
TROVIK_API Vector NormalAt(const EditableMesh& mesh, uint32_t vertex);
TROVIK_API float EdgeLength(const EditableMesh& mesh, uint32_t halfEdge);

/// Splits an edge that is longer than `lengths.longest` at its midpoint. Refused if it is kept, or
/// if one of its faces has a longer edge, which must be split first: this keeps faces from becoming
/// thinner with each split, and repeated splitting always ends, even next to long kept edges. See
/// Rivara: "Algorithms for Refining Triangular Grids Suitable for Adaptive and Multigrid
/// Techniques" (1984). \return the new vertex, or EditableMesh::none.
TROVIK_API uint32_t SplitLongEdge(EditableMesh& mesh,
                                  uint32_t halfEdge,
                                  const EdgeLengths& lengths);

/// The ends of an edge that was collapsed; false if no edge was.
struct CollapsedEdge {
    uint32_t kept = EditableMesh::none;
    uint32_t removed = EditableMesh::none;
    /// Whether `kept` was moved to the midpoint.
    bool isAtMidpoint = false;
    explicit operator bool() const { return kept != EditableMesh::none; }
};

/// Removes an edge that is shorter than `lengths.shortest`. Two free vertices become one at the
/// midpoint; otherwise, the vertex that is on a curve, a corner or fixed keeps its position.
/// Refused if an edge would become longer than `lengths.longest`, or if a curve would be cut off at
/// an angle of more than 60 degrees.
TROVIK_API CollapsedEdge CollapseShortEdge(EditableMesh& mesh,
                                           uint32_t halfEdge,
                                           const EdgeLengths& lengths);

/// Flips an edge if that brings the numbers of neighbours of its four vertices closer to six (four
/// on a border), or if one of its faces is much thinner than both of the new ones. \return whether
/// the edge was flipped.
TROVIK_API bool FlipToImprove(EditableMesh& mesh, uint32_t halfEdge);

/// The mean of the neighbours of a vertex, projected onto its tangent plane.
TROVIK_API Vector RelaxedPosition(const EditableMesh& mesh, uint32_t vertex);

/// A position next to a vertex, in one of its faces: that of the vertex, plus `s` times the side
/// along the half-edge, plus `t` times the other side. The half-edge is `none` if all faces are
/// degenerate.
struct NearbyPosition {
    uint32_t halfEdge = EditableMesh::none;
    float s = 0.0f;
    float t = 0.0f;
};

/// Expresses a position in the face towards which it lies, projected onto the plane of the face.
TROVIK_API NearbyPosition PositionNear(const EditableMesh& mesh,
                                       uint32_t vertex,
                                       const Vector& position);

/// Moves a free vertex, unless a face around it would become invalid. Its UV is interpolated in the
/// face towards which it moves. The vertex loses its source. \return whether it was moved.
TROVIK_API bool MoveFreeVertex(EditableMesh& mesh, uint32_t vertex, const Vector& position);

}  // namespace trovik
