// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/jobs/JobControl.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <functional>

namespace trovik::studio {

/// The progress of the request that the engine is carrying out. Requests that take less than 200 ms
/// report nothing. Requests are identified by numbers greater than 0, each used once, so that a
/// cancellation that arrives after the end of its request does not affect the next one.
///
/// Begin, End and Report: engine thread. Cancel, CancelAll and LongRequest: any thread.
class EngineJob final : public JobControl {
public:
    using Clock = std::chrono::steady_clock;
    using Listener = std::function<void(
        uint64_t request, const QString& label, const char* phase, uint64_t done, uint64_t total)>;

    /// \param onProgress  called on the engine thread, at most 20 times a second.
    explicit EngineJob(Listener onProgress) : listener(std::move(onProgress)) {}

    void Begin(uint64_t request, const QString& newLabel);
    /// \return whether progress was reported.
    bool End();
    /// Cancels a request if it is running; has no effect otherwise.
    void Cancel(uint64_t request) { cancelled = request; }
    /// Cancels the request that is running and all that begin later.
    void CancelAll() { isEnding = true; }
    bool IsCancelled() const { return isEnding || cancelled == running; }
    /// The request that has been running for longer than 200 ms; 0 if there is none.
    uint64_t LongRequest() const;
    bool Report(uint64_t done, uint64_t total, const char* phase) override;

private:
    Listener listener;
    QString label;
    /// 0 while no request is running.
    std::atomic<uint64_t> running = 0;
    std::atomic<uint64_t> cancelled = ~uint64_t{0};
    std::atomic<bool> isEnding = false;
    std::atomic<Clock::time_point> begun;
    Clock::time_point reported;
};

/// A part of a job that can be cancelled separately. Borrows the job.
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
