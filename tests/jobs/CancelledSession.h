// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/errors/Cancelled.h"
#include "framework/script/SculptSession.h"
#include "tests/files/TemporaryFolder.h"
#include "tests/jobs/TestJob.h"
#include "tests/levels/GeometryState.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <random>
#include <set>
#include <string>

namespace trovik::test {

/// Every bit of the session: its levels with what they know of each other, and its scene file.
inline std::string BytesOf(SculptSession& session) {
    const TemporaryFolder folder;
    session.Save(folder.Path("state.trovik"));
    return StateOfAll(session.Geometry()) + TemporaryFolder::Content(folder.Path("state.trovik"));
}

inline std::set<std::string> FilesIn(const TemporaryFolder& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path("")))
        names.insert(entry.path().filename().string());
    return names;
}

/// Runs an operation to its end, then cancels it at reports that are drawn, and runs it again.
/// \param make  makes the session, always the same.
/// \param leastReports  that the operation makes when every element is reported.
inline void ExpectCancelChangesNothing(
    const std::function<std::unique_ptr<SculptSession>()>& make,
    const std::function<void(SculptSession&, JobControl*)>& operation,
    uint64_t leastReports,
    unsigned seed) {
    constexpr int draws = 25;
    std::string expected;
    uint64_t reports = 0;
    {
        const auto twin = make();
        TestJob whole;
        operation(*twin, &whole);
        whole.ExpectFinished();
        reports = whole.reports;
        expected = BytesOf(*twin);
    }
    EXPECT_GE(reports, leastReports);
    const auto session = make();
    const std::string before = BytesOf(*session);
    const std::size_t steps = session->Geometry().History().Position();
    ASSERT_TRUE(before != expected);
    std::mt19937_64 random(seed);
    for (int i = 0; i < draws; ++i) {
        // The first and the last report, too.
        const uint64_t at = i == 0 ? 1 : i == 1 ? reports : 1 + random() % reports;
        SCOPED_TRACE("cancelled at " + std::to_string(at) + " of " + std::to_string(reports));
        TestJob job(at);
        ASSERT_THROW(operation(*session, &job), Cancelled);
        ASSERT_EQ(job.reports, at);
        ASSERT_TRUE(BytesOf(*session) == before);
        ASSERT_EQ(session->Geometry().History().Position(), steps);
    }
    operation(*session, nullptr);
    EXPECT_TRUE(BytesOf(*session) == expected);
    ASSERT_TRUE(session->Undo());
}

}  // namespace trovik::test
