// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace trovik {

/// Prints what is in a scene file; as text, or as JSON; nothing if quiet. \throw HostError as
/// LoadScene does.
void TellScene(const std::string& path, bool json, bool quiet);

}  // namespace trovik
