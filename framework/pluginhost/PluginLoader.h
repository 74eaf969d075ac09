// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Plugin.h"

#include <string>
#include <vector>

namespace trovik {

/// Returns the folders that are searched for plug-ins. The environment variable TROVIK_PLUGIN_PATH
/// lists them, separated by colons. If it is not set, the default folders next to the running
/// program are returned, except those that do not exist.
TROVIK_API std::vector<std::string> PluginFolders();

/// Loads a plug-in with the system loader. A file that is already loaded is skipped. If
/// `initialise` is set, the Plugin objects that the file registers are initialised. Plug-ins stay
/// loaded until the process ends.
///
/// The names of tools are unique: a plug-in is refused if one of its tools has the name of a tool
/// that is already in the catalogue, or of one of the host's own tools. None of its tools is then
/// available. \throw HostError with the file and the reason: a file that cannot be opened; another
/// version of the contract (host/Contract.h), in which case none of the plug-in's code has run; a
/// tool name that is in use, with the file of the other tool.
TROVIK_API void LoadPlugin(const std::string& path, bool initialise = true);

/// Loads every *.so file in the plug-in folders, in alphabetical order.
/// \throw HostError if a folder of TROVIK_PLUGIN_PATH does not exist or a file cannot be loaded.
TROVIK_API void LoadPlugins();

}  // namespace trovik
