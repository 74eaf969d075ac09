// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>

namespace trovik {

/// The exit statuses of the program. A verb with other conventions sets them in its callback.
struct ExitStatuses {
    int done = 0;
    /// After an exception.
    int failed = 1;
};

/// Each function adds one verb to the program. A verb runs in its callback and reports failure by
/// throwing HostError.
void AddSculptCommand(CLI::App& program);
void AddBakeCommand(CLI::App& program);
void AddBatchCommand(CLI::App& program);
void AddInfoCommand(CLI::App& program);
void AddConvertCommand(CLI::App& program);
void AddRenderCommand(CLI::App& program);
/// `diff` sets the statuses of the diff tool: 1 for a difference, 2 for a failure.
void AddDiffCommand(CLI::App& program, ExitStatuses& statuses);
void AddToolsCommand(CLI::App& program);
void AddTurntableCommand(CLI::App& program);
void AddRecoverCommand(CLI::App& program);
void AddHistoryCommand(CLI::App& program);
void AddPreferencesCommand(CLI::App& program);
void AddCompletionCommand(CLI::App& program);
/// Must be added last: the verb `help` lists the verbs that were added before it.
void AddHelpCommand(CLI::App& program);

}  // namespace trovik
