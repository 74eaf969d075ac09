// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

namespace trovik {

/// Base class of all arrays whose memory usage is tracked. All blocks are in one process-wide list.
/// The list and the totals may be used only on the host's main thread.
class TROVIK_API Block {
public:
    /// Adds the block to the list.
    /// \param name  not copied; only the pointer is stored.
    /// \param elementSize  in bytes.
    Block(const char* name, uint32_t elementSize);
    /// Removes the block from the list. The code that registered bytes must also unregister them.
    ~Block();
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;

    /// Adds `bytes` to the tracked total.
    /// \return false, without changing the total, if it would exceed the limit.
    static bool RegisterMemoryBlock(int64_t bytes);
    static void UnregisterMemoryBlock(int64_t bytes);
    /// Sets the name under which later allocations are tracked; null resets it.
    static void SetAllocatorID(const char* name);
    static void CopyMemoryBlock(void* to, const void* from, int64_t bytes);
    /// Returns null if the allocation fails. The memory is released with AlignedFree.
    /// \param alignment  a power of two.
    static void* AlignedAlloc(uint64_t size, uint64_t alignment);
    static void AlignedFree(void* memory);
    /// Logs the memory usage of each block that accounts for at least the fraction `share` of the
    /// total.
    static void LogAll(float share, bool everyBlock);

    static Block* s_pHead;

    Block* next = nullptr;
    Block* previous = nullptr;
    uint32_t elementSize;
    const char* allocatorName;
};

}  // namespace trovik
