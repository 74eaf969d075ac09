// SPDX-License-Identifier: Apache-2.0
#include "framework/display/PatchLayout.h"

#include "framework/mesh/LevelHierarchy.h"

#include <algorithm>

namespace trovik {

PatchLayout::PatchLayout(const LevelMesh& ofLevel)
    : level(static_cast<uint32_t>(ofLevel.Index())),
      baseIsTriangles(ofLevel.Hierarchy().Level(0)->meshType != 1) {
    const uint32_t firstQuadLevel = baseIsTriangles ? 1 : 0;
    if (level >= firstQuadLevel + minDepth) {
        patchLevel = std::max(firstQuadLevel, level > maxDepth ? level - maxDepth : 0);
        patchCount = ofLevel.faceCount >> (2 * Depth());
        gridSlots = SubdivisionLevel::QuadVertexIndexTable(Depth()).array;
        gridCells = SubdivisionLevel::InvertedQuadIndexTable(Depth()).array;
    } else {
        buckets = std::make_unique<FaceBuckets>(ofLevel);
        patchCount = buckets->Count();
    }
}

uint32_t PatchLayout::VertexCount(uint32_t patch) const {
    return buckets != nullptr ? buckets->VertexCount(patch) : GridVertexCount();
}

uint64_t PatchLayout::FirstVertex(uint32_t patch) const {
    return buckets != nullptr ? buckets->FirstVertex(patch) : uint64_t{patch} * GridVertexCount();
}

uint64_t PatchLayout::VertexCount(std::span<const uint32_t> patches) const {
    if (buckets == nullptr) return uint64_t{GridVertexCount()} * patches.size();
    uint64_t count = 0;
    for (const uint32_t patch : patches) count += buckets->VertexCount(patch);
    return count;
}

std::span<const uint16_t> PatchLayout::Triangles(uint32_t patch) const {
    return buckets != nullptr ? buckets->Triangles(patch)
                              : GridIndices::OfDepth(Depth()).Triangles(0);
}

}  // namespace trovik
