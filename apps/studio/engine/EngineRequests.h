// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/Engine.h"

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
    StrokeView view;
};
struct ApplicationDataRequest {
    std::string name;
    std::vector<uint8_t> bytes;
};
struct SaveActionsRequest {
    std::string path;
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
                                   ApplicationDataRequest,
                                   SaveActionsRequest,
                                   SaveCopyRequest,
                                   ResumeJournalRequest,
                                   SurfaceRequest,
                                   StrokeStart,
                                   StrokeSamples,
                                   StrokeTick,
                                   StrokeEnd>;

}  // namespace trovik::studio
