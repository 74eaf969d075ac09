// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Plugin.h"

#include <string>
#include <vector>

namespace trovik {

/// Folders that are searched for plug-ins: those of the environment variable TROVIK_PLUGIN_PATH
/// (separated by colons), or, without it, those beside the running program that exist.
TROVIK_API std::vector<std::string> PluginFolders();

/// Opens one plug-in with the system's loader; a file opened before is left alone. With
/// `initialise` the records that appear run their initialisers. Plug-ins stay open until the
/// process ends. \throw HostError naming the file and the reason.
TROVIK_API void LoadPlugin(const std::string& path, bool initialise = true);

/// Opens every *.so of the plug-in folders, by name in order. \throw HostError when a folder of
/// TROVIK_PLUGIN_PATH does not exist, or a file cannot be opened.
TROVIK_API void LoadPlugins();

}  // namespace trovik
