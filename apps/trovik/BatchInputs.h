// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/json/JsonVariables.h"

#include <string>
#include <vector>

namespace trovik {

/// One input of a batch.
struct BatchInput {
    /// The path as given, or the folder as given with the name of the file.
    std::string path;
    /// Normalised.
    std::string absolutePath;
    /// The variables of the script: `input` (the absolute path), `name` (without the folder),
    /// `stem` (without the extension), `output` (the stem with the extension of the batch), and
    /// those of --set.
    JsonVariables variables;
};

/// Lists the inputs of a batch. A folder stands for the mesh files in it, in alphabetical order.
/// \param outputFolder  must not be one of the input folders, whose mesh files may otherwise be
/// results.
/// \param extension  the extension of `output`, with a dot; empty for that of the input.
/// \param given  the variables of --set.
/// \throw HostError if a path does not exist, if there is no input, if two inputs have the same
/// stem, if a path is not UTF-8, or if `given` contains one of the other variables.
std::vector<BatchInput> ListBatchInputs(const std::vector<std::string>& paths,
                                        const std::string& outputFolder,
                                        const std::string& extension,
                                        const JsonVariables& given);

}  // namespace trovik
