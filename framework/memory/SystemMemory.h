// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

/// \file
/// What is asked of the system about memory that is had already.
namespace trovik {

/// Asks the system to back memory with large pages: a first touch then costs one fault for two
/// megabytes instead of one for four kilobytes, and a walk that jumps about misses fewer
/// translations. For arrays of the size of a mesh or a stroke, before they are written; small ones
/// are left alone. A hint that the system may pass over; contents and addresses stay.
TROVIK_API void PreferLargePages(void* memory, uint64_t bytes);

/// Gives the pages of memory back to the system, which gives others at the next touch. Addresses
/// stay; the contents are lost.
TROVIK_API void GiveBackPages(void* memory, uint64_t bytes);

/// Gives the system what the program has freed and the allocator still holds. Takes the allocator's
/// locks for as long as it takes, some milliseconds; for after something large.
TROVIK_API void GiveBackFreedMemory();

}  // namespace trovik
