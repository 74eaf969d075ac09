// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

namespace trovik {

/// Whether the process can map this many more bytes. Fails where its address space is limited
/// (RLIMIT_AS); no memory is taken, and whether the machine has as much is not asked. For libraries
/// that do not survive a refusal. Cost: two system calls.
TROVIK_API bool CanMapMemory(uint64_t bytes);

}  // namespace trovik
