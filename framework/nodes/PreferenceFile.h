// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Attribute.h"

#include <map>
#include <string>
#include <vector>

namespace trovik {

/// The strings that a panel shows for a preference.
struct PreferenceInfo {
    QString category;
    QString label;
    QString categoryLabel;
    bool advanced = false;
};

/// Returns the attribute of a preference, or null if the key is not registered.
TROVIK_API Attribute* FindPreference(const std::string& key);
/// Returns null if the key is not registered.
TROVIK_API const PreferenceInfo* FindPreferenceInfo(const std::string& key);
/// Returns all registered keys, sorted.
TROVIK_API std::vector<std::string> PreferenceKeys();
/// Stored values, as text, for keys that are not registered yet. When a key is registered, its
/// value is removed from this map.
TROVIK_API std::map<std::string, std::string>& PendingPreferences();

/// Returns a message stating that a value's type differs from that of the preference.
TROVIK_API std::string WrongPreference(const Attribute& attribute, const std::string& given);

/// Returns the path of the user's preferences file: trovik/preferences.json in $XDG_CONFIG_HOME, by
/// default in ~/.config. The file need not exist. Returns an empty path if the environment defines
/// neither folder.
TROVIK_API std::string UserPreferencesPath();

/// Reads stored values: a JSON object that maps keys to strings, numbers and booleans. Values of
/// unregistered keys are kept for libraries that register them later, and for the next save. If
/// there is an error, no value is applied.
/// \throw HostError with the file name, the key and the reason.
TROVIK_API void LoadPreferences(const std::string& path);
/// Writes all values, as text, to a new file that replaces the old one.
/// \throw HostError.
TROVIK_API void SavePreferences(const std::string& path);

}  // namespace trovik
