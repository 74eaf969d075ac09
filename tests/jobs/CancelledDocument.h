// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/Document.h"
#include "framework/errors/Cancelled.h"
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

/// Returns the complete state of the document: its levels with the data carried between them, and
/// its scene file.
inline std::string BytesOf(Document& document) {
    const TemporaryFolder folder;
    document.WriteScene(folder.Path("state.trovik"));
    return StateOfAll(document.Geometry()) + TemporaryFolder::Content(folder.Path("state.trovik"));
}

inline std::set<std::string> FilesIn(const TemporaryFolder& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path("")))
        names.insert(entry.path().filename().string());
    return names;
}

/// Counts the change reports that a geometry sends to its observers.
class ReportCount final : public GeometryObserver {
public:
    void SurfaceChanged(const SurfaceChange&) override { ++reports; }
    uint64_t reports = 0;
};

/// The change reports that observers of the surface receive from a cancelled operation.
enum class Reports {
    None,
    /// Changes, followed by their reversal.
    Undone
};

/// Runs an operation to completion, then cancels it at random progress reports, and runs it again.
/// \param make  creates the document; must return an identical document each time.
/// \param leastReports  the minimum number of progress reports if every element is reported.
/// \param steps  number of undo steps that the operation creates.
inline void ExpectCancelChangesNothing(const std::function<std::unique_ptr<Document>()>& make,
                                       const std::function<void(Document&, JobControl*)>& operation,
                                       uint64_t leastReports,
                                       unsigned seed,
                                       int steps = 1,
                                       Reports whenCancelled = Reports::None) {
    constexpr int draws = 25;
    const auto runWhole = [&](Document& document) {
        TestJob whole;
        operation(document, &whole);
        whole.ExpectFinished();
        return whole.reports;
    };
    const auto twin = make();
    const uint64_t firstReports = runWhole(*twin);
    EXPECT_GE(firstReports, leastReports);
    const std::string expected = BytesOf(*twin);
    // A revert discards the records of vertices that were written with their old values. Later runs
    // therefore compare fewer vertices and can send fewer reports.
    uint64_t reports = 0;
    {
        const auto reverted = make();
        TestJob job(firstReports);
        ASSERT_THROW(operation(*reverted, &job), Cancelled);
        reports = runWhole(*reverted);
        EXPECT_TRUE(BytesOf(*reverted) == expected);
    }
    ReportCount observer;
    const auto document = make();
    document->Geometry().AddObserver(observer);
    const std::string before = BytesOf(*document);
    const std::size_t position = document->Geometry().History().Position();
    ASSERT_TRUE(before != expected);
    std::mt19937_64 random(seed);
    for (int i = 0; i < draws; ++i) {
        // Include the first and the last report.
        const uint64_t at = i == 0   ? firstReports
                            : i == 1 ? 1
                            : i == 2 ? reports
                                     : 1 + random() % reports;
        SCOPED_TRACE("cancelled at " + std::to_string(at) + " of " + std::to_string(reports));
        TestJob job(at);
        ASSERT_THROW(operation(*document, &job), Cancelled);
        ASSERT_EQ(job.reports, at);
        ASSERT_TRUE(BytesOf(*document) == before);
        ASSERT_EQ(document->Geometry().History().Position(), position);
        if (whenCancelled == Reports::None) {
            ASSERT_EQ(observer.reports, 0u);
        }
    }
    operation(*document, nullptr);
    EXPECT_TRUE(BytesOf(*document) == expected);
    for (int i = 0; i < steps; ++i) ASSERT_TRUE(document->Undo());
}

}  // namespace trovik::test
