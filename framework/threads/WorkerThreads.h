// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>
#include <functional>

namespace trovik {

/// Limits the number of oneTBB threads, for the rest of the process, to a number that the system
/// allows. Call this before any work that uses oneTBB, directly or through a library, because
/// oneTBB terminates the process if it cannot start a worker thread. Later calls can only lower the
/// number.
///
/// The number is lower than the number of processors if RLIMIT_NPROC or a control group limits it,
/// or if RLIMIT_AS does not leave enough address space for the stacks and heaps of the threads.
/// Results never depend on the number.
/// \param workBytes  memory that the work itself will allocate.
/// \return the number of threads, including the calling thread; at least 1.
/// Cost: the first call starts and joins up to one thread per processor.
TROVIK_API unsigned LimitWorkerThreads(uint64_t workBytes = 0);

/// Imposes no limit other than that of LimitWorkerThreads.
inline constexpr unsigned allWorkerThreads = ~0u;

/// Calls `work(i)` once for each i below `count`, on several threads including the calling one, in
/// an unspecified order, and returns when all calls have returned. If a call throws, further calls
/// may be omitted, and one of the exceptions is rethrown.
/// \param grain  number of consecutive calls that are made on one thread, at least 1.
/// \param threads  maximum number of threads. With 1, the calls are made in order, without oneTBB.
TROVIK_API void RunInParallel(uint32_t count,
                              uint32_t grain,
                              const std::function<void(uint32_t)>& work,
                              unsigned threads = allWorkerThreads);

}  // namespace trovik
