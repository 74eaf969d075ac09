// SPDX-License-Identifier: Apache-2.0
#include "framework/script/SculptSession.h"

#include "framework/brushes/StampFiles.h"
#include "framework/edits/LayerSteps.h"
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/history/UndoPreferences.h"
#include "framework/mesh/NoticeRenderer.h"
#include "framework/multires/Steps.h"
#include "framework/nodes/HostKernel.h"
#include "framework/pluginhost/PluginLoader.h"
#include "framework/render/RenderedLevel.h"

#include <algorithm>

namespace trovik {

namespace {

constexpr const char* brushClassName = "SwiftStroke";

/// Combinations of mirrors have no mode of their own; any value but 0 to 3 and 7 will do.
constexpr int severalCopies = 4;

std::unique_ptr<BrushOperation> MakeBrush() {
    LoadPlugins();
    const ClassDesc* desc = ClassDesc::ByName(QString::fromLatin1(brushClassName));
    if (desc == nullptr) {
        std::string folders;
        for (const std::string& folder : PluginFolders()) folders += " " + folder;
        throw HostError("no plug-in brings the brush " + std::string(brushClassName) +
                        "; searched:" + (folders.empty() ? " no folder" : folders));
    }
    Node* node = desc->Create();
    std::unique_ptr<BrushOperation> brush(dynamic_cast<BrushOperation*>(node));
    if (brush == nullptr) {
        delete node;
        throw HostError(std::string(brushClassName) + " is no brush");
    }
    return brush;
}

}  // namespace

SculptSession::SculptSession(const std::string& meshPath, const MeshSpace& given)
    : SculptSession(meshPath, [&] {
          PolygonMesh polygons = ReadMeshFile(meshPath);
          polygons.attributes.space = Overlaid(polygons.attributes.space, given);
          return polygons;
      }()) {}

SculptSession::SculptSession(const std::string& name, PolygonMesh polygons)
    : path(name), loaded(std::move(polygons)) {
    notes = loaded.notes;
    HostKernel::Instance();
    MakeOrientedManifold(loaded);
    brush = MakeBrush();
    BuildGeometry();
}

SculptSession::SculptSession(const std::string& scenePath,
                             std::unique_ptr<BrushOperation> sceneBrush)
    : path(scenePath), brush(std::move(sceneBrush)) {
    freezeBrush = std::make_unique<FreezeBrush>();
    LoadedScene scene = LoadScene(scenePath, brush.get(), freezeBrush.get());
    freezing = scene.isFreezing;
    loaded = std::move(scene.imported);
    geometry = std::move(scene.geometry);
    settings = std::move(scene.settings);
    notes = std::move(scene.notes);
    ApplyUndoSettings();
    HostKernel::Instance().Scene()->AddGeometry(geometry.get());
    RebuildLoop();
    UpdateCamera();
}

std::unique_ptr<SculptSession> SculptSession::OpenScene(const std::string& scenePath) {
    HostKernel::Instance();
    return std::unique_ptr<SculptSession>(new SculptSession(scenePath, MakeBrush()));
}

void SculptSession::Save(const std::string& scenePath,
                         const SceneStream& header,
                         const std::function<void(const std::string&)>& beforeReplacing) {
    try {
        RequireNoStroke("save the scene");
    } catch (const HostError& refused) {
        throw HostError(scenePath + ": " + refused.what());
    }
    SaveScene(scenePath,
              {*geometry, loaded, *brush, settings, freezeBrush.get(), freezing},
              header,
              beforeReplacing);
}

SculptSession::~SculptSession() {
    for (StrokeLoop* one : {loop.get(), freezeLoop.get()}) {
        if (one == nullptr) continue;
        // Nobody is left to receive an error.
        try {
            // Mirrored sides still owed could take long, and nobody sees them any more.
            one->Break();
        } catch (const std::exception&) {
        } catch (Error* error) {
            Error::Dispose(error);
        }
    }
    HostKernel::Instance().Scene()->RemoveGeometry(geometry.get());
}

void SculptSession::RequireNoStroke(const char* work) const {
    if (loop->IsActive() || freezeLoop->IsActive())
        throw HostError(std::string("cannot ") + work +
                        " while a stroke is open; release or abandon it first");
}

void SculptSession::BuildGeometry() {
    if (geometry != nullptr) HostKernel::Instance().Scene()->RemoveGeometry(geometry.get());
    earlierTotals = Totals();
    loop.reset();
    freezeLoop.reset();
    tree.reset();
    geometry = std::make_unique<LevelGeometry>(loaded);
    ApplyUndoSettings();
    HostKernel::Instance().Scene()->AddGeometry(geometry.get());
    RebuildLoop();
}

void SculptSession::RebuildLoop() {
    earlierTotals = Totals();
    tree = std::make_unique<PatchTree>(geometry->Bound());
    loop = std::make_unique<StrokeLoop>(*brush, *geometry, *tree);
    if (freezeBrush == nullptr) freezeBrush = std::make_unique<FreezeBrush>();
    freezeLoop = std::make_unique<StrokeLoop>(*freezeBrush, *geometry, *tree);
    // A geometry that was built anew or came with a scene.
    if (settings.mirrorMode == MirrorConfiguration::Topological && geometry->Mirror() == nullptr)
        geometry->FindMirror();
    PlaceMirrors();
    loop->SetObserver(observer);
    for (StrokeLoop* one : {loop.get(), freezeLoop.get()}) one->SetInputListener(inputListener);
    PlaceRenderers();
}

void SculptSession::PlaceMirrors() {
    for (StrokeLoop* one : {loop.get(), freezeLoop.get()})
        one->SetMirrors(settings.mirrorMode, settings.mirrorMaps);
}

void SculptSession::SetObserver(StrokeObserver* newObserver) {
    observer = newObserver;
    loop->SetObserver(observer);
}

void SculptSession::SetInputListener(StrokeInputListener* newListener) {
    inputListener = newListener;
    for (StrokeLoop* one : {loop.get(), freezeLoop.get()}) one->SetInputListener(inputListener);
}

void SculptSession::SetRenderers(const std::vector<float>& updateFactors) {
    // The brush holds the renderers for the length of a stroke.
    RequireNoStroke("change the renderers");
    rendererFactors = updateFactors;
    PlaceRenderers();
}

void SculptSession::PlaceRenderers() {
    for (uint32_t i = 0; i < geometry->LevelCount(); ++i) {
        LevelMesh& level = *geometry->Level(i);
        uint32_t kept = 0;
        while (TreeNode* child = level.ChildByClass(MeshRenderer::StaticClass(), kept)) {
            if (dynamic_cast<NoticeRenderer*>(child) == nullptr) {
                ++kept;
                continue;
            }
            level.RemoveChild(child);
            delete child;
        }
    }
    for (const float factor : rendererFactors)
        geometry->Bound()->AddChild(new NoticeRenderer(factor));
}

void SculptSession::Reset() {
    RequireNoStroke("reset the mesh");
    const Placement place = geometry->Place();
    BuildGeometry();
    geometry->Place() = place;
}

void SculptSession::PushLevels(std::unique_ptr<UndoStep> step) {
    geometry->History().Push(std::move(step));
    RebuildLoop();
}

bool SculptSession::Subdivide(const SubdivideOptions& options) {
    RequireNoStroke("subdivide");
    auto step = SubdivideAsStep(*geometry, options);
    if (step == nullptr) return false;
    PushLevels(std::move(step));
    return true;
}

bool SculptSession::DeleteLevels(bool lower) {
    RequireNoStroke("delete levels");
    auto step = DeleteLevelsAsStep(*geometry, lower);
    if (step == nullptr) return false;
    PushLevels(std::move(step));
    return true;
}

void SculptSession::Unsubdivide() {
    RequireNoStroke("unsubdivide");
    PushLevels(UnsubdivideAsStep(*geometry));
}

bool SculptSession::ApplyToBase() {
    RequireNoStroke("apply the level to the base");
    auto step = ApplyToBaseAsStep(*geometry);
    if (step == nullptr) return false;
    PushLevels(std::move(step));
    return true;
}

bool SculptSession::BindLevel(uint32_t level) {
    RequireNoStroke("change the level");
    if (level >= geometry->LevelCount()) return false;
    if (level == geometry->BoundIndex()) return true;
    PushLevels(BindLevelAsStep(*geometry, level));
    return true;
}

bool SculptSession::Undo() {
    RequireNoStroke("undo");
    if (!geometry->History().Undo(*geometry)) return false;
    RebuildLoop();
    return true;
}

bool SculptSession::Redo() {
    RequireNoStroke("redo");
    if (!geometry->History().Redo(*geometry)) return false;
    RebuildLoop();
    return true;
}

void SculptSession::Push(std::unique_ptr<UndoStep> step, bool join) {
    if (step == nullptr) return;
    try {
        RequireNoStroke("change the mesh");
    } catch (const HostError&) {
        // Its work is done already, and would be a part of nothing that can be undone.
        step->Apply(*geometry);
        throw;
    }
    step->joinPrevious = join;
    geometry->History().Push(std::move(step));
    tree->RefitAll();
}

void SculptSession::SetUndoBudget(std::optional<uint64_t> bytes) {
    undoBudget = bytes;
    ApplyUndoSettings();
}

void SculptSession::ApplyUndoSettings() {
    ApplyUndoPreferences(geometry->History());
    if (undoBudget) geometry->History().SetBudget(*undoBudget);
}

bool SculptSession::SelectTool(const std::string& name) {
    RequireNoStroke("change the tool");
    if (name == FreezeBrush::Tool()->Name().toStdString()) {
        freezing = true;
        RefreshStamp(*freezeBrush);
        return true;
    }
    for (uint32_t i = 0; i < BrushOperation::ConfigurationCount(); ++i) {
        BrushConfiguration* row = BrushOperation::Configuration(i);
        if (row->BrushClass() != brush->RuntimeClass() || row->Name().toStdString() != name)
            continue;
        freezing = false;
        BrushCall call(BrushCall::SetActiveConfiguration, *brush);
        call.configuration = row;
        Observed(observer, call, [&] { brush->SetActiveConfiguration(row); });
        RefreshStamp(*brush);
        return true;
    }
    return false;
}

std::vector<std::string> SculptSession::ToolNames() const {
    std::vector<std::string> names;
    for (uint32_t i = 0; i < BrushOperation::ConfigurationCount(); ++i) {
        const BrushConfiguration* row = BrushOperation::Configuration(i);
        if (row->BrushClass() == brush->RuntimeClass()) names.push_back(row->Name().toStdString());
    }
    names.push_back(FreezeBrush::Tool()->Name().toStdString());
    return names;
}

void SculptSession::SetMirrors(const MirrorSetting& setting) {
    RequireNoStroke("change the mirrors");
    std::vector<Matrix> maps = MirrorMaps(setting);
    if (maps.size() > mostMirrorMaps) {
        throw HostError("the mirrors would make " + std::to_string(maps.size() + 1) +
                        " copies of each dab; the most is " + std::to_string(mostMirrorMaps + 1));
    }
    geometry->ForgetMirror();
    settings.mirrorMaps = std::move(maps);
    const bool onePlane = setting.copies == 1 && setting.planes.size() == 1;
    settings.mirrorMode = settings.mirrorMaps.empty() ? static_cast<int>(MirrorConfiguration::Off)
                          : onePlane                  ? setting.planes[0] + 1
                                                      : severalCopies;
    PlaceMirrors();
}

uint32_t SculptSession::MakeSymmetric(int axis, SymmetrySide model) {
    RequireNoStroke("make the mesh symmetric");
    const uint32_t moved = trovik::MakeSymmetric(*geometry, axis, model);
    if (moved > 0) tree->RefitAll();
    return moved;
}

void SculptSession::SetTopologicalMirror() {
    RequireNoStroke("change the mirrors");
    if (!geometry->FindMirror())
        throw HostError(path +
                        ": the mesh has no topological mirror: its faces do not hang "
                        "together alike left and right");
    settings.mirrorMaps.clear();
    settings.mirrorMode = MirrorConfiguration::Topological;
    PlaceMirrors();
}

void SculptSession::UpdateCamera() {
    HostKernel::Instance().Scene()->OwnCamera().Place().SetMatrix(settings.view.ToWorld());
}

void SculptSession::AddLayer(const std::string& name) {
    RequireNoStroke("add a layer");
    Push(AddLayerAsStep(*geometry, name));
}

bool SculptSession::SelectLayer(const std::string& name) {
    RequireNoStroke("change the active layer");
    const auto layer = geometry->Layers().Find(*geometry->Bound(), name);
    if (layer == nullptr && !name.empty()) return false;
    Push(SelectLayerAsStep(*geometry, layer.get()));
    return true;
}

void SculptSession::SetLayerStrength(float strength) {
    RequireNoStroke("change the layer");
    SculptLayer::Properties given = ActiveLayer()->Given();
    given.strength = strength;
    Push(GiveLayerAsStep(*geometry, *ActiveLayer(), given));
}

void SculptSession::Freeze(const std::vector<uint8_t>& given, FreezeMode mode) {
    // The freeze brush holds the amounts of its stroke itself; a sculpting brush reads them anew
    // for each patch.
    if (freezeLoop->IsActive()) RequireNoStroke("freeze");
    auto step = BlendFreezeAsStep(*geometry->Bound(), given, mode);
    // The surface is as it was: no need to look at the pick tree, as Push does.
    if (step != nullptr) geometry->History().Push(std::move(step));
}

bool SculptSession::ChangeVisibility(VisibilityChange change, const FaceChoice& chosen) {
    RequireNoStroke("hide faces");
    auto step = ChangeVisibilityAsStep(*geometry, change, chosen);
    if (step == nullptr) return false;
    const uint32_t top = geometry->LevelCount() - 1;
    tree->RefitFaces(FacesOnLevel(*geometry, step->Faces(), top, geometry->BoundIndex()));
    geometry->History().Push(std::move(step));
    return true;
}

void SculptSession::RefreshSurface() {
    RequireNoStroke("change the mesh");
    geometry->Bound()->ComputeNormals();
    tree->RefitAll();
}

PictureMesh SculptSession::ShownMesh() const { return ShownLevel(*geometry); }

StrokeTotals SculptSession::Totals() const {
    StrokeTotals sum = earlierTotals;
    for (const StrokeLoop* one : {loop.get(), freezeLoop.get()}) {
        if (one == nullptr) continue;
        sum.dabs += one->Totals().dabs;
        sum.verticesMoved += one->Totals().verticesMoved;
        sum.seconds += one->Totals().seconds;
    }
    return sum;
}

}  // namespace trovik
