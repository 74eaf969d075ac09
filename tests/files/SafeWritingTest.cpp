// SPDX-License-Identifier: Apache-2.0

/// \file Tests that a failed write does not change the old files and leaves no new file.
#include "framework/document/Document.h"
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/images/ImageFile.h"
#include "framework/io/DiskCalls.h"
#include "framework/io/FilePath.h"
#include "framework/multires/LevelGeometry.h"
#include "framework/multires/LevelSource.h"
#include "framework/nodes/PreferenceFile.h"
#include "tests/edits/FullDisk.h"
#include "tests/files/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>
#include <functional>
#include <limits>

namespace trovik {
namespace {

/// A disk on which one call and all later calls of the same kind fail.
class FailingDisk : public DiskCalls {
public:
    /// \param number  the number of the first failing call, counted from 1.
    explicit FailingDisk(unsigned number) : failing(number) { Use(this); }
    ~FailingDisk() override { Use(nullptr); }
    FailingDisk(const FailingDisk&) = delete;
    FailingDisk& operator=(const FailingDisk&) = delete;

    int Open(const char* path, int flags, mode_t mode) override {
        return Fails(EACCES) ? -1 : DiskCalls::Open(path, flags, mode);
    }
    ssize_t Write(int file, const void* bytes, std::size_t size) override {
        if (!Fails(ENOSPC)) return DiskCalls::Write(file, bytes, size);
        // A full disk first writes a part of the data.
        if (size > 1 && DiskCalls::Write(file, bytes, size / 2) < 0) return -1;
        errno = ENOSPC;
        return -1;
    }
    int Sync(int file) override { return Fails(EIO) ? -1 : (void(file), 0); }
    int Close(int file) override {
        const int result = DiskCalls::Close(file);
        return Fails(EDQUOT) ? -1 : result;
    }
    int Rename(const char* from, const char* to) override {
        if (Fails(EROFS)) return -1;
        renamed = true;
        return DiskCalls::Rename(from, to);
    }

    unsigned Calls() const { return calls; }
    bool renamed = false;

private:
    bool Fails(int systemError) {
        if (++calls != failing) return false;
        errno = systemError;
        return true;
    }

    unsigned failing;
    unsigned calls = 0;
};

constexpr const char* oldContent = "what was there before\n";

class SafeWriting : public ::testing::TestWithParam<const char*> {
protected:
    SafeWriting() {
        const std::string cube = folder.Fill(
            "cube.obj",
            "v -1 -1 -1\nv 1 -1 -1\nv -1 1 -1\nv 1 1 -1\nv -1 -1 1\nv 1 -1 1\nv -1 1 1\n"
            "v 1 1 1\nf 1 3 4 2\nf 5 6 8 7\nf 1 2 6 5\nf 3 7 8 4\nf 1 5 7 3\nf 2 4 8 6\n");
        document = std::make_unique<Document>(cube);
        // The files must be larger than one buffer.
        for (int i = 0; i < 6; ++i) document->Subdivide();
        path = folder.Fill(GetParam(), oldContent);
        files = folder.FileCount();
    }

    void Write() {
        const std::string extension = LowerExtension(path);
        if (extension == ".trovik") {
            document->Save(path);
        } else if (extension == ".json") {
            SavePreferences(path);
        } else if (extension == ".png") {
            const std::vector<std::uint8_t> grey(64 * 64, 9);
            WriteImageFile(path, grey.data(), 64, 64, 1);
        } else {
            const LevelSource source(document->Geometry(), {});
            WriteMeshFile(path, source, {});
        }
    }

    void ExpectUntouched(const std::string& message) {
        EXPECT_NE(message.find(path), std::string::npos) << message;
        EXPECT_EQ(message.find('\n'), std::string::npos) << message;
        EXPECT_EQ(TemporaryFolder::Content(path), oldContent);
        EXPECT_EQ(folder.FileCount(), files);
    }

    TemporaryFolder folder;
    std::unique_ptr<Document> document;
    std::string path;
    std::size_t files = 0;
};

TEST_P(SafeWriting, FailureOfAnySystemCallLeavesNoFile) {
    unsigned failures = 0;
    for (unsigned number = 1;; ++number) {
        SCOPED_TRACE("call " + std::to_string(number));
        FailingDisk disk(number);
        std::string message;
        try {
            Write();
        } catch (const HostError& error) {
            message = error.what();
        }
        if (disk.Calls() < number) {
            EXPECT_EQ(message, "");
            break;
        }
        if (disk.renamed) {
            // After the rename, only syncing the folder can fail; the message then says that the
            // file is in place.
            EXPECT_TRUE(message.empty() || message.find("in place") != std::string::npos)
                << message;
            EXPECT_NE(TemporaryFolder::Content(path), oldContent);
            EXPECT_EQ(folder.FileCount(), files);
            folder.Fill(GetParam(), oldContent);
            continue;
        }
        // Failures to close files or to sync other files have no effect here.
        if (message.empty()) continue;
        ++failures;
        ExpectUntouched(message);
    }
    EXPECT_GE(failures, 4u);
    EXPECT_NE(TemporaryFolder::Content(path), oldContent);
}

TEST_P(SafeWriting, FullDiskLeavesNoFile) {
    Write();
    const auto whole = static_cast<rlim_t>(TemporaryFolder::Content(path).size());
    ASSERT_GT(whole, 1u);
    folder.Fill(GetParam(), oldContent);
    for (const rlim_t most : {rlim_t{0}, rlim_t{1}, whole / 2, whole - 1}) {
        SCOPED_TRACE(most);
        std::string message;
        {
            const test::FullDisk full(most);
            message = MessageOf<HostError>([this] { Write(); });
        }
        ExpectUntouched(message);
    }
    Write();
    EXPECT_EQ(TemporaryFolder::Content(path).size(), whole);
}

TEST_P(SafeWriting, RefusesADevice) {
    path = "/dev/full";
    if (std::string(GetParam()).find(".trovik") == std::string::npos) return;
    const std::string message = MessageOf<HostError>([this] { document->Save(path); });
    EXPECT_NE(message.find("/dev/full"), std::string::npos) << message;
}

INSTANTIATE_TEST_SUITE_P(
    Formats,
    SafeWriting,
    ::testing::Values(
        "m.trovik", "m.obj", "m.ply", "m.stl", "m.gltf", "m.glb", "m.usda", "m.png", "m.json"),
    [](const auto& file) { return std::string(file.param).substr(2); });

}  // namespace
}  // namespace trovik
