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

/// Reads a regular file from start to end, in blocks of one mebibyte.
/// \throw HostError with the path and the reason given by the system; Cancelled.
TROVIK_API ContentHash HashFile(const std::string& path, JobControl* job = nullptr);

}  // namespace trovik
