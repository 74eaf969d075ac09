// SPDX-License-Identifier: Apache-2.0
#include "engine/LiveSession.h"

#include "framework/display/PatchBounds.h"
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

/// Time budget for dabs before the surface is sent to the viewport: half a frame at 60 Hz.
constexpr std::chrono::milliseconds dabBudget(8);

std::vector<PathSample> PathSamples(const std::vector<PenPoint>& points) {
    std::vector<PathSample> samples;
    samples.reserve(points.size());
    for (const PenPoint& point : points) {
        PathSample sample(Vector(point.x, point.y, 0.0f), point.pressure);
        sample.tilt = {point.tiltX, point.tiltY, 0.0f};
        // The same conversion as for recorded pens in stroke scripts, so that a replay has the same
        // times.
        sample.time = point.milliseconds / 1000.0;
        samples.push_back(sample);
    }
    return samples;
}

bool IsSameView(const StrokeView& a, const StrokeView& b) {
    return a.eye == b.eye && a.target == b.target && a.up == b.up &&
           a.verticalFieldOfView == b.verticalFieldOfView && a.width == b.width &&
           a.height == b.height;
}

/// A script without steps that opens the requested document.
nlohmann::json SetupOf(const OpenRequest& request) {
    nlohmann::json setup = {{"steps", nlohmann::json::array()}};
    if (!request.preferences.empty()) setup["preferences"] = request.preferences;
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

std::string PicturePathOf(const std::string& journalPath) {
    return std::filesystem::path(journalPath).replace_extension(".png").string();
}

LiveSession::LiveSession(const OpenRequest& request,
                         const std::string& journalPath,
                         const ScriptProgress& progress)
    : runner("studio", ".", progress), journal(journalPath) {
    // Users choose output files in dialogs, so all paths are allowed.
    runner.AllowOutside(true);
    if (!journal.empty()) runner.SetJournal({.path = journal});
    const nlohmann::json setup = SetupOf(request);
    runner.Open(setup);
    feed.emplace(GetDocument());
    actions.emplace(setup);

    trovik::Document& document = GetDocument();
    opened.sourcePath = request.scenePath.empty() ? request.meshPath : request.scenePath;
    opened.scenePath = request.scenePath;
    opened.journalPath = journal;
    opened.title = request.title.empty()
                       ? std::filesystem::path(opened.sourcePath).filename().string()
                       : request.title;
    opened.bounds = TransformBox(document.Tree().Bounds(), document.Geometry().Place().ToWorld());
    opened.view = document.View();
    opened.applicationData = document.Settings().applicationData;
    const SurfaceAttributes& attributes = document.Geometry().Attributes();
    opened.groups = attributes.groupNames;
    opened.hasUngroupedFaces = std::find(attributes.faceGroups.begin(),
                                         attributes.faceGroups.end(),
                                         SurfaceAttributes::none) != attributes.faceGroups.end();
    opened.notes = document.Notes();
}

LiveSession::~LiveSession() { stroke.reset(); }

void LiveSession::Close() {
    if (stroke) EndStroke();
    runner.Close();
    if (journal.empty()) return;
    std::error_code ignored;
    std::filesystem::remove(journal, ignored);
    std::filesystem::remove(PicturePathOf(journal), ignored);
}

void LiveSession::Do(const nlohmann::json& step) {
    runner.Do(step, actions->StepCount());
    actions->AddStep(step);
}

void LiveSession::ShowView(const StrokeView& view) {
    if (!IsSameView(view, GetDocument().View())) Do(CameraStep(view));
}

void LiveSession::Run(const nlohmann::json& step, const std::optional<StrokeView>& view) {
    CheckStep(step, "studio");
    if (stroke) EndStroke();
    for (const char* seesView : {"freeze", "hide", "show", "isolate", "picture", "bake"})
        if (view && step.contains(seesView)) ShowView(*view);
    const bool isMoved = step.contains("transform") || step.contains("undo") ||
                         step.contains("redo") || step.contains("reset");
    Do(step);
    if (isMoved) feed->SendTransform();
}

template <typename Work>
void LiveSession::Stroke(Work work) {
    if (!stroke) return;
    try {
        work();
    } catch (Error* error) {
        const std::string reason = error->Message().toStdString();
        Error::Dispose(error);
        EndAfterError();
        throw HostError(reason);
    } catch (...) {
        EndAfterError();
        throw;
    }
}

void LiveSession::EndAfterError() {
    stroke.reset();
    hasBacklog = false;
    SelectToolBefore();
}

void LiveSession::BeginStroke(const StrokeStart& start) {
    if (stroke) EndStroke();
    trovik::Document& document = GetDocument();
    toolBefore.clear();
    const std::string tool = document.State()->tool.name;
    if (!start.tool.empty() && start.tool != tool) {
        Do({{"tool", start.tool}});
        toolBefore = tool;
    }
    ShowView(start.view);

    PenStrokeOptions options = PenStrokeOptions::Interactive();
    options.modifier = start.modifier;
    strokeSeed = document.Settings().strokesBegun + 1;
    options.seed = strokeSeed;
    if (start.steadyPixels >= 0.0f) options.steady = start.steadyPixels;
    // A copy that follows the drag has no path to straighten.
    if (document.Brush().StrokeDrawMode() == static_cast<int>(DrawMode::AlongPath))
        options.shape.line = start.isLine;
    strokeStart = start;
    strokePoints.clear();
    figures = {};
    try {
        stroke.emplace(document, options);
    } catch (...) {
        SelectToolBefore();
        throw;
    }
}

void LiveSession::AddSamples(const std::vector<PenPoint>& points) {
    Stroke([&] {
        strokePoints.insert(strokePoints.end(), points.begin(), points.end());
        const auto begin = std::chrono::steady_clock::now();
        const unsigned before = stroke->Count();
        hasBacklog = stroke->Add(PathSamples(points), dabBudget);
        NoteDabs(before, begin);
    });
}

void LiveSession::Tick(double milliseconds) {
    Stroke([&] {
        if (strokePoints.empty() || milliseconds <= strokePoints.back().milliseconds) return;
        // A tick would apply all waiting dabs at once; a later one covers its time.
        if (hasBacklog) return;
        // Recorded as a repetition of the last sample at this time.
        PenPoint resting = strokePoints.back();
        resting.milliseconds = milliseconds;
        strokePoints.push_back(resting);
        const auto begin = std::chrono::steady_clock::now();
        const unsigned before = stroke->Count();
        stroke->Tick(milliseconds / 1000.0);
        NoteDabs(before, begin);
    });
}

void LiveSession::Continue() {
    Stroke([&] {
        const auto begin = std::chrono::steady_clock::now();
        const unsigned before = stroke->Count();
        hasBacklog = stroke->Continue(dabBudget);
        NoteDabs(before, begin);
    });
}

void LiveSession::NoteDabs(unsigned before, std::chrono::steady_clock::time_point begin) {
    figures.dabs = stroke->Count();
    if (figures.dabs == before) return;
    const std::chrono::duration<double, std::milli> passed =
        std::chrono::steady_clock::now() - begin;
    figures.millisecondsPerDab = passed.count() / (figures.dabs - before);
}

void LiveSession::EndStroke() {
    Stroke([&] {
        stroke->Release();
        stroke.reset();
        hasBacklog = false;
        actions->AddStroke(strokeStart, strokeSeed, strokePoints);
    });
    SelectToolBefore();
}

void LiveSession::AbandonStroke() {
    Stroke([&] {
        stroke->Abandon();
        stroke.reset();
        hasBacklog = false;
        // The stroke is not recorded or counted, so that a replay of the actions numbers strokes
        // identically.
        --GetDocument().Settings().strokesBegun;
    });
    SelectToolBefore();
}

void LiveSession::SelectToolBefore() {
    if (toolBefore.empty()) return;
    const std::string tool = std::exchange(toolBefore, std::string());
    Do({{"tool", tool}});
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
    result.normal = WorldNormal(geometry.Place(), hit->normal);
    const SceneSettings& settings = document.Settings();
    for (const Matrix& map : settings.mirrorMaps) {
        const Vector position = map.AffineTransform(hit->position, 1.0f);
        HoverHit::Mirrored mirrored;
        geometry.Place().LocalToWorld(&mirrored.position, &position, 1.0f);
        mirrored.normal = WorldNormal(geometry.Place(), map.AffineTransform(hit->normal, 0.0f));
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
