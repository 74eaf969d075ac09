// SPDX-License-Identifier: Apache-2.0
#include "brush/SwiftStroke.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace trovik {

uint32_t strokeVertexCount = 0;

namespace {

/// Writes the faces and cells of four entries.
TROVIK_FORCE_INLINE void StoreFacesAndCells(PatchVertexEntry* entries,
                                            const uint32_t* faces,
                                            uint32_t faceBase,
                                            uint32_t firstCell) {
    static_assert(offsetof(PatchVertexEntry, cell) == offsetof(PatchVertexEntry, face) + 4);
    const __m128i face = _mm_add_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(faces)),
                                       _mm_set1_epi32(static_cast<int32_t>(faceBase)));
    const __m128i cell =
        _mm_add_epi32(_mm_set1_epi32(static_cast<int32_t>(firstCell)), _mm_setr_epi32(0, 1, 2, 3));
    const __m128 two = _mm_castsi128_ps(_mm_unpacklo_epi32(face, cell));
    const __m128 more = _mm_castsi128_ps(_mm_unpackhi_epi32(face, cell));
    const auto at = [entries](int i) { return reinterpret_cast<__m64*>(&entries[i].face); };
    _mm_storel_pi(at(0), two);
    _mm_storeh_pi(at(1), two);
    _mm_storel_pi(at(2), more);
    _mm_storeh_pi(at(3), more);
}

}  // namespace

/// \param vertexAt  returns the vertex at an index of the patch list.
template <bool fetches, class VertexAt>
void SwiftStroke::FillWorkList(uint32_t patch, const VertexAt& vertexAt) {
    const uint32_t side = 1u << patchLevel;
    const uint32_t points = side + 1;
    const uint32_t stride = gridStride;
    const Vertex* vertices = mesh->vertices.array;
    const PackedNormal* normals = mesh->vertexNormals.array;
    const uint32_t faceBase = facesPerPatch * patch;
    const uint32_t* faceTable =
        SubdivisionLevel::QuadIndexTable(static_cast<uint32_t>(patchLevel)).array;

    // Each entry uses the face to the upper left of the vertex, or the nearest face if the patch
    // does not contain that one. Data for later stages is prefetched here, because those stages
    // access it only through the list.
    const auto fetched = [=, &vertexAt](uint32_t index) {
        const uint32_t vertex = vertexAt(index);
        if constexpr (fetches) {
            __builtin_prefetch(vertices + vertex, 1);
            __builtin_prefetch(normals + vertex, 1);
        }
        return vertex;
    };
    PatchVertexEntry* entry = patchVertexList;
    for (uint32_t row = 0, first = 0; row < points; ++row, first += points) {
        const uint32_t* faces = faceTable + std::min(row, side - 1) * side;
        const uint32_t firstCell = (row + 1) * stride + 1;
        *entry++ = {fetched(first), faces[0] + faceBase, firstCell};
        uint32_t column = 1;
        for (; column + 3 < points; column += 4, entry += 4) {
            entry[0].vertex = fetched(first + column);
            entry[1].vertex = fetched(first + column + 1);
            entry[2].vertex = fetched(first + column + 2);
            entry[3].vertex = fetched(first + column + 3);
            StoreFacesAndCells(entry, faces + column - 1, faceBase, firstCell + column);
        }
        for (; column < points; ++column)
            *entry++ = {fetched(first + column), faces[column - 1] + faceBase, firstCell + column};
    }
}

uint32_t SwiftStroke::BuildWorkList(uint32_t patch) {
    const uint32_t points = (1u << patchLevel) + 1;
    const uint32_t count = points * points;
    const uint32_t* slice = PatchSlice(patch);
    if (static_cast<int64_t>(count) > patchVertexListCapacity) {
        std::free(patchVertexList);
        patchVertexList =
            static_cast<PatchVertexEntry*>(std::malloc(count * sizeof(PatchVertexEntry)));
        patchVertexListCapacity = patchVertexList == nullptr ? 0 : static_cast<int32_t>(count);
        if (patchVertexList == nullptr) throw std::bad_alloc();
    }
    listedSlice = slice;
    listedLevel = patchLevel;
    if (const PatchCache::Patch* known = patchCache.Find(patch); known != nullptr) {
        const uint32_t* listed = known->vertices;
        const auto vertexAt = [listed](uint32_t index) { return listed[index]; };
        if (PrefetchesLate())
            FillWorkList<false>(patch, vertexAt);
        else
            FillWorkList<true>(patch, vertexAt);
    } else {
        const uint32_t* table =
            SubdivisionLevel::QuadVertexIndexTable(static_cast<uint32_t>(patchLevel)).array;
        FillWorkList<true>(patch, [slice, table](uint32_t index) { return slice[table[index]]; });
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
