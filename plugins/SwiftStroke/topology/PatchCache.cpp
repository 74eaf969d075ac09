// SPDX-License-Identifier: Apache-2.0
#include "topology/PatchCache.h"

#include "brush/SwiftStroke.h"
#include "kernels/stages/DabConstants.h"

#include <algorithm>
#include <new>

namespace trovik {

namespace {

/// Calls `step` for 0 to `count` - 1. The loop is unrolled manually by four, because the compiler
/// does not unroll it.
template <class Step>
TROVIK_FORCE_INLINE void InFours(std::size_t count, const Step& step) {
    std::size_t i = 0;
    for (; i + 3 < count; i += 4) {
        step(i);
        step(i + 1);
        step(i + 2);
        step(i + 3);
    }
    for (; i < count; ++i) step(i);
}

}  // namespace

bool PatchCache::Patch::IsBeyond(const float center[3], float radiusSquared) const {
    const float low[3] = {lower.X(), lower.Y(), lower.Z()};
    const float high[3] = {upper.X(), upper.Y(), upper.Z()};
    float d[3];
    for (int i = 0; i < 3; ++i) d[i] = center[i] - std::min(std::max(center[i], low[i]), high[i]);
    return d[2] * d[2] + (d[1] * d[1] + d[0] * d[0]) > radiusSquared;
}

void PatchCache::Forget() {
    ofChange = nullptr;
    isOpen = false;
    patches.clear();
    isAdding = false;
    runs.clear();
    chunk = taken = 0;
    // Chunks created for deep patches may be larger than the minimum.
    constexpr std::size_t maxKept = maxKeptChunks * minChunk;
    std::size_t kept = 0;
    std::size_t room = 0;
    while (kept < chunks.size() && (room += chunks[kept].size) <= maxKept) ++kept;
    if (kept == chunks.size()) return;
    chunks.resize(kept);
    runs.shrink_to_fit();
}

void PatchCache::Check(const MeshChange& change, int32_t patchLevel, bool smoothsLayer) {
    const bool holds = ofChange == &change && outsideEdits == change.outsideEdits &&
                       visitStamp == change.mesh->visitStamp && level == patchLevel &&
                       readsLayer == smoothsLayer;
    if (!holds) Forget();
    ofChange = nullptr;
    level = patchLevel;
    readsLayer = smoothsLayer;
}

void PatchCache::Close(const MeshChange& change) {
    isOpen = false;
    ofChange = &change;
    outsideEdits = change.outsideEdits;
    visitStamp = change.mesh->visitStamp;
}

PatchCache::Patch* PatchCache::Find(uint32_t patch) {
    if (!isOpen) return nullptr;
    const auto found = patches.find(patch);
    return found == patches.end() ? nullptr : &found->second;
}

uint32_t* PatchCache::FindRoom(uint32_t count) {
    for (; chunk < chunks.size(); ++chunk, taken = 0)
        if (chunks[chunk].size - taken >= count) return chunks[chunk].vertices.get() + taken;
    const std::size_t size = std::max<std::size_t>(count, minChunk);
    chunks.push_back({std::make_unique_for_overwrite<uint32_t[]>(size), size});
    return chunks.back().vertices.get();
}

void PatchCache::StartAdding(uint32_t count) {
    StopAdding();
    pendingPatch = {};
    pendingPatch.firstRun = static_cast<uint32_t>(runs.size());
    pendingCount = 0;
    wantedVertices = count;
    try {
        pendingPatch.vertices = pendingVertices = FindRoom(count);
        // Reserves the maximum number of runs, so that adding one never allocates.
        if (runs.capacity() - runs.size() < count) runs.reserve(2 * runs.capacity() + count);
        isAdding = true;
    } catch (const std::bad_alloc&) {
        // Allocation failures are ignored, because the cache is only an optimisation.
    }
}

void PatchCache::StopAdding() {
    if (isAdding) runs.resize(pendingPatch.firstRun);
    isAdding = false;
}

void PatchCache::AddEntries(const PatchVertexEntry* entries,
                            uint32_t count,
                            const float (*positions)[4],
                            StoredVertexInfo* const* records,
                            const StoredVertexInfo* firstRecord) {
    uint32_t* const vertices = pendingVertices + pendingCount;
    InFours(count, [=](std::size_t i) { vertices[i] = entries[i].vertex; });

    // The fourth float of each entry is not part of the position.
    __m128 lower = _mm_loadu_ps(positions[0]);
    __m128 upper = lower;
    __m128 nanMask = _mm_setzero_ps();
    InFours(count, [&](std::size_t i) {
        const __m128 position = _mm_loadu_ps(positions[i]);
        lower = _mm_min_ps(lower, position);
        upper = _mm_max_ps(upper, position);
        nanMask = _mm_or_ps(nanMask, _mm_cmpunord_ps(position, position));
    });
    pendingPatch.hasNan |= (_mm_movemask_ps(nanMask) & 7) != 0;
    const HWVector low = ReversedXyz(lower);
    const HWVector high = ReversedXyz(upper);
    pendingPatch.lower = pendingCount == 0 ? low : HWVector::Minimum(pendingPatch.lower, low);
    pendingPatch.upper = pendingCount == 0 ? high : HWVector::Maximum(pendingPatch.upper, high);
    pendingCount += count;

    for (uint32_t i = 0; i < count;) {
        const uint32_t begin = i;
        const StoredVertexInfo* next = records[i];
        for (; i + 3 < count && records[i] == next && records[i + 1] == next + 1 &&
               records[i + 2] == next + 2 && records[i + 3] == next + 3;
             i += 4)
            next += 4;
        for (; i < count && records[i] == next; ++i) ++next;
        AddRun({static_cast<uint32_t>(records[begin] - firstRecord), i - begin});
    }
}

void PatchCache::AddRun(const Run& run) {
    if (runs.size() > pendingPatch.firstRun) {
        Run& last = runs.back();
        if (last.first + last.count == run.first) {
            last.count += run.count;
            return;
        }
    }
    runs.push_back(run);
}

void PatchCache::Keep(uint32_t patch) {
    if (isAdding && pendingCount == wantedVertices) {
        pendingPatch.runCount = static_cast<uint32_t>(runs.size()) - pendingPatch.firstRun;
        try {
            patches.insert_or_assign(patch, pendingPatch);
            taken += wantedVertices;
            isAdding = false;
        } catch (const std::bad_alloc&) {
            // Allocation failures are ignored, because the cache is only an optimisation.
        }
    }
    StopAdding();
}

bool SwiftStroke::MayUsePatchCache() {
    if (!usesPatchCache || wholeMesh || useTessellator) return false;
    if (!CurrentChange()->countsOutsideEdits) return false;
    // If the layer does not accept changes, kernels do not mark any records.
    if (meshHasLayer && layer != nullptr && !layer->Writable()) return false;
    // Reading the stamp at mirror vertices creates records between those of a patch.
    return !WantsMirroredStampRead();
}

}  // namespace trovik
