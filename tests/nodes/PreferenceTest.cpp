// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/nodes/PreferenceFile.h"
#include "host/Preferences.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace trovik {
namespace {

using testing::HasSubstr;

Preferences::Bool Switch(const char* key, bool value = false) {
    return {QString::fromLatin1(key),
            QStringLiteral("Category"),
            QStringLiteral("Shown"),
            QStringLiteral("Shown category"),
            value,
            true};
}
Preferences::Float Factor(const char* key, float value) {
    return {QString::fromLatin1(key),
            QStringLiteral("Category"),
            QStringLiteral("Shown"),
            QStringLiteral("Shown category"),
            value,
            0.25f,
            4.0f,
            false};
}

std::string ReasonOf(const std::string& path) {
    try {
        LoadPreferences(path);
    } catch (const HostError& error) {
        return error.what();
    }
    return "";
}

class PreferenceTest : public testing::Test {
protected:
    PreferenceTest() {
        PendingPreferences().clear();
        flag.attribute->SetValue(false, true);
        factor.attribute->SetValue(1.0f, true);
    }
    ~PreferenceTest() override { PendingPreferences().clear(); }

    TemporaryFolder folder;
    Preferences::Bool flag = Switch("test flag");
    Preferences::Float factor = Factor("test factor", 1.0f);
};

TEST_F(PreferenceTest, KeyRegisteredTwiceHasOneAttribute) {
    const Preferences::Bool again = Switch("test flag", true);
    EXPECT_EQ(again.attribute, flag.attribute);
    EXPECT_FALSE(again) << "the value is that of the first registration";
    flag.attribute->SetValue(true);
    EXPECT_TRUE(again);
    EXPECT_EQ(Factor("test factor", 3.0f).attribute, factor.attribute);
}

TEST_F(PreferenceTest, KeyOfTwoTypesHasTwoAttributes) {
    const Preferences::Float other = Factor("test flag", 2.0f);
    EXPECT_EQ(static_cast<float>(other), 2.0f);
    flag.attribute->SetValue(true);
    EXPECT_TRUE(flag);
    EXPECT_EQ(static_cast<float>(other), 2.0f);
}

TEST_F(PreferenceTest, HostFindsThemByKey) {
    EXPECT_EQ(FindPreference("test factor"), factor.attribute);
    EXPECT_EQ(FindPreference("test"), nullptr);
    EXPECT_EQ(FindPreference("test factor "), nullptr);
    EXPECT_THAT(PreferenceKeys(), testing::Contains("test flag").Times(1));
    const PreferenceInfo* info = FindPreferenceInfo("test factor");
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->category, QStringLiteral("Category"));
    EXPECT_EQ(info->label, QStringLiteral("Shown"));
    EXPECT_FALSE(info->advanced);
    EXPECT_TRUE(FindPreferenceInfo("test flag")->advanced);
    EXPECT_EQ(factor.attribute->Category(), QStringLiteral("Shown category"));
    EXPECT_EQ(factor.attribute->Owner()->Name(), QStringLiteral("Preferences"));
}

TEST_F(PreferenceTest, ValueIsClampedToTheRange) {
    factor.attribute->SetValue(100.0f);
    EXPECT_EQ(static_cast<float>(factor), 4.0f);
}

TEST_F(PreferenceTest, ValuesAreRestoredFromTheFile) {
    flag.attribute->SetValue(true, true);
    factor.attribute->SetValue(1.1f, true);
    const std::string path = folder.Path("preferences.json");
    SavePreferences(path);
    EXPECT_EQ(folder.FileCount(), 1u) << "no other file is left";
    flag.attribute->SetValue(false, true);
    factor.attribute->SetValue(2.0f, true);
    LoadPreferences(path);
    EXPECT_TRUE(flag);
    EXPECT_EQ(static_cast<float>(factor), 1.1f);
}

TEST_F(PreferenceTest, FileMayContainPlainNumbersAndBooleans) {
    LoadPreferences(folder.Fill("p", R"({"test flag": true, "test factor": 0.5})"));
    EXPECT_TRUE(flag);
    EXPECT_EQ(static_cast<float>(factor), 0.5f);
}

TEST_F(PreferenceTest, UnknownKeysAreKept) {
    LoadPreferences(folder.Fill("p", R"({"of another program": "7"})"));
    SavePreferences(folder.Path("q"));
    const auto values = nlohmann::json::parse(TemporaryFolder::Content(folder.Path("q")));
    EXPECT_EQ(values.at("of another program"), "7");
    EXPECT_EQ(values.at("test flag"), "false");
}

TEST_F(PreferenceTest, KeyRegisteredLaterGetsItsStoredValue) {
    LoadPreferences(folder.Fill("p", R"({"late flag": "true", "late factor": "x"})"));
    EXPECT_TRUE(Switch("late flag", false));
    EXPECT_EQ(static_cast<float>(Factor("late factor", 3.0f)), 3.0f)
        << "an invalid value leaves the default";
    EXPECT_TRUE(PendingPreferences().empty());
}

TEST_F(PreferenceTest, ErrorNamesFileAndReasonAndChangesNothing) {
    const std::string missing = folder.Path("missing");
    EXPECT_THAT(ReasonOf(missing), HasSubstr(missing + ": cannot read"));
    const std::string broken = folder.Fill("broken", R"({"test flag": )");
    EXPECT_THAT(ReasonOf(broken), HasSubstr(broken + ": line 1, column 15: not valid JSON"));
    const std::string list = folder.Fill("list", "[1]");
    EXPECT_EQ(ReasonOf(list), list + ": /: expected an object, got an array of 1 item");
    const std::string nested = folder.Fill("nested", R"({"test flag": {}})");
    EXPECT_EQ(ReasonOf(nested),
              nested +
                  ": /test flag: expected a string, a number or true or false, got an empty "
                  "object");
    const std::string wrong =
        folder.Fill("wrong", R"({"a": "1", "test factor": "3", "test flag": "maybe"})");
    EXPECT_EQ(ReasonOf(wrong), wrong + ": /test flag: expected true or false, got \"maybe\"");
    const std::string twice = folder.Fill("twice", R"({"test factor": 1, "test factor": 2})");
    EXPECT_EQ(ReasonOf(twice), twice + ": /test factor: the field is given more than once");
    EXPECT_EQ(static_cast<float>(factor), 1.0f);
    EXPECT_TRUE(PendingPreferences().empty());
}

TEST_F(PreferenceTest, UserFileIsLocatedByTheEnvironment) {
    const char* home = std::getenv("HOME");
    const std::string before = home == nullptr ? "" : home;
    setenv("HOME", "/home/someone", 1);
    unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(UserPreferencesPath(), "/home/someone/.config/trovik/preferences.json");
    setenv("XDG_CONFIG_HOME", "relative", 1);
    EXPECT_EQ(UserPreferencesPath(), "/home/someone/.config/trovik/preferences.json");
    setenv("XDG_CONFIG_HOME", "/etc/me", 1);
    EXPECT_EQ(UserPreferencesPath(), "/etc/me/trovik/preferences.json");
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("HOME");
    EXPECT_EQ(UserPreferencesPath(), "");
    if (home != nullptr) setenv("HOME", before.c_str(), 1);
}

TEST_F(PreferenceTest, SavingToAMissingFolderIsAnError) {
    EXPECT_THROW(SavePreferences(folder.Path("no/such/folder")), HostError);
}

}  // namespace
}  // namespace trovik
