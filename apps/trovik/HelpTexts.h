// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace trovik {

/// Gives every verb that was added to the program its examples and the meaning of the exit status,
/// shown at the end of its --help.
void AddHelpTexts(CLI::App& program);

/// `there is no command "X"`, with the one that was probably meant.
std::string UnknownCommand(const CLI::App& program, const std::string& name);

/// Wrong usage as one line, with the help to ask for.
std::string UsageError(const CLI::App& program, const CLI::ParseError& error);

}  // namespace trovik
