// SPDX-License-Identifier: Apache-2.0

/// \file Tests undo of random edits of random meshes: brush strokes, masks, hidden faces, layers,
/// levels, transforms. Undoing to the start and redoing to the end must restore bit-identical
/// states at both ends and at each step in between. The default run is short; TROVIK_RANDOM_EDITS
/// sets the number of edits.
#include "tests/edits/RandomEdits.h"
#include "tests/edits/VisibleState.h"
#include "tests/files/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

constexpr uint32_t editsPerMesh = 25;

const UndoStep* Newest(const UndoHistory& history) {
    return history.Position() == 0 ? nullptr : &history.Shell(history.Position() - 1);
}

TEST(RandomEdits, AreUndoneAndRedoneBitExactly) {
    HostSwitches switches;
    const TemporaryFolder folder;
    const uint32_t wanted = CountFromEnvironment("TROVIK_RANDOM_EDITS", 500);
    std::size_t steps = 0;
    for (uint32_t edit = 0; edit < wanted; edit += editsPerMesh) {
        // Each mesh has its own seed, so that a single case can be examined.
        RandomNumbers random(70260 + edit);
        switches.Draw(random);
        RandomEdits edits(random);
        LevelGeometry& geometry = edits.Geometry();
        UndoHistory& history = geometry.History();
        // Steps are stored in every form: unpacked, packed, tightly packed, and in a file.
        history.SetKeeping({random.OneOf({uint64_t{0}, uint64_t{4096}}), random.Below(20)});
        const bool inFile = random.Chance(0.3f);
        if (inFile) {
            history.SetBudget(20000);
            history.SetSpillFolder(folder.Path(""));
        }
        std::vector<VisibleState> states;
        states.emplace_back(geometry);
        for (uint32_t i = 0; i < editsPerMesh; ++i) {
            SCOPED_TRACE("edit " + std::to_string(edit + i) + ": " + edits.CaseDescription());
            const UndoStep* before = Newest(history);
            edits.Edit();
            if (Newest(history) != before) states.emplace_back(geometry);
            ASSERT_TRUE(VisibleState(geometry) == states.back())
                << "an edit without a step: " << edits.CaseDescription();
            if (random.Chance(0.1f)) {
                // Undo some steps and continue from there, which drops the undone steps.
                for (uint32_t n = random.Below(4); n > 0 && history.Undo(geometry); --n)
                    states.pop_back();
                ASSERT_TRUE(VisibleState(geometry) == states.back());
            }
        }
        std::string labels;
        for (std::size_t i = 0; i < history.StepCount(); ++i) labels += history.Label(i) + ", ";
        SCOPED_TRACE("edits of " + std::to_string(edit) + ": " + edits.CaseDescription() + ": " +
                     labels);
        while (history.Redo(geometry)) states.emplace_back(geometry);
        steps += states.size() - 1;
        std::size_t now = states.size() - 1;
        while (history.Undo(geometry)) {
            ASSERT_TRUE(VisibleState(geometry) == states[--now]) << "after undoing to " << now;
        }
        // The file may have reached its limit, in which case the oldest steps were dropped.
        ASSERT_TRUE(inFile || now == 0u) << now;
        while (history.Redo(geometry)) {
            ASSERT_TRUE(VisibleState(geometry) == states[++now]) << "after redoing to " << now;
        }
        ASSERT_EQ(now, states.size() - 1);
        ASSERT_EQ(history.TakeProblem(), "");
    }
    // The test is meaningless if the edits do nothing.
    EXPECT_GT(steps, wanted / 2);
}

}  // namespace
}  // namespace trovik::test
