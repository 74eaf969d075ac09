// SPDX-License-Identifier: Apache-2.0

/// \file Tests which folders scripts search for input files, and in which folders they may write.
#include "tests/cli/CommandRun.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace trovik::test {
namespace {

using testing::HasSubstr;

class OutputFolder : public Command {
protected:
    std::string ErrorOf(const std::string& step, const std::string& options = "-o out") {
        WriteFile("s.json", R"({"mesh": "cube.obj", "steps": [)" + step + "]}");
        const Outcome outcome = Run("sculpt -q s.json " + options);
        EXPECT_EQ(outcome.status, outcome.error.empty() ? 0 : 1);
        return outcome.error;
    }
};

constexpr const char* sheet =
    "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nf 1/1 2/2 3/3 4/4\n";

TEST_F(OutputFolder, IsSearchedByTheNextScript) {
    fs::create_directories(folder / "scripts");
    WriteFile("scripts/sheet.obj", sheet);
    WriteFile("scripts/first.json", R"({"mesh": "sheet.obj", "levels": 3, "steps": [
        {"stroke": {"surface": [[0.4, 0.4, 0]]}}, {"export": {"file": "parts/a.ply"}},
        {"bake": {"file": "d.exr", "size": 32}}, {"bake": {"file": "t.<UDIM>.exr", "size": 32}},
        {"render": {"file": "p.png", "width": 32, "height": 32, "samples": 1}},
        {"save": "a.trovik"}]})");
    WriteFile("scripts/second.json", R"({"scene": "a.trovik", "steps": [
        {"displace": {"file": "d.exr"}}, {"displace": {"file": "t.<UDIM>.exr"}},
        {"mask": {"image": {"file": "p.png"}}},
        {"tool": "Sculpt", "set": {"stamp": "p.png"}}, {"set": {"stamp": {"path": "p.png"}}},
        {"stroke": {"pen": "pen.json"}}]})");
    WriteFile("scripts/third.json", R"({"mesh": "parts/a.ply", "steps": []})");
    ASSERT_EQ(Run("sculpt -q scripts/first.json -o out").error, "");
    WriteFile("out/pen.json", R"({"samples": [[300, 300, 0.5, 0], [350, 300, 0.5, 9]]})");
    ASSERT_EQ(Run("sculpt -q --check scripts/second.json -o out").error, "");
    ASSERT_EQ(Run("sculpt -q scripts/second.json -o out --journal w.journal").error, "");
    EXPECT_EQ(Run("sculpt -q scripts/third.json -o out").error, "");
    EXPECT_EQ(
        Run("sculpt -q scripts/second.json -o other").error,
        "trovik: scripts/second.json: /scene: file not found: a.trovik is neither in the script's "
        "folder (scripts) nor in the output folder (other)\n");
    const Outcome recovery = Run("recover w.journal -o b.trovik -q");
    EXPECT_EQ(recovery.error, "") << "the journal contains the paths of the files that were found";
    WriteFile("out/d.exr", "another map");
    EXPECT_THAT(Run("recover w.journal -o b.trovik -q").error,
                HasSubstr("out/d.exr has changed since the work was recorded"));
}

TEST_F(OutputFolder, IsSearchedAfterTheFolderOfTheScript) {
    fs::create_directories(folder / "out");
    WriteFile("out/cube.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    WriteFile("s.json", R"({"mesh": "cube.obj", "steps": []})");
    EXPECT_THAT(Run("sculpt s.json -o out").out, HasSubstr("8 vertices, 6 faces"));
}

TEST_F(OutputFolder, FilesWrittenByTheScriptAreFoundFirst) {
    WriteFile("sheet.obj", sheet);
    WriteFile("d.exr", "no image");
    WriteFile("s.json", R"({"mesh": "sheet.obj", "levels": 2, "steps": [
        {"set": {"radius": 0.5}},
        {"stroke": {"surface": [[0.4, 0.4, 0]]}}, {"bake": {"file": "d.exr", "size": 32}},
        {"displace": {"file": "d.exr"}}]})");
    EXPECT_EQ(Run("sculpt -q s.json -o out").error, "");
}

