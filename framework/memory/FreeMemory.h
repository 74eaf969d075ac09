// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>
#include <optional>
#include <string>

namespace trovik {

/// Memory that this process can still allocate and use, and the limit that decides it.
struct FreeMemory {
    uint64_t bytes = 0;
    /// "machine", "control group", "address space limit" or "data segment limit".
    std::string limit;

    /// "N bytes of memory are free (LIMIT)".
    TROVIK_API std::string Text() const;
};

/// The smallest of:
/// - the memory that the machine has available without swapping (MemAvailable of /proc/meminfo),
/// - what the memory limits of the process's control group and its ancestors leave, of cgroup
///   version 1 or 2; file pages that the kernel can drop count as free,
/// - what RLIMIT_AS and RLIMIT_DATA leave.
///
/// A snapshot: other processes change it. Sources that cannot be read impose no limit.
/// Cost: reads about ten small files of /proc and /sys, some 100 microseconds.
/// \param systemRoot  folder that holds `proc` and `sys`.
TROVIK_API FreeMemory QueryFreeMemory(const std::string& systemRoot = "/");

/// Bytes of address space that RLIMIT_AS still leaves to this process, whatever memory is free;
/// nothing where the limit is not set or its use cannot be read. \param systemRoot  as above.
TROVIK_API std::optional<uint64_t> QueryFreeAddressSpace(const std::string& systemRoot = "/");

/// Refuses work that needs more memory than there is, before it begins.
/// \param what  the work as the subject of a sentence, such as "rendering 10 faces".
/// \throw HostError "WHAT takes about N bytes, but only M bytes of memory are free (LIMIT)".
TROVIK_API void CheckFreeMemory(const std::string& what, uint64_t bytes);

}  // namespace trovik
