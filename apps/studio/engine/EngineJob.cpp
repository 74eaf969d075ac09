// SPDX-License-Identifier: Apache-2.0
#include "engine/EngineJob.h"

namespace trovik::studio {

namespace {

constexpr auto silentTime = std::chrono::milliseconds(200);
constexpr auto reportInterval = std::chrono::milliseconds(50);

}  // namespace

void EngineJob::Begin(uint64_t request, const QString& newLabel) {
    label = newLabel;
    begun = Clock::now();
    reported = {};
    running = request;
}

bool EngineJob::End() {
    running = 0;
    return reported != Clock::time_point();
}

uint64_t EngineJob::LongRequest() const {
    const uint64_t request = running;
    return request != 0 && Clock::now() - begun.load() > silentTime ? request : 0;
}

bool EngineJob::Report(uint64_t done, uint64_t total, const char* phase) {
    const Clock::time_point now = Clock::now();
    if (now - begun.load() > silentTime && now - reported > reportInterval) {
        reported = now;
        listener(running, label, phase, done, total);
    }
    return !IsCancelled();
}

}  // namespace trovik::studio
