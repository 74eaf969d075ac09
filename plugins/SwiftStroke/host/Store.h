// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Block.h"
#include "host/Error.h"

#include <limits>
#include <new>

namespace trovik {

/// The growable array that is used throughout the host and its plug-ins. Appending grows its
/// capacity from 0 to 1, 3, 7, 15 and so on. Element i is array[i] if i is below the capacity, and
/// array[0] otherwise; code that reads `array` directly must handle the index in the same way.
///
/// Errors: if memory accounting rejects an allocation, Error::s_cBadAlloc is thrown. If the
/// allocation itself fails, the failure is logged, and the array does not grow.
template <typename T>
class Store : public Block {
public:
    explicit Store(const char* name = "unknown")
        // T may be a pointer. NOLINTNEXTLINE(bugprone-sizeof-expression)
        : Block(name, static_cast<uint32_t>(sizeof(T))), self(this) {}
    ~Store() { Clear(); }
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    T& operator[](uint32_t index) { return array[index < capacity ? index : 0]; }
    const T& operator[](uint32_t index) const { return array[index < capacity ? index : 0]; }

    /// Appends a copy. If the allocation fails, nothing is appended and no error is reported.
    void Append(const T& item) {
        if (fill != std::numeric_limits<uint32_t>::max()) {
            uint64_t wanted = capacity;
            while (wanted <= fill) wanted = wanted * 2 + 1;
            if (wanted > std::numeric_limits<uint32_t>::max())
                wanted = std::numeric_limits<uint32_t>::max();
            if (wanted > capacity && !SetCapacity(static_cast<uint32_t>(wanted))) return;
        }
        array[fill < capacity ? fill : 0] = item;
        ++fill;
    }

    /// Sets the capacity to exactly n and keeps the elements that fit.
    /// \return false if the allocation failed.
    bool SetCapacity(uint32_t n) {
        if (n == capacity) return true;
        const int64_t bytes = static_cast<int64_t>(n) * static_cast<int64_t>(elementSize);
        if (!Block::RegisterMemoryBlock(bytes)) throw Error::s_cBadAlloc;
        T* grown = nullptr;
        Block::SetAllocatorID(allocatorName);
        try {
            grown = new T[n];
        } catch (const std::bad_alloc&) {
            Block::LogAll(0.01f, false);
        }
        Block::SetAllocatorID(nullptr);
        if (grown == nullptr) {
            // The allocation failed, so the bytes registered for it must be unregistered.
            Block::UnregisterMemoryBlock(bytes);
            return false;
        }
        if (array != nullptr) {
            Block::UnregisterMemoryBlock(static_cast<int64_t>(capacity) * elementSize);
            const uint32_t kept = n < capacity ? n : capacity;
            if (plainCopy) {
                Block::CopyMemoryBlock(grown, array, static_cast<int64_t>(kept) * elementSize);
            } else {
                for (uint32_t i = 0; i < kept; ++i) grown[i] = array[i];
            }
            delete[] array;
        }
        array = grown;
        capacity = n;
        return true;
    }

    /// Sets the fill count to n. If n exceeds the current count, the capacity becomes exactly n,
    /// and unless `keep` is set, the old contents are released first.
    bool SetFill(uint32_t n, bool keep) {
        if (n <= fill) {
            fill = n;
            return true;
        }
        if (!keep && array != nullptr) Clear();
        if (!SetCapacity(n)) return false;
        fill = n;
        return true;
    }

    void Clear() {
        if (array != nullptr) {
            Block::UnregisterMemoryBlock(static_cast<int64_t>(capacity) * elementSize);
            delete[] array;
        }
        array = nullptr;
        capacity = 0;
        fill = 0;
    }

    T* array = nullptr;
    uint32_t capacity = 0;
    /// Whether the elements are copied as raw memory instead of one by one when the array grows.
    bool plainCopy = true;
    Block* self;
    uint32_t fill = 0;
};

}  // namespace trovik
