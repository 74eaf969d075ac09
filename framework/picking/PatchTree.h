// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"

#include <array>
#include <optional>
#include <span>

namespace trovik {

/// A ray in mesh-local space; the direction need not have length 1. Hits have values of t from 0 to
/// maxT.
struct Ray {
    Vector origin;
    Vector direction;
    float maxT = 3.402823466e+38f;
};

struct PickHit {
    uint32_t face = 0;
    /// Mesh-local.
    Vector position;
    /// Unit normal, mesh-local: interpolated from the packed vertex normals or, if their weighted
    /// sum vanishes, the normal of the hit triangle.
    Vector normal;
    /// For a ray, the position is origin + t * direction. For Nearest, t is the distance.
    float t = 0.0f;
};

/// Restricts a search for the nearest point to a part of the surface.
struct NearestLimits {
    /// One number for each face of the level; if not empty, faces with numbers other than `part`
    /// are ignored.
    std::span<const uint32_t> parts;
    uint32_t part = 0;
    /// If not zero, triangles whose normals form an angle of more than 90 degrees with this vector
    /// are ignored.
    Vector facing;
};

/// Finds intersections of rays with the bound level of a geometry. The recursive face order already
/// forms a tree: this class stores one bounding box per patch, from leaf patches of a few faces up
/// to the faces of level 0, and builds a binary tree of boxes above level 0. Cost: a pick is
/// logarithmic in the number of faces; a refit is proportional to the size of the changed region.
/// For bounding volume hierarchies, see Rubin, Whitted: "A 3-Dimensional Representation for Fast
/// Rendering of Complex Scenes" (1980).
///
///        top nodes      median splits of the faces of level 0
///        level 0        one box per face
///        ...            four boxes for each box above (three below a level 0 triangle)
///        leaf level     two levels below the bound one, so 16 faces per box; level 0 if there are
///                       fewer levels
///
/// A quad consists of the triangles (0, 1, 2) and (0, 2, 3). No ray passes between two faces that
/// share an edge. Hidden faces and faces with a non-finite vertex are ignored; a patch that
/// consists only of such faces is never visited. Among hits at equal distance, the one with the
/// lowest face number is returned, so results do not depend on the shape of the tree.
///
/// Observes the geometry: boxes are updated for each reported change of the level's positions and
/// hidden faces, before observers with ObserverOrder::Later receive the report. Changes that are
/// not reported require a call to a refit function.
///
/// Borrows the level and its geometry, which must outlive the tree. Queries may run concurrently;
/// refits and reports must not run concurrently with any other call.
class TROVIK_API PatchTree final : private GeometryObserver {
public:
    /// Cost: O(faces), plus O(n log n) for the n faces of level 0.
    /// \throw Cancelled.
    explicit PatchTree(LevelMesh* level, JobControl* job = nullptr);
    ~PatchTree();
    PatchTree(const PatchTree&) = delete;
    PatchTree& operator=(const PatchTree&) = delete;

    /// Returns the nearest hit on a front or back face. Empty if nothing is hit, or if the ray is
    /// not finite or its direction is zero.
    std::optional<PickHit> Pick(const Ray& ray) const;
    /// Returns the point on the surface nearest to `p` (mesh-local). Empty if `p` is not finite.
    std::optional<PickHit> Nearest(const Vector& p) const { return Nearest(p, {}); }
    /// The same for a part of the surface. Empty also if the limits exclude all faces.
    std::optional<PickHit> Nearest(const Vector& p, const NearestLimits& limits) const;

    /// Recomputes all boxes.
    void RefitAll();
    /// Recomputes the boxes below and above the faces of level `patchLevelIndex` that a traversal
    /// visited. This includes faces for which the visitor returned false, because a face next to a
    /// changed one shares a border that may have moved.
    void Refit(uint32_t patchLevelIndex, const std::vector<FaceVisit>& visited);

    /// Returns whether the boxes still match the level. The result is false if the level's index or
    /// level 0 has changed, or if the level is detached from its geometry. If a change is reported
    /// while the result is false, it remains false permanently.
    bool IsCurrent() const { return !missedChange && IsAttached(); }
    const LevelMesh* Level() const { return level; }

    /// Bounding box of the visible faces, mesh-local.
    AxisAlignedBoundingBox Bounds() const;
    /// The finest level that has a box for each face.
    uint32_t LeafLevel() const { return leafLevel; }
    /// Mesh-local bounding box of the vertices of a face of level `levelIndex` and all its
    /// descendants in the bound level. NaN coordinates are ignored; if all are NaN, the box is
    /// empty. `levelIndex` must be at most LeafLevel(). Cost: O(1).
    AxisAlignedBoundingBox BoxOf(uint32_t levelIndex, uint32_t face) const;
    uint64_t Bytes() const;
    /// Number of boxes recomputed since the tree was built.
    uint64_t BoxesRefitted() const { return boxesRefitted; }

private:
    /// The box is empty if any component of `low` exceeds the same component of `high`.
    struct Box {
        std::array<float, 3> low;
        std::array<float, 3> high;
    };
    struct TopNode {
        Box box;
        /// Inner node: the children are nodes `first` and `first + 1`. Leaf: the faces of level 0
        /// are order[first .. first + count), or, once the topology was edited, those in the list
        /// that starts at listOfLeaf[node].
        uint32_t first;
        /// 0 in an inner node, otherwise not 0.
        uint32_t count;
    };
    static constexpr uint32_t facesPerTopLeaf = 4;
    static constexpr uint32_t noParent = 0xffffffffu;
    static constexpr uint32_t noFace = 0xffffffffu;
    static constexpr uint32_t maxListed = 16;

