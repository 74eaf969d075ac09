// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <type_traits>
#include <vector>

namespace trovik {

/// One array of an undo step, for code that compresses the content of the step. It borrows a
/// std::vector of plain values and can read, empty and refill it.
class StepArray {
public:
    template <typename T>
    explicit StepArray(std::vector<T>& list)
        : vector(&list),
          elementBytes(sizeof(T)),
          count([](const void* v) { return static_cast<const std::vector<T>*>(v)->size(); }),
          data([](void* v) -> void* { return static_cast<std::vector<T>*>(v)->data(); }),
          resize([](void* v, std::size_t n) {
              // Creates a new vector, so that there is no unused capacity.
              *static_cast<std::vector<T>*>(v) = std::vector<T>(n);
          }) {
        static_assert(std::is_trivially_copyable_v<T>);
    }

    std::size_t ElementBytes() const { return elementBytes; }
    std::size_t Count() const { return count(vector); }
    std::size_t Bytes() const { return Count() * elementBytes; }
    void* Data() const { return data(vector); }
    /// Discards the content of the array, which then has `n` elements with unspecified values.
    void Resize(std::size_t n) const { resize(vector, n); }

private:
    void* vector;
    std::size_t elementBytes;
    std::size_t (*count)(const void*);
    void* (*data)(void*);
    void (*resize)(void*, std::size_t);
};

}  // namespace trovik
