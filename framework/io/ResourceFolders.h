// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <initializer_list>
#include <string>
#include <vector>

namespace trovik {

/// Returns the folders to search for files that are installed with the program, in search order. An
/// environment variable lists these folders, separated by colons. If it is not set, the folders in
/// `nextToProgram` that exist are returned.
/// \param nextToProgram  relative to the folder of the running program.
TROVIK_API std::vector<std::string> ResourceFolders(
    const char* variable, std::initializer_list<const char*> nextToProgram);

}  // namespace trovik
