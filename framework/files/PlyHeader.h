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

/// The number types of a PLY file. The names of old (`char`, `short`, `int`, `float`, ...) and
/// those with sizes (`int8`, `float32`, ...) mean the same.
enum class PlyType { Int8, UInt8, Int16, UInt16, Int32, UInt32, Float32, Float64 };

inline bool IsWhole(PlyType type) { return type < PlyType::Float32; }

/// Bytes of one number in the binary encodings.
inline std::size_t SizeOf(PlyType type) {
    constexpr std::size_t Sizes[] = {1, 1, 2, 2, 4, 4, 4, 8};
    return Sizes[static_cast<std::size_t>(type)];
}

struct PlyProperty {
    std::string name;
    PlyType type = PlyType::Float32;
    bool isList = false;
    /// Of lists only: the type of the number of entries; a whole number.
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
    /// What `obj_info name` says.
    std::string name;
    /// What `obj_info units` and `obj_info up` say.
    MeshSpace space;
    /// Lines of the header; the body begins in the line after them.
    std::uint64_t lineCount = 0;
};

/// Takes the header off the front of a file.
///
/// Afterwards no element has more rows than the rest of the file can hold, counted by their
/// shortest form (empty lists; one digit a number), names are unique, and lists have whole counts.
/// \throw HostError naming the file, the line and the reason.
PlyHeader ReadPlyHeader(InputFile& file);

}  // namespace trovik
