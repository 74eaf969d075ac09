// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

/// \file
/// Requests to the operating system about memory that is already allocated.
namespace trovik {

/// Asks the system to back memory with large pages. First accesses then cause one page fault per
/// two megabytes instead of one per four kilobytes, and scattered accesses cause fewer TLB misses.
/// Call it for mesh-sized or stroke-sized arrays, before they are written; small arrays are
/// skipped. The system may ignore this hint. Contents and addresses do not change.
TROVIK_API void PreferLargePages(void* memory, uint64_t bytes);

/// Returns the pages of memory to the system, which maps new ones on the next access. Addresses do
/// not change; the contents are lost.
TROVIK_API void ReleasePages(void* memory, uint64_t bytes);

/// Returns memory to the system that the program has freed but the allocator still holds. Holds the
/// allocator's locks for a few milliseconds, so it is only worthwhile after large objects have been
/// freed.
TROVIK_API void ReleaseFreedMemory();

}  // namespace trovik
