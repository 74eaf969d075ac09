// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/TriangleEdit.h"
#include "framework/tessellation/EditableMesh.h"

#include <array>
#include <tuple>
#include <utility>
#include <vector>

namespace trovik {

/// Finds the local numbers of the faces or vertices of a region in O(1). The list is as long as the
/// mesh has such elements, so it is kept for the whole stroke.
class LocalNumbers {
public:
    static constexpr uint32_t none = 0xffffffffu;
    /// Removes all elements.
    void Clear(uint32_t elementCount);
    bool Has(uint32_t element) const { return marks[element] == mark; }
    void Set(uint32_t element, uint32_t number) {
        marks[element] = mark;
        numbers[element] = number;
    }
    uint32_t Of(uint32_t element) const { return Has(element) ? numbers[element] : none; }

private:
    std::vector<uint32_t> marks;
    std::vector<uint32_t> numbers;
    uint32_t mark = 0;
};

/// Data of a vertex that is interpolated when its edges are split or collapsed.
struct DetailVertex {
    /// The vertex of the level, or EditableMesh::none for an inserted one.
    uint32_t number = EditableMesh::none;
    /// Mask amount, 0 to 127.
    float freeze = 0.0f;
    std::array<float, 4> color{};
    /// From the record of the vertex in the open change, if it has one.
    bool hasRecord = false;
    float buildUp = 0.0f;
    Vector original;
    /// In units of packed normals.
    Vector originalNormal;
    /// Whether the vertex was inserted or merged with another one.
    bool isInterpolated = false;
    /// Whether an edit has changed the faces around the vertex.
    bool isTouched = false;
};

/// The halfway point between two vertices; the number is `none`.
DetailVertex Between(const DetailVertex& a, const DetailVertex& b);

/// Interpolates the mask and the colour: own + s (a - own) + t (b - own).
void Blend(DetailVertex& own, const DetailVertex& a, float s, const DetailVertex& b, float t);

/// Some faces of level 0 as an editable mesh. Edits are written back to the level at the end, at
/// the numbers of the faces and vertices that they replace. Vertices with further faces outside of
/// the region are partial.
class DetailRegion {
public:
    /// \param faces  visible faces of the level, in ascending order, without duplicates.
    /// \param creaseAngle  in degrees; see DetailSettings.
    /// \throw HostError if the faces are not an oriented manifold.
    DetailRegion(LevelMesh& level,
                 const SurfaceAttributes& attributes,
                 std::vector<uint32_t> faces,
                 LocalNumbers& numbers,
                 float creaseAngle);

    EditableMesh& Mesh() { return mesh; }
    /// Data of a vertex of the mesh. New vertices have default data.
    DetailVertex& Data(uint32_t vertex) {
        if (vertex >= data.size()) data.resize(vertex + 1);
        return data[vertex];
    }

    /// Writes the region to the level, and its records to the change. The face of the region that
    /// is nearest to the point gets the number `face`, if `face` is in the region.
    /// \return the faces of the level with other vertices or positions, in ascending order.
    /// \throw std::bad_alloc or Error::s_cBadAlloc; the level is then unchanged, unless a record
    /// could not be added.
    std::vector<uint32_t> WriteTo(TriangleEdit& edit,
                                  MeshChange& change,
                                  uint32_t face,
                                  const Vector& point);
    /// The number of a vertex of the mesh in the level after WriteTo.
    uint32_t NumberOf(uint32_t vertex) const { return numberOf[vertex]; }

private:
    struct Corners;
    static Corners CornersOf(LevelMesh& level,
                             const std::vector<uint32_t>& faces,
                             const LocalNumbers& numbers);
    DetailRegion(LevelMesh& level,
                 const SurfaceAttributes& attributes,
                 std::vector<uint32_t> faces,
                 const Corners& corners,
                 float creaseAngle);
    PolygonMesh PolygonsOf(const Corners& corners) const;
    void MarkFeatures(float creaseAngle);
    /// Determines the numbers of the faces and vertices of the mesh.
    void Number(TriangleEdit& edit, uint32_t face, const Vector& point);
    uint32_t NearestFace(const Vector& point) const;
    /// Returns the neighbour across a half-edge, as QuadEdgeNeighbour does.
    uint32_t NeighbourOf(uint32_t halfEdge) const;
    TriangleFaceAttributes AttributesOf(uint32_t face, TriangleEdit& edit);
    void WriteLowestFaces(const std::vector<uint32_t>& changed, TriangleEdit& edit) const;
    void WriteVertex(uint32_t vertex, TriangleEdit& edit, MeshChange& change) const;

    LevelMesh& level;
    const SurfaceAttributes& attributes;
    std::vector<uint32_t> faces;
    EditableMesh mesh;
    std::vector<DetailVertex> data;
    /// The neighbours across the border of the region, by the vertices of the border edges.
    struct OuterEdge {
        uint32_t from;
        uint32_t to;
        uint32_t neighbour;
        bool operator<(const OuterEdge& other) const {
            return std::tie(from, to, neighbour) < std::tie(other.from, other.to, other.neighbour);
        }
    };
    std::vector<OuterEdge> outerEdges;
    /// Attributes of the faces before the edit, by tag.
    std::vector<TriangleFaceAttributes> oldAttributes;
    /// Values and indices of the UVs of the faces, sorted.
    std::vector<std::pair<std::array<float, 2>, uint32_t>> knownUvs;
    std::vector<uint32_t> numberOf;
    std::vector<uint32_t> faceNumberOf;
};

}  // namespace trovik
