// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json_fwd.hpp>

namespace trovik {

/// Prints a document for programs on standard output: indented by two, a newline at its end. Bytes
/// of file names that are no UTF-8 become U+FFFD.
void PrintJson(const nlohmann::json& document);

}  // namespace trovik
