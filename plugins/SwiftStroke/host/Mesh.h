// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Kernel.h"
#include "host/MeshRecords.h"
#include "host/TreeNode.h"

#include <cstddef>
#include <cstring>

/// \file The mesh interface for brushes. A geometry is a hierarchy of subdivision levels, and each
/// level is a mesh. A brush reads and writes a level's storage directly and uses virtual functions
/// for everything else.
///
/// Corners and sides are numbered in the same direction: side k joins corner k to corner k + 1. A
/// patch consists of all descendants of one face of a coarser level. It has 2^L faces per side,
/// which are stored contiguously as one slice.
///
///      corner 0 --- side 0 --> corner 1
///         ^                       |
///       side 3                  side 1        rows run from side 0 to side 2,
///         |                       v           columns from side 3 to side 1
///      corner 3 <-- side 2 --- corner 2
namespace trovik {

class Mesh;
class SubdivisionLevel;

/// A hit on the surface. Position and normal are mesh-local.
struct TROVIK_API SurfacePoint {
    SurfacePoint() = default;
    /// Constructs a point at the first corner of face `faceIndex`, with the unit normal of that
    /// face. `unused` has no effect.
    SurfacePoint(Mesh* mesh, uint32_t unused, uint32_t faceIndex);

    Mesh* mesh = nullptr;
    uint32_t face = 0;
    Vector position;
    Vector normal;
    /// Whether this is the mirrored hit of a pair.
    bool mirror = false;
};

/// Visitor for a flood fill over faces, called on the traversing thread. An exception ends the
/// traversal and propagates to its caller.
class TROVIK_API FaceEnumerator {
public:
    virtual void Operator(Mesh* mesh, uint32_t face) = 0;
    /// \return true to visit the face and continue with its neighbours.
    virtual bool Tester(Mesh* mesh, uint32_t face) = 0;

protected:
    ~FaceEnumerator() = default;
};

/// Visitor for a flood fill over vertices; `face` is a face that uses the vertex.
class TROVIK_API VertexEnumerator {
public:
    virtual void Operator(Mesh* mesh, uint32_t vertex, uint32_t face) = 0;
    virtual bool Tester(Mesh* mesh, uint32_t vertex, uint32_t face) = 0;

protected:
    ~VertexEnumerator() = default;
};

/// Visitor for the vertices that share an edge with a given vertex.
class TROVIK_API AdjacentVertexEnumerator {
public:
    virtual void Operator(uint32_t vertex, uint32_t face) = 0;

protected:
    ~AdjacentVertexEnumerator() = default;
};

/// Implemented by code that locks a mesh. The mesh calls it to find out whether the lock may be
/// transferred.
class TROVIK_API MeshUnlocker {
public:
    virtual bool IsStrokeFree() = 0;

protected:
    ~MeshUnlocker() = default;
};

/// A mesh's active sculpt layer: one offset per vertex, stored only for touched vertices and
/// accessed by slot.
class TROVIK_API Layer {
public:
    /// Writes the offset in the given slot to `out` (mesh-local) and returns `out`.
    virtual Vector* get(Vector* out, uint32_t layerSlot) const = 0;
    /// Stores the offset. With `updateComposite`, the position of the vertex in the mesh becomes
    /// rest + strength * offset, where rest is the position without this layer. `out`, if not null,
    /// receives that position.
    virtual void set(Vector* out,
                     uint32_t layerSlot,
                     uint32_t vertex,
                     const Vector* offset,
                     bool updateComposite) = 0;
    /// False if the layer does not accept changes.
    virtual bool Writable() const = 0;
    virtual ~Layer();
};

/// An object that displays a mesh; a child node of the mesh.
class TROVIK_API MeshRenderer : public TreeNode {
public:
    virtual void rendererVertexChanged(uint32_t vertex, uint32_t face) = 0;
    /// 0 if the renderer must be notified of every vertex; otherwise one notification per patch is
    /// sufficient.
    virtual float rendererUpdateFactor() const = 0;
    const ClassDesc* RuntimeClass() const override;
    static const ClassDesc* StaticClass();
};

/// Collects the undo records of one mesh during one stroke. Must be deleted by the code that
/// started it.
///
/// To look up a vertex's record, let k be the vertex's changeLink. If k is below *recordCount and
/// record k belongs to the vertex, it is the result. Otherwise the vertex has no record, and its
/// changeLink is its visit stamp.
class TROVIK_API MeshChange {
public:
    virtual ~MeshChange();
    MeshChange(const MeshChange&) = delete;
    MeshChange& operator=(const MeshChange&) = delete;

