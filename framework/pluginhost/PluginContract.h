// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <optional>
#include <string>

namespace trovik {

/// Reads the contract version from the note of a plug-in (host/Contract.h), without loading the
/// file. Empty if there is no such note, or if the file is not a complete ELF file for this
/// platform.
/// \throw HostError if the file cannot be read.
TROVIK_API std::optional<uint32_t> ContractVersionOf(const std::string& path);

/// Checks that the plug-in was compiled for the host's contract version. A file without a note
/// counts as version 1.
/// \throw HostError with the file and both versions.
void RequireContract(const std::string& path);

}  // namespace trovik
