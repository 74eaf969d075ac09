// SPDX-License-Identifier: Apache-2.0
#include "engine/EngineJob.h"

namespace trovik::studio {

namespace {

constexpr auto silentTime = std::chrono::milliseconds(200);
constexpr auto reportInterval = std::chrono::milliseconds(50);

}  // namespace

void EngineJob::Begin(const QString& newLabel) {
    label = newLabel;
    isCancelled = false;
    begun = Clock::now();
    reported = {};
    isRunning = true;
}

bool EngineJob::End() {
    isRunning = false;
    return reported != Clock::time_point();
}

bool EngineJob::IsLong() const { return isRunning && Clock::now() - begun.load() > silentTime; }

bool EngineJob::Report(uint64_t done, uint64_t total, const char* phase) {
    const Clock::time_point now = Clock::now();
    if (now - begun.load() > silentTime && now - reported > reportInterval) {
        reported = now;
        listener(label, phase, done, total);
    }
    return !isCancelled && !isEnding;
}

}  // namespace trovik::studio
