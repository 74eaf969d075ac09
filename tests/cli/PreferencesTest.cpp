// SPDX-License-Identifier: Apache-2.0

/// \file Tests which commands read the user's preferences file.
#include "tests/cli/CommandRun.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace trovik::test {
namespace {

using testing::HasSubstr;

class UserPreferences : public Command {
protected:
    UserPreferences() { setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1); }
    ~UserPreferences() override { unsetenv("XDG_CONFIG_HOME"); }

    /// Returns the mesh that a script produces with these options. Its stroke depends on a
    /// preference.
    std::string Sculpted(const std::string& options, const std::string& setUp = "") {
        WriteFile("s.json", R"({"mesh": "cube.obj", "levels": 4, )" + setUp + R"("steps": [
            {"tool": "Wax", "set": {"radius": 0.7, "strength": 60}},
            {"stroke": {"surface": [[0.9, 0.1, 1], [-0.5, 0.3, 1]]}},
            {"export": {"file": "a.ply"}}]})");
        const Outcome outcome = Run("sculpt -q s.json " + options);
        EXPECT_EQ(outcome.status, 0) << outcome.error;
        return ReadAll(folder / "a.ply");
    }
};

TEST_F(UserPreferences, SculptReadsTheFileOnlyOnRequest) {
    const std::string plain = Sculpted("");
    const std::string original =
        Sculpted("", R"("preferences": {"Use Original Data For Flatten": true}, )");
    ASSERT_FALSE(plain == original);
    ASSERT_EQ(Run("preferences 'Use Original Data For Flatten' true").status, 0);
    EXPECT_TRUE(fs::exists(folder / "config/trovik/preferences.json"));
    EXPECT_TRUE(Sculpted("") == plain) << "scripts must give the same result for every user";
    EXPECT_TRUE(Sculpted("--no-preferences") == plain);
    EXPECT_TRUE(Sculpted("--user-preferences --no-preferences") == plain);
    EXPECT_TRUE(Sculpted("--user-preferences") == original);
    EXPECT_TRUE(Sculpted("--preferences config/trovik/preferences.json") == original);
    EXPECT_TRUE(Sculpted("--user-preferences",
                         R"("preferences": {"Use Original Data For Flatten": false}, )") == plain)
        << "the script must take precedence";
}

TEST_F(UserPreferences, AreRecordedInTheJournal) {
    ASSERT_EQ(Run("preferences 'Use Original Data For Flatten' true").status, 0);
    WriteFile("s.json", R"({"mesh": "cube.obj", "levels": 4, "steps": [
        {"tool": "Wax", "set": {"radius": 0.7, "strength": 60}},
        {"stroke": {"surface": [[0.9, 0.1, 1], [-0.5, 0.3, 1]]}}]})");
    ASSERT_EQ(Run("sculpt -q s.json --user-preferences --journal w.journal").status, 0);
    ASSERT_EQ(Run("preferences 'Use Original Data For Flatten' false").status, 0);
    ASSERT_EQ(Run("recover w.journal -o b.trovik -q").status, 0);
    ASSERT_EQ(Run("convert b.trovik b.ply -q").status, 0);
    EXPECT_TRUE(ReadAll(folder / "b.ply") ==
                Sculpted("", R"("preferences": {"Use Original Data For Flatten": true}, )"));
}

TEST_F(UserPreferences, MistakesInTheFileAreReported) {
    EXPECT_EQ(Run("sculpt cube.obj --preferences").status, 2);
    WriteFile("s.json", R"({"mesh": "cube.obj", "steps": []})");
    EXPECT_EQ(Run("sculpt s.json -q --user-preferences").error, "")
        << "the preferences file may be missing";
    EXPECT_EQ(Run("sculpt s.json -q --preferences none.json").error,
              "trovik: none.json: cannot read: No such file or directory\n");
    EXPECT_EQ(Run("sculpt s.json --user-preferences --preferences none.json").status, 2);
    WriteFile("p.json", R"({"Wax Fills Only": 3})");
    EXPECT_EQ(Run("sculpt s.json -q --preferences p.json").error,
              "trovik: p.json: /Wax Fills Only: expected true or false, got 3\n");
    WriteFile("p.json", R"({"Undo Budget": "many"})");
    EXPECT_EQ(Run("sculpt s.json -q --preferences p.json").error,
              "trovik: p.json: /Undo Budget: expected a number, got \"many\"\n");
    WriteFile("p.json", R"({"Wax Fils Only": true, "comment": "mine"})");
    const Outcome unknown = Run("sculpt s.json --preferences p.json");
    EXPECT_EQ(unknown.status, 0);
    EXPECT_THAT(unknown.error,
                HasSubstr("p.json: /Wax Fils Only: unknown preference; did you mean \"Wax Fills "
                          "Only\"?\n"));
    EXPECT_EQ(unknown.error.find("comment"), std::string::npos);
}

TEST_F(UserPreferences, AreListedAndStored) {
    const Outcome before = Run("preferences");
    EXPECT_EQ(before.status, 0) << before.error;
    EXPECT_THAT(before.out, HasSubstr("config/trovik/preferences.json (does not exist yet)\n"));
    EXPECT_THAT(before.out, HasSubstr("  Undo Budget "));
    EXPECT_FALSE(fs::exists(folder / "config"));
    EXPECT_EQ(Run("preferences 'Undo Budget' 64 -q").out, "");
    auto listed = nlohmann::json::parse(Run("preferences --json").out);
    EXPECT_EQ(listed.at("preferences").at("Undo Budget"), 64);
    EXPECT_EQ(listed.at("preferences").at("Wax Fills Only"), false);
    EXPECT_EQ(listed.at("unknown"), nlohmann::json::array());
    EXPECT_EQ(Run("preferences 'Undo Budgit' 64").error,
              "trovik: unknown preference \"Undo Budgit\"; did you mean \"Undo Budget\"?\n");
    EXPECT_EQ(Run("preferences 'Undo Budget' many").error,
              "trovik: Undo Budget: expected a number, got \"many\"\n");
    EXPECT_EQ(Run("preferences 'Undo Budget'").status, 2);
    EXPECT_EQ(Run("preferences --file p.json 'Wax Fills Only' true").status, 0);
    EXPECT_THAT(ReadAll(folder / "p.json"), HasSubstr("\"Wax Fills Only\": \"true\""));
}

}  // namespace
}  // namespace trovik::test
