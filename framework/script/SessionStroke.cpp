// SPDX-License-Identifier: Apache-2.0
#include "framework/script/SessionStroke.h"

#include "framework/errors/WorkStopped.h"
#include "framework/strokes/DabStrength.h"
#include "framework/strokes/PathSteps.h"

namespace trovik {

LiveStrokeSettings PenStrokeSettings(SculptSession& session, const PenStrokeOptions& options) {
    CheckSpacing(session.Settings().spacing);
    const BrushOperation& brush = session.Brush();
    LiveStrokeSettings settings;
    settings.view = session.View();
    settings.isFiltered = options.isFiltered;
    settings.limits = options.limits;
    settings.dynamics = session.Settings().dynamics;
    settings.mode = static_cast<DrawMode>(brush.StrokeDrawMode());
    settings.options.radius = session.Settings().radius;
    settings.options.spacing = session.Settings().spacing;
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

// Strokes without a seed of their own differ, as those of a hand do.
void BeginStroke(SculptSession& session,
                 BrushOperation::Modifier modifier,
                 std::optional<uint64_t> seed) {
    session.RequireNoStroke("begin another stroke");
    SceneSettings& settings = session.Settings();
    ++settings.strokesBegun;
    if (!seed) seed = StrokeRandom(settings.seed + settings.strokesBegun).Next();
    session.Geometry().History().SetNextLabel(
        session.Brush().ActiveConfiguration()->Name().toStdString());
    session.Loop().Begin(modifier, *seed);
}

PenStrokeOptions PenStrokeOptions::Interactive() {
    PenStrokeOptions options;
    options.limits.lateTime = 0.0;
    options.smoothingScale = 0.25f;
    return options;
}

SessionStroke::SessionStroke(SculptSession& sculptSession)
    : SessionStroke(sculptSession, PenStrokeOptions::Interactive()) {}

SessionStroke::SessionStroke(SculptSession& sculptSession, const PenStrokeOptions& options)
    : session(sculptSession),
      live(sculptSession.Loop(),
           sculptSession.Geometry(),
           sculptSession.Tree(),
           PenStrokeSettings(sculptSession, options)) {
    BeginStroke(session, options.modifier, options.seed);
    number = session.Loop().StrokeNumber();
}

SessionStroke::~SessionStroke() {
    try {
        Release();
    } catch (const std::exception&) {
    } catch (Error* error) {
        Error::Dispose(error);
    }
}

bool SessionStroke::IsOpen() const { return session.Loop().StrokeNumber() == number; }

/// Whatever is thrown, the stroke ends.
template <typename Work>
void SessionStroke::Do(Work work) {
    if (IsOver()) return;
    try {
        work();
    } catch (const WorkStopped&) {
        if (IsOpen()) session.Loop().Break();
        isOver = true;
        throw;
    } catch (...) {
        if (IsOpen()) session.Loop().End();
        isOver = true;
        throw;
    }
}

void SessionStroke::Add(const std::vector<PathSample>& samples) {
    Do([&] { live.Add(samples); });
}

bool SessionStroke::Add(const std::vector<PathSample>& samples, LiveStroke::Budget budget) {
    bool remain = false;
    Do([&] { remain = live.Add(samples, budget); });
    return remain;
}

bool SessionStroke::Continue(LiveStroke::Budget budget) {
    bool remain = false;
    Do([&] { remain = live.Continue(budget); });
    return remain;
}

void SessionStroke::Tick(double time) {
    Do([&] { live.Tick(time); });
}

void SessionStroke::Release() {
    Do([&] {
        live.Release();
        isOver = true;
        session.Loop().End();
    });
}

void SessionStroke::Abandon() {
    Do([&] {
        live.Abandon();
        isOver = true;
        session.Loop().End();
    });
}

}  // namespace trovik
