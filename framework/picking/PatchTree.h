// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/levels/LevelGeometry.h"

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
    /// Mesh-local, unit length: the packed vertex normals, interpolated.
    Vector normal;
    float t = 0.0f;
};

/// Finds where a ray meets the bound level of a geometry. The recursive face order is a tree
/// already: this keeps a box per patch, from leaf patches of a few faces up to the faces of level
/// 0, and a tree of boxes over those. Cost of a pick: logarithmic in the mesh; of a refit: what the
/// dab touched.
class TROVIK_API PatchTree {
public:
    /// Borrows the level. Cost: O(faces).
    explicit PatchTree(LevelMesh* level);

    /// The nearest front or back face hit.
    std::optional<PickHit> Pick(const Ray& ray) const;
    /// The point of the surface nearest to `p` (mesh-local).
    std::optional<PickHit> Nearest(const Vector& p) const;

    /// Boxes of everything.
    void RefitAll();
    /// Boxes below and above the faces of level `patchLevelIndex` that a walk visited.
    void Refit(uint32_t patchLevelIndex, const std::vector<FaceVisit>& visited);

    AxisAlignedBoundingBox Bounds() const;
    uint64_t Bytes() const;

private:
    LevelMesh* level;
    struct Box {
        float low[3];
        float high[3];
    };
    /// Boxes by level of the patch, from level 0 to the leaf level.
    std::vector<std::vector<Box>> patchBoxes;
    struct TopNode {
        Box box;
        /// Inner node: the two children are `first` and `first + 1`; leaf: faces of level 0 at
        /// order[first .. first + count).
        uint32_t first;
        uint32_t count;
    };
    std::vector<TopNode> topNodes;
    std::vector<uint32_t> order;
    std::vector<uint32_t> topLeafOfBaseFace;
    std::vector<uint32_t> topParent;
    uint32_t leafLevel = 0;
};

}  // namespace trovik
