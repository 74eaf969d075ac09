// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/json/JsonFault.h"

#include <nlohmann/json.hpp>

#include <map>
#include <string>
#include <vector>

namespace trovik {

/// Values of the variables of a document, by name.
using JsonVariables = std::map<std::string, std::string>;

/// Returns whether a variable can have this name: ASCII letters, digits and underscores, not
/// starting with a digit.
TROVIK_API bool IsVariableName(const std::string& name);

/// Replaces `${NAME}` in all string values of a document with the variable's value, which is not
/// searched for further variables. `$${` stands for `${`. Field names, values of other types and
/// "comment" fields are not changed.
/// \return the faults, in document order: strings with an unknown variable, or with `${` that does
/// not begin a variable. Such strings are not changed.
TROVIK_API std::vector<JsonFault> ReplaceVariables(nlohmann::json& document,
                                                   const JsonVariables& variables);

}  // namespace trovik
