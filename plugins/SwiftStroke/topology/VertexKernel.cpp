// SPDX-License-Identifier: Apache-2.0
#include "kernels/VertexStep.h"

namespace trovik {

namespace {

/// The original data of one vertex: position, auxiliary data, vertex index, mask weight.
struct OriginalDataRecord {
    float position[3];
    VertexAuxiliary auxiliary;
    uint32_t vertexIndex;
    float freezeWeight;
};
static_assert(sizeof(OriginalDataRecord) == 28);

}  // namespace

// Meshes without quads have no grid for the kernels, so the traversal visits individual vertices.
// It uses the same vertex step, with the switches as run-time values.
bool SwiftStroke::Tester(Mesh*, uint32_t vertex, uint32_t face) {
    const TVCrashReporterFlag flag(4, 0x800);
    if (planeSampling) return SamplePlaneVertex(vertex);

    // This must precede all tests, because the normal of a vertex that is not reached also changes
    // if its neighbours move.
    deferredNormals.Append({face, vertex});
    const bool mirroredStamp = WantsMirroredStampRead();
    if (meshHasLayer && layer != nullptr && !layer->Writable()) return false;
    if (useTessellator) RecordOriginalData(vertex);

    KernelSwitches switches = DabSwitches();
    switches.withoutRadius = false;
    switches.alongVertexNormal =
        isSmooth ? affectAllLayers.Value() || layer == nullptr : followVertexNormal;
    switches.withFreeze = meshHasFreeze;
    switches.notifyPerVertex = true;
    const RunTimeSwitches sw(switches, false);
    DabConstants dab(*this, mirroredStamp);
    const bool reached = StepVertex(sw, dab, {vertex, face, 0});
    dab.StoreBounds();
    return reached;
}

void SwiftStroke::RecordOriginalData(uint32_t vertex) {
    if (originalData == nullptr || vertex >= originalData->vertexLimit) return;
    OriginalData& data = *originalData;
    if (data.recordOfVertex[vertex] != -1) return;
    const uint32_t index = data.recordCount;
    const uint32_t page = index >> data.pageShift;
    while (page >= data.pages.fill) {
        const uint32_t last = data.pages.fill;
        data.pages.Append(nullptr);
        if (data.pages.fill == last) return;
        data.pages[last] = Block::AlignedAlloc(
            static_cast<uint64_t>(data.recordsPerPage) * sizeof(OriginalDataRecord),
            data.pageAlignment);
        if (data.pages[last] == nullptr) {
            // If memory cannot be allocated, the vertex does not get a record.
            data.pages.fill = last;
            return;
        }
    }
    if (data.recordCount + 1 > data.recordCount) ++data.recordCount;
    const Vertex& v = data.sourceMesh->vertices[vertex];
    auto* records = static_cast<OriginalDataRecord*>(data.pages[page]);
    OriginalDataRecord& record = records[index & data.pageMask];
    record.position[0] = v.x;
    record.position[1] = v.y;
    record.position[2] = v.z;
    record.auxiliary = data.sourceMesh->vertexAuxiliary[vertex];
    record.vertexIndex = vertex;
    record.freezeWeight = static_cast<float>(v.freeze & freezeAmountMask) * freezeAmountToWeight;
    data.recordOfVertex[vertex] = static_cast<int32_t>(data.recordCount - 1);
}

}  // namespace trovik
