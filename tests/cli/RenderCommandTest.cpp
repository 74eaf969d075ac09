// SPDX-License-Identifier: Apache-2.0

/// \file Tests `trovik render` and the render steps of scripts: modes, cameras, turntables and
/// transparency.
#include "framework/images/ImageFile.h"
#include "tests/cli/CommandRun.h"

#include <nlohmann/json.hpp>

namespace trovik::test {
namespace {

class RenderCommand : public Command {
protected:
    FloatImage Rendered(const std::string& arguments) {
        const Outcome outcome =
            Run("render cube.obj r.png -q --samples 1 --width 40 --height 30 " + arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.error;
        EXPECT_EQ(outcome.error, "");
        return ReadImageFile((folder / "r.png").string());
    }
    /// Expects the command to fail with exactly this line.
    void ExpectRefused(const std::string& arguments, const std::string& line) {
        SCOPED_TRACE(arguments);
        const Outcome outcome = Run("render cube.obj " + arguments);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.error, "trovik: " + line + "\n");
    }
};

TEST_F(RenderCommand, EachShadingModeAndMatcapGivesADifferentImage) {
    WriteFile("cube.obj",
              "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0.2\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
              "f 1/1 2/2 3/3 4/4\n");
    std::vector<std::vector<float>> images;
    for (const char* arguments : {"",
                                  "--shading matcap",
                                  "--matcap grey",
                                  "--shading matcap --matcap terracotta",
                                  "--matcap porcelain",
                                  "--matcap bronze",
                                  "--shading cavity",
                                  "--shading flat",
                                  "--shading normals",
                                  "--shading uv",
                                  "--wireframe"})
        images.push_back(Rendered(arguments).pixels);
    for (std::size_t a = 0; a < images.size(); ++a)
        for (std::size_t b = 0; b < a; ++b) EXPECT_NE(images[a], images[b]) << a << " " << b;
    EXPECT_EQ(Rendered("--shading clay").pixels, images[0]);
    EXPECT_EQ(Rendered("--matcap wax").pixels, images[1]);
}

TEST_F(RenderCommand, TransparentImageHasAlpha) {
    EXPECT_EQ(Rendered("").channels, 3u);
    const FloatImage image = Rendered("--transparent");
    ASSERT_EQ(image.channels, 4u);
    EXPECT_EQ(image.pixels[3], 0.0f);
    EXPECT_EQ(image.pixels[(15 * 40 + 20) * 4 + 3], 1.0f);
}

TEST_F(RenderCommand, OrthographicSizeDoesNotDependOnDepth) {
    // The sides of the cube that face the camera are at different depths, but equally wide.
    const auto coverage = [this](const std::string& options) {
        const FloatImage image = Rendered("--transparent --eye 0 0 4 --fov 50 " + options);
        double sum = 0.0;
        for (std::size_t i = 3; i < image.pixels.size(); i += 4)
            sum += static_cast<double>(image.pixels[i]);
        return sum;
    };
    EXPECT_LT(coverage("--orthographic"), coverage("") * 0.8);
    const Outcome outcome =
        Run("render cube.obj r.png --json --samples 1 --width 40 --height 30 --orthographic");
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(nlohmann::json::parse(outcome.out).at("camera").at("orthographic"), true);
}

TEST_F(RenderCommand, UsesTheRequestedCamera) {
    const Outcome outcome =
        Run("render cube.obj r.png --json --samples 1 --width 40 --height 30 --eye 0 -9 1 "
            "--target 0 0 1 --up 0 0 1 --fov 50");
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(nlohmann::json::parse(outcome.out).at("camera"),
              nlohmann::json::parse(R"({"eye": [0, -9, 1], "target": [0, 0, 1], "up": [0, 0, 1],
                                        "fieldOfView": 50, "orthographic": false})"));
    // The camera looks at the centre of the mesh, which appears smaller in the wider view.
    const auto covered = [](const FloatImage& image) {
        int count = 0;
        for (std::size_t i = 3; i < image.pixels.size(); i += 4)
            if (image.pixels[i] > 0.0f) ++count;
        return count;
    };
    const int near = covered(Rendered("--transparent --eye 0 0 8 --fov 30"));
    const int far = covered(Rendered("--transparent --eye 0 0 8 --fov 60"));
    EXPECT_GT(near, 3 * far);
    EXPECT_GT(far, 10);
}

TEST_F(RenderCommand, TurntableWritesNumberedFiles) {
    const Outcome outcome =
        Run("render cube.obj spin.png --frames 3 --samples 1 --width 40 --height 30 --from 1 0.2 0 "
            "--json");
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(nlohmann::json::parse(outcome.out).at("files"),
              nlohmann::json({"spin_0001.png", "spin_0002.png", "spin_0003.png"}));
    EXPECT_FALSE(fs::exists(folder / "spin.png"));
    EXPECT_NE(ReadAll(folder / "spin_0001.png"), ReadAll(folder / "spin_0002.png"));
    EXPECT_NE(ReadAll(folder / "spin_0002.png"), ReadAll(folder / "spin_0003.png"));
}

TEST_F(RenderCommand, RefusesIncompatibleOptions) {
    ExpectRefused("r.jpg --transparent",
                  "cannot write a transparent render to r.jpg: only .png, .tif and .tiff files "
                  "store transparency");
    ExpectRefused("r.png --shading uv",
                  "the mesh has no texture coordinates, which the shading mode \"uv\" needs");
    ExpectRefused("r.png --shading flat --matcap grey",
                  "--matcap: requires --shading matcap, got \"flat\"");
    ExpectRefused("r.png --from 0 0 0", "--from: the direction must not be zero");
    ExpectRefused("r.png --up 0 0 0", "--up: the direction must not be zero");
    ExpectRefused("r.png --eye 0 3 0 --up 0 1 0",
                  "--up: the camera looks along its own up direction");
    ExpectRefused("r.png --eye 0 0 0",
                  "cannot render: eye and target of the camera are both at (0, 0, 0)");
    for (const char* arguments : {"--eye 0 0 5 --from 0 0 1",
                                  "--target 0 0 5",
                                  "--fov 180",
                                  "--frames 0",
                                  "--shading plaid",
                                  "--matcap plaid"})
        EXPECT_EQ(Run(std::string("render cube.obj r.png ") + arguments).status, 2) << arguments;
    EXPECT_FALSE(fs::exists(folder / "r.png"));
}

TEST_F(RenderCommand, ScriptStepsAcceptTheSameFields) {
    WriteFile("s.json", R"({"mesh": "cube.obj", "levels": 1, "steps": [
        {"render": {"file": "clay.png", "width": 40, "height": 30, "samples": 1}},
        {"render": {"file": "cut.png", "width": 40, "height": 30, "samples": 1,
                     "matcap": "bronze", "transparent": true}},
        {"render": {"file": "spin.png", "width": 40, "height": 30, "samples": 1, "frames": 2,
                     "shading": "cavity", "camera": {"from": [1, 0, 0], "up": [0, 0, 1]}}},
        {"stroke": {"surface": [[0.2, 0.1, 1]]}},
        {"render": {"file": "both.png", "width": 40, "height": 30, "samples": 1,
                     "shading": "cavity", "beforeAfter": true, "frames": 2}}]})");
    const Outcome outcome = Run("sculpt s.json --json -q");
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(nlohmann::json::parse(outcome.out).at("files"),
              nlohmann::json({"clay.png",
                              "cut.png",
                              "spin_0001.png",
                              "spin_0002.png",
                              "both_0001.png",
                              "both_0002.png"}));
    EXPECT_EQ(ReadImageFile((folder / "clay.png").string()).channels, 3u);
    EXPECT_EQ(ReadImageFile((folder / "cut.png").string()).channels, 4u);
    EXPECT_NE(ReadAll(folder / "spin_0001.png"), ReadAll(folder / "spin_0002.png"));
}

TEST_F(RenderCommand, ScriptStepsRefuseIncompatibleFields) {
    const auto expectError = [this](const std::string& fields, const std::string& reason) {
        ExpectScriptError(R"({"mesh": "cube.obj", "steps": [{"render": {)" + fields + "}}]}",
                          reason);
    };
    expectError(R"("file": "a.png", "shading": "flat", "matcap": "wax")",
                "a matcap requires the shading mode \"matcap\"");
    expectError(R"("file": "a.jpg", "transparent": true)",
                "/steps/0/render/file: cannot write a transparent render to a.jpg");
    expectError(
        R"("file": "a.png", "keep": "a", "frames": 3)",
        "/steps/0/render/keep: the frames of a turntable cannot be kept, only written to files");
    expectError(R"("file": "a.png", "shading": "uv")", "the mesh has no texture coordinates");
    expectError(R"("file": "a.png", "camera": {"from": [0, 0, 1], "up": [0, 0, 0]})",
                "/steps/0/render/camera/up: the direction must not be zero");
}

}  // namespace
}  // namespace trovik::test
