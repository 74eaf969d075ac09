// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>
#include <optional>
#include <string>

namespace trovik {

/// Memory that this process can still allocate and use, and the limit that determines it.
struct FreeMemory {
    uint64_t bytes = 0;
    /// "machine", "control group", "address space limit" or "data segment limit".
    std::string limit;

    /// "N bytes of memory are free (LIMIT)".
    TROVIK_API std::string Text() const;
};

/// Returns the minimum of:
/// - the memory available on the machine without swapping (MemAvailable in /proc/meminfo),
/// - the memory left under the limits of the process's control group and its ancestors, cgroup
///   version 1 or 2; file pages that the kernel can drop count as free,
/// - the memory left under RLIMIT_AS and RLIMIT_DATA.
///
/// The result is a snapshot, because other processes also allocate and free memory. Sources that
/// cannot be read impose no limit. Cost: about 100 microseconds, because about ten small files in
/// /proc and /sys are read.
/// \param systemRoot  folder that contains `proc` and `sys`.
TROVIK_API FreeMemory QueryFreeMemory(const std::string& systemRoot = "/");

/// Returns the address space in bytes that RLIMIT_AS leaves to this process, regardless of free
/// memory. Returns nothing if the limit is not set or the usage cannot be read.
/// \param systemRoot  folder that contains `proc` and `sys`.
TROVIK_API std::optional<uint64_t> QueryFreeAddressSpace(const std::string& systemRoot = "/");

/// Checks that there is enough memory before work starts.
/// \param what  the work, as the subject of a sentence, such as "rendering 10 faces".
/// \throw HostError "WHAT takes about N bytes, but only M bytes of memory are free (LIMIT)".
TROVIK_API void CheckFreeMemory(const std::string& what, uint64_t bytes);

}  // namespace trovik
