// SPDX-License-Identifier: Apache-2.0
#include "framework/jobs/JobControl.h"

#include "framework/errors/Cancelled.h"

namespace trovik {

JobControl::~JobControl() = default;

void ReportOrThrow(JobControl* job, uint64_t done, uint64_t total, const char* phase) {
    if (job != nullptr && !job->Report(done, total, phase)) throw Cancelled();
}

}  // namespace trovik
