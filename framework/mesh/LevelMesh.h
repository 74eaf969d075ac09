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

/// One face of a walk and what the visitor answered.
struct FaceVisit {
    uint32_t face;
    bool answer;
};

/// One level of a LevelGeometry: the storage of a mesh and its walks.
///
/// Level 0 stores the adjacency of its faces. Every other level is the Catmull-Clark refinement of
/// the one below; face f of the level below gives the faces 4f to 4f + 3, child k at corner k and
/// turned as f is (a triangle gives 3f to 3f + 2, child k having as corners: corner k, the point on
/// edge k, the face point, the point on edge k - 1). Its topology is implicit: who lies across a
/// side follows from the base by arithmetic on the digits of the face number.
///
/// Vertex numbers: the vertices of the level below keep theirs; behind them, face by face of the
/// level below, come the edge points that the face is the first to meet, sides in order, and then
/// its face point. So the new vertices of a patch lie together in memory.
///
/// Walks remember what they have seen by stamps that live with the mesh; a walk allocates nothing
/// once its queue has grown to its largest size.
class TROVIK_API LevelMesh : public SubdivisionLevel {
public:
    ~LevelMesh() override;

    MeshChange* StartChange() override;
    uint32_t EnumerateAdjacentVertices(AdjacentVertexEnumerator* enumerator,
                                       uint32_t vertex,
                                       uint32_t face) override;
    void EnumerateFaces(uint32_t face, FaceEnumerator* enumerator, int reserved) override;
    void EnumerateVertices(uint32_t face, VertexEnumerator* enumerator) override;
    /// By the geometry's mirror, if one was asked for (LevelGeometry::FindMirror); -1 and nothing
    /// written where a corner has no mirror image. Cost: O(level).
    int32_t MirrorVertex(uint32_t face,
                         uint32_t corner,
                         uint32_t* outFace,
                         uint32_t* outCorner) override;
    uint32_t QuadEdgeNeighbour(uint32_t face, uint32_t side) override;
    void FaceNormal(Vector* out, uint32_t face) override;
    trovik::Geometry* Geometry() override;
    /// Refused while the mesh is set not lockable, or while another holder's stroke is running.
    bool Lock(MeshUnlocker* unlocker) override;
    int FreezeQuery() override;
    trovik::Layer* Layer() override;
    void Unlock() override;
    int Index() const override;

    /// The levels that this one belongs to, also while it is taken out of them. Its geometry is
    /// GeometryOf (LevelGeometry.h).
    LevelHierarchy& Hierarchy() const { return *hierarchy; }
    uint32_t VertexCount() const { return vertexCount; }
    /// Number of vertices of the level below, which are the first of this one; 0 for level 0.
    uint32_t CoarserVertexCount() const { return coarserVertexCount; }

    Vector Position(uint32_t vertex) const {
        const Vertex& v = vertices.array[vertex];
        return {v.x, v.y, v.z};
    }
    /// Moves a vertex. An edit from outside the brush: see CountOutsideEdit.
    void SetPosition(uint32_t vertex, const Vector& p) {
        CountOutsideEdit();
        if (older.MissesPosition(vertex)) NoteOlderPosition(vertex);
        StorePosition(vertex, p);
    }
    /// Counts an edit of positions or normals in the open change, if there is one. Code that writes
    /// them straight into the storage calls this once per edit, unless it does so for the brush.
    void CountOutsideEdit() {
        if (outsideEditCount != nullptr) ++*outsideEditCount;
    }
    /// Moves a vertex for the brush: one that the open change has a record of.
    void StorePosition(uint32_t vertex, const Vector& p) {
        Vertex& v = vertices.array[vertex];
        v.x = p.x;
        v.y = p.y;
        v.z = p.z;
    }
    /// The first corner of `face` that is `vertex`, or -1.
    int CornerOf(uint32_t face, uint32_t vertex) const;
    /// Lowest-numbered face that holds the vertex. openBorder for a vertex that no face uses. Cost:
    /// O(log faces + valence), or with a close `near` some nanoseconds.
    /// \param near  a face from which to start searching; openBorder for none.
    uint32_t LowestFaceOf(uint32_t vertex, uint32_t near = openBorder);

    /// Recomputes all packed normals of the level: per vertex the sum of its faces' FaceNormal,
    /// normalised. Allocates the normals at first use. Cost: O(faces).
    /// \throw Cancelled; some normals may have changed then.
    void ComputeNormals(JobControl* job = nullptr);

    /// Freeze amount 0 to 127, the mask that the user painted; keeps the count behind FreezeQuery.
    /// A hidden vertex has its own amount too, which shows again when the vertex does.
    void SetFreeze(uint32_t vertex, uint8_t amount);
    uint8_t Freeze(uint32_t vertex) const {
        const Vertex& v = vertices.array[vertex];
        return (v.reserved[0] != 0 ? v.reserved[0] : v.freeze) & freezeAmountMask;
    }
    /// The amount that tools respect: Freeze, but 127 for a hidden vertex. Brushes read the same
    /// from Vertex::freeze.
    uint8_t FreezeOfTools(uint32_t vertex) const {
        return vertices.array[vertex].freeze & freezeAmountMask;
    }
    /// Number of vertices with Freeze above 0.
    uint32_t FrozenVertexCount() const { return frozenVertexCount; }

