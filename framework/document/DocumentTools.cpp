// SPDX-License-Identifier: Apache-2.0

/// \file Document operations on tools, symmetry and camera, and the process globals that they use.
#include "framework/brushes/StampFiles.h"
#include "framework/document/Document.h"
#include "framework/errors/HostError.h"
#include "framework/nodes/HostKernel.h"

#include <set>
#include <utility>
#include <vector>

namespace trovik {

namespace {

/// There is no separate mode for combined mirrors; any value works except 0 to 3 and 7.
constexpr int severalCopies = 4;

/// Resets the process globals to their initial values.
/// \param geometry  the geometry of the document to which they belong.
void ResetGlobals(LevelGeometry* geometry) {
    HostScene& scene = *HostKernel::Instance().Scene();
    CheckableFloatArray::s_bActive = false;
    scene.OwnCamera().Transform() = MatrixTransform();
    scene.OwnCamera().SetOrthographic(false);
    scene.RemoveGeometry(geometry);
}

/// Returns all tools of the catalogue whose names are unique, those of the sculpting brush first.
/// LoadPlugin refuses plug-ins with names that are in use, but a host can add such tools itself.
/// The first one is then returned, so it cannot replace a tool of the sculpting brush or "Freeze".
std::vector<BrushConfiguration*> SelectableTools(const ClassDesc* sculptingClass) {
    std::vector<BrushConfiguration*> tools;
    std::set<QString> names = {FreezeBrush::Tool()->Name()};
    for (const bool isSculpting : {true, false}) {
        for (uint32_t i = 0; i < BrushOperation::ConfigurationCount(); ++i) {
            BrushConfiguration* tool = BrushOperation::Configuration(i);
            if ((tool->BrushClass() == sculptingClass) == isSculpting &&
                names.insert(tool->Name()).second)
                tools.push_back(tool);
        }
    }
    return tools;
}

}  // namespace

Document* Document::active = nullptr;

Document::Activation::~Activation() {
    if (active != &document) return;
    // The members that StoreGlobals writes have already been destroyed.
    ResetGlobals(document.geometry.get());
    active = nullptr;
}

void Document::StoreGlobals() {
    if (active == nullptr) return;
    active->facingActive = CheckableFloatArray::s_bActive;
    HostCamera& camera = HostKernel::Instance().Scene()->OwnCamera();
    active->camera = camera.Transform();
    active->isCameraOrthographic = camera.IsOrthographic();
    ResetGlobals(active->geometry.get());
    active = nullptr;
}

void Document::BecomeActive() {
    StoreGlobals();
    HostScene& scene = *HostKernel::Instance().Scene();
    CheckableFloatArray::s_bActive = facingActive;
    scene.OwnCamera().Transform() = camera;
    scene.OwnCamera().SetOrthographic(isCameraOrthographic);
    scene.AddGeometry(geometry.get());
    active = this;
}

bool Document::SelectTool(const std::string& name) {
    RequireNoStroke("change the tool");
    Activate();
    if (name == FreezeBrush::Tool()->Name().toStdString()) {
        freezing = true;
        RefreshStamp(*freezeBrush);
        NoteToolChanged();
        return true;
    }
    for (BrushConfiguration* row : SelectableTools(brush->RuntimeClass())) {
        BrushOperation* const toolBrush = BrushOfTool(*row);
        if (toolBrush == nullptr || row->Name().toStdString() != name) continue;
        freezing = false;
        activePluginBrush = nullptr;
        for (PluginBrush& one : pluginBrushes)
            if (one.brush.get() == toolBrush) activePluginBrush = &one;
        BrushCall call(BrushCall::SetActiveConfiguration, *toolBrush);
        call.configuration = row;
        // Observers follow the sculpting brush.
        Observed(toolBrush == brush.get() ? strokeObserver : nullptr, call, [&] {
            toolBrush->SetActiveConfiguration(row);
        });
        RefreshStamp(*toolBrush);
        NoteToolChanged();
        return true;
    }
    return false;
}

std::vector<std::string> Document::ToolNames() const {
    std::vector<std::string> names;
    for (const BrushConfiguration* row : SelectableTools(brush->RuntimeClass())) {
        if (BrushOfTool(*row) != nullptr) names.push_back(row->Name().toStdString());
    }
    names.push_back(FreezeBrush::Tool()->Name().toStdString());
    return names;
}

void Document::SetMirrors(const MirrorSetting& setting) {
    RequireNoStroke("change the mirrors");
    std::vector<Matrix> maps = MirrorMaps(setting);
    if (maps.size() > maxMirrorMaps) {
        throw HostError("the mirrors would make " + std::to_string(maps.size() + 1) +
                        " copies of each dab; the maximum is " + std::to_string(maxMirrorMaps + 1));
    }
    geometry->ClearMirror();
    settings.mirrorMaps = std::move(maps);
    const bool onePlane = setting.copies == 1 && setting.planes.size() == 1;
    settings.mirrorMode = settings.mirrorMaps.empty() ? static_cast<int>(MirrorConfiguration::Off)
                          : onePlane                  ? setting.planes[0] + 1
                                                      : severalCopies;
    ApplyMirrors();
    NoteToolChanged();
}

void Document::SetTopologicalMirror(JobControl* job) {
    RequireNoStroke("change the mirrors");
    if (!geometry->FindMirror(job))
        throw HostError(path +
                        ": the mesh has no topological mirror: the connectivity of its left and "
                        "right sides differs");
    settings.mirrorMaps.clear();
    settings.mirrorMode = MirrorConfiguration::Topological;
    ApplyMirrors();
    NoteToolChanged();
}

void Document::UpdateCamera() {
    Activate();
    HostCamera& own = HostKernel::Instance().Scene()->OwnCamera();
    own.Transform().SetMatrix(settings.view.BrushCameraToWorld());
    own.SetOrthographic(settings.view.isOrthographic);
    NotifyCamera();
}

}  // namespace trovik