    /// Creates the record of a vertex that has none: copies the vertex's position, normal and link
    /// word into the record, and sets the vertex's link to the record. The reference is valid until
    /// the next call.
    /// \param face  a face that uses the vertex.
    /// \param withLayerSlot  whether to reserve a slot in the active layer.
    /// \throw Error::s_cBadAlloc if memory cannot be allocated.
    StoredVertexInfo& Add_uncached(uint32_t vertex,
                                   uint32_t face,
                                   Vertex& vertexRecord,
                                   bool withLayerSlot);
    /// Returns whether there is room for `count` more records. If so, Add_uncached does not
    /// reallocate and cannot fail; see RecordMaker.
    bool HasRoom(uint32_t count = 1) const {
        return uint64_t{records->fill} + count <= records->capacity;
    }
    static constexpr uint32_t noLayerSlot = 0xffffffffu;

    /// Ends the change at the end of a stroke and passes it to the undo history.
    /// \param keepTopology  whether the faces of the mesh are unchanged.
    /// \param joinPrevious  whether to merge the step into the undo step of the change that was
    /// finished before it.
    virtual void Finish(bool keepTopology, bool joinPrevious) = 0;

    Mesh* mesh;
    Store<StoredVertexInfo>* records;
    uint32_t* recordCount;
    /// Number of edits to the mesh's positions or normals since this change was opened. Edits that
    /// the brush itself makes through its kernels or the layer do not count. Valid if
    /// countsOutsideEdits is set.
    uint32_t outsideEdits = 0;
    /// Declares that the host increments outsideEdits for every such edit. A brush may then reuse
    /// results of the previous dab while the count is unchanged. By default the flag is false, and
    /// every dab reads the mesh again.
    bool countsOutsideEdits = false;

protected:
    explicit MeshChange(Mesh* changedMesh);
    /// Returns the vertex's slot in the active layer, and creates it if necessary.
    virtual uint32_t ReserveLayerSlot(uint32_t vertex) = 0;
};

/// A level's storage and the functions that a brush calls on it. Positions and normals are
/// mesh-local.
class TROVIK_API Mesh : public TreeNode {
public:
    ~Mesh() override;

    /// Vertex indices of all faces, by corner: 4 per face if meshType is 1, otherwise 3.
    Store<uint32_t> faceVertexIndices;
    /// One byte per face; bit 1 (value 2) marks the face as live for sculpting.
    uint8_t* faceFlags = nullptr;
    /// 1: quads, 0: triangles.
    int32_t meshType = 1;
    uint32_t faceCount = 0;
    /// A vertex whose own visit stamp equals this value has been visited in the current traversal.
    uint32_t visitStamp = 1;
    Store<Vertex> vertices;
    Store<PackedNormal> vertexNormals;
    VertexAuxiliary* vertexAuxiliary = nullptr;
    /// Number and array of the open change's records; 0 and null if no change is open.
    uint32_t changeRecordCount = 0;
    StoredVertexInfo* changeRecords = nullptr;

    uint32_t CornersPerFace() const { return meshType == 1 ? 4 : 3; }

