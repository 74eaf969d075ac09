// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/freeze/FreezeBrush.h"
#include "framework/grab/GrabBrush.h"
#include "framework/nodes/PreferenceFile.h"
#include "framework/pluginhost/PluginLoader.h"
#include "framework/pluginhost/ToolCatalogue.h"
#include "host/BrushOperation.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <optional>

namespace trovik {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using testing::UnorderedElementsAreArray;

/// Sets TROVIK_PLUGIN_PATH until the end of the scope.
class PluginPath {
public:
    explicit PluginPath(const std::string& value) {
        if (const char* old = std::getenv(name)) before = old;
        setenv(name, value.c_str(), 1);
    }
    ~PluginPath() {
        if (before)
            setenv(name, before->c_str(), 1);
        else
            unsetenv(name);
    }
    PluginPath(const PluginPath&) = delete;
    PluginPath& operator=(const PluginPath&) = delete;

private:
    static constexpr const char* name = "TROVIK_PLUGIN_PATH";
    std::optional<std::string> before;
};

std::string ReasonOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const HostError& error) {
        return error.what();
    }
    return "";
}

Plugin* FindPlugin(const QString& name) {
    for (unsigned i = 0; i < Plugin::Count(); ++i)
        if (Plugin::At(i)->Name() == name) return Plugin::At(i);
    return nullptr;
}

TEST(Plugin, RecordsAreListedDuringTheirLifetime) {
    static int runs = 0;
    const unsigned before = Plugin::Count();
    {
        Plugin record(QStringLiteral("n"),
                      QStringLiteral("d"),
                      QStringLiteral("a"),
                      QStringLiteral("w"),
                      QStringLiteral("t"),
                      [] { ++runs; });
        ASSERT_EQ(Plugin::Count(), before + 1);
        EXPECT_EQ(Plugin::At(before), &record);
        EXPECT_EQ(record.Description(), QStringLiteral("d"));
        EXPECT_EQ(record.Author(), QStringLiteral("a"));
        EXPECT_EQ(record.Address(), QStringLiteral("w"));
        EXPECT_EQ(record.Date(), QStringLiteral("t"));
        EXPECT_FALSE(record.IsInitialised());
        record.Initialise();
        record.Initialise();
        EXPECT_TRUE(record.IsInitialised());
        EXPECT_EQ(runs, 1);
    }
    EXPECT_EQ(Plugin::Count(), before);
    EXPECT_EQ(Plugin::At(before), nullptr);
}

TEST(PluginLoader, EnvironmentVariableListsFoldersInOrder) {
    const PluginPath path("/first::/second/one");
    EXPECT_THAT(PluginFolders(), ElementsAre("/first", "/second/one"));
}

TEST(PluginLoader, WithoutTheVariableMissingFoldersAreSkipped) {
    const PluginPath path("");
    for (const std::string& folder : PluginFolders())
        EXPECT_TRUE(std::filesystem::is_directory(folder)) << folder;
}

TEST(PluginLoader, MissingFolderIsNamed) {
    const TemporaryFolder folder;
    const std::string missing = folder.Path("no-plugins-here");
    const PluginPath path(missing);
    EXPECT_THAT(ReasonOf(LoadPlugins),
                HasSubstr(missing + ": cannot read the plug-in folder: No such file"));
}

TEST(PluginLoader, InvalidLibraryIsNamedWithTheReasonOfTheLoader) {
    const TemporaryFolder folder;
    const std::string file = folder.Fill("broken.so", "this is not a library");
    folder.Fill("readme.txt", "not looked at");
    const PluginPath path(folder.Path(""));
    const std::string reason = ReasonOf(LoadPlugins);
    EXPECT_THAT(reason, HasSubstr("broken.so: cannot open the plug-in: "));
    EXPECT_THAT(reason, HasSubstr("file too short"));
    EXPECT_THAT(ReasonOf([&] { LoadPlugin(folder.Path("none.so")); }),
                HasSubstr("none.so: cannot open the plug-in: No such file"));
}

