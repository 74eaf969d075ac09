// SPDX-License-Identifier: Apache-2.0
#include "BatchInputs.h"
#include "BatchReport.h"
#include "BatchScript.h"
#include "BatchState.h"
#include "ChildProcess.h"
#include "Commands.h"
#include "Interruption.h"
#include "JsonOutput.h"
#include "ProgressLine.h"
#include "VariableOption.h"
#include "framework/errors/Cancelled.h"
#include "framework/errors/HostError.h"
#include "framework/errors/PrintableText.h"
#include "framework/io/ContentHash.h"
#include "framework/io/FilePath.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <thread>

namespace trovik {

namespace {

namespace fs = std::filesystem;

constexpr auto pollInterval = std::chrono::milliseconds(5);

struct BatchOptions {
    std::string script;
    std::vector<std::string> inputs;
    std::string output = ".";
    std::string format;
    JsonVariables variables;
    /// 0 for the number of processors.
    unsigned jobs = 0;
    /// Empty for the default in the output folder.
    std::string state;
    bool again = false;
    bool strict = false;
    bool quiet = false;
    bool json = false;
};

class Batch {
public:
    Batch(const BatchOptions& batchOptions, ProgressLine& progress)
        : options(batchOptions),
          line(progress),
          program(ThisProgram()),
          inputs(ListBatchInputs(options.inputs,
                                 options.output,
                                 options.format.empty() ? "" : "." + options.format,
                                 options.variables)),
          reports(inputs.size()) {
        CheckBatchScript(options.script, inputs, options.output);
        std::error_code failed;
        fs::create_directories(options.output, failed);
        if (failed)
            throw HostError("cannot create the folder " + options.output + ": " + failed.message());
        outputPath = fs::canonical(options.output).string();
        CheckWritable(StatePath());
        state = std::make_unique<BatchState>(StatePath());
    }

    /// Ends all processes after an error.
    ~Batch() {
        for (const ActiveInput& one : active) one.process->Terminate();
    }
    Batch(const Batch&) = delete;
    Batch& operator=(const Batch&) = delete;

    /// \throw Cancelled after an interruption, when all processes have ended.
    void Run() {
        if (options.again) ForgetAll();
        const unsigned processors = std::max(1u, std::thread::hardware_concurrency());
        const std::size_t limit = options.jobs == 0 ? processors : options.jobs;
        std::size_t next = 0;
        while (next < inputs.size() || !active.empty()) {
            if (IsInterrupted()) Stop();
            if (next < inputs.size() && active.size() < limit) {
                Start(next++);
                continue;
            }
            std::this_thread::sleep_for(pollInterval);
            FinishEnded();
        }
        if (IsInterrupted()) Stop();
    }

    std::size_t Count(InputStatus status) const {
        return static_cast<std::size_t>(
            std::count_if(reports.begin(), reports.end(), [status](const InputReport& report) {
                return report.status == status;
            }));
    }

    nlohmann::json Json() const {
        nlohmann::json list = nlohmann::json::array();
        for (std::size_t i = 0; i < inputs.size(); ++i)
            list.push_back(ReportJson(inputs[i], reports[i]));
        return {{"script", options.script},
                {"output", options.output},
                {"state", StatePath()},
                {"done", Count(InputStatus::Done)},
                {"skipped", Count(InputStatus::Skipped)},
                {"failed", Count(InputStatus::Failed)},
                {"inputs", list}};
    }

    void PrintSummary() const {
        std::size_t files = 0;
        for (const InputReport& report : reports)
            if (report.status == InputStatus::Done) files += report.files.size();
        std::printf("%zu inputs: %zu done, %zu skipped, %zu failed; wrote %zu files to %s\n",
                    inputs.size(),
                    Count(InputStatus::Done),
                    Count(InputStatus::Skipped),
                    Count(InputStatus::Failed),
                    files,
                    options.output.c_str());
    }

    std::size_t InputCount() const { return inputs.size(); }

private:
    struct ActiveInput {
        std::size_t index;
        nlohmann::json key;
        std::unique_ptr<ChildProcess> process;
        std::chrono::steady_clock::time_point start;
    };

    std::string StatePath() const {
        return options.state.empty() ? (fs::path(options.output) / "trovik-batch.json").string()
                                     : options.state;
    }

    /// Returns everything that determines the result of an input, apart from files that the script
    /// reads in addition to it.
    nlohmann::json KeyOf(const BatchInput& input) const {
        return {{"program", TROVIK_VERSION},
                {"script", HashFile(options.script).sha256},
                {"content", HashFile(input.absolutePath).sha256},
                {"output", outputPath},
                {"strict", options.strict},
                {"variables", input.variables}};
    }

    /// Removes all inputs from the state, so that a run after an interruption does not skip those
    /// that have not been processed again.
    void ForgetAll() {
        std::vector<std::string> paths;
        for (const BatchInput& input : inputs) paths.push_back(input.absolutePath);
        state->Remove(paths);
    }

