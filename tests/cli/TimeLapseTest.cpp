// SPDX-License-Identifier: Apache-2.0

/// \file Tests `trovik history --frames`: the choice of frames, the camera, videos and errors.
#include "framework/images/ImageFile.h"
#include "tests/cli/EncoderRun.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <functional>
#include <string>
#include <vector>

namespace trovik::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;

constexpr const char* small = " --samples 1 --width 40 --height 30 ";

class TimeLapse : public EncoderCommand {
protected:
    /// Runs a script with these steps on the cube, and records w.journal.
    void Sculpt(const json& steps) {
        WriteFile("s.json", json{{"mesh", "cube.obj"}, {"levels", 3}, {"steps", steps}}.dump());
        const Outcome outcome = Run("sculpt s.json -q --journal w.journal");
        ASSERT_EQ(outcome.status, 0) << outcome.error;
    }
    /// Five steps change the surface: three strokes, an undo and a change of the mask.
    void SculptFiveChanges() {
        Sculpt({{{"tool", "Sculpt"}, {"set", {{"radius", 0.7}, {"strength", 90}}}},
                Stroke(0.5),
                Stroke(0.0),
                {{"layer", {{"add", "unused"}}}},
                {{"undo", 2}},
                {{"set", {{"radius", 0.5}}}},
                Stroke(-0.5),
                {{"mask", "all"}}});
    }
    static json Stroke(double x) {
        return {{"stroke", {{"surface", {{x, 0.2, 1.0}, {x, -0.4, 1.0}}}}}};
    }
    Outcome Lapse(const std::string& arguments, const char* file = "w.journal") {
        return Run(std::string("history ") + file + small + arguments);
    }
    /// A short text that identifies the content of an image.
    static std::string Digest(const std::string& content) {
        return std::to_string(content.size()) + " bytes, hash " +
               std::to_string(std::hash<std::string>()(content));
    }
    /// The digests of all frames of a folder.
    std::vector<std::string> Frames(const std::string& name) const {
        std::vector<std::string> frames;
        for (int i = 1;; ++i) {
            const std::string number = std::to_string(10000 + i).substr(1);
            const fs::path path = folder / name / ("frame_" + number + ".png");
            if (!fs::exists(path)) return frames;
            frames.push_back(Digest(ReadAll(path)));
        }
    }
    std::string Render(const std::string& mesh, const std::string& options = "") {
        const Outcome outcome = Run("render " + mesh + " r.png -q" + small + options);
        EXPECT_EQ(outcome.status, 0) << outcome.error;
        return Digest(ReadAll(folder / "r.png"));
    }
};

TEST_F(TimeLapse, BeginsAndEndsWithRendersOfTheFirstAndFinalSurface) {
    SculptFiveChanges();
    const std::string camera = "--eye 3 2 6 --target 0 0 0 --fov 40";
    const Outcome outcome = Lapse("--frames new/lapse " + camera);
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_THAT(outcome.out, HasSubstr("wrote new/lapse: 6 frames of 40 x 30 pixels"));
    const std::vector<std::string> frames = Frames("new/lapse");
    ASSERT_EQ(frames.size(), 6u);
    EXPECT_EQ(frames.front(), Render("cube.obj", "--levels 3 " + camera));
    ASSERT_EQ(Run("recover w.journal -o final.trovik -q").status, 0);
    EXPECT_EQ(frames.back(), Render("final.trovik", camera));
    // The undo reverts the second stroke and the layer.
    EXPECT_EQ(frames[3], frames[1]);
    for (std::size_t i = 1; i < frames.size(); ++i) EXPECT_NE(frames[i], frames[i - 1]) << i;
}

TEST_F(TimeLapse, CameraFramesTheFinalSurface) {
    Sculpt({Stroke(0.5), {{"transform", {{"scale", 3}}}}, {{"camera", {{"from", {0, 1, 0.2}}}}}});
    ASSERT_EQ(Run("recover w.journal -o final.trovik -q").status, 0);
    const std::string direction = "--from 0.35 0.2 1";
    const std::string ofFinal = Render("final.trovik", direction);
    const std::string ofFirst = Render("cube.obj", "--levels 3 " + direction);

    ASSERT_EQ(Lapse("--frames final").status, 0);
    ASSERT_EQ(Frames("final").size(), 3u);
    EXPECT_EQ(Frames("final").back(), ofFinal);
    EXPECT_NE(Frames("final").front(), ofFirst);
    ASSERT_EQ(Lapse("--frames first --fit first").status, 0);
    EXPECT_EQ(Frames("first").front(), ofFirst);
    EXPECT_NE(Frames("first").back(), ofFinal);
    ASSERT_EQ(Lapse("--frames top --from 0 1 0").status, 0);
    EXPECT_EQ(Frames("top").back(), Render("final.trovik", "--from 0 1 0"));
    ASSERT_EQ(Lapse("--frames view --fit view").status, 0);
    EXPECT_EQ(Frames("view").back(), Render("final.trovik"));
}

