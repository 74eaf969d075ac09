// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>

namespace trovik {

/// Limits the threads of oneTBB, for the rest of the process, to a number that the system grants.
/// Call this before work that uses oneTBB, directly or through a library, because a worker thread
/// that cannot be started later terminates the process. Later calls can only lower the number.
///
/// The number is less than the number of processors if RLIMIT_NPROC or a control group limits it,
/// or if RLIMIT_AS leaves no address space for stacks and heaps. Results never depend on the
/// number.
/// \param workBytes  memory that the work itself will allocate.
/// \return the number of threads, including the calling thread; at least 1.
/// Cost: the first call starts and ends as many threads as there are processors.
TROVIK_API unsigned LimitWorkerThreads(uint64_t workBytes = 0);

}  // namespace trovik
