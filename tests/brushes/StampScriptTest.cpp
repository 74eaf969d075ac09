// SPDX-License-Identifier: Apache-2.0

/// \file Tests stamps in stroke scripts.
#include "framework/errors/HostError.h"
#include "framework/images/ImageFile.h"
#include "framework/script/ScriptRunner.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace trovik::test {
namespace {

using testing::HasSubstr;

class StampScript : public testing::Test {
protected:
    StampScript() {
        std::filesystem::create_directories(folder.Path("installed/Stamps"));
        setenv("TROVIK_STAMP_PATH", folder.Path("installed").c_str(), 1);
        folder.Fill("quad.obj", "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nf 1 2 3 4\n");
        WriteStamp("half.tif", 0.5f);
    }
    ~StampScript() override { unsetenv("TROVIK_STAMP_PATH"); }

    void WriteStamp(const std::string& name, float value) {
        FloatImage image;
        image.width = image.height = 4;
        image.channels = 1;
        image.pixels.assign(16, value);
        WriteFloatImageFile(folder.Path(name), image);
    }
    /// Runs the steps on a square of 32 x 32 quads. \return the exported file.
    std::string Run(const std::string& steps, const std::string& more = "") {
        messages.clear();
        const std::string script =
            folder.Fill("script.json",
                        R"({"mesh": "quad.obj", "levels": 5, )" + more + R"("steps": [)" + steps +
                            R"(, {"export": {"file": "out.ply"}}]})");
        ScriptProgress progress;
        progress.message = [this](const std::string& text) { messages.push_back(text); };
        result = ScriptRunner(script, folder.Path("out"), progress).Run();
        return TemporaryFolder::Content(folder.Path("out/out.ply"));
    }
    std::string ErrorOf(const std::string& steps) {
        return MessageOf<HostError>([&] { Run(steps); });
    }

    static constexpr const char* sculpt =
        R"({"tool": "Sculpt", "set": {"radius": 0.5, "strength": 50, "buildUpRate": 1, "falloff": "constant"}})";
    static constexpr const char* dab = R"({"stroke": {"surface": [[0, 0, 0]]}})";

