// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <initializer_list>
#include <string>
#include <vector>

namespace trovik {

/// Where files that come with the program are looked for, first to last: the folders that an
/// environment variable lists, separated by colons, or else those of `besideProgram` that exist.
/// \param besideProgram  relative to the folder of the running program.
TROVIK_API std::vector<std::string> ResourceFolders(
    const char* variable, std::initializer_list<const char*> besideProgram);

}  // namespace trovik
