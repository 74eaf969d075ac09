// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/FaceRun.h"
#include "framework/mesh/OlderValues.h"
#include "host/Mesh.h"

#include <span>
#include <vector>

namespace trovik {

class IndexSet;
class JobControl;
class LevelChange;
class LevelHierarchy;
class SculptLayer;
class StrokeResources;

/// One face of a walk and the visitor's result for it.
struct FaceVisit {
    uint32_t face;
    bool answer;
};

/// One level of a LevelGeometry: the stored mesh and the walks over it.
///
/// Level 0 stores the adjacency of its faces. Every other level is the Catmull-Clark refinement of
/// the level below. Face f of the level below becomes the faces 4f to 4f + 3; child k is at corner
/// k and has the same corner order as f. A triangle becomes the faces 3f to 3f + 2. The corners of
/// its child k are corner k, the point on edge k, the face point and the point on edge k - 1. The
/// topology is implicit: the neighbour across a side is computed from the base mesh and the digits
/// of the face number.
///
/// Vertex numbers: the vertices of the level below keep their numbers. The new vertices follow,
/// face by face of the level below: first the edge points that no earlier face uses, in the order
/// of the sides, and then the face point. The new vertices of a patch are therefore contiguous in
/// memory.
///
/// Walks mark visited elements with stamps that are stored in the mesh. A walk does not allocate
/// once its queue is large enough.
class TROVIK_API LevelMesh : public SubdivisionLevel {
public:
    ~LevelMesh() override;

    MeshChange* StartChange() override;
    uint32_t EnumerateAdjacentVertices(AdjacentVertexEnumerator* enumerator,
                                       uint32_t vertex,
                                       uint32_t face) override;
    void EnumerateFaces(uint32_t face, FaceEnumerator* enumerator, int reserved) override;
    void EnumerateVertices(uint32_t face, VertexEnumerator* enumerator) override;
    /// Uses the geometry's mirror, if one was computed (LevelGeometry::FindMirror). Returns -1 and
    /// writes nothing if the corner has no mirror image. Cost: O(level).
    int32_t MirrorVertex(uint32_t face,
                         uint32_t corner,
                         uint32_t* outFace,
                         uint32_t* outCorner) override;
    uint32_t QuadEdgeNeighbour(uint32_t face, uint32_t side) override;
    void FaceNormal(Vector* out, uint32_t face) override;
    trovik::Geometry* Geometry() override;
    /// Fails if the mesh is marked as not lockable, or if the stroke of another holder is open.
    bool Lock(MeshUnlocker* unlocker) override;
    int FreezeQuery() override;
    trovik::Layer* Layer() override;
    void Unlock() override;
    int Index() const override;

    /// Returns the hierarchy of this level, even while the level has been removed from the
    /// hierarchy. GeometryOf (LevelGeometry.h) returns the level's geometry.
    LevelHierarchy& Hierarchy() const { return *hierarchy; }
    uint32_t VertexCount() const { return vertexCount; }
    /// Number of vertices of the level below, which are the first vertices of this level; 0 for
    /// level 0.
    uint32_t CoarserVertexCount() const { return coarserVertexCount; }

    Vector Position(uint32_t vertex) const {
        const Vertex& v = vertices.array[vertex];
        return {v.x, v.y, v.z};
    }
    /// Moves a vertex. The call counts as an edit from outside the brush; see CountOutsideEdit.
    void SetPosition(uint32_t vertex, const Vector& p) {
        CountOutsideEdit();
        if (older.MissesPosition(vertex)) NoteOlderPosition(vertex);
        StorePosition(vertex, p);
    }
    /// If a change is open, increments its count of the edits to positions or normals that were not
    /// made by the brush. Code that writes to the storage directly must call this once per edit,
    /// unless it writes on behalf of the brush.
    void CountOutsideEdit() {
        if (outsideEditCount != nullptr) ++*outsideEditCount;
    }
    /// Moves a vertex on behalf of the brush. The open change must already have a record of the
    /// vertex.
    void StorePosition(uint32_t vertex, const Vector& p) {
        Vertex& v = vertices.array[vertex];
        v.x = p.x;
        v.y = p.y;
        v.z = p.z;
    }
    /// Returns the index of the first corner of `face` that uses `vertex`, or -1 if there is none.
    int CornerOf(uint32_t face, uint32_t vertex) const;
    /// Returns the lowest-numbered face that uses the vertex, or openBorder if there is none. Cost:
    /// O(log faces + valence), or a few nanoseconds if `near` is close to the vertex.
    /// \param near  the face at which the search starts; openBorder if there is none.
    uint32_t LowestFaceOf(uint32_t vertex, uint32_t near = openBorder);

