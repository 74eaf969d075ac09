// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/files/GltfDocument.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace trovik {

/// Reads the accessors of a glTF file. All component types and strided, normalised and sparse
/// accessors are supported.
///
/// Memory is allocated only for data that is present in the file: an accessor without a buffer view
/// must have as many elements as the list to which it belongs. Errors: HostError with the file, the
/// part of the document, the accessor and the reason.
class GltfAccessors {
public:
    explicit GltfAccessors(const GltfDocument& opened) : document(opened) {}

    /// Reads vectors of `count` finite numbers.
    /// \param length  the required number of elements; if it is not set, the accessor must have a
    /// buffer view.
    template <std::size_t count>
    std::vector<std::array<float, count>> Read(int accessor,
                                               std::optional<std::size_t> length,
                                               const GltfLocation& location) const {
        std::vector<std::array<float, count>> list;
        ReadNumbers(
            accessor,
            count,
            length,
            location,
            [&list](const float* numbers) {
                list.emplace_back();
                std::copy(numbers, numbers + count, list.back().begin());
            },
            [&list](std::size_t entry, const float* numbers) {
                std::copy(numbers, numbers + count, list[entry].begin());
            });
        return list;
    }

    /// Reads vectors of three or four numbers; a missing alpha becomes 1.
    /// \param hasAlpha  set to true if there are four numbers.
    std::vector<std::array<float, 4>> ReadColors(int accessor,
                                                 std::size_t length,
                                                 const GltfLocation& location,
                                                 bool& hasAlpha) const;

    /// Reads integers below `limit`.
    std::vector<std::uint32_t> ReadIndices(int accessor,
                                           std::size_t limit,
                                           const GltfLocation& location) const;

private:
    struct Span;
    using Append = std::function<void(const float*)>;
    using Replace = std::function<void(std::size_t, const float*)>;

    void ReadNumbers(int accessor,
                     std::size_t components,
                     std::optional<std::size_t> length,
                     const GltfLocation& location,
                     const Append& append,
                     const Replace& replace) const;
    Span Bytes(int view,
               std::size_t offset,
               std::size_t count,
               std::size_t elementBytes,
               bool isStrided,
               const std::string& what,
               const GltfLocation& location) const;

    const GltfDocument& document;
};

}  // namespace trovik
