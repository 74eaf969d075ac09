// SPDX-License-Identifier: Apache-2.0
#include "brush/Registration.h"
#include "brush/SwiftStroke.h"
#include "kernels/stages/PackedNormals.h"
#include "kernels/stages/RecordLookup.h"
#include "kernels/stages/WorldSpace.h"
#include "topology/PatchReach.h"

#include <cmath>

namespace trovik {

namespace {

/// Adds up the samples of an area. Each sum is kept in registers and gets the samples one after
/// the other, because the order of the additions affects the result.
class AreaSums {
public:
    explicit AreaSums(SwiftStroke& swiftStroke)
        : brush(swiftStroke),
          space(*swiftStroke.brushSpace),
          radius(swiftStroke.radius),
          radiusSquared(swiftStroke.radiusSquared),
          inWorldSpace(swiftStroke.nonUniformScale),
          // With a radius of 0, only a vertex at the centre is within reach, and 0 / 0 would be
          // NaN.
          weighted(useVertexWeightsForFlatten && swiftStroke.radius != 0.0f),
          normalSum(swiftStroke.planeSampleNormalSum),
          positionSum(swiftStroke.planeSamplePositionSum),
          weightSum(swiftStroke.planeSampleWeight) {}

    /// Adds a vertex if it is within the radius.
    /// \param measured  its position before the stroke, from which the distance is computed.
    /// \param sample  returns the position and the packed normal to add.
    /// \return whether it is.
    template <class Sample>
    TROVIK_FORCE_INLINE bool Add(const HWVector& measured, const Sample& sample) {
        const HWVector toCenter =
            space.center - (inWorldSpace ? ToWorld(space, measured) : measured);
        const float distanceSquared = (toCenter | toCenter).First();
        if (distanceSquared > radiusSquared) return false;
        const float weight = weighted ? 1.0f - std::sqrt(distanceSquared) / radius : 1.0f;
        const auto [position, normal] = sample();
        normalSum = normalSum + UnpackNormal(*normal) * weight;
        positionSum = positionSum + position * weight;
        weightSum += weight;
        return true;
    }

