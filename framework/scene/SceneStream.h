// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/ClassDesc.h"
#include "host/Stream.h"

#include <map>
#include <string>
#include <vector>

namespace trovik {

/// A scene file in memory, being written or being read.
///
/// File: "TROVIKSC", format number (uint32), count of classes (uint32), per class its name (uint32
/// length, UTF-8) and version (int32), then the nodes' data. Little-endian throughout.
class TROVIK_API SceneStream : public Stream {
public:
    using Stream::Transfer;
    static constexpr uint32_t currentFormat = 330;

    /// For writing. Present class versions are those of the registry.
    explicit SceneStream(uint32_t format = currentFormat);
    /// For reading. \throw Error* when the bytes are no scene or end within the header.
    explicit SceneStream(std::vector<uint8_t> bytes);

    /// Writes a class under another version than its present one, as an older program would.
    void SetClassVersion(const ClassDesc* classDesc, int version);
    /// Header and data of a written stream.
    std::vector<uint8_t> ToBytes() const;
    /// Writes the scene beside the old file and renames. \throw HostError naming the file.
    void ToFile(const std::string& path) const;
    /// Opens a scene for reading. \throw HostError naming the file, when it cannot be read or is no
    /// scene.
    static SceneStream FromFile(const std::string& path);

    int ClassVersion(const ClassDesc* classDesc) const override;
    bool IsFormatAtLeast(uint32_t number) const override { return format >= number; }
    bool IsStoring() const override { return storing; }
    void ReadElements(void* elements, uint32_t elementSize, uint64_t count) override;
    void WriteElements(const void* elements, uint32_t elementSize, uint64_t count) override;
    void ReadStore(Store<uint32_t>& store) override;
    void WriteStore(const Store<uint32_t>& store) override;

    uint64_t Remaining() const { return data.size() - position; }

private:
    bool storing;
    uint32_t format;
    std::vector<uint8_t> data;
    std::size_t position = 0;
    std::map<std::string, int32_t> versions;
};

}  // namespace trovik
