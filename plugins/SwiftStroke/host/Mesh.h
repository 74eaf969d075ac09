// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Kernel.h"
#include "host/MeshRecords.h"
#include "host/TreeNode.h"

#include <cstddef>
#include <cstring>

/// \file
/// Meshes as a brush sees them. A geometry is a row of subdivision levels; each level is a mesh.
/// The brush reads and writes a level's storage directly and asks for everything else by calls.
///
/// Corners and sides of a face run in one sense: corner k is joined to corner k + 1 by side k.
/// A patch is one face of a coarser level, refined: 2^L faces a side, stored as one slice.
///
///        corner 0 --- side 0 --> corner 1
///           ^                       |
///         side 3                  side 1        rows run from side 0 to side 2,
///           |                       v           columns from side 3 to side 1
///        corner 3 <-- side 2 --- corner 2
namespace trovik {

class Mesh;
class SubdivisionLevel;

/// A hit on the surface. Position and normal are mesh-local.
struct TROVIK_API SurfacePoint {
    SurfacePoint() = default;
    /// A point at the first corner of face `faceIndex`, with that face's unit normal. `unused`
    /// takes part in nothing.
    SurfacePoint(Mesh* mesh, uint32_t unused, uint32_t faceIndex);

    Mesh* mesh = nullptr;
    uint32_t face = 0;
    Vector position;
    Vector normal;
    /// The hit is the mirrored one of a pair.
    bool mirror = false;
};

/// Visitor of a flood over faces. Reports no errors; called on the thread of the walk.
class TROVIK_API FaceEnumerator {
public:
    virtual void Operator(Mesh* mesh, uint32_t face) = 0;
    /// \return true to go on into the face's neighbours.
    virtual bool Tester(Mesh* mesh, uint32_t face) = 0;

protected:
    ~FaceEnumerator() = default;
};

/// Visitor of a flood over vertices; `face` is one that holds the vertex.
class TROVIK_API VertexEnumerator {
public:
    virtual void Operator(Mesh* mesh, uint32_t vertex, uint32_t face) = 0;
    virtual bool Tester(Mesh* mesh, uint32_t vertex, uint32_t face) = 0;

protected:
    ~VertexEnumerator() = default;
};

/// Visitor of the vertices that share an edge with one vertex.
class TROVIK_API AdjacentVertexEnumerator {
public:
    virtual void Operator(uint32_t vertex, uint32_t face) = 0;

protected:
    ~AdjacentVertexEnumerator() = default;
};

/// Whoever locks a mesh hands one in, so that the mesh can ask whether the lock may be taken away.
class TROVIK_API MeshUnlocker {
public:
    virtual bool IsStrokeFree() = 0;

protected:
    ~MeshUnlocker() = default;
};

/// The active sculpt layer of a mesh: an offset per vertex, kept for touched vertices only and
/// reached by slots.
class TROVIK_API Layer {
public:
    /// Writes the vertex's offset in this layer to `out` (mesh-local) and answers `out`.
    virtual Vector* get(Vector* out, uint32_t layerSlot) const = 0;
    /// Stores the offset. With `updateComposite` the vertex's position in the mesh becomes
    /// rest + strength x offset, rest being the composite without this layer. `out`, when not
    /// null, receives that position.
    virtual void set(Vector* out,
                     uint32_t layerSlot,
                     uint32_t vertex,
                     const Vector* offset,
                     bool updateComposite) = 0;
    /// False: the layer refuses changes.
    virtual bool Writable() const = 0;
    virtual ~Layer();
};

/// Something that shows a mesh; a child node of the mesh.
class TROVIK_API MeshRenderer : public TreeNode {
public:
    virtual void rendererVertexChanged(uint32_t vertex, uint32_t face) = 0;
    /// 0: the renderer must hear of every vertex; otherwise one notice per patch is enough.
    virtual float rendererUpdateFactor() const = 0;
    const ClassDesc* RuntimeClass() const override;
    static const ClassDesc* StaticClass();
};

/// The undo object of one mesh during one stroke. Whoever started it deletes it.
///
/// Look-up of a vertex's record: let k be the vertex's changeLink. It is a hit when k is below
/// *recordCount and record k names the vertex; otherwise the vertex has no record and the word is
/// its visit stamp.
class TROVIK_API MeshChange {
public:
    virtual ~MeshChange();
    MeshChange(const MeshChange&) = delete;
    MeshChange& operator=(const MeshChange&) = delete;

