// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/Cancelled.h"
#include "framework/jobs/JobPhase.h"
#include "tests/jobs/TestJob.h"

#include <gtest/gtest.h>

#include <vector>

namespace trovik::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// Records the reports that it receives.
class RecordingJob : public JobControl {
public:
    explicit RecordingJob(const JobPace& reportPace) : JobControl(reportPace) {}
    bool Report(uint64_t done, uint64_t total, const char* phase) override {
        EXPECT_STREQ(phase, "Working");
        EXPECT_EQ(total, 1000u);
        reported.push_back(done);
        times.push_back(steady_clock::now());
        return true;
    }
    std::vector<uint64_t> reported;
    std::vector<steady_clock::time_point> times;
};

TEST(JobPhase, ReportsOncePerPaceElements) {
    RecordingJob job({100, {}});
    JobPhase phase(&job, "Working", 1000);
    for (int i = 0; i < 1000; ++i) phase.Add();
    phase.Finish();
    const std::vector<uint64_t> expected = {
        0, 100, 200, 300, 400, 500, 600, 700, 800, 900, 1000, 1000};
    EXPECT_EQ(job.reported, expected);
}

TEST(JobPhase, ChecksTheClockMoreOftenForSlowElements) {
    RecordingJob job({100, {}});
    JobPhase phase(&job, "Working", 1000, 10);
    for (int i = 0; i < 100; ++i) phase.Add();
    EXPECT_EQ(job.reported.size(), 11u);
    phase.Reach(90);
    EXPECT_EQ(job.reported.size(), 11u) << "the next clock check has not been reached";
    phase.Reach(110);
    EXPECT_EQ(job.reported.back(), 110u);
    for (int i = 0; i < 10; ++i) phase.Poll();
    EXPECT_EQ(job.reported.back(), 110u);
    EXPECT_EQ(job.reported.size(), 13u);
}

TEST(JobPhase, ReportsAtMostOncePerInterval) {
    RecordingJob job({1, milliseconds(5)});
    JobPhase phase(&job, "Working", 1000);
    const auto end = steady_clock::now() + milliseconds(60);
    while (steady_clock::now() < end) phase.Poll();
    phase.Finish();
    // The start and the end are always reported.
    ASSERT_GE(job.times.size(), 4u);
    for (std::size_t i = 1; i + 1 < job.times.size(); ++i)
        EXPECT_GE(job.times[i] - job.times[i - 1], milliseconds(4));
    EXPECT_LE(job.times.size(), 14u);
}

TEST(JobPhase, ByDefaultReportsAtLeastEvery50Milliseconds) {
    EXPECT_LT(JobPace().interval, milliseconds(50));
    EXPECT_GE(JobPace().interval, milliseconds(10));
}

TEST(JobPhase, WorkBeyondItsTotalIsClampedToIt) {
    RecordingJob job({1, {}});
    JobPhase phase(&job, "Working", 1000);
    phase.Add(5000);
    EXPECT_EQ(job.reported.back(), 1000u);
}

TEST(JobPhase, WithoutWorkOrJobReportsNothing) {
    TestJob job;
    JobPhase phase(&job, "Nothing", 0);
    phase.Add();
    phase.Finish();
    EXPECT_EQ(job.reports, 0u);
    JobPhase nobody(nullptr, "Nobody", 10);
    nobody.Add(10);
    nobody.Finish();
}

TEST(JobPhase, ThrowsWhenTheJobCancels) {
    for (const uint64_t at : {2u, 500u, 1001u, 1002u}) {
        TestJob job(at);
        EXPECT_THROW(
            {
                JobPhase phase(&job, "Working", 1000);
                for (int i = 0; i < 1000; ++i) phase.Add();
                phase.Finish();
            },
            Cancelled);
        EXPECT_EQ(job.reports, at);
    }
    TestJob atOnce(1);
    EXPECT_THROW(JobPhase(&atOnce, "Working", 1000), Cancelled);
}

TEST(JobPhase, RunsCoverAllElements) {
    TestJob job;
    JobPhase phase(&job, "Working", 10000);
    uint64_t next = 0;
    phase.ForEachRun([&](uint64_t first, uint64_t end) {
        EXPECT_EQ(first, next);
        next = end;
    });
    phase.Finish();
    EXPECT_EQ(next, 10000u);
    EXPECT_EQ(job.reports, 5u);
}

}  // namespace
}  // namespace trovik::test
