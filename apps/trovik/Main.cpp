// SPDX-License-Identifier: Apache-2.0
#include "Commands.h"
#include "HelpTexts.h"
#include "Interruption.h"
#include "framework/errors/Cancelled.h"
#include "framework/errors/PrintableText.h"
#include "host/Error.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>

namespace {

constexpr int startFailed = 1;
constexpr int diffFailed = 2;
constexpr int wrongUsage = 2;

int Fail(std::string reason, int status) {
    std::replace(reason.begin(), reason.end(), '\n', ' ');
    std::fprintf(stderr, "trovik: %s\n", trovik::PrintableText(reason).c_str());
    return status;
}

/// Returns the exit status of a failure before the verb's own callback runs.
int EarlyFailureStatus(int argc, char** argv) {
    // The status 1 of `diff` stands for a difference.
    return argc > 1 && std::strcmp(argv[1], "diff") == 0 ? diffFailed : startFailed;
}

int Run(int argc, char** argv) {
    CLI::App program(
        "Sculpts meshes from scripts, without a display.\n\n"
        "  trovik info head.obj                 report the content of a mesh file\n"
        "  trovik sculpt bust.json              run a stroke script\n"
        "  trovik render head.obj head.png      render an image of a mesh\n"
        "  trovik turntable head.obj spin.mp4   render a mesh from all sides\n"
        "  trovik batch wear.json meshes -o out run a script for each mesh of a folder\n"
        "  trovik convert head.obj head.glb     write a mesh in another format\n"
        "  trovik diff old.obj new.obj          measure the distance between two meshes\n"
        "  trovik bake head.trovik -o head.exr  bake sculpted detail into a map\n"
        "  trovik tools                         list the tools of the brush\n"
        "  trovik recover w.journal -o w.trovik restore the work from a journal after a crash\n"
        "  trovik history w.journal             list the steps of a journal\n\n"
        "`trovik help COMMAND` prints the options of a command with examples. Start with "
        "docs/tutorial.md.\n",
        "trovik");
    program.footer(
        "Exit status: 0 success; 1 failure, with the reason in one line on standard error; 2 "
        "invalid usage; 130 interrupted by Ctrl-C. `diff` has its own: see trovik help diff.");
    program.set_version_flag("--version", std::string("trovik ") + TROVIK_VERSION);
    trovik::ExitStatuses statuses;
    statuses.failed = EarlyFailureStatus(argc, argv);
    program.require_subcommand(1);
    trovik::AddSculptCommand(program);
    trovik::AddInfoCommand(program);
    trovik::AddRenderCommand(program);
    trovik::AddConvertCommand(program);
    trovik::AddTurntableCommand(program);
    trovik::AddBatchCommand(program);
    trovik::AddBakeCommand(program);
    trovik::AddDiffCommand(program, statuses);
    trovik::AddToolsCommand(program);
    trovik::AddRecoverCommand(program);
    trovik::AddHistoryCommand(program);
    trovik::AddPreferencesCommand(program);
    trovik::AddCompletionCommand(program);
    trovik::AddHelpCommand(program);
    trovik::AddHelpTexts(program);
    trovik::InstallInterruptionHandlers();
    trovik::IgnoreFileSizeSignal();
    trovik::RestoreChildSignal();
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0) return Fail(trovik::UsageError(program, error), wrongUsage);
        program.exit(error);
    } catch (const trovik::Cancelled&) {
        return Fail("interrupted", trovik::InterruptionStatus());
    } catch (const std::bad_alloc&) {
        return Fail("out of memory", statuses.failed);
    } catch (const std::exception& error) {
        return Fail(error.what(), statuses.failed);
    } catch (trovik::Error* error) {
        const std::string reason = error->Message().toStdString();
        trovik::Error::Dispose(error);
        return Fail(reason, statuses.failed);
    }
    // A full disk may be detected only here, when the last buffered output is written.
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        return Fail(std::string("standard output: ") + std::strerror(errno), statuses.failed);
    return statuses.done;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        // Thrown before the command line was parsed, or while an error was reported.
        std::fprintf(stderr, "trovik: %s\n", error.what());
        return EarlyFailureStatus(argc, argv);
    }
}
