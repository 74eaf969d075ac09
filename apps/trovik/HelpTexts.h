// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace trovik {

/// Adds examples and the meaning of the exit status to the --help of every verb of the program.
/// Must be called after all verbs have been added.
void AddHelpTexts(CLI::App& program);

/// Returns the message `there is no command "X"`, with the most similar command name as a
/// suggestion.
std::string UnknownCommand(const CLI::App& program, const std::string& name);

/// Returns the message for invalid usage: one line that refers to the relevant --help.
std::string UsageError(const CLI::App& program, const CLI::ParseError& error);

}  // namespace trovik
