// SPDX-License-Identifier: Apache-2.0

/// \file Tests that saving without enough memory leaves the old scene unchanged and leaves no other
/// file.
#include "framework/errors/HostError.h"
#include "framework/io/DiskCalls.h"
#include "tests/scene/AllocationCount.h"
#include "tests/scene/SampleScene.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

/// A fake disk that skips syncing, because the test saves hundreds of times.
class QuickDisk : public DiskCalls {
public:
    QuickDisk() { Use(this); }
    ~QuickDisk() override { Use(nullptr); }
    QuickDisk(const QuickDisk&) = delete;
    QuickDisk& operator=(const QuickDisk&) = delete;
    int Sync(int) override { return 0; }
};

TEST(SceneSaving, KeepsTheOldSceneWhicheverAllocationIsRefused) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer replaces operator new";
#endif
    const QuickDisk disk;
    const TemporaryFolder folder;
    const auto document = RichDocument(folder);
    const std::string path = folder.Path("scene.trovik");
    document->Save(path);
    const std::string whole = TemporaryFolder::Content(path);
    folder.Fill("scene.trovik", "old");
    const std::size_t files = folder.FileCount();
    const SceneStream header;
    int refusals = 0;
    for (uint64_t number = 1;; ++number) {
        std::string message;
        RefuseAllocation(number);
        try {
            document->WriteScene(path, header);
        } catch (const HostError& error) {
            RefuseAllocation(0);
            message = error.what();
        }
        const bool cameSoFar = !message.empty() || HasRefused();
        RefuseAllocation(0);
        if (!cameSoFar) break;
        ASSERT_EQ(folder.FileCount(), files) << number;
        // A failed allocation is not an error if saving can succeed without it, for example the
        // allocation of a message.
        if (message.empty()) {
            folder.Fill("scene.trovik", "old");
            continue;
        }
        ++refusals;
        ASSERT_EQ(message.rfind("cannot write " + path + ": ", 0), 0u) << message;
        ASSERT_NE(message.find("memory"), std::string::npos) << message;
        ASSERT_EQ(TemporaryFolder::Content(path), "old") << number;
    }
    EXPECT_GT(refusals, 50);
    // The failures did not change the document either.
    EXPECT_EQ(TemporaryFolder::Content(path), whole);
}

}  // namespace
}  // namespace trovik::test
