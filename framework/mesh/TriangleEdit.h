// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/LevelMesh.h"
#include "framework/mesh/TriangleContent.h"

#include <cstdint>
#include <vector>

namespace trovik {

/// Changes the connectivity of level 0 of a triangle mesh in place, and records the previous
/// content of all vertices and faces that it changes, so that the edit can be undone bit-exactly.
/// The cost of an edit depends on the number of its changes, not on the size of the mesh.
///
/// The caller writes the storage of the level through the functions of this class, which keep its
/// counts (masked vertices, hidden faces) correct. Numbers of vertices and faces do not change
/// during an edit: removed elements keep their numbers, and new elements reuse the numbers of
/// removed ones. A removed face is hidden and has no area; a removed vertex has no faces. Compact
/// closes these gaps at the end of the edit.
///
/// The level must be the only one of its geometry and must not have layers. Must be used on the
/// thread that owns the document. The destructor does not compact.
class TROVIK_API TriangleEdit {
public:
    /// Borrows both; the attributes are those of level 0. Cost: one bit per vertex and face.
    TriangleEdit(LevelMesh& level, SurfaceAttributes& attributes);

    LevelMesh& Level() const { return level; }
    const SurfaceAttributes& Attributes() const { return attributes; }

    /// Allocates memory for more vertices, faces and UVs. Afterwards, so many can be added without
    /// an exception. Arrays grow by at least half of their size, so the cost is amortised.
    /// \throw std::bad_alloc or Error::s_cBadAlloc; the mesh is then unchanged.
    void Reserve(uint32_t newVertices, uint32_t newFaces, uint32_t newUvs);

    /// Returns the number of a new vertex or face, which reuses the number that was removed last.
    /// Its content is unspecified until it is written. Requires Reserve.
    uint32_t AddVertex();
    uint32_t AddFace();
    /// Appends a UV and returns its index. Requires Reserve.
    uint32_t AddUv(const std::array<float, 2>& uv);
    /// The vertex must not have faces any more.
    void RemoveVertex(uint32_t vertex);
    void RemoveFace(uint32_t face);

    void SetPosition(uint32_t vertex, const Vector& position);
    void SetFreeze(uint32_t vertex, uint8_t amount);
    /// Has no effect if the mesh has no colours.
    void SetColor(uint32_t vertex, const std::array<float, 4>& color);
    void SetLowestFace(uint32_t vertex, uint32_t face);
    void SetFace(uint32_t face, const TriangleFace& content);
    void SetFaceAttributes(uint32_t face, const TriangleFaceAttributes& content);
    /// Records the content of a vertex, if that has not been done, before the caller writes it. If
    /// the open change has a record of the vertex, its position and normal at the beginning of the
    /// stroke are recorded. Does not need memory for a vertex after Reserve(n, …), but throws
    /// std::bad_alloc if the list cannot grow.
    void RecordVertex(uint32_t vertex);
    TriangleFace FaceOf(uint32_t face) const;
    TriangleFaceAttributes AttributesOf(uint32_t face) const;
    bool HasFaceAttributes() const;

    /// Whether the element has been removed.
    bool IsRemovedFace(uint32_t face) const;
    /// The faces that were changed since the last call, without duplicates, in ascending order.
    std::vector<uint32_t> TakeChangedFaces();

    /// Moves the elements with the highest numbers to the numbers of removed ones. Afterwards the
    /// mesh has no removed elements. The change must be unlinked, because its records refer to
    /// vertices by number.
    void Compact();
    /// Ends the edit. \return the content before the edit.
    TriangleContent Finish();

    /// Exchanges the content of a mesh with a recorded one. \return the faces that differ, in
    /// ascending order.
    static std::vector<uint32_t> Exchange(LevelMesh& level,
                                          SurfaceAttributes& attributes,
                                          TriangleContent& content);

private:
    void RecordFace(uint32_t face);
    void MoveVertex(uint32_t from, uint32_t to);
    void MoveFace(uint32_t from, uint32_t to);

    LevelMesh& level;
    SurfaceAttributes& attributes;
    TriangleContent before;
    std::vector<bool> isVertexRecorded;
    std::vector<bool> isFaceRecorded;
    std::vector<uint32_t> removedVertices;
    std::vector<uint32_t> removedFaces;
    std::vector<uint32_t> changedFaces;
};

}  // namespace trovik
