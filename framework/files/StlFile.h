// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// \file
/// Layout of binary STL files, little-endian: a header with arbitrary text, the number of
/// triangles, and for each triangle its normal, three corners, and two unused bytes.
namespace trovik::stl_file {

inline constexpr std::size_t headerBytes = 80;
inline constexpr std::size_t triangleBytes = 50;
/// Start of a header that contains the mesh name.
inline constexpr std::string_view nameMark = "binary STL of ";

inline std::uint32_t LoadWord(const unsigned char* bytes) {
    return std::uint32_t{bytes[0]} | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 |
           std::uint32_t{bytes[3]} << 24;
}

inline float LoadFloat(const unsigned char* bytes) { return std::bit_cast<float>(LoadWord(bytes)); }

}  // namespace trovik::stl_file
