// SPDX-License-Identifier: Apache-2.0
#include "framework/script/SessionStroke.h"

#include "framework/brushes/DabStrength.h"
#include "framework/errors/HostError.h"

namespace trovik {

namespace {

LiveStrokeSettings Begun(SculptSession& session, const PenStrokeOptions& options) {
    if (session.Loop().IsActive()) throw HostError("a stroke is under way; end it first");
    LiveStrokeSettings settings = PenStrokeSettings(session, options);
    BeginStroke(session, options.modifier, options.seed);
    return settings;
}

}  // namespace

LiveStrokeSettings PenStrokeSettings(SculptSession& session, const PenStrokeOptions& options) {
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
    settings.shape = options.shape;
    const auto height = static_cast<float>(settings.view.height);
    settings.shape.smoothing = options.smoothing.value_or(
        brush.UsesStrokeSmoothing() ? brush.StrokeSmoothingDistance() * height : 0.0f);
    settings.shape.steady = options.steady.value_or(
        brush.UsesSteadyStroke() ? brush.SteadyStrokeDistance() * height : 0.0f);
    return settings;
}

// Strokes without a seed of their own differ, as those of a hand do.
void BeginStroke(SculptSession& session,
                 BrushOperation::Modifier modifier,
                 std::optional<uint64_t> seed) {
    SceneSettings& settings = session.Settings();
    ++settings.strokesBegun;
    if (!seed) seed = StrokeRandom(settings.seed + settings.strokesBegun).Next();
    session.Geometry().History().SetNextLabel(
        session.Brush().ActiveConfiguration()->Name().toStdString());
    session.Loop().Begin(modifier, *seed);
}

SessionStroke::SessionStroke(SculptSession& sculptSession, const PenStrokeOptions& options)
    : session(sculptSession),
      live(sculptSession.Loop(),
           sculptSession.Geometry(),
           sculptSession.Tree(),
           Begun(sculptSession, options)) {}

SessionStroke::~SessionStroke() {
    try {
        Release();
    } catch (const std::exception&) {
    } catch (Error* error) {
        Error::Dispose(error);
    }
}

/// Whatever is thrown, the stroke ends.
template <typename Work>
void SessionStroke::Do(Work work) {
    if (isOver) return;
    try {
        work();
    } catch (...) {
        isOver = true;
        session.Loop().End();
        throw;
    }
}

void SessionStroke::Add(const std::vector<PathSample>& samples) {
    Do([&] { live.Add(samples); });
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
