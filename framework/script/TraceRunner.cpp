// SPDX-License-Identifier: Apache-2.0

/// \file
/// A script's trace: when it starts, and where it ends.
#include "framework/script/ScriptRunner.h"

#include <algorithm>

namespace trovik {

namespace {

/// Whether a "mirror" of a script is more than planes.
bool IsTopological(const nlohmann::json& mirror) {
    const auto isPlane = [](const nlohmann::json& word) {
        return word == "x" || word == "y" || word == "z";
    };
    if (!mirror.is_array()) return true;
    return !std::all_of(mirror.begin(), mirror.end(), isPlane);
}

bool MirrorsTopologically(const nlohmann::json& script) {
    if (script.contains("mirror") && IsTopological(script.at("mirror"))) return true;
    const nlohmann::json& steps = script.at("steps");
    return std::any_of(steps.begin(), steps.end(), [](const nlohmann::json& step) {
        return step.contains("mirror") && IsTopological(step.at("mirror"));
    });
}

}  // namespace

void ScriptRunner::StartTrace(const FieldReader& script) {
    traceOptions.mirrorCorners = MirrorsTopologically(script.Json());
    trace = std::make_unique<TraceRecorder>(traceOptions);
}

// What comes after, such as the end of a stroke that the script left open, is no more a part of it.
void ScriptRunner::FinishTrace() {
    if (trace == nullptr) return;
    session->SetObserver(nullptr);
    trace->WriteAfter(session->SculptBrush());
    trace.reset();
}

// What stopped the script is what its user is to hear of, whatever else goes wrong now.
void ScriptRunner::FinishTraceAfterError() {
    try {
        FinishTrace();
    } catch (const std::exception&) {
        trace.reset();
    }
}

}  // namespace trovik
