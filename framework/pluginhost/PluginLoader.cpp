// SPDX-License-Identifier: Apache-2.0
#include "framework/pluginhost/PluginLoader.h"

#include "framework/errors/HostError.h"
#include "framework/io/ResourceFolders.h"
#include "framework/nodes/HostKernel.h"
#include "framework/pluginhost/PluginContract.h"

#include <algorithm>
#include <dlfcn.h>
#include <filesystem>
#include <map>

namespace trovik {

namespace fs = std::filesystem;

std::vector<std::string> PluginFolders() {
    return ResourceFolders(
        "TROVIK_PLUGIN_PATH",
        {TROVIK_INSTALLED_PLUGIN_DIR_FROM_BIN, TROVIK_BUILD_PLUGIN_DIR_FROM_BIN});
}

void LoadPlugin(const std::string& path, bool initialise) {
    /// The Plugin objects that each loaded file has registered.
    static std::map<std::string, std::vector<Plugin*>> opened;
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
        std::vector<Plugin*> records;
        for (unsigned i = known; i < Plugin::Count(); ++i) records.push_back(Plugin::At(i));
        found = opened.emplace(canonical.string(), std::move(records)).first;
    }
    if (!initialise) return;
    for (Plugin* record : found->second) record->Initialise();
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
