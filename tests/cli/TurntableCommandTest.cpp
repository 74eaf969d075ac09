// SPDX-License-Identifier: Apache-2.0

/// \file Tests `trovik turntable`: frames, contact sheets and videos.
#include "framework/images/ImageFile.h"
#include "tests/cli/EncoderRun.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace trovik::test {
namespace {

using testing::HasSubstr;

constexpr const char* small = " --samples 1 --width 40 --height 30 ";

class TurntableCommand : public EncoderCommand {
protected:
    Outcome Turn(const std::string& arguments) {
        return RunWithEncoder("turntable " + arguments + small);
    }
};

TEST_F(TurntableCommand, FramesEqualThoseOfRender) {
    const Outcome outcome = Run(std::string("turntable cube.obj new/spin --frames 3") + small);
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_THAT(outcome.out, HasSubstr("wrote new/spin: 3 frames of 40 x 30 pixels"));
    ASSERT_EQ(Run(std::string("render cube.obj r.png --frames 3 -q") + small).status, 0);
    for (const char* number : {"0001", "0002", "0003"})
        EXPECT_EQ(ReadAll(folder / "new/spin" / (std::string("frame_") + number + ".png")),
                  ReadAll(folder / (std::string("r_") + number + ".png")))
            << number;
    EXPECT_FALSE(fs::exists(folder / "new/spin/frame_0004.png"));
}

TEST_F(TurntableCommand, SheetShowsAllFramesReduced) {
    ASSERT_EQ(Run("turntable cube.obj spin --frames 5 --sheet sheet.png --columns 3 --samples 1 "
                  "--width 480 --height 360 -q")
                  .status,
              0);
    const FloatImage sheet = ReadImageFile((folder / "sheet.png").string());
    // Three columns and two rows of 240 x 180 pixels, with gaps of 8 pixels.
    EXPECT_EQ(sheet.width, 3u * 240 + 4 * 8);
    EXPECT_EQ(sheet.height, 2u * 180 + 3 * 8);
    // The last cell is empty.
    const auto red = [&](std::size_t x, std::size_t y) {
        return sheet.pixels[(y * sheet.width + x) * sheet.channels];
    };
    EXPECT_EQ(red(3 * 248 - 120, 2 * 188 - 90), red(0, 0));
    EXPECT_GT(red(2 * 248 - 120, 2 * 188 - 90), red(0, 0) + 0.1f);
}

TEST_F(TurntableCommand, VideoIsEncodedFromTheFrames) {
    MakeListingEncoder();
    const Outcome outcome = Turn("cube.obj spin.mp4 --frames 4 --fps 30 --json");
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(nlohmann::json::parse(outcome.out).at("files"), nlohmann::json({"spin.mp4"}));
    const std::string video = ReadAll(folder / "spin.mp4");
    EXPECT_THAT(video, HasSubstr("-framerate\n30\n"));
    EXPECT_THAT(video, HasSubstr("frame_%04d.png\n"));
    EXPECT_THAT(video, HasSubstr("\n4 frames\n"));
}

TEST_F(TurntableCommand, VideoNamesMayContainColons) {
    MakeEncoder("for last; do :; done; echo video > \"${last#file:}\"\n");
    ASSERT_EQ(Turn("cube.obj a:b.mp4 --frames 1 -q").status, 0);
    EXPECT_EQ(ReadAll(folder / "a:b.mp4"), "video\n");
}

TEST_F(TurntableCommand, RefusesOtherFormatsAndUnreadableMeshesBeforeWriting) {
    for (const char* name : {"spin.png", "spin.MOV", "spin.gif"}) {
        const Outcome outcome = Run(std::string("turntable cube.obj ") + name + small);
        EXPECT_EQ(outcome.status, 1) << name;
        EXPECT_THAT(outcome.error, HasSubstr("a video (*.mp4) or as images in a folder"));
        EXPECT_FALSE(fs::exists(folder / name));
    }
    EXPECT_EQ(Run(std::string("turntable missing.obj spin") + small).status, 1);
    EXPECT_FALSE(fs::exists(folder / "spin"));
    EXPECT_EQ(Run(std::string("turntable cube.obj v1.2 --frames 1") + small).status, 0);
    EXPECT_TRUE(fs::exists(folder / "v1.2/frame_0001.png"));
}

TEST_F(TurntableCommand, FailedVideoKeepsTheOldFile) {
    WriteFile("spin.mp4", "old");
    MakeEncoder("echo 'no such encoder' >&2; exit 3\n");
    const Outcome outcome = Turn("cube.obj spin.mp4 --frames 2 -q");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.error, HasSubstr("trovik: spin.mp4: ffmpeg failed: no such encoder"));
    EXPECT_EQ(ReadAll(folder / "spin.mp4"), "old");
}

TEST_F(TurntableCommand, WithoutEncoderOnlyFoldersAreWritten) {
    const Outcome outcome = Turn("cube.obj spin.mp4 --frames 2 -q");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.error,
              "trovik: spin.mp4: videos are written by ffmpeg, which is not in PATH; install it, "
              "or give the name of a folder, such as spin, for numbered images\n");
    EXPECT_EQ(Turn("cube.obj spin --frames 2 -q").status, 0);
    EXPECT_TRUE(fs::exists(folder / "spin/frame_0002.png"));
    EXPECT_EQ(Turn("cube.obj spin.mp4 --transparent").status, 1);
    EXPECT_EQ(Turn("cube.obj spin --columns 2").status, 2);
}

}  // namespace
}  // namespace trovik::test
