// SPDX-License-Identifier: Apache-2.0
#include "framework/picking/PatchTree.h"

#include "framework/jobs/JobPhase.h"
#include "framework/picking/MedianSplit.h"
#include "host/HWVector.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <functional>
#include <limits>

namespace trovik {

PatchTree::PatchTree(LevelMesh* ofLevel, JobControl* job)
    : level(ofLevel),
      hierarchy(&ofLevel->Hierarchy()),
      base(hierarchy->Level(0)),
      boundLevel(static_cast<uint32_t>(ofLevel->Index())),
      leafLevel(boundLevel > 2 ? boundLevel - 2 : 0),
      baseChildren(ofLevel->Hierarchy().Level(0)->CornersPerFace()) {
    for (uint32_t l = 0; l <= leafLevel; ++l) {
        const uint32_t patches = level->Hierarchy().Level(l)->faceCount;
        patchBoxes.emplace_back(patches, EmptyBox());
        patchStamps.emplace_back(patches, 0u);
    }
    JobPhase phase(job, "Building the pick tree", patchBoxes[leafLevel].size());
    for (uint32_t patch = 0; patch < patchBoxes[leafLevel].size(); ++patch) {
        phase.Add();
        RefitLeaf(patch);
    }
    phase.Finish();
    for (uint32_t l = leafLevel; l-- > 0;)
        for (uint32_t patch = 0; patch < patchBoxes[l].size(); ++patch) RefitInner(l, patch);
    BuildTop(job);
    hierarchy->AddObserver(*this, ObserverOrder::First);
}

PatchTree::~PatchTree() { hierarchy->RemoveObserver(*this); }

// Compares addresses only, because the level may have been deleted.
bool PatchTree::IsAttached() const {
    return boundLevel < hierarchy->LevelCount() && hierarchy->Level(boundLevel) == level &&
           hierarchy->Level(0) == base;
}

void PatchTree::SurfaceChanged(const SurfaceChange& change) {
    if ((change.what & (SurfaceChange::Positions | SurfaceChange::Visibility)) == 0) return;
    if (!IsAttached()) {
        missedChange = true;
        return;
    }
    if (change.level != boundLevel) return;
    if ((change.what & SurfaceChange::Topology) != 0 && !change.all) {
        ChangeFaces(change.patches);
        return;
    }
    if (change.all) {
        RefitAll();
        return;
    }
    NextRefit();
    for (const uint32_t patch : change.patches) TouchLeaves(change.patchLevel, patch);
    RefitTouched();
}

PatchTree::Box PatchTree::EmptyBox() {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    return {{infinity, infinity, infinity}, {-infinity, -infinity, -infinity}};
}

void PatchTree::Extend(Box& box, const Box& other) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        box.low[axis] = std::min(box.low[axis], other.low[axis]);
        box.high[axis] = std::max(box.high[axis], other.high[axis]);
    }
}

uint32_t PatchTree::FacesUnder(uint32_t levelIndex) const {
    uint32_t faces = 1;
    for (uint32_t l = levelIndex; l < boundLevel; ++l) faces *= ChildCount(l);
    return faces;
}

// Hidden faces are also sorted into the tree by position, because they may be shown again.
PatchTree::Box PatchTree::CornerBox(uint32_t baseFace) const {
    const LevelMesh& lowest = *level->Hierarchy().Level(0);
    const uint32_t corner = lowest.faceVertexIndices.array[std::size_t{baseFace} * baseChildren];
    const Vector p = level->Position(corner);
    return {{p.x, p.y, p.z}, {p.x, p.y, p.z}};
}

std::array<float, 3> PatchTree::CentreOf(uint32_t face) const {
    const Box& own = patchBoxes[0][face];
    const Box box = own.low[0] <= own.high[0] ? own : CornerBox(face);
    std::array<float, 3> centre{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const float middle = 0.5f * box.low[axis] + 0.5f * box.high[axis];
        // A face whose position is not finite can be anywhere in the tree, but sorting requires an
        // ordering.
        centre[axis] = std::isfinite(middle) ? middle : 0.0f;
    }
    return centre;
}

