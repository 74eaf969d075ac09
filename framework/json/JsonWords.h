// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/json/JsonRule.h"

#include <string>
#include <vector>

namespace trovik {

/// What a rule accepts, such as `a number from 0 to 100` or `one of "x", "y", "z"`.
std::string Accepted(const JsonRule& rule);
/// A value in short: texts and numbers as JSON, of arrays their length.
std::string Shown(const nlohmann::json& value);
/// `"a", "b" or "c"` with the given last word between the last two.
std::string Joined(const std::vector<std::string>& words, const std::string& lastWord);
std::string Quoted(const std::string& text);

}  // namespace trovik
