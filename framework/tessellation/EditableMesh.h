// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/PolygonMesh.h"
#include "framework/tessellation/PagedArray.h"
#include "host/Vector.h"

#include <array>

/// \file A triangle mesh whose connectivity can be edited locally. This folder contains the mesh
/// and the operations on its edges and vertices. It is below the folders that decide where to apply
/// them: remeshing applies them to a whole surface, a brush to the region under it.
namespace trovik {

/// An oriented 2-manifold of triangles, possibly with borders, with half-edge connectivity.
///
/// Half-edge h = 3 f + k belongs to face f and leads from corner k of the face to the next corner.
/// Its twin leads in the opposite direction in the neighbouring face, or is `none` on an open
/// border. Faces and vertices have stable indices: editing never renumbers an element. Removed
/// elements are kept in free lists, and new elements reuse the index that was freed last. Storage
/// grows in pages. All operations cost O(valence of the vertices involved), independent of the size
/// of the mesh.
///
/// The class ensures that the result of each operation is an oriented manifold again. Tests of the
/// geometry, such as that no face is inverted, are in EdgeOperations.h.
///
/// Attributes:
/// - Each vertex has a position and the number of the vertex of the original mesh that it is, or
///   `none`; see `source`.
/// - Each corner can have texture coordinates (UVs). Corners around a vertex refer to the same UV
///   unless a seam separates them. A UV belongs to one vertex.
/// - Each face has a tag with a meaning that the caller defines; faces that are split keep it.
/// - An edge can be a feature. Feature edges are not flipped, and their vertices can be removed
///   only along the feature; see KindOf. Seams of the UVs are always features.
///
/// Not thread-safe, except that const members may be called concurrently.
class TROVIK_API EditableMesh {
public:
    static constexpr uint32_t none = 0xffffffffu;
    static constexpr uint32_t maxFaces = 1u << 30;
    /// Memory for one element; a mesh also has pages that are not full.
    static const std::size_t bytesPerFace;
    static const std::size_t bytesPerVertex;

    /// Builds the connectivity. Faces with more than three corners are split into fans
    /// (FanStarts.h). The tag of each triangle is the number of its face in `mesh`, and `source` of
    /// each vertex is its number. UVs with equal values become one UV where they meet at a vertex.
    /// Vertices without faces are removed.
    /// \param mesh  a mesh that CheckPolygonMesh accepts.
    /// \throw HostError if the mesh is not an oriented manifold, if a face repeats a vertex, or if
    /// it has more than `maxFaces` triangles; Cancelled. Cost: O(corners), plus the sum of the
    /// squared valences.
    explicit EditableMesh(const PolygonMesh& mesh, JobControl* job = nullptr);

    /// Numbers of elements, without removed ones.
    uint32_t FaceCount() const { return faces.Size() - freeFaceCount; }
    uint32_t VertexCount() const { return vertices.Size() - freeVertexCount; }
    /// Indices of faces and vertices are below these limits; half-edges are below 3 FaceLimit().
    uint32_t FaceLimit() const { return faces.Size(); }
    uint32_t VertexLimit() const { return vertices.Size(); }
    /// Whether an index below the limit is that of an existing element.
    bool HasFace(uint32_t face) const { return faces[face].corners[0].vertex != none; }
    bool HasVertex(uint32_t vertex) const { return vertices[vertex].halfEdge != none; }

    static uint32_t FaceOf(uint32_t halfEdge) { return halfEdge / 3; }
    static uint32_t Next(uint32_t halfEdge) {
        return halfEdge % 3 == 2 ? halfEdge - 2 : halfEdge + 1;
    }
    static uint32_t Previous(uint32_t halfEdge) {
        return halfEdge % 3 == 0 ? halfEdge + 2 : halfEdge - 1;
    }
    uint32_t Twin(uint32_t halfEdge) const { return CornerAt(halfEdge).twin; }
    uint32_t From(uint32_t halfEdge) const { return CornerAt(halfEdge).vertex; }
    uint32_t To(uint32_t halfEdge) const { return From(Next(halfEdge)); }
    /// The vertex of the half-edge's face that is not on its edge.
    uint32_t Opposite(uint32_t halfEdge) const { return From(Previous(halfEdge)); }
    /// A half-edge that starts at the vertex. For a vertex on an open border, it is the one on the
    /// border.
    uint32_t HalfEdgeOf(uint32_t vertex) const { return vertices[vertex].halfEdge; }
    /// Returns the half-edge from one vertex to another, or `none`.
    uint32_t FindHalfEdge(uint32_t from, uint32_t to) const;
    bool IsBorder(uint32_t halfEdge) const { return Twin(halfEdge) == none; }
    bool IsBorderVertex(uint32_t vertex) const { return IsBorder(HalfEdgeOf(vertex)); }
    std::array<uint32_t, 3> VerticesOf(uint32_t face) const {
        const auto& c = faces[face].corners;
        return {c[0].vertex, c[1].vertex, c[2].vertex};
    }
    /// Calls `visit(half-edge)` for each half-edge that starts at the vertex, counter-clockwise.
    template <typename Visit>
    void ForEachOutgoing(uint32_t vertex, const Visit& visit) const {
        const uint32_t first = HalfEdgeOf(vertex);
        uint32_t h = first;
        do {
            visit(h);
            h = Twin(Previous(h));
        } while (h != first && h != none);
    }
    /// Calls `visit(vertex)` for each neighbour of a vertex, counter-clockwise.
    template <typename Visit>
    void ForEachNeighbour(uint32_t vertex, const Visit& visit) const {
        const uint32_t first = HalfEdgeOf(vertex);
        uint32_t h = first;
        while (true) {
            visit(To(h));
            const uint32_t incoming = Previous(h);
            h = Twin(incoming);
            if (h == first) return;
            if (h != none) continue;
            visit(From(incoming));
            return;
        }
    }
    /// The number of neighbours of a vertex. Cost: O(1).
    uint32_t Valence(uint32_t vertex) const { return vertices[vertex].valence; }

