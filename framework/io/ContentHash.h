// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>
#include <string>

namespace trovik {

class JobControl;

/// Identifies the content of a file, independently of its name and timestamps.
struct ContentHash {
    /// SHA-256 as 64 lower-case hexadecimal digits, as sha256sum prints it.
    std::string sha256;
    std::uint64_t bytes = 0;

    bool operator==(const ContentHash&) const = default;
};

/// Computes the hash of a regular file, which is read in blocks of 1 MiB.
/// \throw HostError with the path and the system's reason; Cancelled.
TROVIK_API ContentHash HashFile(const std::string& path, JobControl* job = nullptr);

}  // namespace trovik
