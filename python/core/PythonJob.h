// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/jobs/JobControl.h"

#include <chrono>
#include <optional>
#include <pybind11/pybind11.h>

namespace trovik::python {

/// Passes the progress of a command to a Python function, and cancels the command if the function
/// returns False or raises an exception, or if a signal such as Ctrl-C has arrived.
class PythonJob final : public JobControl {
public:
    /// The time during which a command reports to a function. Construct and destroy it while
    /// holding the GIL.
    class Scope {
    public:
        /// \param progress  callable with (done, total), or None. Borrowed.
        Scope(PythonJob& job, pybind11::handle progress);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;
        /// Throws the exception with which the function or a signal cancelled the command, if there
        /// is one.
        void ThrowCause();

    private:
        PythonJob& job;
    };

    /// While it exists, reports neither call the function nor cancel the command.
    class Muting {
    public:
        explicit Muting(PythonJob& mutedJob) : job(mutedJob) { job.isMuted = true; }
        ~Muting() { job.isMuted = false; }
        Muting(const Muting&) = delete;
        Muting& operator=(const Muting&) = delete;

    private:
        PythonJob& job;
    };

    PythonJob() = default;
    bool Report(uint64_t done, uint64_t total, const char* phase) override;
    /// Counts a dab. Strokes report the number of dabs, with a total of 0.
    void NoteDab() { ++dabs; }

private:
    using Clock = std::chrono::steady_clock;
    bool CallPython(uint64_t done, uint64_t total);

    pybind11::handle progress;
    std::optional<pybind11::error_already_set> cause;
    bool isCancelled = false;
    bool isMuted = false;
    uint64_t dabs = 0;
    Clock::time_point lastCall;
};

}  // namespace trovik::python
