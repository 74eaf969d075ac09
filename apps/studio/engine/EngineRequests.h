// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/Engine.h"

#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

/// \file
/// Requests from the UI thread to the engine thread, carried out in order.
namespace trovik::studio {

struct StepRequest {
    nlohmann::json step;
    QString label;
    Engine::Done done;
    /// The view that the step uses; if empty, the view of the document.
    std::optional<StrokeView> view;
    /// Whether the thread waits after each dab; see Engine::Pace.
    bool isPaced = false;
};
/// Work that does not use the document.
struct PrepareRequest {
    QString label;
    std::function<void()> work;
    Engine::Done done;
};
struct ImageRequest {
    QString label;
    ImageWork work;
    CancelFlag cancel;
    ShowImage shown;
    Engine::Done done;
    StrokeView view;
};
struct SaveActionsRequest {
    std::string path;
    Engine::ActionsDone done;
};
/// Writes a scene file that does not become the file of the document.
struct SaveCopyRequest {
    std::string path;
    Engine::Done done;
};
/// Tries to continue a journal that could not be written.
struct ResumeJournalRequest {};
struct SurfaceRequest {};
struct StrokeSamples {
    std::vector<PenPoint> points;
    /// Steady-clock time, in seconds.
    double postedTime = 0.0;
};
struct StrokeTick {
    double milliseconds = 0.0;
};
struct StrokeEnd {
    bool isAbandoned = false;
};

using EngineRequest = std::variant<OpenRequest,
                                   StepRequest,
                                   PrepareRequest,
                                   ImageRequest,
                                   SaveActionsRequest,
                                   SaveCopyRequest,
                                   ResumeJournalRequest,
                                   SurfaceRequest,
                                   StrokeStart,
                                   StrokeSamples,
                                   StrokeTick,
                                   StrokeEnd>;

}  // namespace trovik::studio
