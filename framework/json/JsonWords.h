// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/json/JsonRule.h"

#include <string>
#include <vector>

namespace trovik {

/// Describes the values that a rule accepts, such as `a number from 0 to 100` or `one of "x", "y",
/// "z"`.
std::string Accepted(const JsonRule& rule);
/// Returns a brief description of a value: strings and numbers as JSON, arrays by their length.
std::string Shown(const nlohmann::json& value);
/// Joins the items as in `"a", "b" or "c"`, with the given word before the last item.
std::string Joined(const std::vector<std::string>& words, const std::string& lastWord);
std::string Quoted(const std::string& text);

}  // namespace trovik
