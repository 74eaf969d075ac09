// SPDX-License-Identifier: Apache-2.0
#include "tests/scene/AllocationCount.h"

#include <atomic>
#include <cstdlib>
#include <malloc.h>
#include <new>

namespace trovik::test {
namespace {

std::atomic<uint64_t> held{0};
std::atomic<uint64_t> peak{0};
/// The number of allocations up to and including the one that fails; 0 if none is to fail.
std::atomic<uint64_t> untilRefusal{0};
std::atomic<bool> refused{false};

}  // namespace

uint64_t PeakBytes() { return peak; }
uint64_t BytesHeld() { return held; }
void ForgetPeak() { peak = held.load(); }

void RefuseAllocation(uint64_t number) {
    refused = false;
    untilRefusal = number;
}
bool HasRefused() { return refused; }

void* Counted(std::size_t bytes) {
    if (untilRefusal != 0 && --untilRefusal == 0) {
        refused = true;
        throw std::bad_alloc();
    }
    void* memory = std::malloc(bytes == 0 ? 1 : bytes);
    if (memory == nullptr) throw std::bad_alloc();
    const uint64_t now = held += malloc_usable_size(memory);
    uint64_t before = peak;
    while (now > before && !peak.compare_exchange_weak(before, now)) {
    }
    return memory;
}

void Free(void* memory) noexcept {
    if (memory == nullptr) return;
    held -= malloc_usable_size(memory);
    std::free(memory);
}

}  // namespace trovik::test

// These operators replace those of the whole process, including its libraries. The address
// sanitizer has its own operators, which also reject huge sizes; allocations are then not counted.
#ifndef __SANITIZE_ADDRESS__
void* operator new(std::size_t bytes) { return trovik::test::Counted(bytes); }
void* operator new[](std::size_t bytes) { return trovik::test::Counted(bytes); }
void operator delete(void* memory) noexcept { trovik::test::Free(memory); }
void operator delete[](void* memory) noexcept { trovik::test::Free(memory); }
void operator delete(void* memory, std::size_t) noexcept { trovik::test::Free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { trovik::test::Free(memory); }
#endif
