// SPDX-License-Identifier: Apache-2.0
#include "DetailBrush.h"

#include "OriginalSnapshot.h"
#include "framework/brushes/BrushSettings.h"
#include "framework/detail/StrokeTessellator.h"
#include "framework/multires/LevelGeometry.h"

#include <limits>
#include <string>
#include <vector>

namespace trovik {

/// The refinement of one stroke.
struct DetailBrush::StrokeState {
    /// For the mesh that the last dab hit; null if it cannot be refined.
    std::unique_ptr<StrokeTessellator> tessellator;
    StrokeTessellator::Reach reach;
    std::vector<uint32_t> faces;
    OriginalSnapshot originals;
    std::string whyNot;
    bool isHudShown = false;
};

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
    stroke = std::make_unique<StrokeState>();
}

// The change is finished as a part of an earlier step, so the stroke must begin one.
void DetailBrush::EndStroke() {
    originalData = nullptr;
    stroke.reset();
    LevelChange::StartStroke();
    BrushOperation::EndStroke();
}

void DetailBrush::Serialize(Stream& stream) { BrushOperation::Serialize(stream); }
void DetailBrush::OnNodeEvent(const Attribute& attribute, NodeEventType type) {
    BrushOperation::OnNodeEvent(attribute, type);
}

bool DetailBrush::CheckValidity() {
    useTessellator = Settings().detail.isOn;
    return BrushOperation::CheckValidity();
}

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

void DetailBrush::Operator(Mesh*, uint32_t face) {
    if (stroke != nullptr) stroke->faces.push_back(face);
}

bool DetailBrush::Tester(Mesh* mesh, uint32_t face) {
    if (!CurrentMeshEditable()) return false;
    return (mesh->faceFlags[face] & faceIsLive) != 0 &&
           stroke->tessellator->Reaches(stroke->reach, face);
}

void DetailBrush::CollectFaces() {
    if (!CurrentMeshEditable()) return;
    stroke->faces.clear();
    LevelMesh& level = stroke->tessellator->Level();
    level.EnumerateFaces(stroke->reach.face, this, 0);
    // The walk changes nothing, so its faces need not be reported as changed by the dab.
    level.ClearLastWalks();
}

bool DetailBrush::CurrentMeshEditable() const {
    return useTessellator && stroke != nullptr && stroke->tessellator != nullptr;
}

bool DetailBrush::MeshEditable(const Mesh* mesh) const {
    const auto* level = dynamic_cast<const LevelMesh*>(mesh);
    return useTessellator && level != nullptr && GeometryOf(*level).WhyTopologyIsFixed().empty();
}

int DetailBrush::DoRefineReduce(bool refine, bool reduce, int passes, bool relax) {
    const DabDetail& detail = Settings().detail;
    if (!CurrentMeshEditable() || !(detail.length > 0.0f)) return 0;
    LevelMesh& level = stroke->tessellator->Level();
    return stroke->tessellator->Adapt(
        stroke->reach,
        stroke->faces,
        detail,
        {refine && detail.splits, reduce && detail.collapses, relax, passes},
        [&](const StrokeTessellator::Edit& edit) {
            const auto& [a, b, made] = edit.vertices;
            switch (edit.kind) {
                case StrokeTessellator::Edit::Split:
                    OnEdgeSplit(&level, a, b, made);
                    break;
                case StrokeTessellator::Edit::Flip:
                    OnEdgeFlip(&level, a, b);
                    break;
                case StrokeTessellator::Edit::Collapse:
                    OnEdgeCollapse(&level, a, b);
                    break;
            }
        });
}

void DetailBrush::InitializeTessellator(const SurfacePoint* hit,
                                        MeshChange* change,
                                        float reach,
                                        bool underBrush,
                                        bool resetOriginals) {
    if (stroke == nullptr) return;
    auto* levelChange = dynamic_cast<LevelChange*>(change);
    auto* level = dynamic_cast<LevelMesh*>(hit->mesh);
    if (levelChange == nullptr || level == nullptr || level->OpenChange() != levelChange ||
        !MeshEditable(level)) {
        if (level != nullptr) stroke->whyNot = GeometryOf(*level).WhyTopologyIsFixed();
        stroke->tessellator.reset();
        return;
    }
    if (stroke->tessellator == nullptr || &stroke->tessellator->Change() != levelChange) {
        stroke->tessellator = std::make_unique<StrokeTessellator>(*level, *levelChange);
        resetOriginals = true;
    }
    if (resetOriginals) {
        stroke->originals.Begin(*level);
        originalData = &stroke->originals.Data();
    }
    stroke->reach.centre = hit->position;
    stroke->reach.face = hit->face;
    stroke->reach.radius =
        underBrush ? Settings().detail.radius * reach : std::numeric_limits<float>::max();
}

void DetailBrush::ShowTessellationHUD() {
    if (stroke == nullptr || stroke->isHudShown || stroke->whyNot.empty()) return;
    stroke->isHudShown = true;
    g_pKernel->Interface()->HUDMessageShow(
        QStringLiteral("Strokes do not change the detail of this mesh, because it %1.")
            .arg(QString::fromStdString(stroke->whyNot)),
        HUDMessageWarning);
}

}  // namespace trovik
