// SPDX-License-Identifier: Apache-2.0

/// \file Tests that the man page lists every option and every field of the JSON output.
#include "tests/SourceFolder.h"
#include "tests/cli/CommandRun.h"

#include <nlohmann/json.hpp>

#include <map>
#include <set>

namespace trovik::test {
namespace {

using Names = std::set<std::string>;

/// Returns the text of the man page with plain hyphens.
std::string ManPage() {
    std::string page = ReadAll(fs::path(SourceFolder()) / "docs/man/trovik.1");
    for (std::size_t at = 0; (at = page.find("\\-", at)) != std::string::npos; ++at)
        page.erase(at, 1);
    return page;
}

/// Returns the text between a heading and the next heading.
std::string Section(const std::string& page, const std::string& heading) {
    const std::size_t from = page.find(".SH " + heading + "\n");
    EXPECT_NE(from, std::string::npos) << heading;
    return page.substr(from, page.find("\n.SH ", from) - from);
}

/// Returns the long options in a text; `dashes` is the text before the option name.
Names Options(const std::string& text, const std::string& dashes) {
    Names names;
    for (std::size_t at = 0; (at = text.find(dashes, at)) != std::string::npos;) {
        at += dashes.size();
        const std::size_t end = text.find_first_not_of("abcdefghijklmnopqrstuvwxyz-", at);
        names.insert(text.substr(at, end - at));
    }
    return names;
}

/// Returns the options of the program by verb, taken from the completion script that it prints.
std::map<std::string, Names> OptionsByVerb(const std::string& fish) {
    std::map<std::string, Names> verbs;
    std::istringstream lines(fish);
    const std::string mark = "__fish_seen_subcommand_from ";
    for (std::string line; std::getline(lines, line);) {
        const std::size_t at = line.find(mark);
        if (at == std::string::npos) continue;
        const std::size_t name = at + mark.size();
        Names& options = verbs[line.substr(name, line.find('\'', name) - name)];
        const std::size_t end = line.find(" -d ");
        options.merge(Options(line.substr(name, end - name), " -l "));
    }
    return verbs;
}

/// Returns the fields that the page lists under a heading: the words in the bold lines.
Names Fields(const std::string& section, const std::string& heading) {
    Names fields;
    const std::string start = ".SS " + heading + "\n";
    const std::size_t from = section.find(start);
    EXPECT_NE(from, std::string::npos) << heading;
    std::istringstream lines(section.substr(from, section.find("\n.SS ", from) - from));
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind(".B ", 0) != 0) continue;
        std::istringstream words(line.substr(3));
        for (std::string word; words >> word;) {
            if (word.back() == ',') word.pop_back();
            fields.insert(word);
        }
    }
    return fields;
}

Names Keys(const nlohmann::json& document) {
    Names keys;
    for (const auto& [key, value] : document.items()) keys.insert(key);
    return keys;
}

class ManPageOfTheCommand : public Command {
protected:
    /// Runs a verb with --json and compares the fields with those that the page lists. The output
    /// must be the same with --quiet.
    nlohmann::json ExpectDocumented(const std::string& heading, const std::string& arguments) {
        SCOPED_TRACE(arguments);
        const Outcome outcome = Run(arguments + " --json");
        EXPECT_EQ(outcome.status, 0) << outcome.error;
        nlohmann::json document = nlohmann::json::parse(outcome.out, nullptr, false);
        EXPECT_FALSE(document.is_discarded()) << outcome.out;
        const bool isList = document.is_array();
        const std::string page = ManPage();
        EXPECT_EQ(Keys(isList ? document.at(0) : document),
                  Fields(Section(page, "OUTPUT FOR PROGRAMS"), heading));
        const Outcome quiet = Run(arguments + " -q");
        EXPECT_EQ(quiet.status, 0) << quiet.error;
        EXPECT_EQ(quiet.out + quiet.error, "");
        return document;
    }
};

TEST_F(ManPageOfTheCommand, ListsExactlyTheOptionsOfEveryVerb) {
    const std::string commands = Section(ManPage(), "COMMANDS");
    const auto verbs = OptionsByVerb(Run("completion fish").out);
    ASSERT_GE(verbs.size(), 9u);
    for (const auto& [verb, options] : verbs) {
        SCOPED_TRACE(verb);
        const std::size_t from = commands.find("\n.B " + verb + " ") != std::string::npos
                                     ? commands.find("\n.B " + verb + " ")
                                     : commands.find("\n.B " + verb + "\n");
        ASSERT_NE(from, std::string::npos);
        // A verb begins with a bold line that is not indented by .RS.
        std::size_t end = commands.size();
        for (const auto& [other, ignored] : verbs)
            for (const char* after : {" ", "\n"})
                end = std::min(end, commands.find("\n.B " + other + after, from + 1));
        Names wanted = options;
        wanted.erase("help");
        Names found = Options(commands.substr(from, end - from), "--");
        EXPECT_EQ(found, wanted);
        if (verb != "completion" && verb != "help") {
            EXPECT_EQ(options.count("json"), 1u);
            EXPECT_EQ(options.count("quiet"), 1u);
        }
    }
}

