// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/SurfaceAttributes.h"
#include "host/Api.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace trovik {

class JobControl;

/// Polygons as read from or written to a file: mesh-local positions, faces in file order.
struct PolygonMesh {
    std::vector<std::array<float, 3>> positions;
    /// Corners per face, each at least 3.
    std::vector<std::uint32_t> faceSizes;
    /// Corner by corner; as many entries as faceSizes add up to.
    std::vector<std::uint32_t> faceVertices;
    /// Per vertex; empty or as many as positions. Written when present.
    std::vector<std::array<float, 3>> normals;
    std::string name;
    /// UVs, colours, groups, and what the numbers mean.
    SurfaceAttributes attributes;
    /// What the reader left out of the file, one sentence each.
    std::vector<std::string> notes;
};

/// What MakeOrientedManifold had to do. All zero and empty for an oriented manifold.
struct ManifoldReport {
    /// Edges of more than two faces.
    std::size_t crowdedEdges = 0;
    /// Edges whose two faces run along it in the same sense.
    std::size_t misorientedEdges = 0;
    /// Vertices that were given copies, because their faces are not one fan.
    std::size_t splitVertices = 0;
    /// Vertices appended to the mesh.
    std::size_t addedVertices = 0;
    /// Non-manifold edges that two faces still share after the split, by vertices of the result.
    ///
    /// The faces at such an edge are connected around both of its ends and have opposite
    /// orientation, as where a fin stands on one inner edge of a surface. The fin is separated, but
    /// a cut along a single edge duplicates no vertex. Code that finds neighbours by vertex pairs
    /// finds an ordinary edge of two faces there.
    std::vector<std::array<std::uint32_t, 2>> closedCuts;

    /// True where the mesh was not touched.
    bool Untouched() const { return addedVertices == 0 && closedCuts.empty(); }
};

/// Makes the faces an oriented manifold, possibly open.
///
/// Edges of more than two faces, and edges whose two faces run along it in the same sense, are
/// split into open borders; a vertex whose faces then are not one fan gets a copy for each further
/// fan. The fan with the lowest face keeps the vertex; copies are appended, ordered by vertex and
/// then by the fan's lowest face, and repeat its position, normal and colour. Faces, their order
/// and their orientation stay. Afterwards each pair of vertices is an edge of at most two faces,
/// which run along it in opposite senses, and the faces of each vertex are one fan.
///
/// \param mesh  one that CheckPolygonMesh accepts.
/// \throw HostError when the copies would be too many vertices to number; Cancelled. The mesh is
/// unchanged then.
/// Cost: linear in corners (and the sort of each vertex's edges); about 24 bytes a corner.
TROVIK_API ManifoldReport MakeOrientedManifold(PolygonMesh& mesh, JobControl* job = nullptr);

/// Checks that a mesh can be sculpted at all, as far as its lists tell.
///
/// Refused are: no faces; faces of fewer than three corners, naming a vertex twice, or naming one
/// that is not there; positions that are not finite; lists that do not fit each other, attributes
/// included; more than
/// 2^32 - 2 vertices, faces or corners. Faces and vertices are counted from 0 in the messages.
/// \param source  what the message begins with, such as the file's path.
/// \throw HostError naming the first trouble; Cancelled.
TROVIK_API void CheckPolygonMesh(const PolygonMesh& mesh,
                                 const std::string& source,
                                 JobControl* job = nullptr);

/// How much there is of a surface.
struct SurfaceCounts {
    std::size_t vertices;
    std::size_t faces;
    std::size_t corners;
};

/// Checks that the lists of a surface's attributes fit it and each other, and hold finite numbers.
/// \throw HostError naming the first trouble.
TROVIK_API void CheckSurfaceAttributes(const SurfaceAttributes& attributes,
                                       const SurfaceCounts& counts,
                                       const std::string& source,
                                       JobControl* job = nullptr);

}  // namespace trovik
