// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <chrono>
#include <cstdint>

namespace trovik {

/// How often an operation reports to a JobControl.
struct JobPace {
    /// Number of elements (vertices, faces, bytes) after which an operation reads the clock.
    uint64_t elements = 1024;
    /// Time between two reports of a phase.
    std::chrono::steady_clock::duration interval = std::chrono::milliseconds(20);
};

/// Receives the progress of a long operation and can cancel it.
///
/// Every operation that can take longer than 200 ms accepts a pointer to a JobControl. If it is
/// null, progress is not reported and the operation cannot be cancelled. The pointer is borrowed
/// for the duration of the call.
///
/// An operation runs through phases, one after the other. Each phase first reports that `done` is
/// 0, then increasing values of `done`, and finally `total`. If Report returns false, the operation
/// reverts its changes and throws Cancelled: the document and all files are then byte-for-byte
/// identical to their previous state. A cancelled operation can be started again.
///
/// Operations report through JobPhase, on the thread that called them.
class TROVIK_API JobControl {
public:
    virtual ~JobControl();
    JobControl(const JobControl&) = delete;
    JobControl& operator=(const JobControl&) = delete;

    /// \param done, total  completed and total work, in a unit that depends on the phase, such as
    /// vertices; `total` is 0 if it is unknown.
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

/// Reports once.
/// \param job  if null, the function does nothing.
/// \throw Cancelled if the job is cancelled.
TROVIK_API void ReportOrThrow(JobControl* job, uint64_t done, uint64_t total, const char* phase);

}  // namespace trovik
