// SPDX-License-Identifier: Apache-2.0

/// \file Starts and ends the trace of a script.
#include "framework/script/ScriptRunner.h"

namespace trovik {

void ScriptRunner::StartTrace() { trace = std::make_unique<TraceRecorder>(traceOptions); }

// Later work, such as ending a stroke that the script left open, is not part of the trace.
void ScriptRunner::FinishTrace() {
    if (trace == nullptr) return;
    document->SetObserver(nullptr);
    trace->WriteAfter(document->SculptBrush());
    trace.reset();
}

// The user must see the error that stopped the script, so errors in the trace are ignored here.
void ScriptRunner::FinishTraceAfterError() {
    try {
        FinishTrace();
    } catch (const std::exception&) {
        trace.reset();
    }
}

}  // namespace trovik
