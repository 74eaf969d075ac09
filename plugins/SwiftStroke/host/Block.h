// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

namespace trovik {

/// Base class of all arrays whose memory is accounted for. Blocks form one process-wide list. The
/// list and the accounts may be used only on the host's main thread.
class TROVIK_API Block {
public:
    /// Adds the block to the list.
    /// \param name  stored as a pointer.
    /// \param elementSize  in bytes.
    Block(const char* name, uint32_t elementSize);
    /// Removes the block from the list. The code that registered bytes must unregister them.
    ~Block();
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;

    /// Adds to the accounted total.
    /// \return false, without changing the total, if it would exceed the limit.
    static bool RegisterMemoryBlock(int64_t bytes);
    static void UnregisterMemoryBlock(int64_t bytes);
    /// Sets the name under which later allocations are accounted; null resets it.
    static void SetAllocatorID(const char* name);
    static void CopyMemoryBlock(void* to, const void* from, int64_t bytes);
    /// Returns null if the allocation fails. The memory is released with AlignedFree.
    /// \param alignment  a power of two.
    static void* AlignedAlloc(uint64_t size, uint64_t alignment);
    static void AlignedFree(void* memory);
    /// Writes the accounts to the log, limited to blocks that hold at least the fraction `share` of
    /// the total.
    static void LogAll(float share, bool everyBlock);

    static Block* s_pHead;

    Block* next = nullptr;
    Block* previous = nullptr;
    uint32_t elementSize;
    const char* allocatorName;
};

}  // namespace trovik
