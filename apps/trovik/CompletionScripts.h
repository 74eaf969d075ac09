// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace trovik {

/// Completion of the program's verbs, options and values for a shell, made from the program itself.
/// \param shell "bash", "zsh" or "fish".
std::string CompletionScript(const CLI::App& program, const std::string& shell);

}  // namespace trovik
