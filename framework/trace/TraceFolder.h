// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace trovik {

/// Name of the file that contains the lines of a trace.
inline constexpr const char* traceLineFile = "trace.jsonl";

/// Creates the folder of a trace, empty except for `arrays`; an earlier trace in it is removed.
/// \throw HostError if it cannot be created, or contains files that are not part of a trace; in
/// that case, nothing is removed.
void PrepareTraceFolder(const std::string& folder);

/// Returns the folder name of a mesh state: the kind, followed by the number with at least six
/// digits.
std::string NumberedTraceFolder(const char* kind, unsigned number);

}  // namespace trovik
