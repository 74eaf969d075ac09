// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <chrono>
#include <cstdint>

namespace trovik {

/// How often an operation reports to a JobControl.
struct JobPace {
    /// Elements (vertices, faces, bytes) after which an operation looks at the clock.
    uint64_t elements = 1024;
    /// Time between two reports of a phase.
    std::chrono::steady_clock::duration interval = std::chrono::milliseconds(20);
};

/// Receives the progress of a long operation and can cancel it.
///
/// Every operation that can take longer than 200 ms accepts a JobControl as a pointer; null:
/// nobody receives progress, and the operation cannot be cancelled. It is borrowed for the call.
///
/// An operation runs through phases, one after the other. Each reports its beginning with `done` 0,
/// then rising numbers, and at last `total`. When Report returns false, the operation restores what
/// it has changed so far and throws Cancelled: the document and all files are then as they were,
/// byte for byte. An operation that was cancelled can be started again.
///
/// Operations report by JobPhase, on the thread that called them.
class TROVIK_API JobControl {
public:
    virtual ~JobControl();
    JobControl(const JobControl&) = delete;
    JobControl& operator=(const JobControl&) = delete;

    /// \param done, total  work finished and in all, in a unit of the phase's own, such as
    /// vertices; `total` is 0 if it is not known.
    /// \param phase  name of the phase, such as "Reading faces"; a string literal.
    /// \return false to cancel. Must not throw.
    virtual bool Report(uint64_t done, uint64_t total, const char* phase) = 0;

    const JobPace& Pace() const { return pace; }

protected:
    JobControl() = default;
    explicit JobControl(const JobPace& reportPace) : pace(reportPace) {}

private:
    JobPace pace;
};

/// Reports once. \throw Cancelled when `job` cancels. \param job  null: does nothing.
TROVIK_API void ReportOrThrow(JobControl* job, uint64_t done, uint64_t total, const char* phase);

}  // namespace trovik
