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
                                   SurfaceRequest,
                                   StrokeStart,
                                   StrokeSamples,
                                   StrokeTick,
                                   StrokeEnd>;

}  // namespace trovik::studio