    const Vector& Position(uint32_t vertex) const { return vertices[vertex].position; }
    /// Does not change `source`.
    void SetPosition(uint32_t vertex, const Vector& p) { vertices[vertex].position = p; }
    /// The vertex of the original mesh whose data this vertex has, or `none` for a vertex that was
    /// inserted or moved.
    uint32_t SourceOf(uint32_t vertex) const { return vertices[vertex].source; }
    void ClearSource(uint32_t vertex) { vertices[vertex].source = none; }
    uint32_t TagOf(uint32_t face) const { return faces[face].tag; }
    void SetTag(uint32_t face, uint32_t tag) { faces[face].tag = tag; }

    bool IsFeature(uint32_t halfEdge) const { return CornerAt(halfEdge).isFeature; }
    /// Marks both half-edges of an edge.
    void SetFeature(uint32_t halfEdge, bool isFeature);
    /// A fixed vertex is neither moved nor removed.
    bool IsFixed(uint32_t vertex) const { return vertices[vertex].isFixed; }
    void SetFixed(uint32_t vertex) { vertices[vertex].isFixed = true; }
    /// An edge between two kept vertices is neither split nor flipped. Kept vertices are fixed.
    bool IsKept(uint32_t vertex) const { return vertices[vertex].isKept; }
    void SetKept(uint32_t vertex) { vertices[vertex].isFixed = vertices[vertex].isKept = true; }
    bool IsKeptEdge(uint32_t halfEdge) const {
        return IsKept(From(halfEdge)) && IsKept(To(halfEdge));
    }
    /// A partial vertex has further faces that are not in this mesh, because the mesh is a part of
    /// a larger one. It is fixed. No edit needs the missing faces: edges at the vertex are neither
    /// flipped nor collapsed into it, and an edge of a single face between two partial vertices is
    /// not split, because it may not be a border of the larger mesh.
    bool IsPartial(uint32_t vertex) const { return vertices[vertex].isPartial; }
    void SetPartial(uint32_t vertex) {
        vertices[vertex].isFixed = vertices[vertex].isPartial = true;
    }
    /// Whether SplitEdge may be applied to the edge.
    bool CanSplit(uint32_t halfEdge) const {
        return !IsKeptEdge(halfEdge) &&
               !(IsBorder(halfEdge) && IsPartial(From(halfEdge)) && IsPartial(To(halfEdge)));
    }

    enum class VertexKind {
        /// Not on a feature or a border.
        Free,
        /// On exactly two edges that are features or on a border: the vertex may be removed by a
        /// collapse along one of them.
        OnCurve,
        /// Fixed, or at a vertex at which features end or branch.
        Corner
    };
    VertexKind KindOf(uint32_t vertex) const;

    bool HasUvs() const { return hasUvs; }
    /// Index of the UV at the start of a half-edge, in its face; `none` if it has none.
    uint32_t UvOf(uint32_t halfEdge) const { return CornerAt(halfEdge).uv; }
    const std::array<float, 2>& Uv(uint32_t uv) const { return uvs[uv]; }
    void SetUv(uint32_t uv, const std::array<float, 2>& value) { uvs[uv] = value; }

    /// Splits an edge by a new vertex, and its faces into two each. The new vertex is not fixed and
    /// has no source; UVs are interpolated. \param t  position of the new vertex between From (0)
    /// and To (1), for the UVs. \return the new vertex. The half-edge then ends at it. \throw
    /// HostError if there would be more than `maxFaces` triangles; the mesh is then unchanged.
    /// std::bad_alloc; the mesh must then not be used any more.
    uint32_t SplitEdge(uint32_t halfEdge, const Vector& position, float t = 0.5f);

