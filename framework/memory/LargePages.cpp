// SPDX-License-Identifier: Apache-2.0
#include "framework/memory/LargePages.h"

#include <sys/mman.h>

namespace trovik {

namespace {

constexpr uint64_t pageSize = 4096;
constexpr uint64_t least = uint64_t{4} << 20;

}  // namespace

void PreferLargePages(void* memory, uint64_t bytes) {
    if (memory == nullptr || bytes < least) return;
    // Whole pages inside the block; what it shares with its neighbours stays as it is.
    const auto address = reinterpret_cast<uintptr_t>(memory);
    const uintptr_t first = (address + pageSize - 1) / pageSize * pageSize;
    const uintptr_t last = (address + bytes) / pageSize * pageSize;
    madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
}

}  // namespace trovik
