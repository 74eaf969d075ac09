// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace trovik {

/// What applications keep in a scene for themselves, such as bookmarks, reference images and the
/// state of windows: bytes by a name that begins with the application's, for example
/// "studio/bookmarks". Every program that opens a scene keeps the entries that it does not know and
/// saves them again. Nothing of a sculpture may depend on them.
using ApplicationData = std::map<std::string, std::vector<uint8_t>>;

}  // namespace trovik