TEST_F(OutputFolder, WritingOutsideNeedsPermission) {
    const std::string outside = (folder / "outside").string();
    fs::create_directories(folder / "outside");
    fs::create_directories(folder / "out/inner");
    const auto refused = [&](const std::string& name, const std::string& reason) {
        SCOPED_TRACE(name);
        const std::string error = ErrorOf(R"({"export": {"file": ")" + name + R"("}})");
        EXPECT_EQ(error,
                  "trovik: s.json: /steps/0/export/file: \"" + name + "\" " + reason +
                      " the output folder; use --allow-outside to permit it\n");
        EXPECT_TRUE(fs::is_empty(folder / "outside"));
        EXPECT_FALSE(fs::exists(folder / "a.ply"));
    };
    refused("../a.ply", "leads out of");
    refused("inner/../../a.ply", "leads out of");
    refused("../out/../a.ply", "leads out of");
    refused(outside + "/a.ply", "is an absolute path, which can be outside");
    fs::create_directory_symlink(folder / "outside", folder / "out/way");
    refused("way/a.ply", "leads through a symbolic link out of");
    refused("way/new/a.ply", "leads through a symbolic link out of");
    refused("inner/../way/a.ply", "leads through a symbolic link out of");
    fs::create_symlink(folder / "a.ply", folder / "out/b.ply");
    WriteFile("a.ply", "of somebody");
    EXPECT_THAT(ErrorOf(R"({"export": {"file": "b.ply"}})"), HasSubstr("a symbolic link"));
    EXPECT_EQ(ReadAll(folder / "a.ply"), "of somebody");
    fs::remove(folder / "a.ply");
    // A glTF buffer is written next to its document, and each tile has its own file name.
    fs::create_symlink(folder / "cube.obj", folder / "out/c.bin");
    fs::create_symlink(folder / "outside", folder / "out/m.1001.exr");
    refused("c.gltf", "is next to c.bin, which is a symbolic link out of");
    EXPECT_THAT(ErrorOf(R"({"bake": {"file": "m.<UDIM>.exr"}})"),
                HasSubstr("/steps/0/bake/file: \"m.<UDIM>.exr\" is next to m.1001.exr"));
    for (const char* step : {R"({"save": "../a.trovik"})",
                             R"({"render": {"file": "../a.png"}})",
                             R"({"render": {"keep": "a"}}, {"contactSheet": {"file": "../a.png",
                                 "renders": ["a"]}})"})
        EXPECT_THAT(ErrorOf(step), HasSubstr("leads out of the output folder")) << step;
}

TEST_F(OutputFolder, TurntableFramesAreNotWrittenOutside) {
    const std::string turntable = R"({"render": {"file": "spin.png", "frames": 3, "width": 16,
        "height": 16, "samples": 1}})";
    fs::create_directories(folder / "out");
    WriteFile("other.png", "of somebody");
    fs::create_symlink(folder / "other.png", folder / "out/spin_0003.png");
    const std::string refusal =
        "/steps/0/render/file: \"spin_0003.png\" leads through a symbolic link out of the output "
        "folder";
    EXPECT_THAT(ErrorOf(turntable), HasSubstr(refusal));
    EXPECT_FALSE(fs::exists(folder / "out/spin_0001.png"))
        << "the name must be rejected before rendering";
    EXPECT_THAT(Run("sculpt -q --check s.json -o out").error, HasSubstr(refusal));
    EXPECT_EQ(ReadAll(folder / "other.png"), "of somebody");
    EXPECT_EQ(ErrorOf(turntable, "-o out --allow-outside"), "");
    EXPECT_NE(ReadAll(folder / "other.png"), "of somebody");
    EXPECT_TRUE(fs::exists(folder / "out/spin_0001.png"));
    // No frame is written under the name without a number, so a link with that name is harmless.
    fs::remove(folder / "out/spin_0003.png");
    fs::create_symlink(folder / "other.png", folder / "out/spin.png");
    EXPECT_EQ(ErrorOf(turntable), "");
    // A later step can read a frame.
    fs::remove(folder / "out/spin_0002.png");
    WriteFile("sheet.obj", sheet);
    WriteFile("t.json",
              R"({"mesh": "sheet.obj", "steps": [)" + turntable +
                  R"(, {"mask": {"image": {"file": "spin_0002.png"}}}]})");
    EXPECT_EQ(Run("sculpt -q --check t.json -o out").error, "");
    EXPECT_EQ(Run("sculpt -q t.json -o out").error, "");
}

TEST_F(OutputFolder, CopiesOfMaterialFilesAreNotWrittenOutside) {
    fs::create_directories(folder / "lib");
    fs::create_directories(folder / "out");
    WriteFile("lib/all.mtl", "newmtl red\n");
    WriteFile("red.obj", std::string("mtllib lib/all.mtl\nusemtl red\n") + sheet);
    // The file looks like a copy from an earlier export, which a new export would replace.
    const std::string other = "# Copied by trovik from ../lib/all.mtl\nof somebody\n";
    WriteFile("other.mtl", other);
    fs::create_symlink(folder / "other.mtl", folder / "out/all.mtl");
    WriteFile("s.json", R"({"mesh": "red.obj", "steps": [{"export": {"file": "a.obj"}}]})");
    EXPECT_EQ(Run("sculpt -q s.json -o out").error, "");
    EXPECT_EQ(ReadAll(folder / "other.mtl"), other);
    EXPECT_THAT(ReadAll(folder / "out/all-2.mtl"), HasSubstr("newmtl red\n"));
}

