// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

namespace trovik {

/// Returns whether the process can map this many additional bytes. The result is false only if the
/// address space is limited (RLIMIT_AS): no memory is allocated, and the machine's physical memory
/// is not considered. Use it before calling libraries that terminate the process when an allocation
/// fails. Cost: two system calls.
TROVIK_API bool CanMapMemory(uint64_t bytes);

}  // namespace trovik