TEST_F(ManPageOfTheCommand, ListsTheFieldsOfEveryJsonOutput) {
    WriteFile("s.json", R"({"mesh": "cube.obj", "levels": 2, "steps": [
        {"set": {"radius": 0.6}}, {"layer": {"add": "skin"}},
        {"stroke": {"surface": [[0.2, 0.1, 1]]}},
        {"save": "a.trovik"}]})");
    const auto sculpt = ExpectDocumented("sculpt", "sculpt s.json");
    EXPECT_EQ(sculpt.at("faces"), 96);
    EXPECT_EQ(sculpt.at("files"), nlohmann::json::array({"a.trovik"}));
    EXPECT_EQ(Keys(sculpt.at("steps").at(0)),
              (Names{"pointer", "step", "dabs", "verticesMoved", "milliseconds", "warnings"}));
    const auto mesh = ExpectDocumented("info, of a mesh", "info cube.obj");
    EXPECT_EQ(Keys(mesh.at("carries")),
              (Names{"normals",
                     "textureCoordinates",
                     "textureSeams",
                     "colors",
                     "alpha",
                     "groups",
                     "materials",
                     "materialFiles",
                     "smoothingGroups",
                     "units",
                     "up"}));
    EXPECT_EQ(Keys(mesh.at("level0")), (Names{"type", "vertices", "faces", "borderEdges"}));
    const auto scene = ExpectDocumented("info, of a scene", "info a.trovik");
    EXPECT_EQ(scene.at("bound"), 2);
    EXPECT_EQ(Keys(scene.at("levels").at(0)), (Names{"type", "vertices", "faces", "frozen"}));
    EXPECT_EQ(Keys(scene.at("layers").at(0)),
              (Names{"name", "level", "strength", "writable", "active", "vertices"}));
    EXPECT_EQ(Keys(scene.at("view")),
              (Names{"eye", "target", "up", "fieldOfView", "orthographic", "width", "height"}));
    EXPECT_EQ(ExpectDocumented("convert", "convert cube.obj fine.ply --levels 1"),
              nlohmann::json({{"from", "cube.obj"},
                              {"to", "fine.ply"},
                              {"vertices", 26},
                              {"faces", 24},
                              {"files", {"fine.ply"}},
                              {"lods", nlohmann::json::array()},
                              {"notes", nlohmann::json::array()}}));
    const auto render =
        ExpectDocumented("render", "render cube.obj c.png --width 40 --height 30 --samples 1");
    EXPECT_EQ(render.at("width"), 40);
    EXPECT_EQ(render.at("height"), 30);
    EXPECT_EQ(Keys(render.at("camera")),
              (Names{"eye", "target", "up", "fieldOfView", "orthographic"}));
    const auto diff = ExpectDocumented("diff", "diff cube.obj cube.obj");
    EXPECT_EQ(
        Keys(diff.at("distances").at(0)),
        (Names{"samples", "beyondTolerance", "max", "mean", "rms", "position", "otherPosition"}));
    const auto turntable = ExpectDocumented(
        "turntable", "turntable cube.obj spin --frames 2 --width 40 --height 30 --samples 1");
    EXPECT_EQ(turntable.at("files"),
              nlohmann::json({"spin/frame_0001.png", "spin/frame_0002.png"}));
    WriteFile("batch.json",
              R"({"mesh": "${input}", "steps": [{"export": {"file": "${stem}.ply"}}]})");
    const auto batch = ExpectDocumented("batch", "batch batch.json cube.obj -o out");
    EXPECT_EQ(Keys(batch.at("inputs").at(0)),
              (Names{"input", "status", "files", "warnings", "error", "seconds"}));
    const auto tools = ExpectDocumented("tools", "tools");
    EXPECT_EQ(tools.size(), 19u);
    for (const char* field : {"name", "default", "unit"})
        EXPECT_TRUE(tools.at(0).at("settings").at(0).contains(field)) << field;
    ExpectDocumented("preferences", "preferences --file p.json");
}

TEST_F(ManPageOfTheCommand, ListsTheFieldsOfJournalsAndMaps) {
    WriteFile("sheet.obj",
              "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
              "f 1/1 2/2 3/3 4/4\n");
    WriteFile("s.json", R"({"mesh": "sheet.obj", "levels": 2, "steps": [
        {"stroke": {"surface": [[0.5, 0.5, 0]]}}, {"save": "a.trovik"}]})");
    ASSERT_EQ(Run("sculpt s.json -q --journal w.journal").status, 0);
    const auto history = ExpectDocumented("history", "history w.journal");
    ASSERT_EQ(history.at("steps").size(), 1u);
    for (const auto& step : history.at("steps"))
        EXPECT_EQ(Keys(step), (Names{"step", "dabs", "vertices", "undoBytes", "finished"}));
    WriteFile("l.json", R"({"mesh": "sheet.obj", "levels": 2, "steps": [
        {"stroke": {"surface": [[0.5, 0.5, 0]]}}]})");
    ASSERT_EQ(Run("sculpt l.json -q --journal l.journal").status, 0);
    const auto lapse =
        ExpectDocumented("history, with --frames",
                         "history l.journal --frames lapse --width 40 --height 30 --samples 1");
    EXPECT_EQ(lapse.at("files"), nlohmann::json({"lapse/frame_0001.png", "lapse/frame_0002.png"}));
    EXPECT_EQ(ExpectDocumented("recover", "recover w.journal -o b.trovik").at("file"), "b.trovik");
    const auto map = ExpectDocumented("bake", "bake a.trovik -o map.exr --size 16");
    EXPECT_EQ(map.at("width"), 16);
    EXPECT_EQ(map.at("bits"), "float");
}

TEST_F(ManPageOfTheCommand, FullStandardOutputIsAnError) {
    if (!fs::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
    const std::string line = "cd '" + folder.string() + "' && '" + TROVIK_COMMAND +
                             "' info cube.obj > /dev/full 2> error.txt";
    EXPECT_EQ(WEXITSTATUS(std::system(line.c_str())), 1);
    EXPECT_EQ(ReadAll(folder / "error.txt"), "trovik: standard output: No space left on device\n");
}

}  // namespace
}  // namespace trovik::test