void PatchTree::BuildTop(JobControl* job) {
    const std::vector<Box>& boxes = patchBoxes[0];
    std::vector<std::array<float, 3>> centres(boxes.size());
    order.resize(boxes.size());
    for (uint32_t face = 0; face < boxes.size(); ++face) {
        order[face] = face;
        centres[face] = CentreOf(face);
    }
    topLeafOfBaseFace.resize(boxes.size());
    topNodes.push_back({EmptyBox(), 0, static_cast<uint32_t>(boxes.size())});
    topParent.push_back(noParent);
    // Children are appended after their parent, so a single pass splits all nodes. The clock is
    // read at each node, because the first nodes take a long time.
    JobPhase phase(job, "Sorting the pick tree", boxes.size(), 1);
    for (uint32_t node = 0; node < topNodes.size(); ++node) {
        SplitTop(node, centres);
        // Each face is in exactly one leaf.
        if (topNodes[node].count != 0 && topNodes[node].count <= facesPerTopLeaf)
            phase.Add(topNodes[node].count);
        else
            phase.Poll();
    }
    phase.Finish();
    topStamps.assign(topNodes.size(), 0u);
    for (uint32_t node = static_cast<uint32_t>(topNodes.size()); node-- > 0;) RefitTopNode(node);
}

void PatchTree::SplitTop(uint32_t node, const std::vector<std::array<float, 3>>& centres) {
    const uint32_t first = topNodes[node].first;
    const uint32_t count = topNodes[node].count;
    if (count <= facesPerTopLeaf) {
        for (uint32_t i = first; i < first + count; ++i) topLeafOfBaseFace[order[i]] = node;
        return;
    }
    const uint32_t half = SplitAtMedian(order.data() + first, count, centres);
    topNodes[node].first = static_cast<uint32_t>(topNodes.size());
    topNodes[node].count = 0;
    topNodes.push_back({EmptyBox(), first, half});
    topNodes.push_back({EmptyBox(), first + half, count - half});
    topParent.insert(topParent.end(), 2, node);
}

void PatchTree::RefitAll() {
    NextRefit();
    for (uint32_t patch = 0; patch < patchBoxes[leafLevel].size(); ++patch) Touch(leafLevel, patch);
    RefitTouched();
}

void PatchTree::Refit(uint32_t patchLevelIndex, const std::vector<FaceVisit>& visited) {
    assert(patchLevelIndex <= boundLevel);
    NextRefit();
    for (const FaceVisit& visit : visited) TouchLeaves(patchLevelIndex, visit.face);
    RefitTouched();
}

void PatchTree::TouchLeaves(uint32_t patchLevelIndex, uint32_t patch) {
    uint32_t shrink = 1;
    for (uint32_t l = leafLevel; l < patchLevelIndex; ++l) shrink *= ChildCount(l);
    uint32_t grow = 1;
    for (uint32_t l = patchLevelIndex; l < leafLevel; ++l) grow *= ChildCount(l);
    const uint32_t first = patch / shrink * grow;
    for (uint32_t leaf = first; leaf < first + grow; ++leaf) Touch(leafLevel, leaf);
}

void PatchTree::NextRefit() {
    touched.clear();
    if (++refit != 0) return;
    // The refit number has wrapped around, so the stamps of old refits could match it again.
    for (std::vector<uint32_t>& stamps : patchStamps) std::fill(stamps.begin(), stamps.end(), 0u);
    std::fill(topStamps.begin(), topStamps.end(), 0u);
    refit = 1;
}

void PatchTree::Touch(uint32_t levelIndex, uint32_t patch) {
    uint32_t& stamp = patchStamps[levelIndex][patch];
    if (stamp == refit) return;
    stamp = refit;
    touched.push_back(patch);
}

void PatchTree::RefitTouched() {
    for (const uint32_t patch : touched) RefitLeaf(patch);
    for (uint32_t l = leafLevel; l-- > 0;) {
        touchedAbove.swap(touched);
        touched.clear();
        for (const uint32_t patch : touchedAbove) Touch(l, patch / ChildCount(l));
        for (const uint32_t patch : touched) RefitInner(l, patch);
    }

    touchedAbove.clear();
    for (const uint32_t face : touched) {
        for (uint32_t node = topLeafOfBaseFace[face]; node != noParent && topStamps[node] != refit;
             node = topParent[node]) {
            topStamps[node] = refit;
            touchedAbove.push_back(node);
        }
    }
    // Children have higher numbers than their parents.
    std::sort(touchedAbove.begin(), touchedAbove.end(), std::greater<>());
    for (const uint32_t node : touchedAbove) RefitTopNode(node);
}

PatchTree::Box PatchTree::VisibleBox(uint32_t patch) const {
    const uint32_t faces = FacesUnder(leafLevel);
    const uint32_t corners = level->CornersPerFace();
    Box box = EmptyBox();
    for (uint32_t face = patch * faces; face < (patch + 1) * faces; ++face) {
        if (level->IsFaceHidden(face)) continue;
        for (uint32_t k = 0; k < corners; ++k) {
            const Vector p =
                level->Position(level->faceVertexIndices.array[std::size_t{face} * corners + k]);
            const std::array<float, 3> at = {p.x, p.y, p.z};
            Extend(box, {at, at});
        }
    }
    return box;
}

