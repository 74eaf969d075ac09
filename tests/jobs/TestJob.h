// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/jobs/JobControl.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>

namespace trovik::test {

/// Cancels at report number `cancelAt`, and checks that reports follow the rules of JobControl. By
/// default, every element is reported.
class TestJob : public JobControl {
public:
    static constexpr uint64_t never = ~uint64_t{0};

    explicit TestJob(uint64_t cancelAtReport = never, const JobPace& reportPace = {1, {}})
        : JobControl(reportPace), cancelAt(cancelAtReport) {}

    /// Returns a pace at which only the beginning and the end of each phase are reported, so that
    /// the number of reports is constant.
    static JobPace WithoutClock() { return {1024, std::chrono::hours(1)}; }

    bool Report(uint64_t done, uint64_t total, const char* phase) override {
        ++reports;
        EXPECT_EQ(std::this_thread::get_id(), caller);
        EXPECT_FALSE(isCancelled) << "there is a report after the operation was cancelled";
        if (total != 0) Check(done, total, phase);
        isCancelled = reports >= cancelAt;
        return !isCancelled;
    }

    /// Expects that the last phase has ended.
    void ExpectFinished() const { EXPECT_EQ(lastDone, lastTotal) << lastPhase; }

    uint64_t reports = 0;
    bool isCancelled = false;
    std::set<std::string> phases;

private:
    void Check(uint64_t done, uint64_t total, const std::string& phase) {
        if (done == 0 && (lastDone == lastTotal || phase != lastPhase)) {
            EXPECT_EQ(lastDone, lastTotal) << lastPhase << " did not reach its total";
        } else {
            EXPECT_EQ(phase, lastPhase) << "the phase does not begin at 0";
            EXPECT_EQ(total, lastTotal) << phase;
            EXPECT_GE(done, lastDone) << phase;
        }
        EXPECT_LE(done, total) << phase;
        phases.insert(phase);
        lastPhase = phase;
        lastDone = done;
        lastTotal = total;
    }

    uint64_t cancelAt;
    std::thread::id caller = std::this_thread::get_id();
    std::string lastPhase;
    uint64_t lastDone = 0;
    uint64_t lastTotal = 0;
};

}  // namespace trovik::test
