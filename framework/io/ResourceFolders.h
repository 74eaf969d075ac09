// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

namespace trovik {

/// Returns the folder of this library's file, with symbolic links resolved; empty if it cannot be
/// determined.
TROVIK_API std::filesystem::path LibraryFolder();

/// Returns the folders to search for files that are installed with the library, in search order. An
/// environment variable lists these folders, separated by colons. If it is not set, the folders in
/// `fromBin` that exist are returned.
/// \param fromBin  paths relative to the folder of Trovik's programs. That folder is found relative
/// to the library, so that other programs that load the library, such as a Python interpreter, find
/// the same files. If none of the paths exists, they are resolved relative to the folder of the
/// running program.
TROVIK_API std::vector<std::string> ResourceFolders(const char* variable,
                                                    std::initializer_list<const char*> fromBin);

}  // namespace trovik