    TemporaryFolder folder;
    ScriptResult result;
    std::vector<std::string> messages;
};

TEST_F(StampScript, StampPathIsRelativeToTheScript) {
    const std::string plain = Run(std::string(sculpt) + "," + dab);
    const std::string half =
        Run(std::string(sculpt) + R"(, {"set": {"stamp": "half.tif"}},)" + dab);
    EXPECT_NE(half, plain);
    EXPECT_EQ(Run(std::string(sculpt) + R"(, {"set": {"stamp": {"path": "./half.tif"}}},)" + dab),
              half);
    EXPECT_EQ(Run(std::string(sculpt) + R"(, {"set": {"stamp": {"path": "half"}}},)" + dab), half);
    // A factor of 2 makes up for the image's value of one half.
    EXPECT_EQ(Run(std::string(sculpt) +
                  R"(, {"set": {"stamp": {"path": "half.tif", "factor": 2}}},)" + dab),
              plain);
    EXPECT_EQ(Run(std::string(sculpt) + R"(, {"set": {"stamp": "half.tif"}},)" +
                  R"({"set": {"stamp": false}},)" + dab),
              plain);
    EXPECT_EQ(Run(std::string(sculpt) + R"(, {"set": {"stamp": "half.tif"}},)" +
                  R"({"set": {"stamp": false}}, {"set": {"stamp": true}},)" + dab),
              half);
}

TEST_F(StampScript, BareNameFindsAnInstalledStamp) {
    WriteStamp("installed/Stamps/other.tif", 0.5f);
    const std::string half =
        Run(std::string(sculpt) + R"(, {"set": {"stamp": "half.tif"}},)" + dab);
    EXPECT_EQ(Run(std::string(sculpt) + R"(, {"set": {"stamp": "other"}},)" + dab), half);
}

TEST_F(StampScript, ToolUsesItsInstalledStamp) {
    const std::string knife =
        R"({"tool": "Knife", "set": {"radius": 0.5, "strength": 50}}, {"stroke": {"surface": [[0, 0, 0]]}})";
    Run(knife);
    EXPECT_EQ(result.totals.verticesMoved, 0u);
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_THAT(messages[0], HasSubstr("choose a stamp image"));
    WriteStamp("installed/Stamps/knife.tif", -1.0f);
    Run(knife);
    EXPECT_GT(result.totals.verticesMoved, 50u);
    EXPECT_TRUE(messages.empty());
}

TEST_F(StampScript, StampSettingsAffectTheSurface) {
    const std::string base = std::string(sculpt) + R"(, {"set": {"stamp": "half.tif"}},)";
    const auto with = [&](const std::string& setting) {
        return Run(base + R"({"set": {"stamp": {)" + setting + "}}}," + dab);
    };
    const std::string half = Run(base + dab);
    EXPECT_NE(with(R"("offset": 0.25)"), half);
    EXPECT_NE(with(R"("inverted": true, "offset": 0.25)"), half);
    EXPECT_EQ(with(R"("inverted": true)"), half) << "1 - 0.5";
    EXPECT_EQ(with(R"("tiled": true, "positioning": "start", "rotation": 45)"), half)
        << "a constant stamp is independent of its rotation";
    EXPECT_EQ(with(R"("enabled": false)"), Run(std::string(sculpt) + "," + dab));
    EXPECT_NE(with(R"("bilinear": true)"), half) << "it fades at its borders";
    EXPECT_NE(with(R"("randomize": true)"), half);
}

TEST_F(StampScript, EqualSeedsRepeatStrokesAndOtherSeedsDiffer) {
    const std::string spray =
        R"({"tool": "Spray", "set": {"radius": 0.2, "strength": 50, "stamp": {"path": "half.tif", "randomize": true}}},)";
    const std::string path = R"({"stroke": {"surface": [[-0.5, 0, 0], [0.5, 0, 0]])";
    const std::string first = Run(spray + path + "}}");
    EXPECT_EQ(Run(spray + path + "}}"), first);
    EXPECT_NE(Run(spray + path + "}}", R"("seed": 1, )"), first);
    const std::string seeded = Run(spray + path + R"(, "seed": 77}})");
    EXPECT_NE(seeded, first);
    EXPECT_EQ(Run(spray + path + R"(, "seed": 77}})", R"("seed": 9, )"), seeded);
    // Two strokes without explicit seeds differ.
    const std::string undone = Run(spray + path + R"(}}, {"undo": 1},)" + path + "}}");
    EXPECT_NE(undone, first);
}

TEST_F(StampScript, ImprintPlacesOneCopyInBothWays) {
    const std::string imprint =
        R"({"tool": "Imprint", "set": {"radius": 0.1, "strength": 50, "stamp": "half.tif"}},)";
    const std::string grown =
        Run(imprint + R"({"stroke": {"surface": [[0, 0, 0], [0.25, 0, 0]]}})");
    EXPECT_EQ(
        Run(imprint +
            R"({"stroke": {"surface": [[0, 0, 0], [0.9, 0.3, 0], [-0.8, 0, 0], [0.25, 0, 0]]}})"),
        grown);
    EXPECT_EQ(Run(imprint + R"({"set": {"drawFromCenter": false}},)" +
                  R"({"stroke": {"surface": [[-0.25, 0, 0], [0.25, 0, 0]]}})"),
              grown)
        << "the same middle, radius and direction";
    Run(imprint +
        R"({"stroke": {"surface": [[0, 0, 0], [0.9, 0.3, 0], [0.25, 0, 0]]}}, {"undo": 1})");
    EXPECT_EQ(TemporaryFolder::Content(folder.Path("out/out.ply")),
              Run(imprint + R"({"stroke": {"surface": [[0, 0, 0]]}}, {"undo": 1})"));
    EXPECT_THAT(
        ErrorOf(imprint + R"({"stroke": {"surface": [[0, 0, 0], [0.25, 0, 0]]}}, {"undo": 2})"),
        HasSubstr("nothing more to undo"));
}

TEST_F(StampScript, WholeMeshStampIsProjectedFromTheCamera) {
    // Seen from the front, the left half of the image covers the left half of the square.
    FloatImage image;
    image.width = image.height = 2;
    image.channels = 1;
    image.pixels = {0.0f, 1.0f, 0.0f, 1.0f};
    WriteFloatImageFile(folder.Path("right.tif"), image);
    const std::string whole = R"({"stroke": {"wholeMesh": {"strength": 0.5}}})";
    Run(std::string(sculpt) + "," + whole, R"("camera": {"from": [0, 0, 1]}, )");
    const uint64_t all = result.totals.verticesMoved;
    EXPECT_EQ(all, 33u * 33u);
    Run(std::string(sculpt) + R"(, {"set": {"stamp": "right.tif"}},)" + whole,
        R"("camera": {"from": [0, 0, 1]}, )");
    EXPECT_GE(result.totals.verticesMoved, 16u * 33u);
    EXPECT_LE(result.totals.verticesMoved, 17u * 33u);
}

TEST_F(StampScript, OpenStrokeKeepsItsStamp) {
    const std::string open =
        std::string(sculpt) + R"(, {"stroke": {"surface": [[0, 0, 0]], "open": true}},)";
    EXPECT_THAT(ErrorOf(open + R"({"set": {"stamp": "half.tif"}})"),
                HasSubstr("/steps/2/set/stamp: the stamp cannot change while a stroke is open"));
    EXPECT_THAT(
        ErrorOf(open + R"({"stroke": {"continue": true, "seed": 4}})"),
        HasSubstr("/steps/2/stroke/seed: the seed must be given at the beginning of the stroke"));
    // Other stamp settings may change.
    Run(open + R"({"set": {"stamp": {"factor": 2}}}, {"stroke": {"continue": true}})");
}

TEST_F(StampScript, LoadedSceneContinuesWithItsStampAndSeeds) {
    const std::string tool =
        R"({"tool": "Spray", "set": {"radius": 0.2, "strength": 50, "stamp": {"path": "half.tif", "randomize": true}}})";
    const std::string stroke = R"({"stroke": {"surface": [[-0.5, 0, 0], [0.5, 0, 0]]}})";
    const std::string atOnce = Run(tool + "," + stroke + "," + stroke, R"("seed": 5, )");
    Run(tool + "," + stroke + R"(, {"save": "half.trovik"})", R"("seed": 5, )");
    const std::string script = folder.Fill("later.json",
                                           R"({"scene": "out/half.trovik", "steps": [)" + stroke +
                                               R"(, {"export": {"file": "out.ply"}}]})");
    ScriptRunner(script, folder.Path("later"), {}).Run();
    EXPECT_EQ(TemporaryFolder::Content(folder.Path("later/out.ply")), atOnce);
}

TEST_F(StampScript, ErrorsNameTheirLocation) {
    const auto set = [](const std::string& stamp) {
        return R"({"set": {"stamp": )" + stamp + "}}";
    };
    EXPECT_THAT(ErrorOf(set(R"("none.tif")")),
                HasSubstr("/steps/0/set/stamp: stamp not found: none.tif"));
    EXPECT_THAT(ErrorOf(set(R"({"path": "some/none.tif"})")),
                HasSubstr("/steps/0/set/stamp/path: file not found: some/none.tif"));
    folder.Fill("bad.tif", "no image");
    EXPECT_THAT(ErrorOf(set(R"({"path": "bad.tif"})")),
                testing::AllOf(HasSubstr("/steps/0/set/stamp/path: cannot read image"),
                               HasSubstr("bad.tif")));
    EXPECT_THAT(ErrorOf(set(R"({"positioning": "sideways"})")), HasSubstr("/positioning"));
    EXPECT_THAT(ErrorOf(set(R"({"rotation": 1.5})")), HasSubstr("/rotation"));
    EXPECT_THAT(ErrorOf(set(R"({"turn": 1})")), HasSubstr("turn"));
    EXPECT_THAT(ErrorOf(set("3")), HasSubstr("/steps/0/set/stamp"));
    EXPECT_THAT(ErrorOf(R"({"stroke": {"surface": [[0, 0, 0]], "seed": -1}})"), HasSubstr("seed"));
}

}  // namespace
}  // namespace trovik::test
