// SPDX-License-Identifier: Apache-2.0
#include "brush/Registration.h"
#include "brush/SwiftStroke.h"
#include "kernels/stages/PackedNormals.h"
#include "kernels/stages/RecordLookup.h"
#include "kernels/stages/WorldSpace.h"

namespace trovik {

namespace {

/// Returns the word that contains the vertex's visit stamp. It is in the vertex's record or, if
/// there is none, in the vertex itself.
uint32_t& StampWord(Mesh& mesh, uint32_t vertex) {
    Vertex& v = mesh.vertices.array[vertex];
    if (v.changeLink < mesh.changeRecordCount) {
        StoredVertexInfo& record = mesh.changeRecords[v.changeLink];
        if (record.vertexIndex == vertex) return record.visitStampWord;
    }
    return v.changeLink;
}

}  // namespace

bool SwiftStroke::SamplePlaneVertex(uint32_t vertex) {
    if (StampWord(*mesh, vertex) == mesh->visitStamp) return false;
    return SamplePlaneVertexUnchecked(vertex);
}

bool SwiftStroke::SamplePlaneVertexUnchecked(uint32_t vertex) {
    StampWord(*mesh, vertex) = mesh->visitStamp;

    // Distances are measured on the surface as it was before the stroke. This function does not
    // create records.
    const MeshChange& change = *CurrentChange();
    const Vertex& changed = change.mesh->vertices.array[vertex];
    const StoredVertexInfo* record = FindRecord(change, vertex, changed.changeLink);
    const Vector measured = record != nullptr ? Vector(record->originalPosition[0],
                                                       record->originalPosition[1],
                                                       record->originalPosition[2])
                                              : Vector(changed.x, changed.y, changed.z);
    HWVector measuredPosition(measured);
    if (nonUniformScale) measuredPosition = ToWorld(*brushSpace, measuredPosition);
    const HWVector toCenter = brushSpace->center - measuredPosition;
    const float distanceSquared = (toCenter | toCenter).First();
    if (distanceSquared > radiusSquared) return false;

    float weight = 1.0f;
    // With a radius of 0, only a vertex at the centre passes the test above, and 0 / 0 would be
    // NaN.
    if (useVertexWeightsForFlatten && radius != 0.0f)
        weight = 1.0f - std::sqrt(distanceSquared) / radius;
    PackedNormal normal;
    Vector position;
    if (useOriginalDataForFlatten) {
        normal =
            record != nullptr ? record->originalNormal : change.mesh->vertexNormals.array[vertex];
        position = measured;
    } else {
        const Vertex& present = mesh->vertices.array[vertex];
        normal = mesh->vertexNormals.array[vertex];
        position = Vector(present.x, present.y, present.z);
    }
    planeSampleNormalSum += static_cast<Vector>(UnpackNormal(normal)) * weight;
    planeSamplePositionSum += position * weight;
    planeSampleWeight += weight;
    return true;
}

bool SwiftStroke::SamplePlanePatch(uint32_t patch) {
    const TVCrashReporterFlag flag(4, 0x2000);
    const auto level = static_cast<uint32_t>(patchLevel);
    const uint32_t points = (1u << level) + 1;
    const Store<uint32_t>& vertexTable = SubdivisionLevel::QuadVertexIndexTable(level);
    const uint32_t* slice = PatchSlice(patch);
    bool counted = false;
    for (uint32_t i = 0; i < points * points; ++i) {
        if (SamplePlaneVertex(slice[vertexTable.array[i]])) counted = true;
    }
    return counted;
}

}  // namespace trovik
