// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Block.h"
#include "host/Error.h"

#include <limits>
#include <new>

namespace trovik {

/// The growable array of the whole system. Capacities run 0, 1, 3, 7, 15 and so on when growth
/// comes from appending. Element i is array[i] while i is below the capacity, and array[0]
/// otherwise; code that reads `array` directly keeps that clamp.
///
/// Errors: growth that the accounting refuses throws Error::s_cBadAlloc; an allocation that fails
/// is logged and ends the growth in silence.
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

    /// Appends a copy. When growth fails nothing is appended and nothing is said.
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

    /// Makes the capacity exactly n, keeping what fits. \return false when the allocation failed.
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
            // Nothing was taken, so the account must not keep it.
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

    /// Makes the fill count n. A larger n sets the capacity to exactly n; without `keep` the old
    /// contents go first.
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
    /// True: growth copies memory; false: element by element.
    bool plainCopy = true;
    Block* self;
    uint32_t fill = 0;
};

}  // namespace trovik