void PatchTree::RefitLeaf(uint32_t patch) {
    if (level->HiddenFaceCount() != 0) {
        patchBoxes[leafLevel][patch] = VisibleBox(patch);
        ++boxesRefitted;
        return;
    }
    const uint32_t corners = FacesUnder(leafLevel) * level->CornersPerFace();
    const uint32_t* vertex = level->faceVertexIndices.array + std::size_t{patch} * corners;
    // Processes all three axes at once; the fourth lane contains unrelated data that follows the
    // position in memory. minps and maxps return their second operand if either operand is NaN, so
    // NaN does not change the box.
    __m128 low = _mm_set1_ps(std::numeric_limits<float>::infinity());
    __m128 high = _mm_set1_ps(-std::numeric_limits<float>::infinity());
    const auto extend = [&](uint32_t corner) {
        const Vertex& v = level->vertices.array[vertex[corner]];
        const __m128 position = _mm_loadu_ps(reinterpret_cast<const float*>(&v));
        low = _mm_min_ps(position, low);
        high = _mm_max_ps(position, high);
    };
    if (corners == 64) {
        // In a grid of 4 x 4 equally oriented quads, taking one pair of opposite corners of each
        // quad covers all vertices except two corners of the grid.
        for (uint32_t face = 0; face < 16; ++face) {
            extend(face * 4);
            extend(face * 4 + 2);
        }
        extend(5 * 4 + 1);
        extend(15 * 4 + 3);
    } else {
        for (uint32_t i = 0; i < corners; ++i) extend(i);
    }
    alignas(16) float lows[4];
    alignas(16) float highs[4];
    _mm_store_ps(lows, low);
    _mm_store_ps(highs, high);
    const Box box = {{lows[0], lows[1], lows[2]}, {highs[0], highs[1], highs[2]}};
    patchBoxes[leafLevel][patch] = box;
    ++boxesRefitted;
}

void PatchTree::RefitInner(uint32_t levelIndex, uint32_t patch) {
    const uint32_t children = ChildCount(levelIndex);
    Box box = EmptyBox();
    for (uint32_t child = patch * children; child < (patch + 1) * children; ++child)
        Extend(box, patchBoxes[levelIndex + 1][child]);
    patchBoxes[levelIndex][patch] = box;
    ++boxesRefitted;
}

void PatchTree::RefitTopNode(uint32_t node) {
    TopNode& top = topNodes[node];
    top.box = EmptyBox();
    if (top.count == 0 && node + 1 < topNodes.size()) {
        Extend(top.box, topNodes[top.first].box);
        Extend(top.box, topNodes[top.first + 1].box);
    }
    ForEachInLeaf(node, [&](uint32_t face) { Extend(top.box, patchBoxes[0][face]); });
    ++boxesRefitted;
}

AxisAlignedBoundingBox PatchTree::ToBounds(const Box& box) {
    AxisAlignedBoundingBox bounds;
    for (std::size_t axis = 0; axis < 3; ++axis)
        if (box.low[axis] > box.high[axis]) return bounds;
    bounds.Extend({box.low[0], box.low[1], box.low[2]});
    bounds.Extend({box.high[0], box.high[1], box.high[2]});
    return bounds;
}

AxisAlignedBoundingBox PatchTree::Bounds() const { return ToBounds(topNodes[0].box); }

AxisAlignedBoundingBox PatchTree::BoxOf(uint32_t levelIndex, uint32_t face) const {
    assert(levelIndex <= leafLevel && face < patchBoxes[levelIndex].size());
    return ToBounds(patchBoxes[levelIndex][face]);
}

uint64_t PatchTree::Bytes() const {
    uint64_t bytes = sizeof(PatchTree) + topNodes.capacity() * sizeof(TopNode);
    for (const std::vector<Box>& boxes : patchBoxes) bytes += boxes.capacity() * sizeof(Box);
    for (const std::vector<uint32_t>& stamps : patchStamps)
        bytes += stamps.capacity() * sizeof(uint32_t);
    const std::size_t words = topParent.capacity() + order.capacity() +
                              topLeafOfBaseFace.capacity() + topStamps.capacity() +
                              2 * listOfLeaf.capacity() + nextListed.capacity() +
                              touched.capacity() + touchedAbove.capacity();
    return bytes + words * sizeof(uint32_t);
}

}  // namespace trovik
