// SPDX-License-Identifier: Apache-2.0

/// \file Live strokes of a session.
#include "engine/LiveSession.h"
#include "framework/errors/Cancelled.h"
#include "framework/errors/HostError.h"

#include <chrono>

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

}  // namespace

template <typename Work>
void LiveSession::Stroke(Work work) {
    if (!stroke) return;
    try {
        work();
    } catch (const Cancelled&) {
        EndAfterError();
        RevertUnfinishedMirrors();
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
    isReleased = false;
    hasBacklog = false;
    SelectToolBefore();
}

const UndoStep* LiveSession::NewestUndoStep() {
    const UndoHistory& history = GetDocument().Geometry().History();
    return history.Position() == 0 ? nullptr : &history.Shell(history.Position() - 1);
}

void LiveSession::BeginStroke(const StrokeStart& start, std::function<void()> poll) {
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
    options.mirrorPoll = std::move(poll);
    strokeSeed = document.Settings().strokesBegun + 1;
    options.seed = strokeSeed;
    if (start.steadyPixels >= 0.0f) options.steady = start.steadyPixels;
    // Only a tool that draws along a path has a path to straighten.
    if (FollowsPath(static_cast<DrawMode>(document.Brush().StrokeDrawMode())))
        options.shape.line = start.isLine;
    strokeStart = start;
    strokePoints.clear();
    newestBefore = NewestUndoStep();
    figures = {};
    try {
        stroke.emplace(document, options);
    } catch (...) {
        SelectToolBefore();
        throw;
    }
}

void LiveSession::AddSamples(const std::vector<PenPoint>& points) {
    if (isReleased) return;
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
        if (isReleased || strokePoints.empty() || milliseconds <= strokePoints.back().milliseconds)
            return;
        // A tick now would apply all pending dabs at once; the next tick makes up for the skipped
        // time.
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
    if (isReleased && !hasBacklog) FinishStroke();
}

void LiveSession::NoteDabs(unsigned before, std::chrono::steady_clock::time_point begin) {
    figures.dabs = stroke->Count();
    if (figures.dabs == before) return;
    const std::chrono::duration<double, std::milli> passed =
        std::chrono::steady_clock::now() - begin;
    figures.millisecondsPerDab = passed.count() / (figures.dabs - before);
}

void LiveSession::ApplyStroke() {
    if (!stroke) return;
    Stroke([&] { stroke->Release(); });
    FinishStroke();
}

void LiveSession::ReleaseStroke() {
    if (!stroke || isReleased) return;
    Stroke([&] {
        isReleased = true;
        const auto begin = std::chrono::steady_clock::now();
        const unsigned before = stroke->Count();
        hasBacklog = stroke->Release(dabBudget);
        NoteDabs(before, begin);
    });
    if (!hasBacklog) FinishStroke();
}

void LiveSession::FinishStroke() {
    if (!stroke) return;
    stroke.reset();
    isReleased = false;
    hasBacklog = false;
    actions->AddStroke(strokeStart, strokeSeed, strokePoints);
    SelectToolBefore();
}

// The sides that were applied belong to the same undo step as the stroke. The stroke is not in the
// list of actions, so redoing it would have no counterpart in a replay.
void LiveSession::RevertUnfinishedMirrors() {
    trovik::Document& document = GetDocument();
    if (NewestUndoStep() != newestBefore) runner.Do({{"undo", 1}}, actions->StepCount());
    document.DropUndone();
    --document.Settings().strokesBegun;
}

void LiveSession::AbandonStroke() {
    Stroke([&] {
        stroke->Abandon();
        stroke.reset();
        isReleased = false;
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

}  // namespace trovik::studio
