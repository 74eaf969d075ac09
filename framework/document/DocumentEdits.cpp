// SPDX-License-Identifier: Apache-2.0

/// \file Document operations that change the sculpture: its levels, history, layers, mask and
/// transform.
#include "framework/baking/MapDisplacement.h"
#include "framework/document/Document.h"
#include "framework/edits/LayerSteps.h"
#include "framework/errors/HostError.h"
#include "framework/filters/PositionEdit.h"
#include "framework/multires/Steps.h"
#include "framework/remesh/MeshProjection.h"
#include "framework/remesh/SurfaceReplacement.h"

namespace trovik {

void Document::Reset(uint32_t levels, uint64_t byteBudget, JobControl* job) {
    RequireNoStroke("reset the mesh");
    const MatrixTransform transform = geometry->Transform();
    BuildGeometry(levels, byteBudget, job);
    geometry->Transform() = transform;
    entries.Restart();
    for (uint32_t i = 0; i <= levels; ++i) geometry->ReportAll(i, SurfaceChange::Topology);
    NotifyChanges();
}

void Document::PushLevels(std::unique_ptr<UndoStep> step) {
    geometry->History().Push(std::move(step));
    FollowLevel();
    NotifyChanges();
}

template <typename MakeStep>
void Document::PushAllOrNone(uint32_t times, const MakeStep& makeStep) {
    // Steps are pushed only when all of them are complete, so that an exception leaves the redo
    // history intact.
    std::vector<std::unique_ptr<UndoStep>> steps;
    try {
        for (uint32_t i = 0; i < times; ++i) steps.push_back(makeStep());
    } catch (...) {
        for (; !steps.empty(); steps.pop_back()) steps.back()->Apply(*geometry);
        throw;
    }
    for (auto& step : steps) geometry->History().Push(std::move(step));
    FollowLevel();
    NotifyChanges();
}

void Document::Subdivide(uint64_t byteBudget, JobControl* job, uint32_t times) {
    RequireNoStroke("subdivide");
    geometry->CheckForecast(times, byteBudget);
    PushAllOrNone(times,
                  [&] { return SubdivideAsStep(*geometry, LevelGeometry::unlimitedBytes, job); });
}

bool Document::DeleteLevels(bool lower, JobControl* job) {
    RequireNoStroke("delete levels");
    auto step = DeleteLevelsAsStep(*geometry, lower, job);
    if (step == nullptr) return false;
    PushLevels(std::move(step));
    return true;
}

void Document::Unsubdivide(JobControl* job, uint32_t times) {
    RequireNoStroke("unsubdivide");
    PushAllOrNone(times, [&] { return UnsubdivideAsStep(*geometry, job); });
}

bool Document::ApplyToBase(JobControl* job) {
    RequireNoStroke("apply the level to the base");
    auto step = ApplyToBaseAsStep(*geometry, job);
    if (step == nullptr) return false;
    PushLevels(std::move(step));
    return true;
}

bool Document::BindLevel(uint32_t level, JobControl* job) {
    RequireNoStroke("change the level");
    if (level >= geometry->LevelCount()) return false;
    if (level == geometry->BoundIndex()) return true;
    PushLevels(BindLevelAsStep(*geometry, level, job));
    return true;
}

// Observers are notified even if a step throws after changing part of the surface.
template <typename Steps>
bool Document::WalkHistory(const char* work, const Steps& steps) {
    RequireNoStroke(work);
    bool moved = false;
    try {
        moved = steps(geometry->History());
    } catch (...) {
        FollowLevel();
        NotifyChanges();
        throw;
    }
    if (!moved) return false;
    FollowLevel();
    NotifyChanges();
    return true;
}

bool Document::Undo() {
    return WalkHistory("undo", [&](UndoHistory& history) { return history.Undo(*geometry); });
}

bool Document::Redo() {
    return WalkHistory("redo", [&](UndoHistory& history) { return history.Redo(*geometry); });
}

bool Document::JumpTo(std::size_t position) {
    const UndoHistory& history = geometry->History();
    if (position > history.StepCount()) return false;
    // The end of the list is never inside a group.
    while (position < history.StepCount() && position > 0 && history.Shell(position).joinPrevious)
        --position;
    WalkHistory("undo", [&](UndoHistory& steps) {
        const std::size_t before = steps.Position();
        while (steps.Position() > position) steps.Undo(*geometry);
        while (steps.Position() < position) steps.Redo(*geometry);
        return steps.Position() != before;
    });
    return true;
}

void Document::ClearHistory() {
    RequireNoStroke("clear the history");
    geometry->History().Clear();
    NotifyChanges();
}

void Document::DropUndone() {
    RequireNoStroke("change the history");
    geometry->History().DropUndone();
    NotifyChanges();
}

void Document::Push(std::unique_ptr<UndoStep> step, bool join) {
    if (step == nullptr) return;
    try {
        RequireNoStroke("change the mesh");
    } catch (const HostError&) {
        // The change has already been made, and without its step in the history it could not be
        // undone later.
        step->Apply(*geometry);
        throw;
    }
    step->joinPrevious = join;
    geometry->History().Push(std::move(step));
    FollowLevel();
    NotifyChanges();
}

uint32_t Document::MakeSymmetric(int axis, SymmetrySide model, JobControl* job) {
    RequireNoStroke("make the mesh symmetric");
    const uint32_t moved = trovik::MakeSymmetric(*geometry, axis, model, job);
    NotifyChanges();
    return moved;
}

void Document::AddLayer(const std::string& name) {
    RequireNoStroke("add a layer");
    Push(AddLayerAsStep(*geometry, name));
}

bool Document::SelectLayer(const std::string& name) {
    RequireNoStroke("change the active layer");
    const auto layer = geometry->Layers().Find(*geometry->Bound(), name);
    if (layer == nullptr && !name.empty()) return false;
    Push(SelectLayerAsStep(*geometry, layer.get()));
    return true;
}

void Document::SetLayerStrength(float strength) {
    RequireNoStroke("change the layer");
    SculptLayer::Properties given = ActiveLayer()->UserProperties();
    given.strength = strength;
    Push(SetLayerPropertiesAsStep(*geometry, *ActiveLayer(), given));
}

void Document::Freeze(const std::vector<uint8_t>& given, FreezeMode mode) {
    // During a stroke, the freeze brush keeps its own copy of the amounts, whereas a sculpting
    // brush reads them again for each patch.
    if (freezeLoop->IsActive()) RequireNoStroke("freeze");
    auto step = BlendFreezeAsStep(*geometry->Bound(), given, mode);
    if (step != nullptr) geometry->History().Push(std::move(step));
    NotifyChanges();
}

bool Document::ChangeVisibility(VisibilityChange change, const FaceChoice& chosen) {
    RequireNoStroke("hide faces");
    auto step = ChangeVisibilityAsStep(*geometry, change, chosen);
    if (step == nullptr) return false;
    Push(std::move(step));
    return true;
}

void Document::SetTransform(const MatrixTransform& transform) {
    RequireNoStroke("transform the mesh");
    const MatrixTransform before = geometry->Transform();
    geometry->Transform() = transform;
    Push(MakeTransformStep(*geometry, before));
}

void Document::Displace(const DisplacementOptions& options, JobControl* job) {
    RequireNoStroke("displace the surface");
    DisplaceByMap(*geometry, options, job);
    NotifyChanges();
}

ProjectionResult Document::Project(const MeshProjection& projection, JobControl* job) {
    RequireNoStroke("change the mesh");
    const ProjectionResult result = ProjectOntoFile(*geometry, projection, job);
    NotifyChanges();
    return result;
}

uint32_t Document::EditPositions(const PositionEdit& edit, JobControl* job) {
    RequireNoStroke("change the mesh");
    const uint32_t moved = trovik::EditPositions(*geometry, edit, job);
    NotifyChanges();
    return moved;
}

ReplacementReport Document::ReplaceSurface(const SurfaceOperation& operation, JobControl* job) {
    RequireNoStroke("replace the mesh");
    SurfaceReplacement replacement = MakeReplacement(*geometry, operation, job);
    if (replacement.geometry != nullptr)
        PushLevels(ReplaceLevelsAsStep(*geometry, *replacement.geometry, operation.label));
    return std::move(replacement.report);
}

void Document::RefreshSurface() {
    RequireNoStroke("change the mesh");
    geometry->Bound()->ComputeNormals();
    geometry->ReportAll(geometry->BoundIndex(), SurfaceChange::Positions | SurfaceChange::Normals);
}

}  // namespace trovik
