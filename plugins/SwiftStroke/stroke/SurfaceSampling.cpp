// SPDX-License-Identifier: Apache-2.0
#include "brush/SwiftStroke.h"
#include "kernels/stages/PackedNormals.h"
#include "kernels/stages/RecordLookup.h"
#include "stroke/AtScopeEnd.h"
#include "topology/Grid.h"

namespace trovik {

namespace {

/// If the weights add up to less than this, there are no usable samples.
constexpr float minSampleWeight = 0.0001f;

/// Returns the number of cells along one arm: about one brush radius, at least one, at most a patch
/// side.
uint32_t ArmSteps(float radius, float diagonalLength, uint32_t size) {
    const float reach = (radius / diagonalLength) * static_cast<float>(size);
    if (!(reach >= 1.0f)) return 1;
    return reach >= static_cast<float>(size) ? size : static_cast<uint32_t>(reach);
}

}  // namespace

void SwiftStroke::SamplePlane(const SurfacePoint& hit) {
    const TVCrashReporterFlag flag(4, 0x200);
    Vector sampledNormal;
    Vector sampledPosition;
    if (usePatchNormal && patchMesh->meshType == 1)
        SampleCross(hit, sampledNormal, sampledPosition);
    else
        SampleArea(hit, sampledNormal, sampledPosition);

    // Only a plane tool with a global plane averages over the whole stroke, with the same weight
    // for each dab.
    if (!isPlaneTool || !globalPlane.Value()) planeDabCount = 0;
    const auto earlier = static_cast<float>(planeDabCount);
    const float share = 1.0f / (earlier + 1.0f);
    HWVector direction =
        (HWVector(sampledNormal) + HWVector(directions[mirrorPass]) * earlier) * share;
    direction.Normalize();
    const HWVector point =
        (HWVector(sampledPosition) + HWVector(planePoints[mirrorPass]) * earlier) * share;
    directions[mirrorPass] = static_cast<Vector>(direction);
    planePoints[mirrorPass] = static_cast<Vector>(point);
    planeDistances[mirrorPass] = (direction | point).First();
}

/// Samples the plane along four arms from the hit cell. Distances are measured from localCenter in
/// mesh-local space, even if the radius is in world units. Creates undo records for the vertices
/// that it reads.
void SwiftStroke::SampleCross(const SurfacePoint& hit, Vector& normal, Vector& position) {
    const uint32_t patch = hit.face / facesPerPatch;
    const uint32_t faceInPatch = hit.face - patch * facesPerPatch;
    const auto level = static_cast<uint32_t>(patchLevel);
    const uint32_t cell = SubdivisionLevel::InvertedQuadIndexTable(level)[faceInPatch];
    const uint32_t size = 1u << level;
    const uint32_t row = cell / size;
    const uint32_t column = cell % size;

    const Store<Vertex>& patchVertices = patchMesh->vertices;
    const Vertex& corner0 = patchVertices[patchMesh->faceVertexIndices[patch * 4]];
    const Vertex& corner2 = patchVertices[patchMesh->faceVertexIndices[patch * 4 + 2]];
    const float diagonalLength =
        (Vector(corner0.x, corner0.y, corner0.z) - Vector(corner2.x, corner2.y, corner2.z))
            .Length();
    const uint32_t steps = ArmSteps(radius, diagonalLength, size);

    MeshChange& change = *CurrentChange();
    const bool withLayerSlot = mesh->Layer() != nullptr;
    HWVector normalSum = HWVector::Zero();
    HWVector positionSum = HWVector::Zero();
    float weightSum = 0.0f;
    uint32_t samples = 0;
    for (uint32_t rotation = 0; rotation < 4; ++rotation) {
        GridFace cursor(mesh, patch, patchMeshLevel, column, row, rotation);
        for (uint32_t step = 0; step < steps; ++step) {
            const uint32_t vertex = cursor.Corner(0);
            const StoredVertexInfo& record =
                TouchRecord(change, vertex, cursor.Face(), mesh->vertices[vertex], withLayerSlot);
            const Vector p(
                record.originalPosition[0], record.originalPosition[1], record.originalPosition[2]);
            const float weight = 1.0f - inverseRadius * (p - localCenter).Length();
            // With a radius of 0, even the weight of the vertex at the centre is NaN (zero times
            // infinity), and NaN must not propagate to the direction.
            if (!(weight >= 0.0f)) break;
            normalSum = normalSum + UnpackNormal(record.originalNormal) * weight;
            positionSum = positionSum + HWVector(p) * weight;
            weightSum += weight;
            ++samples;
            // At an open border, the cursor does not move and the same cell is counted again, so
            // border cells have more weight.
            cursor.Step(0);
        }
    }

    if (samples == 0) {
        normal = hit.normal;
        position = Vector();
        return;
    }
    normalSum.Normalize();
    normal = static_cast<Vector>(normalSum);
    position = static_cast<Vector>(positionSum * (1.0f / weightSum));
}

/// Runs the dab's traversal without moving vertices and adds up the samples inside the brush.
void SwiftStroke::SampleArea(const SurfacePoint& hit, Vector& normal, Vector& position) {
    planeSampleNormalSum = Vector();
    planeSamplePositionSum = Vector();
    planeSampleWeight = 0.0f;
    {
        planeSampling = true;
        if (MayUsePatchCache()) patchCache.Open();
        const AtScopeEnd endWalk([this] {
            ++mesh->visitStamp;
            planeSampling = false;
            patchCache.StopReading();
        });
        const uint32_t start = hit.face / facesPerPatch;
        if (patchMesh->meshType == 1)
            patchMesh->EnumerateFaces(start, this, 0);
        else
            patchMesh->EnumerateVertices(start, this);
    }

    normal = planeSampleNormalSum.Normalized();
    position = planeSampleWeight > minSampleWeight
                   ? planeSamplePositionSum * (1.0f / planeSampleWeight)
                   : planePoints[mirrorPass];
}

}  // namespace trovik
