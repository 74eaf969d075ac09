// SPDX-License-Identifier: Apache-2.0
#include "Commands.h"
#include "CompletionScripts.h"

#include <cstdio>
#include <memory>

namespace trovik {

void AddCompletionCommand(CLI::App& program) {
    auto shell = std::make_shared<std::string>();
    CLI::App* verb =
        program.add_subcommand("completion", "Prints a shell completion script for this program");
    verb->add_option("shell", *shell, "bash, zsh or fish")
        ->required()
        ->check(CLI::IsMember({"bash", "zsh", "fish"}));
    verb->callback(
        [shell, &program] { std::fputs(CompletionScript(program, *shell).c_str(), stdout); });
}

}  // namespace trovik
