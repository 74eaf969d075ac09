// SPDX-License-Identifier: Apache-2.0

/// \file Tests files that killed processes leave next to their targets, and targets that cannot be
/// written.
#include "framework/errors/HostError.h"
#include "framework/io/FileLock.h"
#include "framework/io/FilePath.h"
#include "framework/io/OutputFile.h"
#include "tests/files/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace trovik {
namespace {

class AbandonedFiles : public ::testing::Test {
protected:
    AbandonedFiles() {
        SetFileNotes([this](const std::string& note) { notes.push_back(note); });
    }
    ~AbandonedFiles() override { SetFileNotes(nullptr); }

    void WriteTarget(const std::string& name) {
        OutputFile file(folder.Path(name));
        file.Write("new");
        file.Commit();
    }

    TemporaryFolder folder;
    std::vector<std::string> notes;
};

TEST_F(AbandonedFiles, OfAKilledProcessAreRemovedByTheNextWriteOfTheTarget) {
    const std::string target = folder.Path("m.trovik");
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const FileReplacement left(target);
        raise(SIGKILL);
        _exit(1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
    ASSERT_EQ(folder.FileCount(), 1u);
    WriteTarget("other.trovik");
    EXPECT_EQ(folder.FileCount(), 2u) << "files of other targets are not removed";
    EXPECT_TRUE(notes.empty());
    WriteTarget("m.trovik");
    EXPECT_EQ(folder.FileCount(), 2u);
    EXPECT_EQ(TemporaryFolder::Content(target), "new");
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0].find(folder.Path("m.") + std::to_string(child) + "-"), 0u) << notes[0];
    EXPECT_NE(notes[0].find(".part.trovik: removed; it was left by a process that was killed"),
              std::string::npos)
        << notes[0];
}

TEST_F(AbandonedFiles, OfRunningProcessesAreKept) {
    OutputFile first(folder.Path("m.obj"));
    first.Write("first");
    WriteTarget("m.obj");
    EXPECT_TRUE(notes.empty());
    EXPECT_EQ(folder.FileCount(), 2u);
    first.Commit();
    EXPECT_EQ(folder.FileCount(), 1u);
    EXPECT_EQ(TemporaryFolder::Content(folder.Path("m.obj")), "first");
}

TEST_F(AbandonedFiles, AreIdentifiedByTheirLockNotByAReusedProcessId) {
    folder.Fill("m." + std::to_string(getpid()) + "-77.part.obj", "left");
    WriteTarget("m.obj");
    EXPECT_EQ(folder.FileCount(), 1u);
    EXPECT_EQ(notes.size(), 1u);
}

TEST_F(AbandonedFiles, AreMatchedByTheirExactNames) {
    const char* others[] = {"m.1-2.part.ply",
                            "m.1-2.part",
                            "m.1-x.part.obj",
                            "m.-2.part.obj",
                            "m.12.part.obj",
                            "n.1-2.part.obj",
                            ".part.obj",
                            "m.1-2.part.obj.obj",
                            "mm.1-2.part.obj"};
    for (const char* name : others) folder.Fill(name, "another's");
    ASSERT_EQ(symlink("/dev/null", folder.Path("m.1-3.part.obj").c_str()), 0);
    WriteTarget("m.obj");
    EXPECT_EQ(folder.FileCount(), std::size(others) + 2);
    EXPECT_TRUE(notes.empty());
    // A target without an extension, and a target whose name is too long for the suffix.
    folder.Fill("m.1-2.part", "left");
    WriteTarget("m");
    EXPECT_EQ(notes.size(), 1u);
    const std::string longName(251, 'x');
    folder.Fill(std::string(242, 'x') + ".1-2.part.obj", "left");
    WriteTarget(longName + ".obj");
    EXPECT_EQ(notes.size(), 2u);
}

TEST(FileLock, ReportsWhetherAnotherProcessHoldsIt) {
    const TemporaryFolder folder;
    const std::string path = folder.Path("f");
    EXPECT_EQ(FileLock(path).State(), FileLock::Result::Absent);
    folder.Fill("f", "");
    const FileLock first(path);
    EXPECT_EQ(first.State(), FileLock::Result::Locked);
    EXPECT_EQ(FileLock(path).State(), FileLock::Result::Busy);
    // The lock belongs to the file, not to its name: after a rename, a new file with the old name
    // is not locked.
    ASSERT_EQ(rename(path.c_str(), folder.Path("g").c_str()), 0);
    folder.Fill("f", "");
    EXPECT_EQ(FileLock(path).State(), FileLock::Result::Locked);
}

TEST(CheckWritable, RefusesUnwritableTargetsAndLeavesNoFile) {
    const TemporaryFolder folder;
    const std::string old = folder.Fill("old.obj", "old");
    CheckWritable(old);
    CheckWritable(folder.Path("new.obj"));
    EXPECT_EQ(TemporaryFolder::Content(old), "old");
    EXPECT_EQ(folder.FileCount(), 1u);
    const std::string bad[] = {folder.Path("missing/new.obj"),
                               folder.Path(""),
                               old + "/new.obj",
                               "/dev/null",
                               "/proc/new.obj",
                               folder.Path(std::string(300, 'x') + ".obj")};
    for (const std::string& path : bad) {
        SCOPED_TRACE(path);
        const std::string message = MessageOf<HostError>([&path] { CheckWritable(path); });
        // The name of the new file is shortened to the allowed length; that of the target is not.
        EXPECT_EQ(message.find("cannot write " + path + ": "), 0u) << message;
    }
    EXPECT_EQ(folder.FileCount(), 1u);
}

}  // namespace
}  // namespace trovik
