// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/json/JsonVariables.h"

#include <CLI/CLI.hpp>

namespace trovik {

/// Adds the option --set NAME=VALUE, which may be given several times; the last value of a name is
/// used.
/// \param variables  receives the values; must outlive the parsing.
void AddVariableOption(CLI::App& verb, JsonVariables& variables);

}  // namespace trovik
