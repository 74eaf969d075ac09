// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Attribute.h"

#include <string>
#include <vector>

namespace trovik {

/// The attribute behind a preference, or null for a key that nothing registered.
TROVIK_API Attribute* FindPreference(const std::string& key);
/// All registered keys, sorted.
TROVIK_API std::vector<std::string> PreferenceKeys();

/// Reads stored values, a JSON object of texts by key. Keys that nothing registered are kept for
/// the next saving. \throw HostError naming the file and the reason.
TROVIK_API void LoadPreferences(const std::string& path);
/// Writes all values beside the old file and renames. \throw HostError.
TROVIK_API void SavePreferences(const std::string& path);

}  // namespace trovik