    void SurfaceChanged(const SurfaceChange& change) override;
    bool IsAttached() const;
    /// Marks the leaves that are descendants or ancestors of a patch for refitting.
    void TouchLeaves(uint32_t patchLevelIndex, uint32_t patch);

    static Box EmptyBox();
    static AxisAlignedBoundingBox ToBounds(const Box& box);
    static void Extend(Box& box, const Box& other);
    /// Number of child faces that a face of this level has on the next level.
    uint32_t ChildCount(uint32_t levelIndex) const { return levelIndex == 0 ? baseChildren : 4; }
    /// Number of faces of the bound level that descend from a face of this level.
    uint32_t FacesUnder(uint32_t levelIndex) const;

    void BuildTop(JobControl* job);
    /// A box that contains only a corner of a level 0 face; used for faces without visible
    /// descendants.
    Box CornerBox(uint32_t baseFace) const;
    void SplitTop(uint32_t node, const std::vector<std::array<float, 3>>& centres);
    void NextRefit();
    /// Calls visit(face) for the faces of level 0 in a leaf of the top tree.
    template <class Visit>
    void ForEachInLeaf(uint32_t node, const Visit& visit) const {
        const TopNode& leaf = topNodes[node];
        if (leaf.count == 0) return;
        if (nextListed.empty()) {
            for (uint32_t i = leaf.first; i < leaf.first + leaf.count; ++i) visit(order[i]);
            return;
        }
        for (uint32_t face = listOfLeaf[node].first; face != noFace; face = nextListed[face])
            visit(face);
    }
    /// Updates the tree after the topology of level 0 was edited in place.
    void ChangeFaces(std::span<const uint32_t> faces);
    /// Replaces the ranges of the leaves by lists, to which faces can be added.
    void ListFaces();
    void Unlist(uint32_t face);
    /// Adds a face to a leaf near it, which is divided if it has too many.
    void List(uint32_t face);
    void DivideLeaf(uint32_t node);
    /// Adds the leaf of a face and all nodes above it to `touchedAbove`.
    void TouchLeafOf(uint32_t face);
    std::array<float, 3> CentreOf(uint32_t face) const;
    /// Builds the tree again.
    void Rebuild();
    /// Adds a patch to `touched` unless this refit already contains it.
    void Touch(uint32_t levelIndex, uint32_t patch);
    /// Recomputes the touched boxes of the leaf level and all their ancestors.
    void RefitTouched();
    void RefitLeaf(uint32_t patch);
    /// \return the box of the visible faces of a patch, some of whose faces may be hidden.
    Box VisibleBox(uint32_t patch) const;
    void RefitInner(uint32_t levelIndex, uint32_t patch);
    void RefitTopNode(uint32_t node);

    template <class Query>
    void Walk(Query& query) const;
    template <class Query>
    void VisitFaces(Query& query, uint32_t leaf) const;

    LevelMesh* level;
    LevelHierarchy* hierarchy;
    /// The level 0 at the time of construction; only its address is used.
    const LevelMesh* base;
    bool missedChange = false;
    uint32_t boundLevel;
    uint32_t leafLevel;
    uint32_t baseChildren;
    /// Boxes for each patch level, from level 0 to the leaf level.
    std::vector<std::vector<Box>> patchBoxes;
    std::vector<TopNode> topNodes;
    std::vector<uint32_t> topParent;
    std::vector<uint32_t> order;
    std::vector<uint32_t> topLeafOfBaseFace;
    /// The faces of a leaf after the topology was edited in place.
    struct LeafList {
        uint32_t first = noFace;
        uint32_t count = 0;
    };
    /// Both are empty until the topology is edited in place.
    std::vector<LeafList> listOfLeaf;
    std::vector<uint32_t> nextListed;
    /// Number of faces that were added to a leaf since the tree was built.
    uint64_t listedSinceBuilt = 0;

    /// The number of the refit that last touched each patch or node, so that a refit processes each
    /// of them only once.
    std::vector<std::vector<uint32_t>> patchStamps;
    std::vector<uint32_t> topStamps;
    uint32_t refit = 0;
    std::vector<uint32_t> touched;
    std::vector<uint32_t> touchedAbove;
    uint64_t boxesRefitted = 0;
};

}  // namespace trovik