TEST_F(OutputFolder, WritingOutsideIsAllowedWithPermission) {
    const std::string outside = (folder / "outside").string();
    const std::string steps =
        R"({"export": {"file": "../a.ply"}}, {"export": {"file": ")" + outside + R"(/b.ply"}})";
    EXPECT_EQ(ErrorOf(steps, "-o out --allow-outside"), "");
    EXPECT_TRUE(fs::exists(folder / "a.ply"));
    EXPECT_TRUE(fs::exists(folder / "outside/b.ply"));
}

TEST_F(OutputFolder, MayItselfBeGivenThroughLinksAndDots) {
    fs::create_directories(folder / "real/deep");
    fs::create_directory_symlink(folder / "real", folder / "link");
    fs::create_directory_symlink(folder / "real/deep", folder / "real/inside");
    EXPECT_EQ(ErrorOf(R"({"export": {"file": "a.ply"}})", "-o link/"), "");
    EXPECT_TRUE(fs::exists(folder / "real/a.ply"));
    EXPECT_EQ(ErrorOf(R"({"export": {"file": "inside/b.ply"}})", "-o real/../link"), "");
    EXPECT_TRUE(fs::exists(folder / "real/deep/b.ply"));
    EXPECT_EQ(ErrorOf(R"({"export": {"file": "x/../c.ply"}})", "-o new/folder"), "");
    EXPECT_TRUE(fs::exists(folder / "new/folder/c.ply"));
    EXPECT_EQ(ErrorOf(R"({"export": {"file": "..a/d.ply"}})", ""), "");
    EXPECT_TRUE(fs::exists(folder / "..a/d.ply"));
}

// Recovery replays a bake, because a displacement may depend on it.
TEST_F(OutputFolder, RecoveryUsesTheOriginalOutputFolder) {
    WriteFile("sheet.obj", sheet);
    WriteFile("s.json",
              R"({"mesh": "sheet.obj", "levels": 3, "steps": [
        {"stroke": {"surface": [[0.4, 0.4, 0]]}}, {"bake": {"file": ")" +
                  (folder / "maps/d.exr").string() + R"(", "size": 32}},
        {"bake": {"file": "e.exr", "size": 32}},
        {"displace": {"file": "e.exr"}}, {"level": 9}]})");
    // The last step fails, so the journal is not closed.
    EXPECT_THAT(Run("sculpt -q s.json -o out --allow-outside --journal w.journal").error,
                HasSubstr("/steps/4/level"));
    const std::string baked = ReadAll(folder / "out/e.exr");
    ASSERT_FALSE(baked.empty());
    fs::remove_all(folder / "out");
    fs::create_directories(folder / "elsewhere");
    const Outcome recovery = Run("recover w.journal -o elsewhere/a.trovik -q");
    EXPECT_EQ(recovery.status, 0) << recovery.error;
    EXPECT_FALSE(fs::exists(folder / "e.exr"));
    EXPECT_EQ(ReadAll(folder / "out/e.exr"), baked);
}

TEST_F(OutputFolder, NamesThatAreNotUtf8CanBeUsedFromJson) {
    WriteFile("s.json", R"({"mesh": "cube.obj", "steps": [{"export": {"file": "a.ply"}}]})");
    const Outcome outcome = Run("sculpt s.json --json -o \"$(printf 'b\\377d %%')\"");
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    const auto document = nlohmann::json::parse(outcome.out);
    EXPECT_EQ(document.at("files"),
              nlohmann::json::array({"b\xef\xbf\xbd"
                                     "d %/a.ply"}));
    EXPECT_EQ(document.at("filesBytes"), nlohmann::json::array({"b%FFd%20%25/a.ply"}));
    EXPECT_TRUE(fs::exists(folder / "b\xff"
                                    "d %/a.ply"));
    const auto info =
        nlohmann::json::parse(Run("info --json \"$(printf 'b\\377d %%')/a.ply\"").out);
    EXPECT_EQ(info.at("fileBytes"), "b%FFd%20%25/a.ply");
    EXPECT_EQ(nlohmann::json::parse(Run("info --json cube.obj").out).count("fileBytes"), 0u);
}

}  // namespace
}  // namespace trovik::test
