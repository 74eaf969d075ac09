// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

namespace trovik {

/// Returns whether the process can map this many additional bytes. Fails if its address space is
/// limited (RLIMIT_AS). No memory is allocated, and the physical memory of the machine is not
/// considered. For libraries that terminate the process on a failed allocation. Cost: two system
/// calls.
TROVIK_API bool CanMapMemory(uint64_t bytes);

}  // namespace trovik
