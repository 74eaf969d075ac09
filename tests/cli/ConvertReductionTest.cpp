// SPDX-License-Identifier: Apache-2.0

/// \file Tests exports with fewer triangles, with the verb convert and in scripts.
#include "tests/cli/CommandRun.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace trovik::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;

class ConvertReduction : public Command {
protected:
    json Converted(const std::string& arguments) {
        const Outcome outcome = Run("convert " + arguments + " --json -q");
        EXPECT_EQ(outcome.status, 0) << outcome.error;
        return json::parse(outcome.out);
    }
    uint64_t FacesOf(const std::string& file) {
        return json::parse(Run("info " + file + " --json").out).at("faces").get<uint64_t>();
    }
};

TEST_F(ConvertReduction, DecimatesAndWritesLevelsOfDetail) {
    const json fine =
        Converted("cube.obj fine.ply --levels 4 --ratio 0.5 --lods 2 --lod-ratio 0.25");
    EXPECT_EQ(fine.at("faces"), 1536);
    ASSERT_EQ(fine.at("lods").size(), 2u);
    EXPECT_EQ(fine.at("lods")[0].at("file"), "fine.lod1.ply");
    EXPECT_EQ(fine.at("lods")[0].at("faces"), 384);
    EXPECT_EQ(fine.at("files"), (json{"fine.ply", "fine.lod1.ply", "fine.lod2.ply"}));
    EXPECT_EQ(FacesOf("fine.ply"), 1536u);
    EXPECT_EQ(FacesOf("fine.lod1.ply"), 384u);
    EXPECT_EQ(FacesOf("fine.lod2.ply"), 96u);
    EXPECT_EQ(fine.at("lods")[1].at("vertices"), 50);

    EXPECT_EQ(Converted("fine.ply few.obj --faces 200").at("faces"), 200);
    // The mesh itself is written unchanged.
    const json lods = Converted("cube.obj same.obj --lods 1");
    EXPECT_EQ(lods.at("faces"), 6);
    EXPECT_EQ(lods.at("lods")[0].at("faces"), 6);
    Converted("cube.obj full.ply --levels 4");
    EXPECT_LT(Converted("cube.obj near.ply --levels 4 --error 0.05").at("faces"), 1000);
    const json difference = json::parse(Run("diff near.ply full.ply --json").out);
    EXPECT_GT(difference.at("max").get<double>(), 0.005);
    EXPECT_LE(difference.at("max").get<double>(), 0.0501);
}

TEST_F(ConvertReduction, RefusesContradictions) {
    EXPECT_EQ(Run("convert cube.obj a.obj --faces 5 --ratio 0.5").status, 2);
    EXPECT_EQ(Run("convert cube.obj a.obj --ratio 0").status, 2);
    EXPECT_EQ(Run("convert cube.obj a.obj --lods 17").status, 2);
    EXPECT_EQ(Run("convert cube.obj a.obj --lod-ratio 1").status, 2);
}

TEST_F(ConvertReduction, WarnsIfTheNumberCannotBeReached) {
    WriteFile("grid.json", R"({"mesh": "sheet.obj", "levels": 3, "steps": [
        {"export": {"file": "all.obj", "decimate": {"faces": 2}, "lods": 1}}]})");
    WriteFile("sheet.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3 4\n");
    const Outcome script = Run("sculpt grid.json");
    EXPECT_EQ(script.status, 0) << script.error;
    EXPECT_THAT(script.error, HasSubstr("all.obj: the mesh has"));
    EXPECT_THAT(script.out + script.error, HasSubstr("all.lod1.obj"));
    EXPECT_EQ(Run("sculpt grid.json --strict").status, 1);
    const Outcome outcome = Run("convert sheet.obj b.obj --levels 3 --faces 2");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.error, HasSubstr("b.obj: the mesh has"));
}

TEST_F(ConvertReduction, ChecksScripts) {
    WriteFile("bad.json", R"({"mesh": "cube.obj", "steps": [
        {"export": {"file": "a.obj", "decimate": {"faces": 5, "ratio": 0.5}}}]})");
    EXPECT_THAT(Run("sculpt --check bad.json").error, HasSubstr("/steps/0/export/decimate/ratio"));
    WriteFile("empty.json", R"({"mesh": "cube.obj", "steps": [
        {"export": {"file": "a.obj", "decimate": {}}}]})");
    EXPECT_THAT(Run("sculpt --check empty.json").error, HasSubstr("/steps/0/export/decimate"));
    // A later step may read a level of detail that an earlier one writes.
    WriteFile("good.json", R"({"mesh": "cube.obj", "levels": 2, "steps": [
        {"export": {"file": "a.obj", "lods": 2}},
        {"append": {"file": "a.lod2.obj", "translate": [3, 0, 0]}}]})");
    const Outcome good = Run("sculpt --check good.json");
    EXPECT_EQ(good.status, 0) << good.error;
    const Outcome run = Run("sculpt good.json --strict");
    EXPECT_THAT(run.error, HasSubstr("quads"));
}

}  // namespace
}  // namespace trovik::test
