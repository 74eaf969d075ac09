// SPDX-License-Identifier: Apache-2.0

/// \file Tests `trovik diff`: distances, exit status and heat maps.
#include "framework/images/ImageFile.h"
#include "tests/cli/CommandRun.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace trovik::test {
namespace {

using testing::HasSubstr;

class DiffCommand : public Command {
protected:
    DiffCommand() {
        WriteFile("quad.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3 4\n");
        WriteFile("up.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0.5\nv 0 1 0\nf 1 2 3 4\n");
        WriteFile("triangles.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3\nf 1 3 4\n");
    }

    nlohmann::json Json(const std::string& arguments, int status) {
        const Outcome outcome = Run("diff --json " + arguments);
        EXPECT_EQ(outcome.status, status) << arguments << ": " << outcome.error;
        return nlohmann::json::parse(outcome.out);
    }
};

TEST_F(DiffCommand, SameFacesAreComparedByVertex) {
    const Outcome outcome = Run("diff quad.obj up.obj");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.error, "");
    EXPECT_THAT(outcome.out, HasSubstr("max       0.5, from (1, 1, 0) to (1, 1, 0.5)"));
    EXPECT_THAT(outcome.out, HasSubstr("1 of 4 vertices exceed the tolerance 0\n"));
    EXPECT_THAT(outcome.out, HasSubstr("\ndifferent\n"));
    const auto json = Json("quad.obj up.obj --tolerance 0.5", 0);
    EXPECT_EQ(json.at("comparison"), "vertices");
    EXPECT_EQ(json.at("equal"), true);
    EXPECT_EQ(json.at("distances").size(), 1u);
    EXPECT_EQ(json.at("distances").at(0).at("mean"), 0.125);
    EXPECT_EQ(json.at("distances").at(0).at("rms"), 0.25);
    EXPECT_EQ(Json("quad.obj up.obj --tolerance 0.49", 1).at("equal"), false);
}

TEST_F(DiffCommand, OtherFacesAreComparedBySurface) {
    const auto json = Json("quad.obj triangles.obj --tolerance 1e-6", 0);
    EXPECT_EQ(json.at("comparison"), "surfaces");
    EXPECT_EQ(json.at("distances").size(), 2u);
    EXPECT_EQ(json.at("faces"), nlohmann::json({1, 2}));
    EXPECT_LT(json.at("max").get<double>(), 1e-6);
    EXPECT_EQ(Json("quad.obj up.obj --surface --tolerance 1", 0).at("comparison"), "surfaces");
    // Faces with more than four corners are not subdivided, which would move the surface.
    WriteFile("pentagon.obj", "v 0 0 0\nv .5 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3 4 5\n");
    Json("quad.obj pentagon.obj --tolerance 1e-6", 0);
}

TEST_F(DiffCommand, ComparesScenesAndConvertedUnits) {
    WriteFile("s.json", R"({"mesh": "cube.obj", "levels": 1, "steps": [
        {"export": {"file": "fine.ply"}}, {"save": "a.trovik"}]})");
    ASSERT_EQ(Run("sculpt s.json -q").status, 0);
    EXPECT_EQ(Json("a.trovik fine.ply", 0).at("max"), 0.0);
    ASSERT_EQ(Run("convert quad.obj mm.obj --from-units mm --from-up z -q").status, 0);
    ASSERT_EQ(Run("convert mm.obj cm.obj --units cm --up y -q").status, 0);
    EXPECT_LT(Json("mm.obj cm.obj --tolerance 1e-6", 0).at("max").get<double>(), 1e-6);
    EXPECT_GT(Json("quad.obj cm.obj", 1).at("max").get<double>(), 0.5);
}

TEST_F(DiffCommand, HeatmapColoursOnlyTheDifference) {
    const Outcome outcome = Run("diff quad.obj up.obj --heatmap map.png -q");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.error + outcome.out, "");
    const FloatImage image = ReadImageFile((folder / "map.png").string());
    ASSERT_EQ(image.width, 960u);
    // Counts pixels in saturated red, which only large distances and the scale have.
    const auto reds = [](const FloatImage& of) {
        std::size_t count = 0;
        for (std::size_t i = 0; i < of.pixels.size(); i += of.channels)
            if (of.pixels[i] > 0.3f && of.pixels[i + 1] < 0.3f * of.pixels[i]) ++count;
        return count;
    };
    Run("diff quad.obj quad.obj --heatmap same.png -q");
    const FloatImage same = ReadImageFile((folder / "same.png").string());
    EXPECT_GT(reds(image), reds(same) + 5000);
    // With a range far above the distances, the mesh has the first colour everywhere.
    Run("diff quad.obj up.obj --heatmap wide.png --range 1000 -q");
    EXPECT_LT(reds(ReadImageFile((folder / "wide.png").string())), reds(same) + 100);
}

TEST_F(DiffCommand, VerticesWithoutFacesDoNotChangeTheHeatmap) {
    // Vertex 1 is far away from the other surface; the last vertex of the second file has no face.
    WriteFile("far.obj", "v 0 0 3\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3 4\n");
    WriteFile("loose.obj", "v 0 0 3\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0.5 0.5 0\nf 1 2 3 4\n");
    Run("diff far.obj triangles.obj --heatmap far.png -q");
    Run("diff loose.obj triangles.obj --heatmap loose.png -q");
    const FloatImage far = ReadImageFile((folder / "far.png").string());
    const FloatImage loose = ReadImageFile((folder / "loose.png").string());
    EXPECT_EQ(far.pixels, loose.pixels);
}

TEST_F(DiffCommand, FailuresHaveStatusTwo) {
    const auto expectFailure = [this](const std::string& arguments, const std::string& reason) {
        const Outcome outcome = Run("diff " + arguments);
        EXPECT_EQ(outcome.status, 2) << arguments;
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.error, HasSubstr("trovik: "));
        EXPECT_THAT(outcome.error, HasSubstr(reason));
    };
    expectFailure("quad.obj missing.obj", "missing.obj");
    expectFailure("quad.obj up.obj --heatmap missing/map.png", "missing/map.png");
    expectFailure("quad.obj up.obj --surface --spacing 1e-9", "spacing");
    expectFailure("quad.obj", "required");
    expectFailure("quad.obj up.obj --range 3", "--heatmap");
    expectFailure("quad.obj up.obj --tolerance -1", "--tolerance");
    expectFailure("quad.obj up.obj --tolerance nan", "--tolerance");
    expectFailure("quad.obj up.obj --spacing nan", "--spacing");
    expectFailure("quad.obj up.obj --heatmap map.png --range NaN", "--range");
}

}  // namespace
}  // namespace trovik::test
