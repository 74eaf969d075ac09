// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/history/SpillFile.h"
#include "tests/edits/FullDisk.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <numeric>

namespace trovik::test {
namespace {

std::vector<uint8_t> Bytes(std::size_t count, uint8_t first) {
    std::vector<uint8_t> bytes(count);
    std::iota(bytes.begin(), bytes.end(), first);
    return bytes;
}

class SpillFileTest : public ::testing::Test {
protected:
    SpillFile::Extent Write(const std::vector<uint8_t>& bytes) {
        SpillFile::Extent extent = file.Reserve(bytes.size());
        file.Fill(extent, bytes);
        return extent;
    }
    uint64_t FileLength() const {
        std::ifstream open(file.OpenPath(), std::ios::binary | std::ios::ate);
        return static_cast<uint64_t>(open.tellg());
    }

    TemporaryFolder folder;
    SpillFile file{folder.Path("")};
};

TEST_F(SpillFileTest, RunsAreReadBackAndFreedSpaceIsReused) {
    const auto a = Write(Bytes(1000, 1));
    const auto b = Write(Bytes(500, 2));
    const auto c = Write(Bytes(2000, 3));
    EXPECT_EQ(file.Bytes(), 3500u);
    EXPECT_EQ(FileLength(), 3500u);
    file.Free(b);
    file.Free(a);
    EXPECT_EQ(file.Bytes(), 2000u);
    // The two gaps were merged.
    const auto d = Write(Bytes(1400, 4));
    EXPECT_EQ(d.start, 0u);
    const auto e = Write(Bytes(101, 5));
    EXPECT_EQ(e.start, 3500u) << "the gap of 100 bytes is too small";
    const auto f = Write(Bytes(100, 6));
    EXPECT_EQ(f.start, 1400u);
    EXPECT_EQ(file.Read(c), Bytes(2000, 3));
    EXPECT_EQ(file.Read(d), Bytes(1400, 4));
    EXPECT_EQ(file.Read(e), Bytes(101, 5));
    EXPECT_EQ(file.Read(f), Bytes(100, 6));
    file.Free(c);
    EXPECT_EQ(FileLength(), 3601u);
    file.Free(e);
    EXPECT_EQ(FileLength(), 1500u) << "the file ends with its last run";
}

TEST_F(SpillFileTest, IsUnlinkedFromItsFolder) {
    Write(Bytes(10, 0));
    EXPECT_EQ(folder.FileCount(), 0u);
}

TEST_F(SpillFileTest, DamageIsReportedWithItsOffset) {
    Write(Bytes(300, 1));
    const auto extent = Write(Bytes(300, 1));
    {
        std::fstream open(file.OpenPath(), std::ios::binary | std::ios::in | std::ios::out);
        open.seekp(450);
        open.put('x');
    }
    EXPECT_EQ(MessageOf<HostError>([&] { file.Read(extent); }),
              "undo file in " + folder.Path("") +
                  ": byte 300: the step stored here is damaged: its checksum does not match");
    std::filesystem::resize_file(file.OpenPath(), 400);
    EXPECT_EQ(MessageOf<HostError>([&] { file.Read(extent); }),
              "undo file in " + folder.Path("") +
                  ": byte 300: the file ends in the middle of the step stored here");
}

TEST_F(SpillFileTest, FullDiskIsReportedAndWrittenDataIsKept) {
    const auto extent = Write(Bytes(300, 1));
    auto next = file.Reserve(9000);
    {
        const FullDisk full(4096);
        EXPECT_EQ(MessageOf<HostError>([&] { file.Fill(next, Bytes(9000, 2)); }),
                  "undo file in " + folder.Path("") + ": cannot be written: File too large");
    }
    file.Free(next);
    EXPECT_EQ(file.Read(extent), Bytes(300, 1));
    EXPECT_EQ(file.Bytes(), 300u);
    EXPECT_EQ(FileLength(), 300u);
}

TEST(SpillFile, MissingFolderIsReported) {
    EXPECT_EQ(MessageOf<HostError>([] { const SpillFile file("/no/such/folder"); }),
              "undo file in /no/such/folder: cannot be created: No such file or directory");
}

}  // namespace
}  // namespace trovik::test
