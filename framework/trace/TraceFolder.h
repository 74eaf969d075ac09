// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace trovik {

/// Name of the file with the lines of a trace.
inline constexpr const char* traceLineFile = "trace.jsonl";

/// Makes the folder of a trace, empty but for `arrays`; an earlier trace in it is removed.
/// \throw HostError when it cannot be made, or holds files that are not part of a trace; nothing is
/// removed then.
void PrepareTraceFolder(const std::string& folder);

/// Name of a state's folder: the kind and a number of six digits or more.
std::string NumberedTraceFolder(const char* kind, unsigned number);

}  // namespace trovik
