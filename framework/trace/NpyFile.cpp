// SPDX-License-Identifier: Apache-2.0
#include "framework/trace/NpyFile.h"

#include "framework/io/FilePath.h"

#include <bit>
#include <cerrno>
#include <cstdio>

namespace trovik {

namespace {

static_assert(std::endian::native == std::endian::little, "arrays are written in memory order");

constexpr std::size_t alignment = 64;
// The magic string, two version bytes and two length bytes.
constexpr std::size_t preludeBytes = 10;

}  // namespace

std::string NpyHeader(const char* elementType, const std::vector<uint64_t>& shape) {
    std::string header =
        std::string("{'descr': ") + elementType + ", 'fortran_order': False, 'shape': (";
    for (std::size_t i = 0; i < shape.size(); ++i) {
        header += std::to_string(shape[i]);
        // A tuple with one element ends with a comma.
        if (i + 1 < shape.size()) header += ", ";
        if (shape.size() == 1) header += ",";
    }
    header += "), }";
    const std::size_t used = preludeBytes + header.size() + 1;
    header.append((alignment - used % alignment) % alignment, ' ');
    header += '\n';
    std::string prelude("\x93NUMPY\x01\x00", 8);
    prelude += static_cast<char>(header.size() & 0xff);
    prelude += static_cast<char>(header.size() >> 8);
    return prelude + header;
}

void WriteNpyFile(const std::string& path,
                  const char* elementType,
                  const std::vector<uint64_t>& shape,
                  const void* data,
                  std::size_t sizeBytes) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) ThrowFileError("write", path, errno);
    const std::string header = NpyHeader(elementType, shape);
    bool good = std::fwrite(header.data(), 1, header.size(), file) == header.size();
    if (good && sizeBytes != 0) good = std::fwrite(data, 1, sizeBytes, file) == sizeBytes;
    int reason = errno;
    if (std::fclose(file) != 0 && good) {
        good = false;
        reason = errno;
    }
    if (!good) ThrowFileError("write", path, reason);
}

}  // namespace trovik