    /// What the neighbouring levels last saw of this one. SetPosition and SetFreeze note what they
    /// replace; what the brush moves is noted when its change is unlinked.
    OlderStates& Older() { return older; }
    const OlderStates& Older() const { return older; }
    /// Hidden faces are neither sculpted nor shown. The face's byte in faceFlags holds the state
    /// (faceIsHidden). A vertex is hidden if it has faces and all of them are hidden: brushes then
    /// see it as fully frozen, through Vertex::freeze, and its own amount is kept aside in
    /// Vertex::reserved[0]. The border between hidden and visible faces is visible.
    ///
    /// All levels of a geometry agree on what is hidden; see HiddenFaces.h in framework/multires,
    /// through which a geometry is changed.
    bool IsFaceHidden(uint32_t face) const { return (faceFlags[face] & faceIsHidden) != 0; }
    bool IsVertexHidden(uint32_t vertex) const { return vertices.array[vertex].reserved[0] != 0; }
    uint32_t HiddenFaceCount() const { return hiddenFaceCount; }
    uint32_t HiddenVertexCount() const { return hiddenVertexCount; }
    /// Hides the visible faces among these, and shows the hidden ones. Not during a stroke.
    /// \param faces  each once. Cost: O(these faces), at most O(faces of the level).
    void ToggleHidden(std::span<const FaceRun> faces);
    /// Brings counts and vertices up to date after faceFlags was written. Cost: O(faces).
    void RefreshHidden();

    void SetLockable(bool on) { lockable = on; }
    bool IsLockable() const { return lockable; }
    /// What Lock would answer, taking nothing.
    bool WouldLock(const MeshUnlocker* unlocker) const;
    /// Who locked the mesh last and has not unlocked it; null for nobody. The lock of a brush ends
    /// when the brush is destroyed; any other holder has to unlock the mesh before it goes.
    MeshUnlocker* LockHolder() const { return lockHolder; }
    /// Of the brush that holds the lock; null if nobody does, or if the holder is not a brush.
    StrokeResources* LockResources() const { return lockResources; }

    /// Active layer of this level or null. Not owned.
    void SetActiveLayer(SculptLayer* layer) { activeLayer = layer; }
    SculptLayer* ActiveLayer() const { return activeLayer; }
    /// Every layer that borrows this level, in a stack or in an undo step, each of which registers
    /// itself. Not owned. A layer that outlives its level is told so (SculptLayer::Level).
    std::vector<SculptLayer*>& Layers() { return layers; }

    /// The change that is linked now, or null.
    LevelChange* OpenChange() const { return openChange; }
    /// \param outsideEdits  of the change; see CountOutsideEdit. Null with a null change.
    void SetOpenChange(LevelChange* change, uint32_t* outsideEdits);
    /// Every change of the level that is neither finished nor deleted, in the order in which they
    /// were started. Each registers itself. Not owned.
    std::vector<LevelChange*>& Changes() { return changes; }

    /// Faces handed to the visitor's Tester in the last EnumerateFaces on this level, in order.
    const std::vector<FaceVisit>& LastFaceWalk() const { return lastFaceWalk; }
    /// Vertices handed to the visitor's Tester in the last EnumerateVertices, in order.
    const std::vector<FaceVisit>& LastVertexWalk() const { return lastVertexWalk; }
    /// Empties both lists, so that who comes after sees whether a walk ran.
    void ForgetLastWalks() {
        lastFaceWalk.clear();
        lastVertexWalk.clear();
    }

    /// The same for some vertices only; gives the bits that ComputeNormals would.
    void ComputeNormalsOf(const std::vector<uint32_t>& which, JobControl* job = nullptr);
    /// The same where the faces around the vertices are known already. \param faces  ascending;
    /// others may be among them.
    void ComputeNormalsOf(const IndexSet& which,
                          const std::vector<uint32_t>& faces,
                          JobControl* job = nullptr);
    /// Appends the faces around a vertex, turning from `face`, which must hold it.
    void FacesAround(uint32_t vertex, uint32_t face, std::vector<uint32_t>& faces);

private:
    friend class LevelGeometry;
    friend class LevelRefiner;
    LevelMesh(LevelHierarchy* ofHierarchy, int number);
    void AllocateFaces(uint32_t faces, int32_t type);
    void AllocateVertices(uint32_t count);
    void SetVertexHidden(uint32_t vertex, bool on);
    void RefreshHiddenVertices();
    /// What level 0 stores beside its faces: who lies across their sides, and a face of each
    /// vertex. \throw Cancelled; the level has no tables then.
    void MakeBaseTables(JobControl* job = nullptr);
    void DropBaseTables();
    void NoteOlderPosition(uint32_t vertex);
    /// Marks a walk; at its end, by return or exception, the observers are notified.
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
    /// In the open change; null without one.
    uint32_t* outsideEditCount = nullptr;
    std::vector<LevelChange*> changes;
    OlderStates older;
    Store<uint8_t> faceFlagStore;
    /// Level 0 only: for each corner slot of a face the packed neighbour across that side.
    Store<uint32_t> baseNeighbours;
    /// Level 0 only: one face of each vertex, the lowest-numbered.
    Store<uint32_t> baseVertexFace;
    /// Stamps of the walks; see WalkStamps in the source.
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
