// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

namespace trovik {

/// Asks the system to back memory with large pages: a first touch then costs one fault for two
/// megabytes instead of one for four kilobytes, and a walk that jumps about misses fewer
/// translations. For arrays of the size of a mesh or a stroke, before they are written; small ones
/// are left alone. A hint that the system may pass over; contents and addresses stay.
TROVIK_API void PreferLargePages(void* memory, uint64_t bytes);

}  // namespace trovik