    /// Recomputes all packed normals of the level: for each vertex, the normalised sum of
    /// FaceNormal over its faces, which weights faces by their area; see Jin, Lewis, West: "A
    /// Comparison of Algorithms for Vertex Normal Computation" (2005). Allocates the normals on
    /// first use. Cost: O(faces).
    /// \throw Cancelled; in that case, some normals may have changed.
    void ComputeNormals(JobControl* job = nullptr);

    /// Sets the freeze amount (the painted mask), 0 to 127. Updates the count used by FreezeQuery.
    /// A hidden vertex keeps its own amount, which takes effect again when the vertex is shown.
    void SetFreeze(uint32_t vertex, uint8_t amount);
    uint8_t Freeze(uint32_t vertex) const {
        const Vertex& v = vertices.array[vertex];
        return (v.reserved[0] != 0 ? v.reserved[0] : v.freeze) & freezeAmountMask;
    }
    /// The amount that tools respect: 127 for a hidden vertex, otherwise Freeze. Brushes read this
    /// value from Vertex::freeze.
    uint8_t FreezeOfTools(uint32_t vertex) const {
        return vertices.array[vertex].freeze & freezeAmountMask;
    }
    /// Number of vertices whose Freeze is above 0.
    uint32_t FrozenVertexCount() const { return frozenVertexCount; }

    /// The older states of this level with which the neighbouring levels were last synchronised.
    /// SetPosition and SetFreeze record the values that they replace. Values that the brush
    /// replaces are recorded when its change is unlinked.
    OlderStates& Older() { return older; }
    const OlderStates& Older() const { return older; }
    /// Hidden faces are neither sculpted nor drawn. The entry of each face in faceFlags stores
    /// whether the face is hidden (faceIsHidden). A vertex is hidden if it has faces and all of
    /// them are hidden. Vertex::freeze then marks it as fully frozen for brushes, and its own
    /// amount is saved in Vertex::reserved[0]. Vertices between hidden and visible faces are
    /// visible.
    ///
    /// All levels of a geometry have the same hidden region. Use HiddenFaces.h in
    /// framework/multires to change a geometry.
    bool IsFaceHidden(uint32_t face) const { return (faceFlags[face] & faceIsHidden) != 0; }
    bool IsVertexHidden(uint32_t vertex) const { return vertices.array[vertex].reserved[0] != 0; }
    uint32_t HiddenFaceCount() const { return hiddenFaceCount; }
    uint32_t HiddenVertexCount() const { return hiddenVertexCount; }
    /// Toggles the visibility of these faces: hides the visible ones and shows the hidden ones.
    /// Must not be called during a stroke.
    /// \param faces  without duplicates.
    /// Cost: linear in the number of these faces, at most O(faces of the level).
    void ToggleHidden(std::span<const FaceRun> faces);
    /// Updates the counts and the hidden vertices after faceFlags has been written directly. Cost:
    /// O(faces).
    void RefreshHidden();

    void SetLockable(bool on) { lockable = on; }
    bool IsLockable() const { return lockable; }
    /// Returns the same result as Lock, but does not lock the mesh.
    bool WouldLock(const MeshUnlocker* unlocker) const;
    /// The holder of the lock; null if the mesh is not locked. A brush's lock is released when the
    /// brush is destroyed. Any other holder must unlock the mesh before the holder is destroyed.
    MeshUnlocker* LockHolder() const { return lockHolder; }
    /// The stroke resources of the brush that holds the lock; null if the mesh is not locked or if
    /// the holder is not a brush.
    StrokeResources* LockResources() const { return lockResources; }

    /// Sets the active layer of this level; may be null. Not owned.
    void SetActiveLayer(SculptLayer* layer) { activeLayer = layer; }
    SculptLayer* ActiveLayer() const { return activeLayer; }
    /// All layers that refer to this level, in a stack or in an undo step. Layers register
    /// themselves. Not owned. A layer that outlives its level is notified (SculptLayer::Level).
    std::vector<SculptLayer*>& Layers() { return layers; }

