// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace trovik {

/// Data that applications store in a scene for their own use, such as bookmarks, reference images
/// and window state. Each entry consists of bytes that are stored under a name. The name begins
/// with the name of the application, for example "studio/bookmarks". Every program that opens a
/// scene keeps unknown entries and saves them again. The sculpture itself must not depend on these
/// entries.
using ApplicationData = std::map<std::string, std::vector<uint8_t>>;

}  // namespace trovik
