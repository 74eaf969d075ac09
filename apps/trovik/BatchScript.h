// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "BatchInputs.h"

#include <string>
#include <vector>

namespace trovik {

/// Checks the stroke script of a batch before the first process starts, so that its errors are
/// reported once instead of once per input.
/// \param inputs  not empty.
/// \param outputFolder  may not exist yet.
/// \throw HostError if the script is standard input, has an error, does not use the variable
/// `input`, or would write to an input.
void CheckBatchScript(const std::string& script,
                      const std::vector<BatchInput>& inputs,
                      const std::string& outputFolder);

}  // namespace trovik