    /// The change that is currently linked, or null.
    LevelChange* OpenChange() const { return openChange; }
    /// Sets or clears the open change.
    /// \param outsideEdits  the counter of the change; see CountOutsideEdit. Null if the change is
    /// null.
    void SetOpenChange(LevelChange* change, uint32_t* outsideEdits);
    /// All changes of the level that are neither finished nor deleted, in the order in which they
    /// were started. Changes register themselves. Not owned.
    std::vector<LevelChange*>& Changes() { return changes; }

    /// Faces that were passed to the visitor's Tester in the last EnumerateFaces call on this
    /// level, in order.
    const std::vector<FaceVisit>& LastFaceWalk() const { return lastFaceWalk; }
    /// Vertices that were passed to the visitor's Tester in the last EnumerateVertices call, in
    /// order.
    const std::vector<FaceVisit>& LastVertexWalk() const { return lastVertexWalk; }
    /// Empties both lists, so that a caller can detect whether a walk ran afterwards.
    void ClearLastWalks() {
        lastFaceWalk.clear();
        lastVertexWalk.clear();
    }

    /// Recomputes the normals of some vertices. The results are bit-identical to those of
    /// ComputeNormals.
    void ComputeNormalsOf(const std::vector<uint32_t>& which, JobControl* job = nullptr);
    /// Overload for callers that already have the faces around the vertices.
    /// \param faces  all faces around the vertices, in ascending order; may include other faces.
    void ComputeNormalsOf(const IndexSet& which,
                          const std::vector<uint32_t>& faces,
                          JobControl* job = nullptr);
    /// Does the same, but does not report progress or count an edit (CountOutsideEdit). Different
    /// vertices may be updated on different threads.
    void StoreNormalsOf(const IndexSet& which, const std::vector<uint32_t>& faces);
    /// Appends the faces around a vertex in rotational order. The first is `face`, which must use
    /// the vertex.
    void FacesAround(uint32_t vertex, uint32_t face, std::vector<uint32_t>& faces);

private:
    friend class LevelGeometry;
    friend class LevelRefiner;
    friend class TriangleEdit;
    friend class TriangleStorage;
    LevelMesh(LevelHierarchy* ofHierarchy, int number);
    void AllocateFaces(uint32_t faces, int32_t type);
    void AllocateVertices(uint32_t count);
    void SetVertexHidden(uint32_t vertex, bool on);
    void RefreshHiddenVertices();
    /// Builds the tables that only level 0 stores: the neighbours across the sides of each face,
    /// and one face of each vertex.
    /// \throw Cancelled; the level then has no tables.
    void MakeBaseTables(JobControl* job = nullptr);
    void DropBaseTables();
    void NoteOlderPosition(uint32_t vertex);
    void StoreNormalsOf(const IndexSet& which, const std::vector<uint32_t>& faces, JobPhase& phase);
    /// Marks a walk as running. When the walk ends, normally or by an exception, the observers are
    /// notified.
    class WalkScope;
    /// Calls report(adjacent vertex, face) in the order of EnumerateAdjacentVertices.
    template <typename Report>
    uint32_t ForEachAdjacent(uint32_t vertex, uint32_t face, Report report);

    LevelHierarchy* hierarchy;
    int index;
    uint32_t vertexCount = 0;
    uint32_t coarserVertexCount = 0;
    uint32_t frozenVertexCount = 0;
    uint32_t hiddenFaceCount = 0;
    uint32_t hiddenVertexCount = 0;
    bool lockable = true;
    MeshUnlocker* lockHolder = nullptr;
    StrokeResources* lockResources = nullptr;
    SculptLayer* activeLayer = nullptr;
    std::vector<SculptLayer*> layers;
    LevelChange* openChange = nullptr;
    /// The counter of the open change; null if no change is open.
    uint32_t* outsideEditCount = nullptr;
    std::vector<LevelChange*> changes;
    OlderStates older;
    Store<uint8_t> faceFlagStore;
    /// Level 0 only: for each corner slot of a face, the packed neighbour across that side.
    Store<uint32_t> baseNeighbours;
    /// Level 0 only: the lowest-numbered face of each vertex.
    Store<uint32_t> baseVertexFace;
    /// Stamps of the last walk that visited each face or vertex; see LevelWalks.cpp.
    Store<uint32_t> faceWalkStamps;
    Store<uint32_t> vertexWalkStamps;
    uint32_t faceWalk = 0;
    uint32_t vertexWalk = 0;
    std::vector<FaceVisit> lastFaceWalk;
    std::vector<FaceVisit> lastVertexWalk;
    std::vector<uint32_t> walkQueue;
    bool walking = false;
};

}  // namespace trovik
