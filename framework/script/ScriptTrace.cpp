// SPDX-License-Identifier: Apache-2.0

/// \file
/// The trace of a script: when it starts, and where it ends.
#include "framework/script/ScriptRunner.h"

namespace trovik {

void ScriptRunner::StartTrace() { trace = std::make_unique<TraceRecorder>(traceOptions); }

// What comes after, such as the end of a stroke that the script left open, is no more a part of it.
void ScriptRunner::FinishTrace() {
    if (trace == nullptr) return;
    document->SetObserver(nullptr);
    trace->WriteAfter(document->SculptBrush());
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
