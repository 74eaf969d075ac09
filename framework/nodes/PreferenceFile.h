// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Attribute.h"

#include <map>
#include <string>
#include <vector>

namespace trovik {

/// What a panel shows of a preference.
struct PreferenceInfo {
    QString category;
    QString label;
    QString categoryLabel;
    bool advanced = false;
};

/// The attribute behind a preference, or null for a key that nothing registered.
TROVIK_API Attribute* FindPreference(const std::string& key);
/// Null for a key that nothing registered.
TROVIK_API const PreferenceInfo* FindPreferenceInfo(const std::string& key);
/// All registered keys, sorted.
TROVIK_API std::vector<std::string> PreferenceKeys();
/// Stored values, as texts, of keys that nothing registered so far. Registering takes its value
/// out.
TROVIK_API std::map<std::string, std::string>& UnclaimedPreferences();

/// The reason in the message about a value of another type than the preference's.
TROVIK_API std::string WrongPreference(const Attribute& attribute, const std::string& given);

/// The preferences file of the user: trovik/preferences.json in $XDG_CONFIG_HOME, by default in
/// ~/.config. It need not exist. Empty if the environment names neither folder.
TROVIK_API std::string UserPreferencesPath();

/// Reads stored values: a JSON object of texts, numbers and truth values by key. Keys that nothing
/// registered are kept, for a library that registers them later and for the next saving. Either all
/// values are taken or, on an error, none. \throw HostError naming the file, the key and the
/// reason.
TROVIK_API void LoadPreferences(const std::string& path);
/// Writes all values, as texts, beside the old file and renames. \throw HostError.
TROVIK_API void SavePreferences(const std::string& path);

}  // namespace trovik
