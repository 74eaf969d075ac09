// SPDX-License-Identifier: Apache-2.0
#include "framework/document/Document.h"

#include "framework/document/StrokeEvents.h"
#include "framework/document/SurfaceEvents.h"
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/grab/GrabBrush.h"
#include "framework/history/UndoPreferences.h"
#include "framework/mesh/NotificationRecorder.h"
#include "framework/nodes/HostKernel.h"
#include "framework/pluginhost/PluginLoader.h"
#include "framework/render/RenderedLevel.h"

#include <algorithm>
#include <new>
#include <utility>

namespace trovik {

namespace {

constexpr const char* brushClassName = "SwiftStroke";

std::unique_ptr<BrushOperation> MakeBrush() {
    LoadPlugins();
    RegisterGrabBrush();
    const ClassDesc* desc = ClassDesc::ByName(QString::fromLatin1(brushClassName));
    if (desc == nullptr) {
        std::string folders;
        for (const std::string& folder : PluginFolders()) folders += " " + folder;
        throw HostError("no plug-in provides the brush " + std::string(brushClassName) +
                        "; searched:" + (folders.empty() ? " no folder" : folders));
    }
    Node* node = desc->Create();
    std::unique_ptr<BrushOperation> brush(dynamic_cast<BrushOperation*>(node));
    if (brush == nullptr) {
        delete node;
        throw HostError(std::string(brushClassName) + " is not a brush");
    }
    return brush;
}

}  // namespace

Document::Document(const std::string& meshPath, const MeshSpace& given, JobControl* job)
    : Document(
          meshPath,
          [&] {
              PolygonMesh polygons = ReadMeshFile(meshPath, job);
              polygons.attributes.space = Overlaid(polygons.attributes.space, given);
              return polygons;
          }(),
          job) {}

Document::Document(const std::string& name, PolygonMesh polygons, JobControl* job)
    : path(name), loaded(std::move(polygons)) {
    notes = loaded.notes;
    HostKernel::Instance();
    MakeOrientedManifold(loaded, job);
    StoreGlobals();
    brush = MakeBrush();
    MakePluginBrushes();
    BuildGeometry(0, LevelGeometry::unlimitedBytes, job);
    NotifyChanges();
    State();
}

Document::Document(const std::string& sceneFile,
                   std::unique_ptr<BrushOperation> sceneBrush,
                   JobControl* job)
    : path(sceneFile), scenePath(sceneFile), brush(std::move(sceneBrush)) {
    freezeBrush = std::make_unique<FreezeBrush>();
    MakePluginBrushes();
    LoadedScene scene =
        LoadScene(sceneFile, brush.get(), freezeBrush.get(), job, PluginBrushList());
    facingActive = CheckableFloatArray::s_bActive;
    freezing = scene.isFreezing;
    for (PluginBrush& one : pluginBrushes)
        if (one.brush.get() == scene.activePluginBrush) activePluginBrush = &one;
    loaded = std::move(scene.imported);
    geometry = std::move(scene.geometry);
    settings = std::move(scene.settings);
    notes = std::move(scene.notes);
    ApplyUndoSettings();
    FollowLevel(job);
    UpdateCamera();
    NotifyChanges();
    State();
}

std::unique_ptr<Document> Document::OpenScene(const std::string& scenePath, JobControl* job) {
    HostKernel::Instance();
    StoreGlobals();
    return std::unique_ptr<Document>(new Document(scenePath, MakeBrush(), job));
}

void Document::Save(const std::string& target, JobControl* job) {
    const auto beforeReplacing = [&](const std::string& temporaryPath) {
        if (journal != nullptr) journal->OnSceneWritten(target, temporaryPath, job);
    };
    WriteScene(target, SceneStream(), beforeReplacing, job);
    scenePath = target;
    savedState = entries.StateNumber();
    if (journal != nullptr) journal->OnSaved(target);
    NotifyChanges();
}

void Document::WriteScene(const std::string& target,
                          const SceneStream& header,
                          const std::function<void(const std::string&)>& beforeReplacing,
                          JobControl* job) {
    std::vector<BrushOperation*> listed;
    try {
        RequireNoStroke("save the scene");
        Activate();
        listed = PluginBrushList();
    } catch (const HostError& refused) {
        throw HostError(target + ": " + refused.what());
    } catch (const std::bad_alloc&) {
        throw HostError("cannot write " + target + ": not enough memory");
    }
    SaveScene(target,
              {*geometry,
               loaded,
               *brush,
               settings,
               freezeBrush.get(),
               freezing,
               std::move(listed),
               activePluginBrush == nullptr ? nullptr : activePluginBrush->brush.get()},
              header,
              beforeReplacing,
              job);
}

Document::~Document() {
    for (StrokeLoop* one : Loops()) {
        if (!one->IsActive()) continue;
        // There is no caller left to receive an error.
        try {
            Activate();
            // Applying the remaining mirrored sides could take a long time, and nobody would see
            // the result.
            one->Break();
        } catch (const std::exception&) {
        } catch (Error* error) {
            Error::Dispose(error);
        }
    }
}

bool Document::IsStrokeOpen() const {
    const std::vector<StrokeLoop*> loops = Loops();
    return std::any_of(
        loops.begin(), loops.end(), [](const StrokeLoop* one) { return one->IsActive(); });
}

void Document::MakePluginBrushes() {
    for (uint32_t i = 0; i < BrushOperation::ConfigurationCount(); ++i) {
        const BrushConfiguration& tool = *BrushOperation::Configuration(i);
        if (BrushOfTool(tool) != nullptr) continue;
        std::unique_ptr<Node> node(tool.BrushClass()->Create());
        auto* made = dynamic_cast<BrushOperation*>(node.get());
        if (made == nullptr) continue;
        static_cast<void>(node.release());
        pluginBrushes.push_back({std::unique_ptr<BrushOperation>(made), nullptr});
    }
}

std::vector<BrushOperation*> Document::PluginBrushList() const {
    std::vector<BrushOperation*> list;
    for (const PluginBrush& one : pluginBrushes) list.push_back(one.brush.get());
    return list;
}

BrushOperation& Document::PresentBrush() const {
    if (freezing) return *freezeBrush;
    return activePluginBrush == nullptr ? *brush : *activePluginBrush->brush;
}

BrushOperation* Document::BrushOfTool(const BrushConfiguration& tool) const {
    if (tool.BrushClass() == brush->RuntimeClass()) return brush.get();
    for (const PluginBrush& one : pluginBrushes)
        if (tool.BrushClass() == one.brush->RuntimeClass()) return one.brush.get();
    return nullptr;
}

std::vector<StrokeLoop*> Document::Loops() const {
    std::vector<StrokeLoop*> loops;
    // If FollowLevel threw, only some of the loops exist.
    for (StrokeLoop* one : {loop.get(), freezeLoop.get()})
        if (one != nullptr) loops.push_back(one);
    for (const PluginBrush& one : pluginBrushes)
        if (one.loop != nullptr) loops.push_back(one.loop.get());
    return loops;
}

void Document::ResetLoops() {
    loop.reset();
    freezeLoop.reset();
    for (PluginBrush& one : pluginBrushes) one.loop.reset();
}

void Document::RequireNoStroke(const char* work) const {
    if (IsStrokeOpen())
        throw HostError(std::string("cannot ") + work +
                        " while a stroke is open; release or abandon it first");
}

void Document::BuildGeometry(uint32_t levels, uint64_t byteBudget, JobControl* job) {
    auto built = std::make_unique<LevelGeometry>(loaded, job);
    if (levels > 0) built->CheckForecast(levels, byteBudget);
    for (uint32_t i = 0; i < levels; ++i) built->Subdivide(LevelGeometry::unlimitedBytes, job);
    auto builtTrees = std::make_unique<LevelTrees>(*built);
    builtTrees->OfBound(job);
    if (settings.mirrorMode == MirrorConfiguration::Topological) built->FindMirror(job);
    if (active == this) StoreGlobals();
    earlierTotals = Totals();
    ResetLoops();
    tree = nullptr;
    trees.reset();
    surfaceEvents.reset();
    std::vector<GeometryObserver*> others;
    if (geometry != nullptr) others = geometry->Observers();
    geometry = std::move(built);
    trees = std::move(builtTrees);
    for (GeometryObserver* one : others) geometry->AddObserver(*one);
    ApplyUndoSettings();
    FollowLevel();
}

void Document::FollowLevel(JobControl* job) {
    Activate();
    if (trees == nullptr) {
        trees = std::make_unique<LevelTrees>(*geometry);
        tree = nullptr;
    }
    const bool follows = tree != nullptr && tree->IsCurrent() && tree->Level() == geometry->Bound();
    // Also deletes the trees of deleted levels.
    tree = &trees->OfBound(job);
    if (surfaceEvents == nullptr) surfaceEvents = std::make_unique<SurfaceEvents>(*this);
    if (follows) return;
    earlierTotals = Totals();
    loop = std::make_unique<StrokeLoop>(*brush, *geometry, *tree);
    if (freezeBrush == nullptr) freezeBrush = std::make_unique<FreezeBrush>();
    freezeLoop = std::make_unique<StrokeLoop>(*freezeBrush, *geometry, *tree);
    for (PluginBrush& one : pluginBrushes)
        one.loop = std::make_unique<StrokeLoop>(*one.brush, *geometry, *tree);
    // This is the case after the geometry was loaded from a scene.
    if (settings.mirrorMode == MirrorConfiguration::Topological && geometry->Mirror() == nullptr)
        geometry->FindMirror(job);
    ApplyMirrors();
    loop->SetObserver(strokeObserver);
    if (events == nullptr) events = std::make_unique<StrokeEvents>(*this);
    for (StrokeLoop* one : Loops()) one->SetInputListener(events.get());
    PlaceRenderers();
}

void Document::ApplyMirrors() {
    for (StrokeLoop* one : Loops()) one->SetMirrors(settings.mirrorMode, settings.mirrorMaps);
}

void Document::SetObserver(StrokeObserver* newObserver) {
    strokeObserver = newObserver;
    loop->SetObserver(strokeObserver);
}

void Document::SetRenderers(const std::vector<float>& updateFactors) {
    // The brush stores the renderers for the duration of a stroke.
    RequireNoStroke("change the renderers");
    rendererFactors = updateFactors;
    PlaceRenderers();
}

void Document::PlaceRenderers() {
    for (uint32_t i = 0; i < geometry->LevelCount(); ++i) {
        LevelMesh& level = *geometry->Level(i);
        uint32_t kept = 0;
        while (TreeNode* child = level.ChildByClass(MeshRenderer::StaticClass(), kept)) {
            if (dynamic_cast<NotificationRecorder*>(child) == nullptr) {
                ++kept;
                continue;
            }
            level.RemoveChild(child);
            delete child;
        }
    }
    for (const float factor : rendererFactors)
        geometry->Bound()->AddChild(new NotificationRecorder(factor));
}

void Document::SetUndoBudget(std::optional<uint64_t> bytes) {
    undoBudget = bytes;
    ApplyUndoSettings();
}

void Document::ApplyUndoSettings() {
    ApplyUndoPreferences(geometry->History());
    if (undoBudget) geometry->History().SetBudget(*undoBudget);
}

RenderMesh Document::ShownMesh() const { return VisibleLevel(*geometry); }

StrokeTotals Document::Totals() const {
    StrokeTotals sum = earlierTotals;
    for (const StrokeLoop* one : Loops()) {
        sum.dabs += one->Totals().dabs;
        sum.verticesMoved += one->Totals().verticesMoved;
        sum.seconds += one->Totals().seconds;
    }
    return sum;
}

}  // namespace trovik
