// SPDX-License-Identifier: Apache-2.0
#include "tests/scene/SceneBytes.h"

#include <stdexcept>

namespace trovik::test {

uint32_t SlowCrc32(const std::string& bytes) {
    uint32_t crc = 0xffffffffu;
    for (const char letter : bytes) {
        crc ^= static_cast<unsigned char>(letter);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1u) != 0 ? (crc >> 1) ^ 0xedb88320u : crc >> 1;
    }
    return ~crc;
}

const RawChunk& RawScene::Chunk(const std::string& name) const {
    for (const RawChunk& chunk : chunks)
        if (chunk.name == name) return chunk;
    throw std::runtime_error("no chunk " + name);
}

RawScene SplitScene(const std::string& bytes) {
    RawScene scene;
    if (bytes.substr(0, 8) != "TROVIKSC") throw std::runtime_error("not a scene");
    scene.format = NumberAt<uint32_t>(bytes, 8);
    std::size_t at = 16;
    for (uint32_t i = NumberAt<uint32_t>(bytes, 12); i > 0; --i) {
        const auto length = NumberAt<uint32_t>(bytes, at);
        scene.classes.emplace_back(bytes.substr(at + 4, length),
                                   NumberAt<int32_t>(bytes, at + 4 + length));
        at += 8 + length;
    }
    scene.headerBytes = at;
    while (at < bytes.size()) {
        RawChunk chunk;
        chunk.name = bytes.substr(at, 4);
        chunk.place = at;
        chunk.contentOffset = at + 16;
        chunk.content = bytes.substr(at + 16, NumberAt<uint64_t>(bytes, at + 8));
        const std::string length = bytes.substr(at + 8, 8);
        if (NumberAt<uint32_t>(bytes, at + 4) != SlowCrc32(chunk.name + length + chunk.content))
            throw std::runtime_error("wrong checksum in " + chunk.name);
        at += 16 + chunk.content.size();
        scene.chunks.push_back(std::move(chunk));
    }
    return scene;
}

std::string JoinScene(const std::string& header, const std::vector<RawChunk>& chunks) {
    std::string bytes = header;
    for (const RawChunk& chunk : chunks) {
        std::string content = chunk.content;
        if (chunk.name == "HEAD") content = BytesOf(SlowCrc32(header));
        if (chunk.name == "TEND") content = BytesOf(uint64_t{bytes.size() + 24});
        const std::string length = BytesOf(uint64_t{content.size()});
        std::string checked = chunk.name;
        checked.append(length).append(content);
        bytes.append(chunk.name).append(BytesOf(SlowCrc32(checked)));
        bytes.append(length).append(content);
    }
    return bytes;
}

}  // namespace trovik::test
