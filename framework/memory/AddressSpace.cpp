// SPDX-License-Identifier: Apache-2.0
#include "framework/memory/AddressSpace.h"

#include <sys/mman.h>

namespace trovik {

namespace {

/// A stack of up to 16 MiB, and what the C library's allocator maps for a thread that is new to it:
/// 128 MiB, of which it keeps half.
constexpr uint64_t bytesPerThread = uint64_t{160} << 20;

}  // namespace

bool CanMapMemory(uint64_t bytes) {
    void* region = mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (region == MAP_FAILED) return false;
    munmap(region, bytes);
    return true;
}

int AffordableThreads(int threads, uint64_t otherBytes) {
    while (threads > 1 &&
           !CanMapMemory(otherBytes + bytesPerThread * static_cast<uint64_t>(threads - 1)))
        threads /= 2;
    return threads > 1 ? threads : 1;
}

}  // namespace trovik
