// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace trovik {

/// An array that grows in pages of 2^`pageBits` elements. Growing neither moves nor copies
/// elements, so its cost does not depend on the size of the array, and references stay valid.
template <typename T, uint32_t pageBits = 12>
class PagedArray {
public:
    uint32_t Size() const { return size; }
    T& operator[](uint32_t index) { return pages[index >> pageBits][index & mask]; }
    const T& operator[](uint32_t index) const { return pages[index >> pageBits][index & mask]; }

    /// Appends an element. \return its index. \throw std::bad_alloc; the array is then unchanged.
    uint32_t Append(const T& value) {
        if (size == pages.size() << pageBits)
            pages.push_back(std::make_unique<T[]>(std::size_t{1} << pageBits));
        (*this)[size] = value;
        return size++;
    }

private:
    static constexpr uint32_t mask = (1u << pageBits) - 1;

    std::vector<std::unique_ptr<T[]>> pages;
    uint32_t size = 0;
};

}  // namespace trovik
