// SPDX-License-Identifier: Apache-2.0
#include "Commands.h"
#include "JsonOutput.h"
#include "ProgressLine.h"
#include "VariableOption.h"
#include "framework/errors/HostError.h"
#include "framework/errors/PrintableText.h"
#include "framework/json/JsonText.h"
#include "framework/nodes/PreferenceFile.h"
#include "framework/script/ScriptRunner.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <sys/resource.h>

namespace trovik {

namespace {

struct SculptOptions {
    std::string script;
    std::string output = ".";
    JsonVariables variables;
    TraceOptions trace;
    JournalOptions journal;
    bool strict = false;
    std::string preferences;
    bool userPreferences = false;
    bool noPreferences = false;
    bool allowOutside = false;
    bool check = false;
    bool quiet = false;
    bool json = false;
};

/// Returns the peak resident memory in MiB.
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

/// Returns the preferences file to load; empty if there is none.
std::string PreferencesFile(const SculptOptions& options) {
    if (options.noPreferences) return "";
    if (!options.userPreferences) return options.preferences;
    std::string file = UserPreferencesPath();
    std::error_code ignored;
    return std::filesystem::exists(file, ignored) ? file : "";
}

/// Reports the errors in a script. \throw HostError if there are any.
void Check(ScriptRunner& runner, const SculptOptions& options) {
    const std::vector<std::string> faults = runner.Check();
    if (options.json) PrintJson({{"script", options.script}, {"errors", faults}});
    if (faults.size() == 1) throw HostError(faults.front());
    for (const std::string& fault : faults) std::fprintf(stderr, "trovik: %s\n", fault.c_str());
    const std::string name = DocumentName(options.script);
    if (!faults.empty()) throw HostError(name + ": " + std::to_string(faults.size()) + " errors");
    if (!options.quiet && !options.json)
        std::printf("%s: no errors\n", PrintableText(name).c_str());
}

void Sculpt(const SculptOptions& options) {
    ProgressLine line(options.quiet);
    ScriptProgress progress;
    // Checks are too short to need progress output.
    if (!options.check)
        progress.step = [&line](std::size_t done, std::size_t count, const std::string& what) {
            line.Step(done, count, what);
        };
    progress.dab = [&line] { line.Dab(); };
    progress.message = [&line](const std::string& text) { line.Message(text); };
    progress.warning = [&line](const std::string& text) { line.Warning(text); };
    progress.job = &line;
    ScriptRunner runner(options.script, options.output, progress);
    runner.SetStrict(options.strict);
    runner.SetVariables(options.variables);
    runner.AllowOutside(options.allowOutside);
    runner.SetPreferencesFile(PreferencesFile(options));
    if (options.check) {
        Check(runner, options);
        return;
    }
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
        "sculpt", "Runs a stroke script: opens a mesh, applies strokes, writes meshes and images");
    verb->add_option("script",
                     options->script,
                     "Stroke script (JSON; see docs/stroke-script.md); - reads standard input")
        ->required();
    verb->add_option("-o,--output",
                     options->output,
                     "Folder for the files that the script writes (default: the working folder)");
    AddVariableOption(*verb, options->variables);
    verb->add_flag("--allow-outside",
                   options->allowOutside,
                   "Allows the script to write outside the output folder, through absolute paths, "
                   "symbolic links or ..");
    CLI::Option* check = verb->add_flag(
        "--check",
        options->check,
        "Checks the script, the files that it reads and its settings; sculpts and writes nothing");
    verb->add_option(
        "--preferences",
        options->preferences,
        "Preferences file to load before the script's own preferences (default: none)");
    verb->add_flag("--user-preferences",
                   options->userPreferences,
                   "Loads the user's preferences file, if there is one (see trovik preferences)")
        ->excludes("--preferences");
    verb->add_flag("--no-preferences",
                   options->noPreferences,
                   "Loads no preferences file, so that results are the same for every user "
                   "(default; overrides the other two options)");
    CLI::Option* trace = verb->add_option("--trace",
                                          options->trace.folder,
                                          "Folder for a trace of all inputs and effects of the "
                                          "brush, for tools/trovik_trace.py and NumPy (see "
                                          "docs/trace.md). An existing trace in it is replaced")
                             ->check([](const std::string& folder) {
                                 return folder.empty()
                                            ? std::string("the name of the folder is empty")
                                            : std::string();
                             });
    verb->add_option("--trace-every",
                     options->trace.every,
                     "With --trace: also records the state of the mesh after every Nth dab")
        ->check(CLI::Range(1u, 1000000000u))
        ->needs(trace);
    CLI::Option* journal =
        verb->add_option("--journal",
                         options->journal.path,
                         "Journal to write: records the inputs of all steps and dabs as they "
                         "occur, so that trovik recover can restore the work after a crash (see "
                         "docs/journal.md)")
            ->check([](const std::string& file) {
                return file.empty() ? std::string("the name of the journal is empty")
                                    : std::string();
            });
    verb->add_flag("--journal-sync",
                   options->journal.syncSteps,
                   "With --journal: syncs to disk after each step, to survive a power failure")
        ->needs(journal);
    verb->add_flag("--strict",
                   options->strict,
                   "Treats warnings as errors: the first step without effect, such as a stroke "
                   "that misses the mesh, ends the run");
    check->excludes(trace, journal);
    verb->add_flag("-q,--quiet", options->quiet, "Prints no progress and no summary");
    verb->add_flag("--json", options->json, "Prints the summary as JSON on standard output");
    verb->callback([options] { Sculpt(*options); });
}

}  // namespace trovik