    void Store() const {
        brush.planeSampleNormalSum = static_cast<Vector>(normalSum);
        brush.planeSamplePositionSum = static_cast<Vector>(positionSum);
        brush.planeSampleWeight = weightSum;
    }

private:
    SwiftStroke& brush;
    const BrushSpace& space;
    const float radius;
    const float radiusSquared;
    const bool inWorldSpace;
    const bool weighted;
    HWVector normalSum;
    HWVector positionSum;
    float weightSum;
};

struct SampledVertex {
    HWVector position;
    const PackedNormal* normal;
};

SampledVertex SampleNow(const Mesh& mesh, uint32_t vertex) {
    return {PositionOf(mesh.vertices.array[vertex]), &mesh.vertexNormals.array[vertex]};
}

HWVector RecordedPosition(const StoredVertexInfo& record) {
    return ReversedXyz(_mm_loadu_ps(record.originalPosition));
}

/// Returns the vertex's visit stamp, which is in the vertex's record or, if there is none, in the
/// vertex itself.
///
/// The position is read as four lanes, of which the last is the stamp. A read of the position
/// soon after a write of the stamp waits until the stamp has left the store buffer, so callers
/// write the stamp last.
TROVIK_FORCE_INLINE uint32_t& VisitStampOf(Mesh& mesh, uint32_t vertex) {
    Vertex& v = mesh.vertices.array[vertex];
    if (v.changeLink < mesh.changeRecordCount) {
        StoredVertexInfo& record = mesh.changeRecords[v.changeLink];
        if (record.vertexIndex == vertex) return record.visitStampWord;
    }
    return v.changeLink;
}

/// Adds a vertex that this traversal has not visited. Distances are measured on the surface as it
/// was before the stroke. Does not create a record.
TROVIK_FORCE_INLINE bool AddVertex(const Mesh& mesh,
                                   const MeshChange& change,
                                   uint32_t vertex,
                                   AreaSums& sums) {
    const Vertex& changed = change.mesh->vertices.array[vertex];
    const StoredVertexInfo* record = FindRecord(change, vertex, changed.changeLink);
    const HWVector measured = record != nullptr ? RecordedPosition(*record) : PositionOf(changed);
    return sums.Add(measured, [&] {
        if (!useOriginalDataForFlatten) return SampleNow(mesh, vertex);
        return SampledVertex{measured,
                             record != nullptr ? &record->originalNormal
                                               : &change.mesh->vertexNormals.array[vertex]};
    });
}

/// The vertices this many entries ahead in the list of a patch are prefetched.
constexpr uint32_t prefetchDistance = 16;

}  // namespace

bool SwiftStroke::SamplePlaneVertex(uint32_t vertex) {
    return VisitStampOf(*mesh, vertex) != mesh->visitStamp && SamplePlaneVertexUnchecked(vertex);
}

bool SwiftStroke::SamplePlaneVertexUnchecked(uint32_t vertex) {
    AreaSums sums(*this);
    const bool counted = AddVertex(*mesh, *CurrentChange(), vertex, sums);
    VisitStampOf(*mesh, vertex) = mesh->visitStamp;
    sums.Store();
    return counted;
}

bool SwiftStroke::SamplePlanePatch(uint32_t patch) {
    const TVCrashReporterFlag flag(4, 0x2000);
    if (const PatchCache::Patch* known = patchCache.Find(patch); known != nullptr)
        return SampleCachedPatch(*known);
    const auto level = static_cast<uint32_t>(patchLevel);
    const uint32_t points = (1u << level) + 1;
    const uint32_t count = points * points;
    const uint32_t* table = SubdivisionLevel::QuadVertexIndexTable(level).array;
    const uint32_t* slice = PatchSlice(patch);
    const MeshChange& change = *CurrentChange();
    AreaSums sums(*this);
    bool counted = false;
    for (uint32_t i = 0; i < count; ++i) {
        if (i + prefetchDistance < count)
            __builtin_prefetch(mesh->vertices.array + slice[table[i + prefetchDistance]], 1);
        const uint32_t vertex = slice[table[i]];
        uint32_t& stamp = VisitStampOf(*mesh, vertex);
        if (stamp == mesh->visitStamp) continue;
        if (AddVertex(*mesh, change, vertex, sums)) counted = true;
        stamp = mesh->visitStamp;
    }
    sums.Store();
    return counted;
}

/// Has the same effects as sampling vertex by vertex: the entries are in the same order, and each
/// vertex has a record, which contains its visit stamp.
bool SwiftStroke::SampleCachedPatch(const PatchCache::Patch& patch) {
    StoredVertexInfo* records = CurrentChange()->records->array;
    const uint32_t stamp = mesh->visitStamp;
    const bool original = useOriginalDataForFlatten;
    if (IsOutOfReach(*this, patch)) {
        for (const PatchCache::Run& run : patchCache.RunsOf(patch))
            for (uint32_t i = 0; i < run.count; ++i) records[run.first + i].visitStampWord = stamp;
        return false;
    }

    AreaSums sums(*this);
    bool counted = false;
    const uint32_t* vertex = patch.vertices;
    for (const PatchCache::Run& run : patchCache.RunsOf(patch)) {
        const uint32_t* const runEnd = vertex + run.count;
        StoredVertexInfo* record = records + run.first;
        for (; vertex != runEnd; ++record, ++vertex) {
            if (!original && runEnd - vertex > prefetchDistance)
                __builtin_prefetch(mesh->vertices.array + vertex[prefetchDistance]);
            if (record->visitStampWord == stamp) continue;
            const HWVector measured = RecordedPosition(*record);
            record->visitStampWord = stamp;
            if (sums.Add(measured, [&] {
                    return original ? SampledVertex{measured, &record->originalNormal}
                                    : SampleNow(*mesh, *vertex);
                }))
                counted = true;
        }
    }
    sums.Store();
    return counted;
}

}  // namespace trovik
