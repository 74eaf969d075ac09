// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

namespace trovik {

/// Whether the process can map this many more bytes. Fails where its address space is limited
/// (RLIMIT_AS); no memory is taken, and whether the machine has as much is not asked. For libraries
/// that do not survive a refusal. Cost: two system calls.
TROVIK_API bool CanMapMemory(uint64_t bytes);

/// The number of threads that parallel work can start, at least 1 and at most `threads`: the
/// largest of `threads`, half of it, a quarter and so on for which their stacks and their share of
/// the allocator can be mapped, and `otherBytes` besides. The scheduler ends the process when it
/// cannot start a thread that it counts on.
/// \param otherBytes  what the work will allocate before its threads have started.
TROVIK_API int AffordableThreads(int threads, uint64_t otherBytes);

}  // namespace trovik
