// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// \file
/// A second reader of the outer layout of scene files, written from docs/scene-format.md without
/// the library's, so that tests can look into files and change them.
namespace trovik::test {

struct RawChunk {
    std::string name;
    /// Of the chunk's first byte, and of its content's.
    std::size_t place = 0;
    std::size_t contentPlace = 0;
    std::string content;
};

struct RawScene {
    uint32_t format = 0;
    std::vector<std::pair<std::string, int32_t>> classes;
    std::size_t headerBytes = 0;
    std::vector<RawChunk> chunks;

    const RawChunk& Chunk(const std::string& name) const;
};

/// \throw std::runtime_error for what is not laid out as told.
RawScene SplitScene(const std::string& bytes);
/// The file with new checksums and the right length, whatever its chunks hold now.
std::string JoinScene(const std::string& header, const std::vector<RawChunk>& chunks);

/// Bit by bit, as the document tells it.
uint32_t SlowCrc32(const std::string& bytes);

/// The bytes of a plain number.
template <typename T>
std::string BytesOf(const T& number) {
    return {reinterpret_cast<const char*>(&number), sizeof number};
}
template <typename T>
T NumberAt(const std::string& bytes, std::size_t place) {
    T number{};
    bytes.copy(reinterpret_cast<char*>(&number), sizeof number, place);
    return number;
}

}  // namespace trovik::test
