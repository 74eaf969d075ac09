// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/jobs/JobControl.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <functional>

namespace trovik::studio {

/// The progress of the request that the engine is carrying out. Requests that take less than 200 ms
/// report nothing.
///
/// Begin, End and Report: engine thread. Cancel and IsLong: any thread.
class EngineJob final : public JobControl {
public:
    using Clock = std::chrono::steady_clock;
    using Listener =
        std::function<void(const QString& label, const char* phase, uint64_t done, uint64_t total)>;

    /// \param onProgress  called on the engine thread, at most 20 times a second.
    explicit EngineJob(Listener onProgress) : listener(std::move(onProgress)) {}

    void Begin(const QString& newLabel);
    /// \return whether progress was reported.
    bool End();
    /// Cancels the running request; has no effect if there is none.
    void Cancel() { isCancelled = isRunning.load(); }
    /// Cancels the request that is running and all that begin later.
    void CancelAll() { isEnding = true; }
    /// Whether a request has been running for longer than 200 ms.
    bool IsLong() const;
    bool Report(uint64_t done, uint64_t total, const char* phase) override;

private:
    Listener listener;
    QString label;
    std::atomic<bool> isRunning = false;
    std::atomic<bool> isCancelled = false;
    std::atomic<bool> isEnding = false;
    std::atomic<Clock::time_point> begun;
    Clock::time_point reported;
};

/// A part of a job that can be cancelled by itself. Borrows the job.
class CancellableJob final : public JobControl {
public:
    CancellableJob(JobControl& whole, const std::atomic<bool>& flag)
        : job(whole), isCancelled(flag) {}

    bool Report(uint64_t done, uint64_t total, const char* phase) override {
        return job.Report(done, total, phase) && !isCancelled;
    }

private:
    JobControl& job;
    const std::atomic<bool>& isCancelled;
};

}  // namespace trovik::studio
