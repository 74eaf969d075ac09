// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace trovik {

/// Returns the completion script for a shell, generated from the verbs, options and values of the
/// program.
/// \param shell "bash", "zsh" or "fish".
std::string CompletionScript(const CLI::App& program, const std::string& shell);

}  // namespace trovik