    /// Opens an undo change for this mesh. If another change is already open, it is detached first.
    /// The caller owns the result.
    virtual MeshChange* StartChange() = 0;
    /// Reports each vertex that shares an edge with `vertex` exactly once, in rotational order
    /// starting at `face`.
    /// \return the number of vertices reported.
    virtual uint32_t EnumerateAdjacentVertices(AdjacentVertexEnumerator* enumerator,
                                               uint32_t vertex,
                                               uint32_t face) = 0;
    /// Breadth-first flood fill over faces, starting at `face`. Calls Tester once per face; if
    /// Tester returns true, calls Operator and continues across sides 0 to 3. The cost depends only
    /// on the number of faces reached. Does not change visitStamp.
    virtual void EnumerateFaces(uint32_t face, FaceEnumerator* enumerator, int reserved) = 0;
    /// Flood fill over vertices: works in the same way, but starts at the corners of `face`. Adds 1
    /// to visitStamp at the end.
    virtual void EnumerateVertices(uint32_t face, VertexEnumerator* enumerator) = 0;
    /// Returns the topological mirror vertex of a corner, or -1 if there is none.
    virtual int32_t MirrorVertex(uint32_t face,
                                 uint32_t corner,
                                 uint32_t* outFace,
                                 uint32_t* outCorner) = 0;
    /// Returns the neighbour across a side as face * 4 + side, or openBorder for an open border.
    virtual uint32_t QuadEdgeNeighbour(uint32_t face, uint32_t side) = 0;
    /// Computes the normal of a face, not normalised: for a quad, the cross product of its
    /// diagonals; for a triangle, the cross product of its sides at corner 0.
    virtual void FaceNormal(Vector* out, uint32_t face) = 0;
    virtual trovik::Geometry* Geometry() = 0;
    /// Requests permission to change the mesh. If the result is false, the mesh must not be
    /// changed. The unlocker is borrowed until Unlock. A brush that is destroyed during a stroke
    /// does not call Unlock; the destructor of the host's brush base class releases the lock.
    virtual bool Lock(MeshUnlocker* unlocker) = 0;
    /// Returns a non-zero value if at least one vertex is frozen.
    virtual int FreezeQuery() = 0;
    /// The active layer, or null.
    virtual trovik::Layer* Layer() = 0;
    /// Releases the lock.
    virtual void Unlock() = 0;

    const ClassDesc* RuntimeClass() const override;
    static const ClassDesc* StaticClass();

protected:
    Mesh();
};

/// Creates records like Add_uncached, but inline, as long as there is room. It reads the change's
/// state once and writes it back on destruction. Until then, records must not be added in any other
/// way.
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

    /// Returns the record of a vertex, or null if it has none; see MeshChange for the look-up.
    StoredVertexInfo* Find(uint32_t vertex, const Vertex& vertexRecord) const {
        const uint32_t link = vertexRecord.changeLink;
        return link < fill && records[link].vertexIndex == vertex ? records + link : nullptr;
    }
    /// Creates the record of a vertex that has none. Requires MeshChange::HasRoom.
    /// \param layerSlot  MeshChange::noLayerSlot, or the slot reserved for the vertex.
    StoredVertexInfo& Add(uint32_t vertex, Vertex& vertexRecord, uint32_t layerSlot) {
        StoredVertexInfo& record = records[fill];
        // Position and link word have the same layout in the record and the vertex.
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

/// The value that QuadEdgeNeighbour returns for an open border. Brushes treat any value above
/// 0x80000000 as an open border.
inline constexpr uint32_t openBorder = 0xffffffffu;
/// Bit of Mesh::faceFlags.
inline constexpr uint8_t faceIsLive = 2;

/// One level of a geometry.
class TROVIK_API SubdivisionLevel : public virtual Mesh {
public:
    ~SubdivisionLevel() override;
    /// Level number, starting at 0.
    virtual int Index() const = 0;

    /// Index tables for a patch that is refined `level` times, with N = 2^level faces per side.
    /// They are built once and exist until the process ends. `level` must be at most 15.
    ///
    /// For each of the (N + 1)^2 grid points, row by row: the offset of its vertex index in the
    /// patch's slice of faceVertexIndices.
    static const Store<uint32_t>& QuadVertexIndexTable(uint32_t level);
    /// For each of the N^2 cells, row by row: the number of the cell's face within the patch.
    static const Store<uint32_t>& QuadIndexTable(uint32_t level);
    /// The inverse table: for each face within the patch, its cell, row * N + column.
    static const Store<uint32_t>& InvertedQuadIndexTable(uint32_t level);

    const ClassDesc* RuntimeClass() const override;
    static const ClassDesc* StaticClass();
};

/// A hierarchy of levels with one transform.
class TROVIK_API Geometry : public TreeNode, public virtual Placed {
public:
    virtual SubdivisionLevel* LowestLevel() const = 0;
    virtual SubdivisionLevel* HighestLevel() const = 0;
    /// Null if there is no such level.
    virtual SubdivisionLevel* LevelByIndex(uint32_t index) const = 0;

    const ClassDesc* RuntimeClass() const override;
    static const ClassDesc* StaticClass();
};

}  // namespace trovik
