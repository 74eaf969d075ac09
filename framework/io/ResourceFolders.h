// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <initializer_list>
#include <string>
#include <vector>

namespace trovik {

/// Returns the folders in which files that are installed with the program are searched, in order.
/// These are the folders in an environment variable, separated by colons. If it is not set, they
/// are those folders of `nextToProgram` that exist.
/// \param nextToProgram  relative to the folder of the running program.
TROVIK_API std::vector<std::string> ResourceFolders(
    const char* variable, std::initializer_list<const char*> nextToProgram);

}  // namespace trovik