    void Start(std::size_t index) {
        const BatchInput& input = inputs[index];
        InputReport& report = reports[index];
        try {
            nlohmann::json key = KeyOf(input);
            if (!options.again && state->IsDone(input.absolutePath, key)) {
                report.files = state->FilesOf(input.absolutePath);
                CheckFiles(index);
                Finish(index, InputStatus::Skipped);
                return;
            }
            state->Remove({input.absolutePath});
            std::vector<std::string> arguments = {
                program, "sculpt", options.script, "-o", options.output, "-q", "--json"};
            if (options.strict) arguments.emplace_back("--strict");
            for (const auto& [name, value] : input.variables)
                arguments.insert(arguments.end(), {"--set", name + "=" + value});
            active.push_back({index,
                              std::move(key),
                              std::make_unique<ChildProcess>(arguments),
                              std::chrono::steady_clock::now()});
        } catch (const HostError& error) {
            report.error = error.what();
            Finish(index, InputStatus::Failed);
        }
    }

    void FinishEnded() {
        const auto ended =
            std::stable_partition(active.begin(), active.end(), [](const ActiveInput& one) {
                return !one.process->HasEnded();
            });
        const std::vector<ActiveInput> finished(std::make_move_iterator(ended),
                                                std::make_move_iterator(active.end()));
        active.erase(ended, active.end());
        for (const ActiveInput& one : finished) Collect(one);
    }

    /// Records the result of an input whose process has ended.
    void Collect(const ActiveInput& one) {
        InputReport& report = reports[one.index];
        const ChildResult result = one.process->Wait();
        report.seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - one.start).count();
        ReadMessages(result, report);
        if (result.status != 0) {
            Finish(one.index, InputStatus::Failed);
            return;
        }
        try {
            for (const nlohmann::json& file :
                 nlohmann::json::parse(result.out).value("files", nlohmann::json::array()))
                report.files.push_back(fs::absolute(file.get<std::string>()).lexically_normal());
            CheckFiles(one.index);
            state->Add(inputs[one.index].absolutePath, one.key, report.files);
            Finish(one.index, InputStatus::Done);
        } catch (const HostError& error) {
            report.error = error.what();
            Finish(one.index, InputStatus::Failed);
        } catch (const nlohmann::json::exception& error) {
            report.error = std::string("cannot read the summary of the process: ") + error.what();
            Finish(one.index, InputStatus::Failed);
        }
    }

    /// \throw HostError if the input wrote a file that another input also wrote. Both are then
    /// missing from the state, because the file can contain either result.
    void CheckFiles(std::size_t index) {
        for (const std::string& file : reports[index].files) {
            const auto [writer, isNew] = writers.emplace(file, index);
            if (isNew || writer->second == index) continue;
            const BatchInput& other = inputs[writer->second];
            state->Remove({inputs[index].absolutePath, other.absolutePath});
            throw HostError(file + " was also written by " + other.path +
                            "; use ${stem} in the file name");
        }
    }

    void Finish(std::size_t index, InputStatus status) {
        InputReport& report = reports[index];
        report.status = status;
        line.Step(finishedCount++, inputs.size(), inputs[index].path);
        for (const std::string& warning : report.warnings)
            line.Warning(inputs[index].path + ": " + warning);
        if (status != InputStatus::Failed) return;
        line.Finish();
        std::fprintf(stderr,
                     "trovik: %s: %s\n",
                     PrintableText(inputs[index].path).c_str(),
                     PrintableText(report.error).c_str());
    }

    /// Ends all processes. Inputs that have been completed in the meantime count as done.
    [[noreturn]] void Stop() {
        for (const ActiveInput& one : active) one.process->Terminate();
        for (const ActiveInput& one : active)
            if (one.process->Wait().status == 0) Collect(one);
        line.Finish();
        line.Message(std::to_string(Count(InputStatus::Done) + Count(InputStatus::Skipped)) +
                     " of " + std::to_string(inputs.size()) + " inputs are done; " +
                     (options.again ? "run again without --again to continue"
                                    : "the same command continues with the others"));
        throw Cancelled();
    }

    const BatchOptions& options;
    ProgressLine& line;
    const std::string program;
    const std::vector<BatchInput> inputs;
    std::vector<InputReport> reports;
    /// Absolute, without symbolic links.
    std::string outputPath;
    std::unique_ptr<BatchState> state;
    /// The inputs that wrote the files of this run, and of earlier runs if they were skipped.
    std::map<std::string, std::size_t> writers;
    std::vector<ActiveInput> active;
    std::size_t finishedCount = 0;
};

void RunBatch(const BatchOptions& options) {
    ProgressLine line(options.quiet);
    Batch batch(options, line);
    batch.Run();
    line.Finish();
    if (options.json)
        PrintJson(batch.Json());
    else if (!options.quiet)
        batch.PrintSummary();
    const std::size_t failed = batch.Count(InputStatus::Failed);
    if (failed != 0)
        throw HostError(std::to_string(failed) + " of " + std::to_string(batch.InputCount()) +
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
