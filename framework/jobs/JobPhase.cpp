// SPDX-License-Identifier: Apache-2.0
#include "framework/jobs/JobPhase.h"

namespace trovik {

JobPhase::JobPhase(JobControl* jobControl,
                   const char* phaseName,
                   uint64_t totalWork,
                   uint64_t elementsPerCheck)
    : job(totalWork == 0 ? nullptr : jobControl), name(phaseName), total(totalWork) {
    if (job == nullptr) return;
    checkAfter = std::max<uint64_t>(1, std::min(elementsPerCheck, job->Pace().elements));
    lastReport = std::chrono::steady_clock::now();
    ReportOrThrow(job, 0, total, name);
}

void JobPhase::Check() {
    sinceCheck = 0;
    const auto now = std::chrono::steady_clock::now();
    if (now - lastReport < job->Pace().interval) return;
    lastReport = now;
    // If more work is done than expected, only the expected total is reported.
    ReportOrThrow(job, std::min(done, total), total, name);
}

void JobPhase::Finish() { ReportOrThrow(job, total, total, name); }

}  // namespace trovik
