// SPDX-License-Identifier: Apache-2.0
#include "BatchRun.h"

#include "BatchScript.h"
#include "BatchState.h"
#include "ChildProcess.h"
#include "Interruption.h"
#include "ProgressLine.h"
#include "framework/errors/Cancelled.h"
#include "framework/errors/HostError.h"
#include "framework/errors/PrintableText.h"
#include "framework/io/ContentHash.h"
#include "framework/io/FilePath.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <thread>

namespace trovik {

namespace {

namespace fs = std::filesystem;

constexpr auto pollInterval = std::chrono::milliseconds(5);

}  // namespace

BatchRun::BatchRun(const BatchOptions& batchOptions, ProgressLine& progress)
    : options(batchOptions),
      line(progress),
      program(ThisProgram()),
      inputs(ListBatchInputs(options.inputs,
                             options.output,
                             options.format.empty() ? "" : "." + options.format,
                             options.variables)),
      reports(inputs.size()) {
    CheckBatchScript(options.script, inputs, options.output);
    scriptHash = HashFile(options.script).sha256;
    std::error_code failed;
    fs::create_directories(options.output, failed);
    if (failed)
        throw HostError("cannot create the folder " + options.output + ": " + failed.message());
    outputPath = fs::canonical(options.output).string();
    CheckWritable(StatePath());
    state = std::make_unique<BatchState>(StatePath());
}

BatchRun::~BatchRun() {
    for (const ActiveInput& one : active) one.process->Terminate();
}

void BatchRun::Run() {
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

std::size_t BatchRun::Count(InputStatus status) const {
    return static_cast<std::size_t>(
        std::count_if(reports.begin(), reports.end(), [status](const InputReport& report) {
            return report.status == status;
        }));
}

std::string BatchRun::StatePath() const {
    return options.state.empty() ? (fs::path(options.output) / "trovik-batch.json").string()
                                 : options.state;
}

/// Returns everything that determines the result of an input, apart from files that the script
/// reads in addition to it.
nlohmann::json BatchRun::KeyOf(const BatchInput& input) const {
    return {{"program", TROVIK_VERSION},
            {"script", scriptHash},
            {"content", HashFile(input.absolutePath).sha256},
            {"output", outputPath},
            {"strict", options.strict},
            {"variables", input.variables}};
}

/// Removes all inputs from the state, so that a run after an interruption does not skip those
/// that have not been processed again.
void BatchRun::ForgetAll() {
    std::vector<std::string> paths;
    for (const BatchInput& input : inputs) paths.push_back(input.absolutePath);
    state->Remove(paths);
}

void BatchRun::Start(std::size_t index) {
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
        for (const auto& [name, value] : input.variables) {
            arguments.emplace_back("--set");
            arguments.push_back(name);
            arguments.back().append("=").append(value);
        }
        active.push_back({index,
                          std::move(key),
                          std::make_unique<ChildProcess>(arguments),
                          std::chrono::steady_clock::now()});
    } catch (const HostError& error) {
        report.error = error.what();
        Finish(index, InputStatus::Failed);
    }
}

void BatchRun::FinishEnded() {
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
void BatchRun::Collect(const ActiveInput& one) {
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
void BatchRun::CheckFiles(std::size_t index) {
    for (const std::string& file : reports[index].files) {
        const auto [writer, isNew] = writers.emplace(file, index);
        if (isNew || writer->second == index) continue;
        const BatchInput& other = inputs[writer->second];
        state->Remove({inputs[index].absolutePath, other.absolutePath});
        throw HostError(file + " was also written by " + other.path +
                        "; use ${stem} in the file name");
    }
}

void BatchRun::Finish(std::size_t index, InputStatus status) {
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
void BatchRun::Stop() {
    for (const ActiveInput& one : active) one.process->Terminate();
    for (const ActiveInput& one : active)
        if (one.process->Wait().status == 0) Collect(one);
    line.Finish();
    line.Message(std::to_string(Count(InputStatus::Done) + Count(InputStatus::Skipped)) + " of " +
                 std::to_string(inputs.size()) + " inputs are done; " +
                 (options.again ? "run again without --again to continue"
                                : "the same command continues with the others"));
    throw Cancelled();
}

}  // namespace trovik
