// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/ClassDesc.h"
#include "host/Stream.h"

#include <map>
#include <string>
#include <vector>

namespace trovik {

/// A stream of nodes in memory, being written or being read: whole with its header, or one section
/// of a scene file, whose header stands once at the head of the file.
///
/// Header: "TROVIKSC", format number (uint32), count of classes (uint32), per class its name
/// (uint32 length, UTF-8) and version (int32); then the nodes' data. Little-endian throughout.
class TROVIK_API SceneStream : public Stream {
public:
    using Stream::Transfer;
    static constexpr uint32_t currentFormat = 334;

    /// For writing. Present class versions are those of the registry.
    explicit SceneStream(uint32_t format = currentFormat);
    /// For reading. \throw Error* when the bytes are no scene or end within the header.
    explicit SceneStream(std::vector<uint8_t> bytes);

    /// An empty stream for writing, without a header of its own, under this one's format and class
    /// versions.
    SceneStream Section() const;
    /// Reads `size` bytes, borrowed, under this one's format and class versions.
    /// \param place  of the first byte in its file, for messages. \param what  what messages call
    /// it, such as "chunk LEVL".
    SceneStream Section(const uint8_t* bytes, uint64_t size, uint64_t place, QString what) const;

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

    uint64_t Remaining() const { return size - position; }
    /// What a writing stream holds, without the header.
    const std::vector<uint8_t>& Data() const { return data; }
    /// The next byte to be read.
    const uint8_t* Next() const { return Bytes() + position; }
    /// Where that byte stands in the file; a whole stream counts behind its header.
    uint64_t Place() const { return origin + position; }
    uint32_t Format() const { return format; }

    /// \throw Error* when fewer bytes are left. To be asked before memory is taken by a count.
    void Expect(uint64_t count, uint64_t elementSize) const;
    /// Passes over bytes. \throw Error* when fewer are left.
    void Skip(uint64_t bytes);
    /// \throw Error* when bytes are left over.
    void ExpectEnd() const;
    /// \throw Error* of this reason.
    [[noreturn]] static void Refuse(const QString& reason);

private:
    const uint8_t* Bytes() const { return borrowed != nullptr ? borrowed : data.data(); }

    bool storing;
    uint32_t format;
    std::vector<uint8_t> data;
    /// Bytes that are read from elsewhere than `data`; null without.
    const uint8_t* borrowed = nullptr;
    uint64_t size = 0;
    uint64_t position = 0;
    uint64_t origin = 0;
    QString title = QStringLiteral("the scene");
    std::map<std::string, int32_t> versions;
};

}  // namespace trovik
