// SPDX-License-Identifier: Apache-2.0
#include "DetailBrush.h"

namespace trovik {

DetailBrush::DetailBrush() = default;
DetailBrush::~DetailBrush() = default;

const BrushOperation& DetailBrush::operator=(const BrushOperation& other) {
    BrushOperation::operator=(other);
    if (const auto* brush = dynamic_cast<const DetailBrush*>(&other))
        refineAtIntervals = brush->refineAtIntervals;
    return *this;
}

void DetailBrush::BeginStroke(Mesh* mesh, Modifier modifier, TriggerType trigger) {
    BrushOperation::BeginStroke(mesh, modifier, trigger);
}
void DetailBrush::EndStroke() { BrushOperation::EndStroke(); }
void DetailBrush::Serialize(Stream& stream) { BrushOperation::Serialize(stream); }
void DetailBrush::OnNodeEvent(const Attribute& attribute, NodeEventType type) {
    BrushOperation::OnNodeEvent(attribute, type);
}
bool DetailBrush::CheckValidity() { return BrushOperation::CheckValidity(); }

Vector DetailBrush::VertexOriginalPosition(Mesh* mesh, uint32_t vertex) {
    const Vertex& v = mesh->vertices[vertex];
    if (v.changeLink < mesh->changeRecordCount) {
        const StoredVertexInfo& record = mesh->changeRecords[v.changeLink];
        if (record.vertexIndex == vertex) {
            return {
                record.originalPosition[0], record.originalPosition[1], record.originalPosition[2]};
        }
    }
    return {v.x, v.y, v.z};
}

void DetailBrush::OnEdgeSplit(Mesh*, uint32_t, uint32_t, uint32_t) {}
void DetailBrush::OnEdgeFlip(Mesh*, uint32_t, uint32_t) {}
void DetailBrush::OnEdgeCollapse(Mesh*, uint32_t, uint32_t) {}
void DetailBrush::Operator(Mesh*, uint32_t) {}
bool DetailBrush::Tester(Mesh*, uint32_t) { return false; }
void DetailBrush::CollectFaces() {}
bool DetailBrush::CurrentMeshEditable() const { return false; }
bool DetailBrush::MeshEditable(const Mesh*) const { return false; }
int DetailBrush::DoRefineReduce(bool, bool, int, bool) { return 0; }
void DetailBrush::InitializeTessellator(const SurfacePoint*, MeshChange*, float, bool, bool) {}

void DetailBrush::ShowTessellationHUD() {
    g_pKernel->Interface()->HUDMessageShow(
        QStringLiteral("This mesh cannot be refined under the brush."), HUDMessageWarning);
}

}  // namespace trovik
