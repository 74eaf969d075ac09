// SPDX-License-Identifier: Apache-2.0
#include "framework/memory/AddressSpace.h"

#include <sys/mman.h>

namespace trovik {

bool CanMapMemory(uint64_t bytes) {
    void* region = mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (region == MAP_FAILED) return false;
    munmap(region, bytes);
    return true;
}

}  // namespace trovik
