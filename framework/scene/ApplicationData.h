// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace trovik {

/// Data that applications store in a scene for their own use, such as bookmarks, reference images
/// and window state: bytes under a name that begins with the application's name, for example
/// "studio/bookmarks". Every program that opens a scene keeps unknown entries and saves them again.
/// No part of a sculpture may depend on them.
using ApplicationData = std::map<std::string, std::vector<uint8_t>>;

}  // namespace trovik
