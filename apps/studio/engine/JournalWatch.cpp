// SPDX-License-Identifier: Apache-2.0
#include "engine/JournalWatch.h"

#include <algorithm>

namespace trovik::studio {

namespace {

/// Time between two checks of a journal that is being written.
constexpr auto checkInterval = std::chrono::seconds(2);
constexpr auto firstPause = std::chrono::seconds(1);
constexpr auto longestPause = std::chrono::seconds(30);

}  // namespace

bool JournalWatch::Update(const std::string& newFailure) {
    const bool hasChanged = newFailure != failure;
    failure = newFailure;
    if (failure.empty()) {
        pause = {};
        nextTime = Clock::now() + checkInterval;
    } else if (hasChanged) {
        Postpone();
    }
    return hasChanged;
}

void JournalWatch::Postpone() {
    pause = pause == Clock::duration() ? Clock::duration(firstPause)
                                       : std::min<Clock::duration>(2 * pause, longestPause);
    nextTime = Clock::now() + pause;
}

}  // namespace trovik::studio
