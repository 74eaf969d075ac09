// SPDX-License-Identifier: Apache-2.0
#include "Commands.h"
#include "Interruption.h"
#include "JsonOutput.h"
#include "ProgressLine.h"
#include "framework/script/ScriptRunner.h"

#include <cstdio>
#include <memory>
#include <sys/resource.h>

namespace trovik {

namespace {

struct SculptOptions {
    std::string script;
    std::string output = ".";
    TraceOptions trace;
    JournalOptions journal;
    bool strict = false;
    bool quiet = false;
    bool json = false;
};

/// Peak resident memory in MiB.
double PeakMemory() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

void PrintSummary(const ScriptResult& result) {
    const double seconds = result.totals.seconds;
    std::printf("mesh            %llu vertices, %llu faces, %u levels\n",
                static_cast<unsigned long long>(result.vertices),
                static_cast<unsigned long long>(result.faces),
                result.levels);
    std::printf("dabs            %llu\n", static_cast<unsigned long long>(result.totals.dabs));
    std::printf("vertices moved  %llu\n",
                static_cast<unsigned long long>(result.totals.verticesMoved));
    std::printf("time in brush   %.3f s\n", seconds);
    std::printf("peak memory     %.0f MiB\n", PeakMemory());
    for (const std::string& file : result.files) std::printf("wrote           %s\n", file.c_str());
}

nlohmann::json StepsJson(const std::vector<StepReport>& steps) {
    nlohmann::json list = nlohmann::json::array();
    for (const StepReport& step : steps) {
        list.push_back({{"pointer", step.pointer},
                        {"step", step.step},
                        {"dabs", step.dabs},
                        {"verticesMoved", step.verticesMoved},
                        {"milliseconds", step.milliseconds},
                        {"warnings", step.warnings}});
    }
    return list;
}

void PrintSummaryJson(const ScriptResult& result, const std::vector<std::string>& warnings) {
    const nlohmann::json summary = {{"vertices", result.vertices},
                                    {"faces", result.faces},
                                    {"levels", result.levels},
                                    {"dabs", result.totals.dabs},
                                    {"verticesMoved", result.totals.verticesMoved},
                                    {"secondsInBrush", result.totals.seconds},
                                    {"peakMemoryMiB", PeakMemory()},
                                    {"files", result.files},
                                    {"steps", StepsJson(result.steps)},
                                    {"warnings", warnings}};
    PrintJson(summary);
}

void Sculpt(const SculptOptions& options) {
    ProgressLine line(options.quiet);
    ScriptProgress progress;
    progress.step = [&line](std::size_t done, std::size_t count, const std::string& what) {
        line.Step(done, count, what);
    };
    progress.dab = [&line] { line.Dab(); };
    progress.file = [&line](uint64_t written, uint64_t total) { line.File(written, total); };
    progress.message = [&line](const std::string& text) { line.Message(text); };
    progress.warning = [&line](const std::string& text) { line.Warning(text); };
    progress.stop = IsInterrupted;
    ScriptRunner runner(options.script, options.output, progress);
    runner.SetStrict(options.strict);
    runner.SetTrace(options.trace);
    runner.SetJournal(options.journal);
    const ScriptResult result = runner.Run();
    line.Finish();
    if (options.json)
        PrintSummaryJson(result, line.Warnings());
    else if (!options.quiet)
        PrintSummary(result);
}

}  // namespace

void AddSculptCommand(CLI::App& program) {
    auto options = std::make_shared<SculptOptions>();
    CLI::App* verb = program.add_subcommand(
        "sculpt",
        "Runs a stroke script: opens a mesh, strokes over it, writes meshes and pictures");
    verb->add_option("script", options->script, "Stroke script (JSON; see docs/stroke-script.md)")
        ->required();
    verb->add_option("-o,--output",
                     options->output,
                     "Folder for the files that the script writes (default: this one)");
    CLI::Option* trace =
        verb->add_option("--trace",
                         options->trace.folder,
                         "Folder for a trace: everything that the brush was given and did, for "
                         "tools/trovik_trace.py and NumPy (see docs/trace.md). An earlier trace in "
                         "it is replaced")
            ->check([](const std::string& folder) {
                return folder.empty() ? std::string("the folder needs a name") : std::string();
            });
    verb->add_option("--trace-every",
                     options->trace.every,
                     "With --trace: the state of the mesh after every Nth dab too")
        ->check(CLI::Range(1u, 1000000000u))
        ->needs(trace);
    CLI::Option* journal =
        verb->add_option("--journal",
                         options->journal.path,
                         "Journal to keep: the inputs of all steps and dabs as they happen, from "
                         "which trovik recover gives the work back after a crash (see "
                         "docs/journal.md)")
            ->check([](const std::string& file) {
                return file.empty() ? std::string("the journal needs a name") : std::string();
            });
    verb->add_flag("--journal-sync",
                   options->journal.syncSteps,
                   "With --journal: waits for the disk after each step, against power failure")
        ->needs(journal);
    verb->add_flag("--strict",
                   options->strict,
                   "Makes warnings errors: the first step without effect, such as a stroke that "
                   "misses the mesh, ends the run");
    verb->add_flag("-q,--quiet", options->quiet, "No progress and no summary");
    verb->add_flag("--json", options->json, "The summary as JSON on standard output");
    verb->callback([options] { Sculpt(*options); });
}

}  // namespace trovik