TEST_F(TimeLapse, SelectsFramesByDistanceOrCount) {
    SculptFiveChanges();
    ASSERT_EQ(Lapse("--frames all").status, 0);
    const std::vector<std::string> all = Frames("all");
    ASSERT_EQ(all.size(), 6u);
    using Selected = std::vector<std::string>;
    ASSERT_EQ(Lapse("--frames a --every 2").status, 0);
    EXPECT_EQ(Frames("a"), (Selected{all[0], all[2], all[4], all[5]}));
    ASSERT_EQ(Lapse("--frames b --every 99").status, 0);
    EXPECT_EQ(Frames("b"), (Selected{all[0], all[5]}));
    ASSERT_EQ(Lapse("--frames c --count 3").status, 0);
    EXPECT_EQ(Frames("c"), (Selected{all[0], all[3], all[5]}));
    ASSERT_EQ(Lapse("--frames d --count 100").status, 0);
    EXPECT_EQ(Frames("d"), all);
}

TEST_F(TimeLapse, ShowsTheWorkSinceTheSceneWasSaved) {
    Sculpt({Stroke(0.5), {{"save", "work.trovik"}}});
    Outcome outcome = Run("sculpt s.json -q --journal work.trovik.journal");
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    outcome = Lapse("--frames lapse", "work.trovik");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.error, HasSubstr("the journal has no steps since "));
    EXPECT_THAT(outcome.error, HasSubstr("it only lists the 1 steps before"));
    EXPECT_FALSE(fs::exists(folder / "lapse"));

    WriteFile("s.json", json{{"scene", "work.trovik"}, {"steps", {Stroke(0.0)}}}.dump());
    outcome = Run("sculpt s.json -q --journal work.trovik.journal");
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    outcome = Lapse("--frames lapse --json --from 1 1 1", "work.trovik");
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    const json summary = json::parse(outcome.out);
    EXPECT_EQ(summary.at("files"), json({"lapse/frame_0001.png", "lapse/frame_0002.png"}));
    EXPECT_EQ(summary.at("changes"), 1);
    ASSERT_EQ(Lapse("--frames first --fit first --from 1 1 1", "work.trovik").status, 0);
    EXPECT_EQ(Frames("first").front(), Render("work.trovik", "--from 1 1 1"));
}

TEST_F(TimeLapse, WritesVideosAndContactSheets) {
    SculptFiveChanges();
    MakeListingEncoder();
    const Outcome outcome = RunWithEncoder(std::string("history w.journal --frames lapse.mp4 "
                                                       "--fps 12 --sheet sheet.png --columns 4") +
                                           small);
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    const std::string video = ReadAll(folder / "lapse.mp4");
    EXPECT_THAT(video, HasSubstr("-framerate\n12\n"));
    EXPECT_THAT(video, HasSubstr("\n6 frames\n"));
    const FloatImage sheet = ReadImageFile((folder / "sheet.png").string());
    EXPECT_EQ(sheet.width, 4u * 40 + 5 * 8);
    EXPECT_EQ(sheet.height, 2u * 30 + 3 * 8);
}

TEST_F(TimeLapse, RefusesInvalidInputBeforeWriting) {
    const auto expectError = [this](const std::string& arguments, const std::string& reason) {
        SCOPED_TRACE(arguments);
        const Outcome outcome = RunWithEncoder("history " + arguments + small);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.error, HasSubstr(reason));
        EXPECT_EQ(outcome.error.find('\n'), outcome.error.size() - 1) << outcome.error;
        EXPECT_FALSE(fs::exists(folder / "lapse"));
    };
    expectError("w.journal --frames lapse -q", "w.journal");
    expectError("w.trovik --frames lapse -q", "w.trovik: no such file");
    Sculpt(json::array());
    expectError("w.journal --frames lapse -q", "trovik: w.journal: the journal has no steps\n");
    Sculpt({{{"tool", "Wax"}}, {{"set", {{"radius", 0.2}}}}});
    expectError("w.journal --frames lapse -q",
                "w.journal: none of the 2 steps changes the surface");
    SculptFiveChanges();
    expectError("w.journal --frames lapse.gif", "a time lapse is written as a video (*.mp4)");
    expectError("w.journal --frames lapse.mp4", "ffmpeg, which is not in PATH");
    expectError("w.journal --frames lapse --up 0 0 0", "--up: the direction must not be zero");
    expectError("w.journal --frames lapse -q --eye 0 9 0 --target 0 0 0 --up 0 1 0",
                "--up: the camera looks along its own up direction");
    for (const char* arguments : {"--every 2",
                                  "--width 40",
                                  "--frames lapse --every 2 --count 3",
                                  "--frames lapse --count 1",
                                  "--frames lapse --every 0",
                                  "--frames lapse --columns 2",
                                  "--frames lapse --fit middle"})
        EXPECT_EQ(Run(std::string("history w.journal ") + arguments).status, 2) << arguments;
    EXPECT_FALSE(fs::exists(folder / "lapse"));
    WriteFile("cube.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    expectError("w.journal --frames lapse -q", "cube.obj, is missing or has changed");
}

}  // namespace
}  // namespace trovik::test