    /// Whether an edge can be flipped: it is neither on a border nor a feature nor kept, the
    /// opposite vertices have no edge yet, no vertex keeps fewer than three faces around it (two
    /// neighbours on a border), and none of the four vertices is partial.
    bool CanFlip(uint32_t halfEdge) const;
    /// Replaces the edge by the one between the opposite vertices. The half-edge then leads from
    /// the vertex opposite to it to that opposite to its twin. Requires CanFlip.
    void FlipEdge(uint32_t halfEdge);

    /// Whether one end of an edge, `removed`, can be merged into the other without changing the
    /// topology of the surface or of the features:
    /// - `removed` is free, or the edge belongs to the curve that it is on;
    /// - neither end is partial;
    /// - the link condition of Dey, Edelsbrunner, Guha, Nekhayev: "Topology Preserving Edge
    ///   Contraction" (1999) is met;
    /// - no two features or borders become one.
    bool CanCollapse(uint32_t halfEdge, uint32_t removed) const;
    /// Merges `removed` into the other end, which gets the position. The faces at the edge are
    /// removed. If both vertices are free, UVs are interpolated: \param t  is the position between
    /// the removed vertex (0) and the other (1). Otherwise, the UVs of the other vertex are kept.
    /// If the position of that vertex changes, it loses its source. Requires CanCollapse.
    void CollapseEdge(uint32_t halfEdge, uint32_t removed, const Vector& position, float t = 1.0f);

    /// Returns the mesh without unused elements, in index order, with UVs if it has any. Unless
    /// they are null, `sources` and `tags` receive the source of each vertex and the tag of each
    /// face of the returned mesh.
    PolygonMesh ToPolygons(std::vector<uint32_t>* sources = nullptr,
                           std::vector<uint32_t>* tags = nullptr) const;

    /// Checks all invariants. \return an empty string, or a description of the first violation.
    /// Intended for tests. Cost: O(n).
    std::string FindFault() const;

private:
    struct Corner {
        uint32_t vertex = none;
        uint32_t twin = none;
        uint32_t uv = none;
        bool isFeature = false;
    };
    struct Face {
        std::array<Corner, 3> corners;
        /// In a free face, the next free face.
        uint32_t tag = none;
    };
    struct EditableVertex {
        Vector position;
        uint32_t halfEdge = none;
        /// In a free vertex, the next free vertex.
        uint32_t source = none;
        uint32_t valence = 0;
        bool isFixed = false;
        bool isKept = false;
        bool isPartial = false;
    };

    Corner& CornerAt(uint32_t halfEdge) { return faces[halfEdge / 3].corners[halfEdge % 3]; }
    const Corner& CornerAt(uint32_t halfEdge) const {
        return faces[halfEdge / 3].corners[halfEdge % 3];
    }

    bool IsMarked(uint32_t halfEdge) const { return IsBorder(halfEdge) || IsFeature(halfEdge); }
    void AddFaces(const PolygonMesh& mesh, JobControl* job);
    void ConnectTwins(JobControl* job);
    void AnchorVertices(const std::vector<uint32_t>& outgoingCounts);
    void MergeUvs(const PolygonMesh& mesh);
    void MarkSeams();
    /// \throw HostError if so many faces cannot be added.
    void CheckRoom(std::size_t count) const;
    uint32_t AddFace(uint32_t tag);
    uint32_t AddVertex(const Vector& position);
    void RemoveFace(uint32_t face);
    void RemoveVertex(uint32_t vertex);
    /// Makes two half-edges twins of each other; one of them may be `none`.
    void Connect(uint32_t a, uint32_t b);
    /// Sets the half-edge of a vertex, starting from any half-edge that starts at it.
    void Anchor(uint32_t vertex, uint32_t halfEdge);
    uint32_t AddUv(const std::array<float, 2>& value);
    uint32_t MidUv(uint32_t from, uint32_t to, float t);
    void FreeUvsOf(uint32_t vertex);
    /// Removes the face of a half-edge whose ends are being merged, and connects its neighbours.
    void CloseFace(uint32_t halfEdge);

    PagedArray<Face> faces;
    PagedArray<EditableVertex> vertices;
    PagedArray<std::array<float, 2>> uvs;
    std::vector<uint32_t> freeUvs;
    uint32_t firstFreeFace = none;
    uint32_t freeFaceCount = 0;
    uint32_t firstFreeVertex = none;
    uint32_t freeVertexCount = 0;
    bool hasUvs = false;
};

inline constexpr std::size_t EditableMesh::bytesPerFace = sizeof(Face);
inline constexpr std::size_t EditableMesh::bytesPerVertex = sizeof(EditableVertex);

}  // namespace trovik
