// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace trovik {

/// Element types in the notation of .npy headers.
inline constexpr const char* npyUint8 = "'|u1'";
inline constexpr const char* npyInt16 = "'<i2'";
inline constexpr const char* npyInt32 = "'<i4'";
inline constexpr const char* npyUint32 = "'<u4'";
inline constexpr const char* npyFloat32 = "'<f4'";
/// Element type of a StoredVertexInfo.
inline constexpr const char* npyRecord =
    "[('originalPosition', '<f4', (3,)), ('visitStampWord', '<u4'), "
    "('originalNormal', '<i2', (4,)), ('buildUp', '<f4'), ('vertexIndex', '<u4'), "
    "('reserved', '<u4'), ('layerSlot', '<u4')]";

/// Returns the magic string, the version (1.0) and the header of an array; their total length is a
/// multiple of 64 bytes.
TROVIK_API std::string NpyHeader(const char* elementType, const std::vector<uint64_t>& shape);

/// Writes an array: little-endian, C order. `data` may be null if `sizeBytes` is 0.
/// \throw HostError with the path and the system's error message.
TROVIK_API void WriteNpyFile(const std::string& path,
                             const char* elementType,
                             const std::vector<uint64_t>& shape,
                             const void* data,
                             std::size_t sizeBytes);

}  // namespace trovik
