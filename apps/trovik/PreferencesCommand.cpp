// SPDX-License-Identifier: Apache-2.0
#include "Commands.h"
#include "JsonOutput.h"
#include "framework/errors/HostError.h"
#include "framework/errors/Suggestion.h"
#include "framework/history/UndoPreferences.h"
#include "framework/nodes/PreferenceFile.h"
#include "framework/pluginhost/PluginLoader.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <filesystem>
#include <memory>

namespace trovik {

namespace {

namespace fs = std::filesystem;

struct PreferencesOptions {
    std::string file;
    std::string key;
    std::string value;
    bool quiet = false;
    bool json = false;
};

void Store(const PreferencesOptions& options, const std::string& file) {
    Attribute* attribute = FindPreference(options.key);
    if (attribute == nullptr)
        throw HostError("unknown preference \"" + options.key + "\"" +
                        Suggestion(options.key, PreferenceKeys()));
    if (!attribute->SetFromString(QString::fromStdString(options.value)))
        throw HostError(options.key + ": " +
                        WrongPreference(*attribute, "\"" + options.value + "\""));
    std::error_code failed;
    const fs::path folder = fs::path(file).parent_path();
    if (!folder.empty()) fs::create_directories(folder, failed);
    if (failed)
        throw HostError("cannot create the folder " + folder.string() + ": " + failed.message());
    SavePreferences(file);
}

void Print(const PreferencesOptions& options, const std::string& file) {
    nlohmann::json values = nlohmann::json::object();
    for (const std::string& key : PreferenceKeys()) {
        const std::string text = FindPreference(key)->AsString().toStdString();
        const nlohmann::json value = nlohmann::json::parse(text, nullptr, false);
        values[key] = value.is_discarded() ? nlohmann::json(text) : value;
    }
    if (options.json) {
        nlohmann::json unknown = nlohmann::json::array();
        for (const auto& [key, ignored] : PendingPreferences()) unknown.push_back(key);
        PrintJson({{"file", file}, {"preferences", values}, {"unknown", unknown}});
        return;
    }
    if (options.quiet) return;
    std::error_code ignored;
    std::printf("%s%s\n", file.c_str(), fs::exists(file, ignored) ? "" : " (does not exist yet)");
    for (const auto& [key, value] : values.items())
        std::printf("  %-32s %s\n", key.c_str(), value.dump().c_str());
    for (const auto& [key, ignoredValue] : PendingPreferences())
        std::printf("  %-32s unknown\n", key.c_str());
}

void RunPreferences(const PreferencesOptions& options) {
    const std::string file = options.file.empty() ? UserPreferencesPath() : options.file;
    if (file.empty())
        throw HostError(
            "there is no preferences file, because HOME is not set to a folder; use --file");
    RegisterUndoPreferences();
    LoadPlugins();
    std::error_code ignored;
    if (fs::exists(file, ignored)) LoadPreferences(file);
    if (!options.key.empty()) Store(options, file);
    Print(options, file);
}

}  // namespace

void AddPreferencesCommand(CLI::App& program) {
    auto options = std::make_shared<PreferencesOptions>();
    CLI::App* verb = program.add_subcommand(
        "preferences",
        "Lists the user's preferences, or stores one; sculpt reads them with --user-preferences");
    CLI::Option* key = verb->add_option("key", options->key, "Preference to store");
    CLI::Option* value = verb->add_option("value", options->value, "Value of the preference");
    key->needs(value);
    verb->add_option("--file",
                     options->file,
                     "Preferences file (default: trovik/preferences.json in "
                     "$XDG_CONFIG_HOME or ~/.config)");
    verb->add_flag("-q,--quiet", options->quiet, "Prints nothing");
    verb->add_flag("--json", options->json, "Prints JSON on standard output");
    verb->callback([options] { RunPreferences(*options); });
}

}  // namespace trovik
