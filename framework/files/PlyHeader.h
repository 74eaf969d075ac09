// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/files/MeshFiles.h"
#include "framework/io/InputFile.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace trovik {

/// The number types of a PLY file. The old names (`char`, `short`, `int`, `float`, ...) and the
/// sized names (`int8`, `float32`, ...) are equivalent.
enum class PlyType { Int8, UInt8, Int16, UInt16, Int32, UInt32, Float32, Float64 };

inline bool IsWhole(PlyType type) { return type < PlyType::Float32; }

/// Returns the size in bytes of one number in the binary encodings.
inline std::size_t SizeOf(PlyType type) {
    constexpr std::size_t sizes[] = {1, 1, 2, 2, 4, 4, 4, 8};
    return sizes[static_cast<std::size_t>(type)];
}

struct PlyProperty {
    std::string name;
    PlyType type = PlyType::Float32;
    bool isList = false;
    /// For lists only: the integer type of the entry count.
    PlyType countType = PlyType::UInt8;
};

struct PlyElement {
    std::string name;
    std::uint64_t count = 0;
    std::vector<PlyProperty> properties;
};

struct PlyHeader {
    PlyEncoding encoding = PlyEncoding::Text;
    std::vector<PlyElement> elements;
    /// The text of `obj_info name`.
    std::string name;
    /// The values of `obj_info units` and `obj_info up`.
    MeshSpace space;
    /// Number of lines in the header; the body starts on the next line.
    std::uint64_t lineCount = 0;
};

/// Reads the header of a file.
///
/// In the result, names are unique, the entry counts of lists have integer types, and no element
/// has more rows than fit into the rest of the file in their shortest form (empty lists; one digit
/// per number).
/// \throw HostError with the file, the line and the reason.
PlyHeader ReadPlyHeader(InputFile& file);

}  // namespace trovik
