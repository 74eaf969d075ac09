// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"

#include <array>
#include <optional>

namespace trovik {

/// A ray in mesh-local space; the direction need not be of length 1. Hits lie at t in [0, maxT].
struct Ray {
    Vector origin;
    Vector direction;
    float maxT = 3.402823466e+38f;
};

struct PickHit {
    uint32_t face = 0;
    /// Mesh-local.
    Vector position;
    /// Mesh-local, unit length: the packed vertex normals, interpolated. Where those say nothing,
    /// the normal of the hit triangle.
    Vector normal;
    /// Of a ray: origin + t x direction is the position. Of Nearest: the distance.
    float t = 0.0f;
};

/// Finds where a ray meets the bound level of a geometry. The recursive face order is a tree
/// already: this keeps a box per patch, from leaf patches of a few faces up to the faces of level
/// 0, and a tree of boxes over those. Cost of a pick: logarithmic in the mesh; of a refit: what the
/// dab touched.
///
///        top nodes      halves of the faces of level 0, by place
///        level 0        one box a face
///        ...            four (above a triangle: three) boxes under each
///        leaf level     two levels below the bound one, so 16 faces under a box; level 0 where
///                       there are fewer levels
///
/// A quad is the triangles (0, 1, 2) and (0, 2, 3). No ray slips through between two faces that
/// share an edge. Hidden faces and those with a vertex that is not finite are not there; a patch
/// without any other face costs no visit. Of hits at equal distance
/// the one with the lowest face number is told, so answers do not hang on the tree's shape.
///
/// Observes the geometry: boxes follow each reported change of the level's positions and hidden
/// faces, before observers of ObserverOrder::Later receive the report. Edits that nobody reports
/// need a call of a refit.
///
/// Borrows the level and its geometry, which must outlive the tree. Queries may run concurrently,
/// refits and reports may not run concurrently with anything.
class TROVIK_API PatchTree final : private GeometryObserver {
public:
    /// Cost: O(faces), and O(n log n) in the faces of level 0.
    /// \throw Cancelled.
    explicit PatchTree(LevelMesh* level, JobControl* job = nullptr);
    ~PatchTree();
    PatchTree(const PatchTree&) = delete;
    PatchTree& operator=(const PatchTree&) = delete;

    /// The nearest front or back face hit. Nothing for a ray whose numbers are not finite or whose
    /// direction is zero.
    std::optional<PickHit> Pick(const Ray& ray) const;
    /// The point of the surface nearest to `p` (mesh-local). Nothing when `p` is not finite.
    std::optional<PickHit> Nearest(const Vector& p) const;

    /// Boxes of everything.
    void RefitAll();
    /// Boxes below and above the faces of level `patchLevelIndex` that a walk visited, whatever the
    /// visitor answered: a face beside one that was changed shares its moved border.
    void Refit(uint32_t patchLevelIndex, const std::vector<FaceVisit>& visited);

    /// Whether the boxes are still those of the level: false once the level has another number or
    /// another level 0 below it, or while it is taken out of its geometry, and for good after a
    /// change that was reported meanwhile.
    bool IsCurrent() const { return !missedChange && IsInPlace(); }
    const LevelMesh* Level() const { return level; }

    /// Box of the visible faces, mesh-local.
    AxisAlignedBoundingBox Bounds() const;
    /// The finest level that has a box for each face.
    uint32_t LeafLevel() const { return leafLevel; }
    /// Mesh-local box around the vertices of a face of level `levelIndex` and all its descendants
    /// in the bound level. Coordinates that are NaN are left out; a face without any other has an
    /// empty box. `levelIndex` must be at most LeafLevel(). Cost: O(1).
    AxisAlignedBoundingBox BoxOf(uint32_t levelIndex, uint32_t face) const;
    uint64_t Bytes() const;
    /// Boxes recomputed since the tree was made.
    uint64_t BoxesRefitted() const { return boxesRefitted; }

private:
    /// Empty while low exceeds high.
    struct Box {
        std::array<float, 3> low;
        std::array<float, 3> high;
    };
    struct TopNode {
        Box box;
        /// Inner node: the two children are `first` and `first + 1`; leaf: faces of level 0 at
        /// order[first .. first + count).
        uint32_t first;
        /// 0 in an inner node.
        uint32_t count;
    };
    static constexpr uint32_t facesPerTopLeaf = 4;
    static constexpr uint32_t noParent = 0xffffffffu;

    void SurfaceChanged(const SurfaceChange& change) override;
    bool IsInPlace() const;
    /// Touches the leaves below or above a face of a level.
    void TouchLeaves(uint32_t patchLevelIndex, uint32_t patch);

    static Box EmptyBox();
    static AxisAlignedBoundingBox ToBounds(const Box& box);
    static void Extend(Box& box, const Box& other);
    /// Children of a face of this level, in the next one.
    uint32_t ChildCount(uint32_t levelIndex) const { return levelIndex == 0 ? baseChildren : 4; }
    /// Faces of the bound level under a face of this one.
    uint32_t FacesUnder(uint32_t levelIndex) const;

    void BuildTop(JobControl* job);
    /// The box of a corner of a face of level 0, in place of one without visible faces.
    Box CornerBox(uint32_t baseFace) const;
    void SplitTop(uint32_t node, const std::vector<std::array<float, 3>>& centres);
    void NextRefit();
    /// Enters a patch into `touched` unless this refit has it already.
    void Touch(uint32_t levelIndex, uint32_t patch);
    /// Recomputes the touched boxes of the leaf level and all above them.
    void RefitTouched();
    void RefitLeaf(uint32_t patch);
    /// Of a patch that may have hidden faces. \return the box of the others.
    Box VisibleBox(uint32_t patch) const;
    void RefitInner(uint32_t levelIndex, uint32_t patch);
    void RefitTopNode(uint32_t node);

    template <class Query>
    void Walk(Query& query) const;
    template <class Query>
    void VisitFaces(Query& query, uint32_t leaf) const;

    LevelMesh* level;
    LevelHierarchy* hierarchy;
    /// For comparison only.
    const LevelMesh* base;
    bool missedChange = false;
    uint32_t boundLevel;
    uint32_t leafLevel;
    uint32_t baseChildren;
    /// Boxes by level of the patch, from level 0 to the leaf level.
    std::vector<std::vector<Box>> patchBoxes;
    std::vector<TopNode> topNodes;
    std::vector<uint32_t> topParent;
    std::vector<uint32_t> order;
    std::vector<uint32_t> topLeafOfBaseFace;

    /// Number of the refit that last touched a patch or node, so that each is done once.
    std::vector<std::vector<uint32_t>> patchStamps;
    std::vector<uint32_t> topStamps;
    uint32_t refit = 0;
    std::vector<uint32_t> touched;
    std::vector<uint32_t> touchedAbove;
    uint64_t boxesRefitted = 0;
};

}  // namespace trovik
