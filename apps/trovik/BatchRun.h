// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "BatchInputs.h"
#include "BatchReport.h"
#include "framework/json/JsonVariables.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace trovik {

class BatchState;
class ChildProcess;
class ProgressLine;

/// The options of `trovik batch`.
struct BatchOptions {
    std::string script;
    /// Mesh files, and folders of mesh files.
    std::vector<std::string> inputs;
    std::string output = ".";
    /// The extension of ${output}, without a dot; empty for that of the input.
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

/// Runs a script for each input of a batch, in several child processes.
class BatchRun {
public:
    /// Lists the inputs, checks the script, and creates the output folder.
    /// \param batchOptions, progress  borrowed.
    /// \throw HostError if the script, an input or the output folder cannot be used.
    BatchRun(const BatchOptions& batchOptions, ProgressLine& progress);
    /// Ends all processes after an error.
    ~BatchRun();
    BatchRun(const BatchRun&) = delete;
    BatchRun& operator=(const BatchRun&) = delete;

    /// Processes all inputs that have changed. Failed inputs are reported and do not end the run.
    /// \throw Cancelled after an interruption, when all processes have ended.
    void Run();

    const std::vector<BatchInput>& Inputs() const { return inputs; }
    /// The reports of the inputs, in the same order.
    const std::vector<InputReport>& Reports() const { return reports; }
    /// The number of inputs with this status.
    std::size_t Count(InputStatus status) const;
    /// The path of the state file.
    std::string StatePath() const;

private:
    struct ActiveInput {
        std::size_t index;
        nlohmann::json key;
        std::unique_ptr<ChildProcess> process;
        std::chrono::steady_clock::time_point start;
    };

    nlohmann::json KeyOf(const BatchInput& input) const;
    void ForgetAll();
    void Start(std::size_t index);
    void FinishEnded();
    void Collect(const ActiveInput& one);
    void CheckFiles(std::size_t index);
    void Finish(std::size_t index, InputStatus status);
    [[noreturn]] void Stop();

    const BatchOptions& options;
    ProgressLine& line;
    const std::string program;
    const std::vector<BatchInput> inputs;
    std::vector<InputReport> reports;
    /// Absolute, without symbolic links.
    std::string outputPath;
    std::string scriptHash;
    std::unique_ptr<BatchState> state;
    /// The inputs that wrote the files of this run, and of earlier runs if they were skipped.
    std::map<std::string, std::size_t> writers;
    std::vector<ActiveInput> active;
    std::size_t finishedCount = 0;
};

}  // namespace trovik
