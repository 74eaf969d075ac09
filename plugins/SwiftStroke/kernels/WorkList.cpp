// SPDX-License-Identifier: Apache-2.0
#include "brush/SwiftStroke.h"

#include <algorithm>
#include <cstdlib>

namespace trovik {

uint32_t strokeVertexCount = 0;

uint32_t SwiftStroke::BuildWorkList(uint32_t patch) {
    const uint32_t side = 1u << patchLevel;
    const uint32_t points = side + 1;
    const uint32_t count = points * points;
    const uint32_t stride = gridStride;
    const Vertex* vertices = mesh->vertices.array;
    const PackedNormal* normals = mesh->vertexNormals.array;
    const uint32_t faceBase = facesPerPatch * patch;
    const auto level = static_cast<uint32_t>(patchLevel);
    const uint32_t* vertexTable = SubdivisionLevel::QuadVertexIndexTable(level).array;
    const uint32_t* faceTable = SubdivisionLevel::QuadIndexTable(level).array;
    const uint32_t* slice = PatchSlice(patch);

    if (static_cast<int64_t>(count) > patchVertexListCapacity) {
        std::free(patchVertexList);
        patchVertexList =
            static_cast<PatchVertexEntry*>(std::malloc(count * sizeof(PatchVertexEntry)));
        patchVertexListCapacity = static_cast<int32_t>(count);
    }

    // Each vertex takes the face to its upper left, or the nearest one that the patch has. What the
    // later stages touch is fetched from here, since they find it only through the list.
    PatchVertexEntry* entry = patchVertexList;
    for (uint32_t row = 0; row < points; ++row, vertexTable += points) {
        const uint32_t* faces = faceTable + std::min(row, side - 1) * side;
        const uint32_t firstCell = (row + 1) * stride + 1;
        *entry++ = {slice[vertexTable[0]], faces[0] + faceBase, firstCell};
        for (uint32_t column = 1; column < points; ++column, ++entry) {
            const uint32_t vertex = slice[vertexTable[column]];
            entry->vertex = vertex;
            entry->face = faces[column - 1] + faceBase;
            entry->cell = firstCell + column;
            __builtin_prefetch(vertices + vertex, 1);
            __builtin_prefetch(normals + vertex, 1);
        }
    }
    return count;
}

bool SwiftStroke::ListsEachVertexOnce() const {
    const uint32_t side = 1u << patchLevel;
    const uint32_t points = side + 1;
    const auto corner = [this](uint32_t at) { return patchVertexList[at].vertex; };
    const uint32_t corners[] = {
        corner(0), corner(side), corner(points * side), corner(points * side + side)};
    for (int i = 0; i < 4; ++i)
        for (int k = 0; k < i; ++k)
            if (corners[i] == corners[k]) return false;
    return true;
}

bool SwiftStroke::WantsMirroredStampRead() {
    return IsMaskEnabled(1) && mirrorPass != 0 &&
           MirrorConfig().MirrorMode() == MirrorConfiguration::Topological;
}

}  // namespace trovik
