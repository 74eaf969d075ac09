// SPDX-License-Identifier: Apache-2.0
#include "BatchRun.h"
#include "Commands.h"
#include "JsonOutput.h"
#include "ProgressLine.h"
#include "VariableOption.h"
#include "framework/errors/HostError.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <memory>

namespace trovik {

namespace {

nlohmann::json SummaryJson(const BatchOptions& options, const BatchRun& run) {
    nlohmann::json list = nlohmann::json::array();
    for (std::size_t i = 0; i < run.Inputs().size(); ++i)
        list.push_back(ReportJson(run.Inputs()[i], run.Reports()[i]));
    return {{"script", options.script},
            {"output", options.output},
            {"state", run.StatePath()},
            {"done", run.Count(InputStatus::Done)},
            {"skipped", run.Count(InputStatus::Skipped)},
            {"failed", run.Count(InputStatus::Failed)},
            {"inputs", list}};
}

void PrintSummary(const BatchOptions& options, const BatchRun& run) {
    std::size_t files = 0;
    for (const InputReport& report : run.Reports())
        if (report.status == InputStatus::Done) files += report.files.size();
    std::printf("%zu inputs: %zu done, %zu skipped, %zu failed; wrote %zu files to %s\n",
                run.Inputs().size(),
                run.Count(InputStatus::Done),
                run.Count(InputStatus::Skipped),
                run.Count(InputStatus::Failed),
                files,
                options.output.c_str());
}

void RunBatch(const BatchOptions& options) {
    ProgressLine line(options.quiet);
    BatchRun batch(options, line);
    batch.Run();
    line.Finish();
    if (options.json)
        PrintJson(SummaryJson(options, batch));
    else if (!options.quiet)
        PrintSummary(options, batch);
    const std::size_t failed = batch.Count(InputStatus::Failed);
    if (failed != 0)
        throw HostError(std::to_string(failed) + " of " + std::to_string(batch.Inputs().size()) +
                        " inputs failed");
}

}  // namespace

void AddBatchCommand(CLI::App& program) {
    auto options = std::make_shared<BatchOptions>();
    CLI::App* verb = program.add_subcommand(
        "batch",
        "Runs a stroke script for each of many meshes, in parallel. The script uses the variables "
        "${input}, ${name}, ${stem} and ${output} in its strings (see docs/stroke-script.md). "
        "Inputs that have not changed since the last run are skipped");
    verb->add_option("script", options->script, "Stroke script (JSON)")->required();
    verb->add_option("inputs", options->inputs, "Mesh files, and folders of mesh files")
        ->required();
    verb->add_option("-o,--output",
                     options->output,
                     "Folder for the files that the script writes (default: the working folder)");
    verb->add_option("--format",
                     options->format,
                     "File name extension of ${output} (default: that of the input)")
        ->check([](const std::string& format) {
            return format.empty() || format.find_first_of("./") != std::string::npos
                       ? "expected an extension without a dot, got \"" + format + "\""
                       : std::string();
        });
    AddVariableOption(*verb, options->variables);
    verb->add_option("-j,--jobs",
                     options->jobs,
                     "Number of processes at a time (default: the number of processors); each "
                     "needs the memory of its mesh")
        ->check(CLI::Range(1u, 1024u));
    verb->add_option("--state",
                     options->state,
                     "State file, which lists finished inputs (default: trovik-batch.json in the "
                     "output folder)");
    verb->add_flag("--again", options->again, "Also processes inputs that have not changed");
    verb->add_flag(
        "--strict", options->strict, "Treats warnings as errors, like trovik sculpt --strict");
    verb->add_flag("-q,--quiet", options->quiet, "Prints no progress and no summary");
    verb->add_flag("--json", options->json, "Prints the summary as JSON on standard output");
    verb->callback([options] { RunBatch(*options); });
}

}  // namespace trovik