    /// Makes the record of a vertex that has none: position, normal and old link word are taken
    /// over, and the vertex's link then names the record. The reference holds until the next call.
    /// \param face  one that holds the vertex. \param withLayerSlot  reserve a slot in the active
    /// layer. Errors: throws Error::s_cBadAlloc when memory is refused.
    StoredVertexInfo& Add_uncached(uint32_t vertex,
                                   uint32_t face,
                                   Vertex& vertexRecord,
                                   bool withLayerSlot);
    /// Whether Add_uncached would find room for so many more, so that nothing moves and nothing can
    /// be refused; see RecordMaker.
    bool HasRoom(uint32_t count = 1) const {
        return uint64_t{records->fill} + count <= records->capacity;
    }
    static constexpr uint32_t noLayerSlot = 0xffffffffu;

    /// Closes the change at the end of a stroke and gives it to the undo history.
    /// \param keepTopology  the mesh's faces are as they were. \param joinPrevious  the step
    /// belongs to the same undo step as the change finished before it.
    virtual void Finish(bool keepTopology, bool joinPrevious) = 0;

    Mesh* mesh;
    Store<StoredVertexInfo>* records;
    uint32_t* recordCount;
    /// Number of edits of the mesh's positions or normals that did not come from the brush, through
    /// its kernels or the layer, while this change was open. Valid if countsOutsideEdits is set.
    uint32_t outsideEdits = 0;
    /// Declares that the host adds 1 to outsideEdits for every such edit. A brush may then keep
    /// results from one dab to the next as long as the count stays the same. By default a host
    /// declares nothing, and every dab reads the mesh again.
    bool countsOutsideEdits = false;

protected:
    explicit MeshChange(Mesh* changedMesh);
    /// Slot of the vertex in the active layer, made at need.
    virtual uint32_t ReserveLayerSlot(uint32_t vertex) = 0;
};

/// A level's storage and the questions that a brush asks of it. Positions and normals are
/// mesh-local.
class TROVIK_API Mesh : public TreeNode {
public:
    ~Mesh() override;

    /// Vertex indices of all faces, corner by corner: 4 a face when meshType is 1, else 3.
    Store<uint32_t> faceVertexIndices;
    /// One byte a face; bit 1 (value 2) marks the face as live for sculpting.
    uint8_t* faceFlags = nullptr;
    /// 1: quads, 0: triangles.
    int32_t meshType = 1;
    uint32_t faceCount = 0;
    /// A vertex whose stamp word equals this was handled in the present walk.
    uint32_t visitStamp = 1;
    Store<Vertex> vertices;
    Store<PackedNormal> vertexNormals;
    VertexAuxiliary* vertexAuxiliary = nullptr;
    /// Records of the open change; 0 and null without one.
    uint32_t changeRecordCount = 0;
    StoredVertexInfo* changeRecords = nullptr;

    uint32_t CornersPerFace() const { return meshType == 1 ? 4 : 3; }

    /// Opens a change and links it; a change still open on this mesh is unlinked first. The caller
    /// owns the result.
    virtual MeshChange* StartChange() = 0;
    /// Reports every vertex that shares an edge with `vertex`, once, turning from `face`.
    /// \return the number of reports.
    virtual uint32_t EnumerateAdjacentVertices(AdjacentVertexEnumerator* enumerator,
                                               uint32_t vertex,
                                               uint32_t face) = 0;
    /// Breadth-first flood over faces from `face`: Tester once a face; where it answers true,
    /// Operator, and on across sides 0 to 3. Costs what it reaches. visitStamp stays.
    virtual void EnumerateFaces(uint32_t face, FaceEnumerator* enumerator, int reserved) = 0;
    /// The same over vertices, from the corners of `face`. Adds 1 to visitStamp at the end.
    virtual void EnumerateVertices(uint32_t face, VertexEnumerator* enumerator) = 0;
    /// Topological mirror of a corner. \return the mirror vertex or -1.
    virtual int32_t MirrorVertex(uint32_t face,
                                 uint32_t corner,
                                 uint32_t* outFace,
                                 uint32_t* outCorner) = 0;
    /// Neighbour across a side as face * 4 + side; an open border answers openBorder.
    virtual uint32_t QuadEdgeNeighbour(uint32_t face, uint32_t side) = 0;
    /// Normal of a face, of any length: of a quad the cross product of its diagonals, of a triangle
    /// that of its sides at corner 0.
    virtual void FaceNormal(Vector* out, uint32_t face) = 0;
    virtual trovik::Geometry* Geometry() = 0;
    /// Asks leave to change the mesh. False: it may not be touched. The unlocker is borrowed until
    /// Unlock. A brush that is destroyed in mid-stroke does not call Unlock: the host ends the lock
    /// when it destroys the brush base.
    virtual bool Lock(MeshUnlocker* unlocker) = 0;
    /// Not 0 when some vertex is frozen.
    virtual int FreezeQuery() = 0;
    /// The active layer, or null.
    virtual trovik::Layer* Layer() = 0;
    /// Ends what Lock began.
    virtual void Unlock() = 0;

