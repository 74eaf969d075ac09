// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>
#include <string>

namespace trovik {

class JobControl;

/// What tells whether a file is still the one that it was, whatever its name and times say.
struct ContentHash {
    /// SHA-256 in 64 lower-case hexadecimal digits, as sha256sum prints it.
    std::string sha256;
    std::uint64_t bytes = 0;

    bool operator==(const ContentHash&) const = default;
};

/// Reads a regular file from start to end, a mebibyte at a time.
/// \throw HostError naming the path and the system's reason; Cancelled.
TROVIK_API ContentHash HashFile(const std::string& path, JobControl* job = nullptr);

}  // namespace trovik
