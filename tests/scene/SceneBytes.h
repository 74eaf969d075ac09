// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// \file A second reader for the outer layout of scene files, so that tests can inspect and change
/// files. It is written from docs/scene-format.md, independently of the library's reader.
namespace trovik::test {

struct RawChunk {
    std::string name;
    /// The offsets of the chunk's first byte and of its content.
    std::size_t place = 0;
    std::size_t contentOffset = 0;
    std::string content;
};

struct RawScene {
    uint32_t format = 0;
    std::vector<std::pair<std::string, int32_t>> classes;
    std::size_t headerBytes = 0;
    std::vector<RawChunk> chunks;

    const RawChunk& Chunk(const std::string& name) const;
};

/// \throw std::runtime_error if the bytes do not have the documented layout.
RawScene SplitScene(const std::string& bytes);
/// Returns the file with new checksums and the correct length for the current content of its
/// chunks.
std::string JoinScene(const std::string& header, const std::vector<RawChunk>& chunks);

/// Computes the checksum bit by bit, as documented.
uint32_t SlowCrc32(const std::string& bytes);

/// Returns the bytes of a plain number.
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
