// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>

namespace trovik {

/// Limits the number of oneTBB threads, for the rest of the process, to a number that the system
/// allows. Call this before any work that uses oneTBB, directly or through a library, because
/// oneTBB terminates the process if it cannot start a worker thread. Later calls can only lower the
/// number.
///
/// The number is below the number of processors if RLIMIT_NPROC or a control group limits it, or if
/// RLIMIT_AS does not leave enough address space for the stacks and heaps of the threads. Results
/// never depend on the number.
/// \param workBytes  memory that the work itself will allocate.
/// \return the number of threads, including the calling thread; at least 1.
/// Cost: the first call starts and joins up to one thread per processor.
TROVIK_API unsigned LimitWorkerThreads(uint64_t workBytes = 0);

}  // namespace trovik
