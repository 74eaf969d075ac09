// SPDX-License-Identifier: Apache-2.0
#include "framework/document/DocumentStroke.h"

#include "framework/errors/Cancelled.h"
#include "framework/strokes/DabStrength.h"
#include "framework/strokes/PathDabs.h"
#include "framework/strokes/PathSteps.h"

namespace trovik {

LiveStrokeSettings PenStrokeSettings(Document& document, const PenStrokeOptions& options) {
    CheckSpacing(document.Settings().spacing);
    const BrushOperation& brush = document.Brush();
    LiveStrokeSettings settings;
    settings.view = document.View();
    settings.isFiltered = options.isFiltered;
    settings.limits = options.limits;
    settings.dynamics = document.Settings().dynamics;
    settings.mode = static_cast<DrawMode>(brush.StrokeDrawMode());
    settings.options.radius = document.Settings().radius;
    settings.options.spacing = document.Settings().spacing;
    settings.options.strength = [&brush, radius = settings.options.radius](float pressure) {
        return DabStrength(brush, pressure, radius);
    };
    settings.options.progress = options.progress;
    settings.options.poll = options.poll;
    settings.shape = options.shape;
    const auto height = static_cast<float>(settings.view.height);
    settings.shape.smoothing = options.smoothing.value_or(
        brush.UsesStrokeSmoothing()
            ? options.smoothingScale * (brush.StrokeSmoothingDistance() * height)
            : 0.0f);
    settings.shape.steady = options.steady.value_or(
        brush.UsesSteadyStroke() ? brush.SteadyStrokeDistance() * height : 0.0f);
    return settings;
}

void BeginLoop(Document& document, BrushOperation::Modifier modifier, uint64_t seed) {
    document.Loop().SetDetail(document.Settings().detail,
                              [view = document.View()](const Vector& position) {
                                  return WorldLength(view, 1.0f, position);
                              });
    document.Loop().Begin(modifier, seed);
}

// Strokes without an explicit seed differ from each other, like strokes drawn by hand.
void BeginStroke(Document& document,
                 BrushOperation::Modifier modifier,
                 std::optional<uint64_t> seed) {
    document.RequireNoStroke("begin another stroke");
    SceneSettings& settings = document.Settings();
    ++settings.strokesBegun;
    if (!seed) seed = StrokeRandom(settings.seed + settings.strokesBegun).Next();
    document.Geometry().History().SetNextLabel(
        document.Brush().ActiveConfiguration()->Name().toStdString());
    BeginLoop(document, modifier, *seed);
}

PenStrokeOptions PenStrokeOptions::Interactive() {
    PenStrokeOptions options;
    options.limits.lateTime = 0.0;
    options.smoothingScale = 0.25f;
    return options;
}

DocumentStroke::DocumentStroke(Document& edited)
    : DocumentStroke(edited, PenStrokeOptions::Interactive()) {}

DocumentStroke::DocumentStroke(Document& edited, const PenStrokeOptions& options)
    : document(edited), mirrorPoll(options.mirrorPoll) {
    const auto begin = [&] {
        live.emplace(document.Loop(),
                     document.Geometry(),
                     document.Tree(),
                     PenStrokeSettings(document, options));
    };
    // Out-of-range settings are rejected before the stroke is opened.
    begin();
    BeginStroke(document, options.modifier, options.seed);
    // With a modifier, the stroke uses the settings of another tool.
    begin();
    number = document.Loop().StrokeNumber();
}

DocumentStroke::~DocumentStroke() {
    try {
        Release();
    } catch (const std::exception&) {
    } catch (Error* error) {
        Error::Dispose(error);
    }
}

bool DocumentStroke::IsOpen() const { return document.Loop().StrokeNumber() == number; }

/// Any exception ends the stroke.
template <typename Work>
void DocumentStroke::Do(Work work) {
    if (IsOver()) return;
    try {
        work();
    } catch (const Cancelled&) {
        if (IsOpen()) document.Loop().Break();
        isOver = true;
        throw;
    } catch (...) {
        if (IsOpen()) document.Loop().End();
        isOver = true;
        throw;
    }
}

void DocumentStroke::Add(const std::vector<PathSample>& samples) {
    Do([&] { live->Add(samples); });
}

bool DocumentStroke::Add(const std::vector<PathSample>& samples, LiveStroke::Budget budget) {
    bool remain = false;
    Do([&] { remain = live->Add(samples, budget); });
    return remain;
}

bool DocumentStroke::Continue(LiveStroke::Budget budget) {
    bool remain = false;
    Do([&] {
        remain = live->Continue(budget);
        if (isReleased && !remain) End();
    });
    return remain;
}

void DocumentStroke::Tick(double time) {
    Do([&] { live->Tick(time); });
}

void DocumentStroke::Release() {
    Do([&] {
        live->Release();
        End();
    });
}

bool DocumentStroke::Release(LiveStroke::Budget budget) {
    bool remain = false;
    Do([&] {
        isReleased = true;
        remain = live->Release(budget);
        if (!remain) End();
    });
    return remain;
}

void DocumentStroke::End() {
    isOver = true;
    document.Loop().End(mirrorPoll);
}

void DocumentStroke::Abandon() {
    Do([&] {
        live->Abandon();
        isOver = true;
        document.Loop().End();
    });
}

}  // namespace trovik