    const ClassDesc* RuntimeClass() const override;
    static const ClassDesc* StaticClass();

protected:
    Mesh();
};

/// Makes records as Add_uncached does, without a call, as long as there is room. What each would
/// ask of the change is asked once; the change hears of the new ones when this goes, and until then
/// none may be made in another way.
class RecordMaker {
public:
    explicit RecordMaker(MeshChange& change)
        : store(*change.records),
          mesh(*change.mesh),
          records(store.array),
          fill(store.fill),
          normals(mesh.vertexNormals.array),
          normalCount(mesh.vertexNormals.capacity) {}
    ~RecordMaker() {
        store.fill = fill;
        mesh.changeRecordCount = fill;
    }
    RecordMaker(const RecordMaker&) = delete;
    RecordMaker& operator=(const RecordMaker&) = delete;

    /// The record of a vertex; see MeshChange for the look-up. \return null where it has none.
    StoredVertexInfo* Find(uint32_t vertex, const Vertex& vertexRecord) const {
        const uint32_t link = vertexRecord.changeLink;
        return link < fill && records[link].vertexIndex == vertex ? records + link : nullptr;
    }
    /// The record of a vertex that has none. \param layerSlot  MeshChange::noLayerSlot, or the
    /// slot that is reserved for it. Needs MeshChange::HasRoom.
    StoredVertexInfo& Add(uint32_t vertex, Vertex& vertexRecord, uint32_t layerSlot) {
        StoredVertexInfo& record = records[fill];
        // Position and link word lie as they do in the vertex.
        std::memcpy(&record, &vertexRecord, offsetof(Vertex, freeze));
        record.originalNormal = vertex < normalCount ? normals[vertex] : PackedNormal{0, 0, 0, 0};
        record.buildUp = 0.0f;
        record.vertexIndex = vertex;
        record.reserved = 0;
        record.layerSlot = layerSlot;
        vertexRecord.changeLink = fill++;
        return record;
    }

private:
    static_assert(offsetof(StoredVertexInfo, visitStampWord) == offsetof(Vertex, changeLink) &&
                  offsetof(Vertex, freeze) == offsetof(StoredVertexInfo, originalNormal));

    Store<StoredVertexInfo>& store;
    Mesh& mesh;
    StoredVertexInfo* records;
    uint32_t fill;
    const PackedNormal* normals;
    uint32_t normalCount;
};

/// Answer of QuadEdgeNeighbour at an open border. Any value above 0x80000000 would do.
inline constexpr uint32_t openBorder = 0xffffffffu;
/// Bit of Mesh::faceFlags.
inline constexpr uint8_t faceIsLive = 2;

/// One level of a geometry.
class TROVIK_API SubdivisionLevel : public virtual Mesh {
public:
    ~SubdivisionLevel() override;
    /// Number of the level, from 0.
    virtual int Index() const = 0;

    /// Tables of a patch refined `level` times, N = 2^level faces a side. They are made once and
    /// live as long as the process. Errors: none; `level` must be at most 15.
    ///
    /// For each of the (N + 1)^2 grid points in row order: where its vertex index stands in the
    /// patch's slice of faceVertexIndices.
    static const Store<uint32_t>& QuadVertexIndexTable(uint32_t level);
    /// For each of the N^2 cells in row order: the number of the face within the patch.
    static const Store<uint32_t>& QuadIndexTable(uint32_t level);
    /// The inverse: for each face within the patch its cell, row * N + column.
    static const Store<uint32_t>& InvertedQuadIndexTable(uint32_t level);

    const ClassDesc* RuntimeClass() const override;
    static const ClassDesc* StaticClass();
};

/// A row of levels under one transformation.
class TROVIK_API Geometry : public TreeNode, public virtual Placed {
public:
    virtual SubdivisionLevel* LowestLevel() const = 0;
    virtual SubdivisionLevel* HighestLevel() const = 0;
    /// Null beyond the highest.
    virtual SubdivisionLevel* LevelByIndex(uint32_t index) const = 0;

    const ClassDesc* RuntimeClass() const override;
    static const ClassDesc* StaticClass();
};

}  // namespace trovik
