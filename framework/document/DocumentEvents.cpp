// SPDX-License-Identifier: Apache-2.0

/// \file Notifies the observers of a document, and publishes its state.
#include "framework/brushes/BrushSettings.h"
#include "framework/brushes/Falloff.h"
#include "framework/document/Document.h"
#include "framework/document/SurfaceEvents.h"
#include "framework/memory/MemoryAccount.h"

#include <algorithm>

namespace trovik {

void Document::AddObserver(DocumentObserver& observer) { observers.push_back(&observer); }
void Document::RemoveObserver(DocumentObserver& observer) { std::erase(observers, &observer); }

// An observer may remove itself or others while it is called.
template <typename Event>
void Document::Notify(const Event& event) {
    const std::vector<DocumentObserver*> informed = observers;
    for (DocumentObserver* observer : informed)
        if (std::find(observers.begin(), observers.end(), observer) != observers.end())
            event(*observer);
}

Document::SurfaceEvents::SurfaceEvents(Document& ofDocument)
    : document(ofDocument), geometry(*ofDocument.geometry) {
    geometry.AddObserver(*this);
}

Document::SurfaceEvents::~SurfaceEvents() { geometry.RemoveObserver(*this); }

void Document::SurfaceEvents::SurfaceChanged(const SurfaceChange& change) {
    document.Notify([&](DocumentObserver& one) { one.SurfaceChanged(change); });
}

void Document::NotifyCamera() {
    isStateCurrent = false;
    Notify([](DocumentObserver& one) { one.CameraChanged(); });
}

void Document::NoteToolChanged() {
    isStateCurrent = false;
    Notify([](DocumentObserver& one) { one.ToolChanged(); });
}

void Document::ReportProblem(const std::string& message) {
    Notify([&](DocumentObserver& one) { one.Problem(message); });
}

std::string Document::TakeHistoryProblem() {
    const std::string problem = geometry->History().TakeProblem();
    if (!problem.empty()) {
        historyProblem = problem;
        ReportProblem(problem);
    }
    return std::exchange(historyProblem, std::string());
}

void Document::NotifyChanges() {
    isStateCurrent = false;
    std::vector<DocumentState::Level> levels = LevelsOfState();
    std::vector<DocumentState::Layer> layers = LayersOfState();
    const uint32_t level = geometry->BoundIndex();
    const bool levelsChanged = level != notifiedLevel || levels != notifiedLevels;
    const bool layersChanged = levelsChanged || layers != notifiedLayers;
    notifiedLevels = std::move(levels);
    notifiedLevel = level;
    notifiedLayers = std::move(layers);
    const bool historyChanged = entries.Update(geometry->History(), ToolName());
    const bool wasModified = std::exchange(modified, entries.StateNumber() != savedState);

    if (levelsChanged) Notify([](DocumentObserver& one) { one.LevelsChanged(); });
    if (layersChanged) Notify([](DocumentObserver& one) { one.LayersChanged(); });
    if (historyChanged) Notify([](DocumentObserver& one) { one.HistoryChanged(); });
    if (modified != wasModified)
        Notify([now = modified](DocumentObserver& one) { one.ModifiedChanged(now); });
    historyProblem = TakeHistoryProblem();
}

std::string Document::ToolName() const {
    const BrushOperation& present = PresentBrush();
    const BrushConfiguration* tool = present.ActiveConfiguration();
    return tool == nullptr ? std::string() : tool->Name().toStdString();
}

std::vector<DocumentState::Level> Document::LevelsOfState() const {
    std::vector<DocumentState::Level> levels;
    for (uint32_t i = 0; i < geometry->LevelCount(); ++i) {
        const LevelMesh& level = *geometry->Level(i);
        levels.push_back({level.VertexCount(), level.faceCount});
    }
    return levels;
}

std::vector<DocumentState::Layer> Document::LayersOfState() const {
    std::vector<DocumentState::Layer> layers;
    const SculptLayer* present = ActiveLayer();
    for (const auto& layer : geometry->Layers().OfLevel(*geometry->Bound())) {
        const SculptLayer::Properties& given = layer->UserProperties();
        layers.push_back(
            {given.name, given.strength, given.visible, given.writable, layer.get() == present});
    }
    return layers;
}

DocumentState::Tool Document::ToolOfState() const {
    BrushOperation& present = PresentBrush();
    const BrushOperation::Private& host = present.Settings();
    DocumentState::Tool tool;
    tool.name = ToolName();
    tool.radius = settings.radius;
    tool.radiusPixels = settings.dynamics.radiusPixels;
    tool.spacing = settings.spacing;
    tool.strength = present.BrushStrength();
    if (IsFalloffIndex(host.falloffIndex)) tool.falloff = FalloffName(host.falloffIndex);
    tool.direction = present.Direction();
    tool.pressureControlsStrength = present.strokeOptionC.Value();
    tool.pressureControlsSize = present.strokeOptionD.Value();
    tool.usesFacing = active == this ? CheckableFloatArray::s_bActive : facingActive;
    tool.usesStamp = host.stamp.enabled;
    tool.stampPath = host.stamp.path.toStdString();
    return tool;
}

std::shared_ptr<const DocumentState> Document::BuildState() const {
    auto built = std::make_shared<DocumentState>();
    built->levels = LevelsOfState();
    built->currentLevel = geometry->BoundIndex();
    built->layers = LayersOfState();
    built->tool = ToolOfState();
    built->tools = ToolNames();
    built->symmetry.mode = settings.mirrorMode;
    built->symmetry.copies = static_cast<uint32_t>(settings.mirrorMaps.size());
    built->symmetry.maps = settings.mirrorMaps;
    built->symmetry.topological = settings.mirrorMode == MirrorConfiguration::Topological;
    built->view = settings.view;
    const UndoHistory& history = geometry->History();
    built->history = entries.List(history);
    built->historyPosition = history.Position();
    built->historyBytes = history.Bytes();
    built->historyBytesOnDisk = history.SpilledBytes();
    built->memoryBytes = MemoryAccount::Total();
    built->memoryLimit = MemoryAccount::Limit();
    built->isModified = modified;
    built->isStrokeOpen = IsStrokeOpen();
    built->sourcePath = path;
    built->scenePath = scenePath;
    return built;
}

std::shared_ptr<const DocumentState> Document::State() const {
    if (std::this_thread::get_id() == owner && !isStateCurrent) {
        state = BuildState();
        isStateCurrent = true;
    }
    return state;
}

}  // namespace trovik
