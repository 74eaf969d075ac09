// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/jobs/JobControl.h"

#include <algorithm>

namespace trovik {

/// One phase of an operation: counts its work and reports it regularly (JobPace) to a JobControl.
/// Counting costs an addition and a comparison; the clock is read once per JobPace::elements.
///
/// A phase without work (total 0) reports nothing. Not thread-safe.
class TROVIK_API JobPhase {
public:
    /// Reports the beginning of the phase.
    /// \param job  receives the reports; may be null. Borrowed.
    /// \param phaseName  a string literal.
    /// \param totalWork  total number of elements.
    /// \param elementsPerCheck  replaces JobPace::elements if it is smaller. Intended for elements
    /// that take a long time.
    /// \throw Cancelled if the job is cancelled; all other members also throw it.
    JobPhase(JobControl* job,
             const char* phaseName,
             uint64_t totalWork,
             uint64_t elementsPerCheck = ~uint64_t{0});

    /// Adds completed elements.
    void Add(uint64_t count = 1) {
        done += count;
        sinceCheck += count;
        if (sinceCheck >= checkAfter) Check();
    }
    /// Sets the number of completed elements, which must not decrease. Intended for work that is
    /// counted elsewhere.
    void Reach(uint64_t elements) {
        if (elements > done)
            Add(elements - done);
        else
            Poll();
    }
    /// Counts a substep of an element towards the next clock check, but not as progress.
    void Poll() {
        if (++sinceCheck >= checkAfter) Check();
    }
    /// Reports the end of the phase. Call it once, after the last element.
    void Finish();

    /// Calls `work(first, end)` for consecutive ranges of the elements 0 to total - 1, and adds
    /// each range. Use it for loops in which counting individual elements would be too slow.
    template <typename Work>
    void ForEachRun(Work work) {
        for (uint64_t first = 0; first < total; first += runLength) {
            const uint64_t end = std::min(total, first + runLength);
            work(first, end);
            Add(end - first);
        }
    }

private:
    static constexpr uint64_t runLength = 4096;

    void Check();

    JobControl* job;
    const char* name;
    uint64_t total;
    uint64_t done = 0;
    uint64_t sinceCheck = 0;
    uint64_t checkAfter = ~uint64_t{0};
    std::chrono::steady_clock::time_point lastReport;
};

}  // namespace trovik
