// SPDX-License-Identifier: Apache-2.0

/// \file Updates of the pick tree after the topology of level 0 was edited in place. The tree then
/// has no patch levels, only its top tree, whose leaves contain lists of faces.
#include "framework/picking/MedianSplit.h"
#include "framework/picking/PatchTree.h"

#include <algorithm>
#include <cassert>
#include <functional>

namespace trovik {

namespace {

/// Leaves are not divided below this depth, because queries have a stack of limited size.
constexpr uint32_t maxDepth = 64;

}  // namespace

void PatchTree::ListFaces() {
    if (!nextListed.empty()) return;
    nextListed.assign(patchBoxes[0].size(), noFace);
    listOfLeaf.assign(topNodes.size(), LeafList());
    for (uint32_t node = 0; node < topNodes.size(); ++node) {
        const TopNode& leaf = topNodes[node];
        for (uint32_t i = leaf.first + leaf.count; i-- > leaf.first;) {
            nextListed[order[i]] = listOfLeaf[node].first;
            listOfLeaf[node].first = order[i];
        }
        listOfLeaf[node].count = leaf.count;
    }
    order = {};
}

void PatchTree::Unlist(uint32_t face) {
    LeafList& list = listOfLeaf[topLeafOfBaseFace[face]];
    uint32_t* link = &list.first;
    while (*link != face) link = &nextListed[*link];
    *link = nextListed[face];
    --list.count;
}

void PatchTree::List(uint32_t face) {
    const std::array<float, 3> centre = CentreOf(face);
    const auto distance = [&](uint32_t node) {
        const Box& box = topNodes[node].box;
        float sum = 0.0f;
        for (std::size_t axis = 0; axis < 3; ++axis)
            sum += std::max({box.low[axis] - centre[axis], centre[axis] - box.high[axis], 0.0f});
        return sum;
    };
    uint32_t node = 0;
    uint32_t depth = 0;
    for (; topNodes[node].count == 0; ++depth) {
        const uint32_t first = topNodes[node].first;
        node = distance(first + 1) < distance(first) ? first + 1 : first;
    }
    topLeafOfBaseFace[face] = node;
    LeafList& list = listOfLeaf[node];
    nextListed[face] = list.first;
    list.first = face;
    ++list.count;
    ++listedSinceBuilt;
    Extend(topNodes[node].box, patchBoxes[0][face]);
    if (list.count > maxListed && depth < maxDepth) DivideLeaf(node);
}

void PatchTree::DivideLeaf(uint32_t node) {
    std::vector<uint32_t> faces;
    ForEachInLeaf(node, [&](uint32_t face) { faces.push_back(face); });
    std::vector<std::array<float, 3>> centres(faces.size());
    std::vector<uint32_t> items(faces.size());
    for (uint32_t i = 0; i < faces.size(); ++i) {
        centres[i] = CentreOf(faces[i]);
        items[i] = i;
    }
    const uint32_t half = SplitAtMedian(items.data(), static_cast<uint32_t>(items.size()), centres);
    const auto child = static_cast<uint32_t>(topNodes.size());
    topNodes[node].first = child;
    topNodes[node].count = 0;
    listOfLeaf[node] = LeafList();
    topNodes.insert(topNodes.end(), 2, {EmptyBox(), 0, 1});
    topParent.insert(topParent.end(), 2, node);
    topStamps.insert(topStamps.end(), 2, 0u);
    listOfLeaf.insert(listOfLeaf.end(), 2, LeafList());
    for (uint32_t i = 0; i < items.size(); ++i) {
        const uint32_t face = faces[items[i]];
        const uint32_t leaf = i < half ? child : child + 1;
        topLeafOfBaseFace[face] = leaf;
        nextListed[face] = listOfLeaf[leaf].first;
        listOfLeaf[leaf].first = face;
        ++listOfLeaf[leaf].count;
        TouchLeafOf(face);
    }
    // The next faces are listed before the nodes are refitted.
    RefitTopNode(child);
    RefitTopNode(child + 1);
}

void PatchTree::TouchLeafOf(uint32_t face) {
    for (uint32_t node = topLeafOfBaseFace[face]; node != noParent && topStamps[node] != refit;
         node = topParent[node]) {
        topStamps[node] = refit;
        touchedAbove.push_back(node);
    }
}

void PatchTree::Rebuild() {
    topNodes.clear();
    topParent.clear();
    nextListed.clear();
    listOfLeaf.clear();
    listedSinceBuilt = 0;
    patchBoxes[0].assign(level->faceCount, EmptyBox());
    patchStamps[0].assign(level->faceCount, 0u);
    for (uint32_t face = 0; face < level->faceCount; ++face) RefitLeaf(face);
    BuildTop(nullptr);
}

// Each changed face is moved to a leaf near its new position. The tree is built again after so many
// moves that it may have become uneven; the cost per move is O(log n) on average.
void PatchTree::ChangeFaces(std::span<const uint32_t> faces) {
    assert(boundLevel == 0 && leafLevel == 0);
    const auto oldCount = static_cast<uint32_t>(patchBoxes[0].size());
    const uint32_t count = level->faceCount;
    if (listedSinceBuilt + faces.size() > uint64_t{2} * oldCount) {
        Rebuild();
        return;
    }
    ListFaces();
    NextRefit();
    touchedAbove.clear();
    for (uint32_t face = count; face < oldCount; ++face) {
        TouchLeafOf(face);
        Unlist(face);
    }
    patchBoxes[0].resize(count, EmptyBox());
    patchStamps[0].resize(count, 0u);
    nextListed.resize(count, noFace);
    topLeafOfBaseFace.resize(count, 0);
    for (const uint32_t face : faces) {
        if (face >= oldCount) continue;
        TouchLeafOf(face);
        Unlist(face);
    }
    for (const uint32_t face : faces) {
        RefitLeaf(face);
        List(face);
        TouchLeafOf(face);
    }
    std::sort(touchedAbove.begin(), touchedAbove.end(), std::greater<>());
    for (const uint32_t node : touchedAbove) RefitTopNode(node);
}

}  // namespace trovik
