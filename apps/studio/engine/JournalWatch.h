// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <string>

namespace trovik::studio {

/// Tracks whether the journal of the open document is being written, and schedules attempts to
/// continue a journal that failed. Used on the engine thread only.
class JournalWatch {
public:
    using Clock = std::chrono::steady_clock;

    /// Forgets the journal of the previous document.
    void Restart() { *this = JournalWatch(); }
    /// \param newFailure  see LiveSession::JournalFailure. \return whether it differs from the
    /// previous one.
    bool Update(const std::string& newFailure);
    const std::string& Failure() const { return failure; }
    /// When Update has to be called again, even if nothing happens.
    Clock::time_point NextTime() const { return nextTime; }
    /// Whether the journal failed, and the time for the next attempt has come.
    bool IsAttemptDue() const { return !failure.empty() && Clock::now() >= nextTime; }
    /// Schedules the next attempt; the delay grows with each attempt, up to a limit.
    void Postpone();

private:
    std::string failure;
    Clock::duration pause{};
    Clock::time_point nextTime = Clock::now();
};

}  // namespace trovik::studio
