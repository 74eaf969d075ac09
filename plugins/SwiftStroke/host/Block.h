// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

namespace trovik {

/// Base of every array whose memory is accounted for. Blocks form one process-wide list; the
/// list and the accounts are touched on the host's main thread only.
class TROVIK_API Block {
public:
    /// Enters the list. \param name  kept as a pointer. \param elementSize  in bytes.
    Block(const char* name, uint32_t elementSize);
    /// Leaves the list. Accounted bytes are given back by whoever registered them.
    ~Block();
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;

    /// Adds to the accounted total. \return false, and adds nothing, when the total would pass
    /// the limit.
    static bool RegisterMemoryBlock(int64_t bytes);
    static void UnregisterMemoryBlock(int64_t bytes);
    /// Names the allocations that follow; null ends the naming.
    static void SetAllocatorID(const char* name);
    static void CopyMemoryBlock(void* to, const void* from, int64_t bytes);
    /// \param alignment  a power of two. Released with AlignedFree; null on failure.
    static void* AlignedAlloc(uint64_t size, uint64_t alignment);
    static void AlignedFree(void* memory);
    /// Writes the accounts to the log: blocks that hold at least `share` of the total.
    static void LogAll(float share, bool everyBlock);

    static Block* s_pHead;

    Block* next = nullptr;
    Block* previous = nullptr;
    uint32_t elementSize;
    const char* allocatorName;
};

}  // namespace trovik
