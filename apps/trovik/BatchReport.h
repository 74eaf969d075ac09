// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "BatchInputs.h"
#include "ChildProcess.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace trovik {

enum class InputStatus { Waiting, Done, Skipped, Failed };

/// The result of one input of a batch.
struct InputReport {
    InputStatus status = InputStatus::Waiting;
    /// Empty unless the input failed.
    std::string error;
    std::vector<std::string> warnings;
    /// Absolute paths of the files written; for a skipped input, by the earlier run.
    std::vector<std::string> files;
    /// Run time of the process; 0 if none was started.
    double seconds = 0.0;
};

/// Reads the warnings and the error from the output of a process.
void ReadMessages(const ChildResult& result, InputReport& report);

/// Returns the entry of an input in the summary of the batch.
nlohmann::json ReportJson(const BatchInput& input, const InputReport& report);

}  // namespace trovik
