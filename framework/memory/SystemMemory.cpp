// SPDX-License-Identifier: Apache-2.0
#include "framework/memory/SystemMemory.h"

#include <malloc.h>
#include <sys/mman.h>

namespace trovik {

namespace {

constexpr uint64_t pageSize = 4096;
constexpr uint64_t least = uint64_t{4} << 20;

/// Applies only to pages that lie entirely inside the block, because other pages also contain
/// neighbouring data.
void Advise(void* memory, uint64_t bytes, int advice) {
    const auto address = reinterpret_cast<uintptr_t>(memory);
    const uint64_t shared = (pageSize - address % pageSize) % pageSize;
    if (bytes < shared + pageSize) return;
    madvise(static_cast<uint8_t*>(memory) + shared, (bytes - shared) / pageSize * pageSize, advice);
}

}  // namespace

void PreferLargePages(void* memory, uint64_t bytes) {
    if (memory != nullptr && bytes >= least) Advise(memory, bytes, MADV_HUGEPAGE);
}

void ReleasePages(void* memory, uint64_t bytes) {
    if (memory != nullptr) Advise(memory, bytes, MADV_DONTNEED);
}

void ReleaseFreedMemory() {
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}

}  // namespace trovik
