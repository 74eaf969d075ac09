// SPDX-License-Identifier: Apache-2.0
#include "engine/LiveSession.h"

#include "engine/JournalFolder.h"
#include "framework/display/PatchBounds.h"
#include "framework/errors/Cancelled.h"
#include "framework/errors/HostError.h"
#include "framework/mesh/AttributeRefinement.h"
#include "framework/mesh/SurfaceNormal.h"
#include "framework/script/ScriptDocument.h"
#include "framework/strokes/DabAtHit.h"
#include "framework/strokes/PathDabs.h"

#include <algorithm>
#include <chrono>
#include <filesystem>

namespace trovik::studio {

namespace {

/// Approximate size of a scene without layers.
constexpr uint64_t sceneBytesPerVertex = 16;

bool IsSameView(const StrokeView& a, const StrokeView& b) {
    return a.eye == b.eye && a.target == b.target && a.up == b.up &&
           a.verticalFieldOfView == b.verticalFieldOfView && a.width == b.width &&
           a.height == b.height && a.isOrthographic == b.isOrthographic;
}

/// A script without steps that opens the requested document.
nlohmann::json SetupOf(const OpenRequest& request) {
    nlohmann::json setup = request.setup.is_object() ? request.setup : nlohmann::json::object();
    setup["steps"] = nlohmann::json::array();
    for (const auto& [key, value] : request.preferences.items())
        if (!setup.contains("preferences") || !setup.at("preferences").contains(key))
            setup["preferences"][key] = value;
    if (!request.scenePath.empty()) {
        setup["scene"] = std::filesystem::absolute(request.scenePath).string();
        return setup;
    }
    setup["mesh"] = std::filesystem::absolute(request.meshPath).string();
    if (!request.units.empty()) setup["units"] = request.units;
    if (!request.up.empty()) setup["up"] = request.up;
    if (request.levels > 0) setup["levels"] = request.levels;
    return setup;
}

}  // namespace

LiveSession::LiveSession(const OpenRequest& request,
                         const std::string& journalPath,
                         const ScriptProgress& progress)
    : runner("studio", ".", progress), journal(journalPath), recoveredJournal(request.journalPath) {
    // Users choose output files in dialogs, so all paths are allowed.
    runner.AllowOutside(true);
    if (!journal.empty()) runner.SetJournal({.path = journal, .isInteractive = true});
    const nlohmann::json setup = SetupOf(request);
    runner.Open(setup);
    feed.emplace(GetDocument());
    actions.emplace(setup);
    actionStart.emplace(setup.at(request.scenePath.empty() ? "mesh" : "scene").get<std::string>(),
                        journal,
                        !recoveredJournal.empty());

    trovik::Document& document = GetDocument();
    document.AddObserver(tools);
    opened.sourcePath = request.scenePath.empty() ? request.meshPath : request.scenePath;
    opened.scenePath = request.scenePath;
    opened.journalPath = journal;
    opened.title = request.title.empty()
                       ? std::filesystem::path(opened.sourcePath).filename().string()
                       : request.title;
    opened.bounds =
        TransformBox(document.Tree().Bounds(), document.Geometry().Transform().ToWorld());
    opened.view = document.View();
    opened.applicationData = document.Settings().applicationData;
    const SurfaceAttributes& attributes = document.Geometry().Attributes();
    opened.groups = attributes.groupNames;
    opened.hasUngroupedFaces = std::find(attributes.faceGroups.begin(),
                                         attributes.faceGroups.end(),
                                         SurfaceAttributes::none) != attributes.faceGroups.end();
    opened.notes = document.Notes();
    opened.isFromScript = request.setup.is_object();
}

LiveSession::~LiveSession() {
    stroke.reset();
    GetDocument().RemoveObserver(tools);
}

void LiveSession::Close() {
    ApplyStroke();
    runner.Close();
    if (journal.empty()) return;
    RemoveJournal(journal);
    if (!recoveredJournal.empty()) RemoveJournal(recoveredJournal);
}

std::string LiveSession::SaveActions(const std::string& path) const {
    std::string file = actionStart->FileFor(path);
    if (!actionStart->NeedsCopy()) {
        actions->Write(path);
        return {};
    }
    // The script and the copy can be moved together.
    actions->Write(path, std::filesystem::path(file).filename().string());
    return file;
}

void LiveSession::SaveCopy(const std::string& path, JobControl* job) {
    actionStart->KeepBeforeWriting(path);
    GetDocument().WriteScene(path, SceneStream(), {}, job);
}

std::string LiveSession::JournalFailure() { return runner.Runner().JournalFailure(); }

bool LiveSession::HasRoomForJournal() {
    uint64_t vertices = 0;
    for (const DocumentState::Level& level : GetDocument().State()->levels)
        vertices += level.vertices;
    std::error_code unknown;
    const std::filesystem::path parent = std::filesystem::path(journal).parent_path();
    const auto space = std::filesystem::space(parent, unknown);
    return unknown || space.available > vertices * sceneBytesPerVertex;
}

void LiveSession::ResumeJournal() {
    std::filesystem::create_directories(std::filesystem::path(journal).parent_path());
    runner.Runner().ResumeJournal();
}

void LiveSession::Do(const nlohmann::json& step) {
    runner.Do(step, actions->StepCount());
    actions->AddStep(step);
}

void LiveSession::ShowView(const StrokeView& view) {
    const StrokeView& current = GetDocument().View();
    if (!IsSameView(view, current)) Do(CameraStep(current, view));
}

void LiveSession::Run(const nlohmann::json& given, const std::optional<StrokeView>& view) {
    const nlohmann::json step = CheckedStep(given, "studio");
    for (const char* seesView : {"mask", "hide", "show", "isolate", "render", "bake"})
        if (view && step.contains(seesView)) ShowView(*view);
    const bool isMoved = step.contains("transform") || step.contains("undo") ||
                         step.contains("redo") || step.contains("reset");
    actionStart->KeepBeforeWriting(FileWrittenBy(step));
    Do(step);
    if (isMoved) feed->SendTransform();
    // The user's file now contains the recovered work.
    if (step.contains("save") && !recoveredJournal.empty()) RemoveRecovered(recoveredJournal);
}

HoverHit LiveSession::Pick(const StrokeView& view, float x, float y) {
    trovik::Document& document = GetDocument();
    const LevelGeometry& geometry = document.Geometry();
    HoverHit result;
    result.x = x;
    result.y = y;
    const auto hit = HitThrough(geometry, document.Tree(), view, Vector(x, y, 0.0f));
    if (!hit) return result;
    result.isHit = true;
    result.position = WorldPositionOf(geometry, *hit);
    result.normal = WorldNormal(geometry.Transform(), hit->normal);
    const SceneSettings& settings = document.Settings();
    for (const Matrix& map : settings.mirrorMaps) {
        const Vector position = map.AffineTransform(hit->position, 1.0f);
        HoverHit::Mirrored mirrored;
        geometry.Transform().LocalToWorld(&mirrored.position, &position, 1.0f);
        mirrored.normal = WorldNormal(geometry.Transform(), map.AffineTransform(hit->normal, 0.0f));
        result.mirrored.push_back(mirrored);
    }
    const std::vector<uint32_t>& faceGroups = geometry.Attributes().faceGroups;
    const uint32_t base =
        BaseFace(geometry.Level(0)->CornersPerFace(), geometry.BoundIndex(), hit->face);
    if (base < faceGroups.size() && faceGroups[base] != SurfaceAttributes::none)
        result.group = static_cast<int>(faceGroups[base]);
    result.radius = DabRadius(view, settings.dynamics, settings.radius, result.position);
    return result;
}

}  // namespace trovik::studio
