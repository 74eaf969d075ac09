// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>

namespace trovik {

/// Limits the threads of oneTBB, for the rest of the process, to a number that the system grants.
/// Call it before work that uses oneTBB, directly or through a library: a worker that cannot be
/// started later would end the process. Further calls can only lower the number.
///
/// Fewer threads than processors are granted where RLIMIT_NPROC or a control group limits their
/// number, or where RLIMIT_AS leaves no address space for their stacks and heaps. Results never
/// depend on the number.
/// \param workBytes  memory that the work itself is about to allocate.
/// \return the number, the calling thread included; at least 1.
/// Cost: starts and ends as many threads as there are processors at the first call.
TROVIK_API unsigned LimitWorkerThreads(uint64_t workBytes = 0);

}  // namespace trovik