TEST(PluginLoader, EmptyFolderIsAccepted) {
    const TemporaryFolder folder;
    const PluginPath path(folder.Path(""));
    EXPECT_EQ(ReasonOf(LoadPlugins), "");
}

TEST(PluginLoader, ListsTheNamesOfTheHostsOwnTools) {
    std::vector<std::string> names = {FreezeBrush::Tool()->Name().toStdString()};
    for (const BrushConfiguration* tool : GrabBrush::Tools())
        names.push_back(tool->Name().toStdString());
    EXPECT_THAT(names, UnorderedElementsAreArray(hostToolNames));
}

// This is a single test, since loaded plug-ins stay loaded.
TEST(PluginLoader, OpensRegistersAndInitialisesOnce) {
    const std::string file = TROVIK_SAMPLE_PLUGIN;
    const uint32_t rows = BrushOperation::ConfigurationCount();
    const unsigned records = Plugin::Count();
    ASSERT_EQ(ClassDesc::ByName(QStringLiteral("SampleBrush")), nullptr);

    LoadPlugin(file, false);
    EXPECT_EQ(Plugin::Count(), records + 1);
    EXPECT_EQ(BrushOperation::ConfigurationCount(), rows) << "opened, not initialised";
    const ClassDesc* desc = ClassDesc::ByName(QStringLiteral("SampleBrush"));
    ASSERT_NE(desc, nullptr);
    EXPECT_EQ(desc->Version(), 3);
    EXPECT_NE(FindPreference("Sample Preference"), nullptr);
    ASSERT_NE(FindPlugin(QStringLiteral("Sample")), nullptr);
    EXPECT_FALSE(FindPlugin(QStringLiteral("Sample"))->IsInitialised());

    LoadPlugin(file);
    ASSERT_EQ(BrushOperation::ConfigurationCount(), rows + 1);
    EXPECT_EQ(BrushOperation::Configuration(rows)->ID(), 77u);
    EXPECT_EQ(BrushOperation::Configuration(rows)->BrushClass(), desc);

    LoadPlugin(file);
    const TemporaryFolder folder;
    std::filesystem::create_symlink(file, folder.Path("again.so"));
    const PluginPath path(folder.Path(""));
    LoadPlugins();
    EXPECT_EQ(Plugin::Count(), records + 1);
    EXPECT_EQ(BrushOperation::ConfigurationCount(), rows + 1);
}

TEST(PluginLoader, RefusesAPluginWhoseToolHasTheNameOfAnotherTool) {
    LoadPlugin(TROVIK_SAMPLE_PLUGIN);
    const uint32_t rows = BrushOperation::ConfigurationCount();
    const std::string refusal =
        ": the plug-in is refused, because its tool \"Sample\" has the same name as a tool of ";
    // Refused again by each further attempt.
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_THAT(
            ReasonOf([] { LoadPlugin(TROVIK_TWIN_SAMPLE_PLUGIN); }),
            AllOf(StartsWith(TROVIK_TWIN_SAMPLE_PLUGIN + refusal), EndsWith("SamplePlugin.so")));
        EXPECT_EQ(BrushOperation::ConfigurationCount(), rows)
            << "the other tool of the plug-in was kept";
    }
    EXPECT_EQ(ReasonOf([] { LoadPlugin(TROVIK_TWIN_FREEZE_PLUGIN); }),
              TROVIK_TWIN_FREEZE_PLUGIN +
                  std::string(": the plug-in is refused, because its tool \"Freeze\" has the same "
                              "name as a tool of this program"));
    EXPECT_EQ(BrushOperation::ConfigurationCount(), rows);

    const TemporaryFolder folder;
    std::filesystem::create_symlink(TROVIK_SAMPLE_PLUGIN, folder.Path("a.so"));
    std::filesystem::create_symlink(TROVIK_TWIN_SAMPLE_PLUGIN, folder.Path("b.so"));
    const PluginPath path(folder.Path(""));
    EXPECT_THAT(ReasonOf(LoadPlugins), HasSubstr("b.so" + refusal));
}

}  // namespace
}  // namespace trovik
