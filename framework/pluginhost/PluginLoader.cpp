// SPDX-License-Identifier: Apache-2.0
#include "framework/pluginhost/PluginLoader.h"

#include "framework/errors/HostError.h"
#include "framework/io/ResourceFolders.h"
#include "framework/nodes/HostKernel.h"
#include "framework/pluginhost/PluginContract.h"
#include "framework/pluginhost/ToolCatalogue.h"
#include "host/BrushOperation.h"

#include <algorithm>
#include <dlfcn.h>
#include <filesystem>
#include <map>

namespace trovik {

namespace fs = std::filesystem;

namespace {

struct LoadedPlugin {
    /// The Plugin objects that the file has registered.
    std::vector<Plugin*> records;
    /// The reason why the plug-in was refused; empty if it was not.
    std::string refusal;
};

/// Initialises a plug-in. If one of its tools has the name of another tool, removes all tools of
/// the plug-in again and refuses it.
void Initialise(const std::string& path, LoadedPlugin& plugin) {
    /// The file of each tool that a plug-in has added.
    static std::map<const BrushConfiguration*, std::string> files;
    const uint32_t known = BrushOperation::ConfigurationCount();
    for (Plugin* record : plugin.records) record->Initialise();
    if (BrushOperation::ConfigurationCount() == known) return;
    /// The provider of each name, for messages.
    std::map<QString, std::string> providers;
    for (const char* name : hostToolNames) providers[QString::fromLatin1(name)] = "this program";
    for (uint32_t i = 0; i < BrushOperation::ConfigurationCount(); ++i) {
        const BrushConfiguration* tool = BrushOperation::Configuration(i);
        if (i >= known) files[tool] = path;
        const auto file = files.find(tool);
        const auto [provider, isNew] =
            providers.emplace(tool->Name(), file == files.end() ? "this program" : file->second);
        // A host can add tools of its own with any name.
        if (isNew || i < known) continue;
        plugin.refusal = "the plug-in is refused, because its tool \"" +
                         tool->Name().toStdString() + "\" has the same name as a tool of " +
                         provider->second;
        KeepFirstTools(known);
        return;
    }
}

}  // namespace

std::vector<std::string> PluginFolders() {
    return ResourceFolders(
        "TROVIK_PLUGIN_PATH",
        {TROVIK_INSTALLED_PLUGIN_DIR_FROM_BIN, TROVIK_BUILD_PLUGIN_DIR_FROM_BIN});
}

void LoadPlugin(const std::string& path, bool initialise) {
    static std::map<std::string, LoadedPlugin> opened;
    std::error_code failed;
    const fs::path canonical = fs::canonical(path, failed);
    if (failed) throw HostError(path + ": cannot open the plug-in: " + failed.message());
    auto found = opened.find(canonical.string());
    if (found == opened.end()) {
        // Code that was compiled for other layouts must not run, not even static constructors.
        RequireContract(path);
        // The static objects of plug-ins access the kernel during construction, so it must already
        // exist.
        HostKernel::Instance();
        const unsigned known = Plugin::Count();
        if (dlopen(canonical.c_str(), RTLD_NOW | RTLD_LOCAL) == nullptr)
            throw HostError(path + ": cannot open the plug-in: " + dlerror());
        LoadedPlugin loaded;
        for (unsigned i = known; i < Plugin::Count(); ++i) loaded.records.push_back(Plugin::At(i));
        found = opened.emplace(canonical.string(), std::move(loaded)).first;
    }
    if (!initialise) return;
    Initialise(path, found->second);
    if (!found->second.refusal.empty()) throw HostError(path + ": " + found->second.refusal);
}

void LoadPlugins() {
    for (const std::string& folder : PluginFolders()) {
        std::error_code failed;
        std::vector<std::string> files;
        for (const auto& entry : fs::directory_iterator(folder, failed))
            if (entry.path().extension() == ".so") files.push_back(entry.path().string());
        if (failed)
            throw HostError(folder + ": cannot read the plug-in folder: " + failed.message());
        std::sort(files.begin(), files.end());
        for (const std::string& file : files) LoadPlugin(file);
    }
}

}  // namespace trovik
