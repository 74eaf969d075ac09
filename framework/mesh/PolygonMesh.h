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

/// A polygon mesh as read from or written to a file: mesh-local positions, and faces in file order.
struct PolygonMesh {
    std::vector<std::array<float, 3>> positions;
    /// Number of corners per face, each at least 3.
    std::vector<std::uint32_t> faceSizes;
    /// The vertex of each corner. The length is the sum of faceSizes.
    std::vector<std::uint32_t> faceVertices;
    /// The normal of each vertex. The list is either empty or as long as positions. Writers store
    /// it unless it is empty.
    std::vector<std::array<float, 3>> normals;
    std::string name;
    /// UVs, colours, groups, and the space of the coordinates.
    SurfaceAttributes attributes;
    /// Descriptions of the file data that the reader skipped, one sentence per item.
    std::vector<std::string> notes;
};

/// The result of MakeOrientedManifold. All members are zero or empty for an oriented manifold.
struct ManifoldReport {
    /// Non-manifold edges: edges with more than two faces.
    std::size_t nonManifoldEdges = 0;
    /// Edges that both faces traverse in the same direction.
    std::size_t misorientedEdges = 0;
    /// Vertices that were duplicated because their faces do not form a single fan.
    std::size_t splitVertices = 0;
    /// Number of vertices appended to the mesh.
    std::size_t addedVertices = 0;
    /// Non-manifold edges that two faces still share after the split, as pairs of vertex numbers in
    /// the result.
    ///
    /// An example is a fin that stands on a single inner edge of a surface: the two faces at the
    /// edge have opposite orientation and are connected around both of its endpoints. The fin is
    /// separated, but a cut along a single edge does not duplicate any vertex. Code that finds
    /// neighbours by vertex pairs therefore finds an ordinary edge with two faces there.
    std::vector<std::array<std::uint32_t, 2>> closedCuts;

    /// Whether the mesh was left unchanged.
    bool Untouched() const { return addedVertices == 0 && closedCuts.empty(); }
};

/// Turns the faces into an oriented manifold, possibly with borders.
///
/// - An edge with more than two faces, or with two faces that traverse it in the same direction, is
///   split into open borders.
/// - A vertex whose faces then do not form a single fan gets a copy for each additional fan. The
///   fan with the lowest-numbered face keeps the vertex. Copies are appended, ordered by vertex and
///   then by the lowest face of the fan, and have the same position, normal and colour.
///
/// Faces, their order and their orientation do not change. Afterwards every pair of vertices is an
/// edge of at most two faces, in opposite directions, and the faces of each vertex form one fan.
/// The method is the cutting operation described in Guéziec, Taubin, Lazarus, Horn: "Cutting and
/// Stitching: Converting Sets of Polygons to Manifold Surfaces" (2001).
///
/// \param mesh  a mesh that CheckPolygonMesh accepts.
/// \throw HostError if the copies exceed the index range; Cancelled. In both cases the mesh is
/// unchanged. Cost: linear in the corner count, plus sorting the edges at each vertex; temporary
/// memory of about 24 bytes per corner.
TROVIK_API ManifoldReport MakeOrientedManifold(PolygonMesh& mesh, JobControl* job = nullptr);

/// Checks that the lists of a mesh describe a surface that can be sculpted.
///
/// The following are rejected:
/// - a mesh without faces, or with more than 2^32 - 2 vertices, faces or corners;
/// - faces with fewer than three corners, a repeated vertex, or a vertex that does not exist;
/// - non-finite positions;
/// - lists whose lengths do not match, including attribute lists.
///
/// Messages count faces and vertices from 0.
/// \param source  the prefix of each message, such as the file's path.
/// \throw HostError for the first error found; Cancelled.
TROVIK_API void CheckPolygonMesh(const PolygonMesh& mesh,
                                 const std::string& source,
                                 JobControl* job = nullptr);

/// The element counts of a surface.
struct SurfaceCounts {
    std::size_t vertices;
    std::size_t faces;
    std::size_t corners;
};

/// Checks that the attribute lists of a surface have the right lengths, valid indices and finite
/// values.
/// \throw HostError for the first error found.
TROVIK_API void CheckSurfaceAttributes(const SurfaceAttributes& attributes,
                                       const SurfaceCounts& counts,
                                       const std::string& source,
                                       JobControl* job = nullptr);

}  // namespace trovik
