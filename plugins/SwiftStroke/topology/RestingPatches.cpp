// SPDX-License-Identifier: Apache-2.0
#include "topology/RestingPatches.h"

#include "brush/SwiftStroke.h"

#include <algorithm>
#include <new>

namespace trovik {

bool RestingPatches::Patch::IsBeyond(const float center[3], float radiusSquared) const {
    float d[3];
    for (int i = 0; i < 3; ++i)
        d[i] = center[i] - std::min(std::max(center[i], lower[i]), upper[i]);
    return d[2] * d[2] + (d[1] * d[1] + d[0] * d[0]) > radiusSquared;
}

void RestingPatches::Forget() {
    ofChange = nullptr;
    isOpen = false;
    patches.clear();
    runs.clear();
}

void RestingPatches::Check(const MeshChange& change, int32_t patchLevel) {
    const bool holds = ofChange == &change && outsideEdits == change.outsideEdits &&
                       visitStamp == change.mesh->visitStamp && level == patchLevel;
    if (!holds) Forget();
    ofChange = nullptr;
    level = patchLevel;
}

void RestingPatches::Close(const MeshChange& change) {
    isOpen = false;
    ofChange = &change;
    outsideEdits = change.outsideEdits;
    visitStamp = change.mesh->visitStamp;
}

const RestingPatches::Patch* RestingPatches::Find(uint32_t patch) const {
    const auto found = patches.find(patch);
    return found == patches.end() ? nullptr : &found->second;
}

void RestingPatches::Learn(uint32_t patch,
                           std::span<const PatchVertexEntry> entries,
                           const MeshChange& change) {
    const StoredVertexInfo* records = change.records->array;
    const Vertex* vertices = change.mesh->vertices.array;
    const std::size_t firstRun = runs.size();
    __m128 lower, upper, noNumber = _mm_setzero_ps();
    lower = upper =
        _mm_loadu_ps(records[vertices[entries.front().vertex].changeLink].originalPosition);
    try {
        for (const PatchVertexEntry& entry : entries) {
            const uint32_t index = vertices[entry.vertex].changeLink;
            if (runs.size() > firstRun && index == runs.back().first + runs.back().count)
                ++runs.back().count;
            else
                runs.push_back({index, 1});
            const __m128 place = _mm_loadu_ps(records[index].originalPosition);
            lower = _mm_min_ps(lower, place);
            upper = _mm_max_ps(upper, place);
            noNumber = _mm_or_ps(noNumber, _mm_cmpunord_ps(place, place));
        }
        // The fourth lane is the mark.
        if ((_mm_movemask_ps(noNumber) & 7) == 0) {
            alignas(16) float low[4], high[4];
            _mm_store_ps(low, lower);
            _mm_store_ps(high, upper);
            patches[patch] = {{low[0], low[1], low[2]},
                              {high[0], high[1], high[2]},
                              static_cast<uint32_t>(firstRun),
                              static_cast<uint32_t>(runs.size() - firstRun)};
            return;
        }
    } catch (const std::bad_alloc&) {
        // Knowing is only faster.
    }
    runs.resize(firstRun);
}

bool SwiftStroke::PatchesMayRest() {
    if (!passRestingPatches || wholeMesh || nonUniformScale || useTessellator) return false;
    // Under a layer that refuses changes no kernel marks anything.
    if (meshHasLayer && layer != nullptr && !layer->Writable()) return false;
    // A stamp on the other side of a mirror makes records among those of a patch.
    return !WantsMirroredStampRead();
}

void SwiftStroke::LearnPatch(uint32_t patch) {
    if (resting.Find(patch) != nullptr) return;
    // Else some normals of the edge are written twice, in an order of their own.
    if (!ListsEachVertexOnce()) return;
    const uint32_t points = (1u << patchLevel) + 1;
    resting.Learn(patch, {patchVertexList, points * points}, *CurrentChange());
}

bool SwiftStroke::PassRestingPatch(uint32_t patch) {
    const RestingPatches::Patch* known = resting.Find(patch);
    if (known == nullptr) return false;
    const HWVector& c = brushSpace->center;
    const float center[3] = {c.X(), c.Y(), c.Z()};
    if (!known->IsBeyond(center, radiusSquared)) return false;

    StoredVertexInfo* records = CurrentChange()->records->array;
    for (const RestingPatches::Run& run : resting.RunsOf(*known)) {
        StoredVertexInfo* record = records + run.first;
        for (uint32_t i = 0; i < run.count; ++i) record[i].visitStampWord = dabStamp;
    }
    const uint32_t points = (1u << patchLevel) + 1;
    strokeVertexCount += points * points;

    const uint32_t* slice = PatchSlice(patch);
    ReadPatchEdge(slice);
    ReadRing(patchMesh, patch, RingContent::Positions);
    RefreshEdgeNormals(slice);
    resting.Passed();
    return true;
}

}  // namespace trovik
