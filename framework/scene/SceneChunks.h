// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/io/InputFile.h"
#include "framework/io/OutputFile.h"
#include "framework/nodes/SceneStream.h"
#include "framework/scene/NoPadding.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// \file
/// A scene file as a row of chunks behind the header of SceneStream. A chunk is its name (four
/// letters), the CRC-32 of name, length and content, the length (uint64), and the content. The
/// first is "HEAD" with the CRC-32 of the header, the last "TEND" with the length of the file.
namespace trovik {

inline constexpr std::size_t chunkNameBytes = 4;
inline constexpr std::size_t chunkHeaderBytes = 16;

/// Writes a scene file beside the old one, and puts it in place at the end.
/// Errors: HostError naming the file and the system's reason.
class TROVIK_API SceneWriter {
public:
    /// \param header  its format and class versions are those of the file.
    /// \param job  of Write, which throws Cancelled; null: nobody. Borrowed.
    SceneWriter(const std::string& path, const SceneStream& header, JobControl* job = nullptr);
    /// For the content of a chunk.
    SceneStream Section() const { return prototype.Section(); }
    void Write(std::string_view name, const SceneStream& content);
    /// Closes the file and puts it in place. To be called once, as the last thing.
    /// \param beforeReplacing  see FileReplacement::Commit.
    void Commit(const std::function<void(const std::string& temporaryPath)>& beforeReplacing = {});

private:
    void Put(const void* bytes, std::size_t size);

    OutputFile file;
    JobControl* job;
    SceneStream prototype;
    uint64_t written = 0;
};

/// Reads a scene file chunk by chunk. What it hands out has the length that it tells and passed its
/// checksum; memory follows the longest chunk.
/// Errors: HostError "FILE: byte N: reason".
class TROVIK_API SceneReader {
public:
    /// Opens the file and reads its header.
    /// \param job  of the constructor and of Next, which throw Cancelled; null: nobody. Borrowed.
    explicit SceneReader(const std::string& path, JobControl* job = nullptr);
    /// Goes on to the next chunk. \return false behind the last.
    bool Next();
    /// Name of the chunk at hand.
    const std::string& Name() const { return name; }
    /// Runs `read` on the content of the chunk at hand, which lies there until the next call of
    /// Next, and sees that all of it was taken. Errors of `read` get file, byte and chunk.
    void Read(const std::function<void(SceneStream& content)>& read);

    const SceneStream& Header() const { return header; }
    const std::string& Path() const { return file.Path(); }
    [[noreturn]] void Fail(uint64_t byte, const std::string& reason) const;

private:
    SceneStream ReadHeader();
    /// Takes bytes of the header. \throw HostError where the file ends before.
    void TakeHeader(std::vector<uint8_t>& bytes, std::size_t count);

    InputFile file;
    JobControl* job;
    uint32_t headerChecksum = 0;
    SceneStream header;
    std::string name;
    const uint8_t* content = nullptr;
    uint64_t contentBytes = 0;
    uint64_t contentPlace = 0;
    bool ended = false;
};

/// `count` plain values, byte by byte.
template <NoPadding T>
void WriteValues(SceneStream& stream, const T* values, uint64_t count) {
    stream.WriteElements(values, sizeof(T), count);
}

/// A whole list of plain values, its count ahead.
template <NoPadding T>
void WriteList(SceneStream& stream, const std::vector<T>& list) {
    auto count = static_cast<uint32_t>(list.size());
    stream.Transfer(count);
    WriteValues(stream, list.data(), list.size());
}

/// What WriteValues wrote. \throw Error* before memory is taken, when they are not there.
template <typename T>
std::vector<T> ReadValues(SceneStream& stream, uint64_t count) {
    stream.Expect(count, sizeof(T));
    std::vector<T> list(static_cast<std::size_t>(count));
    stream.ReadElements(list.data(), sizeof(T), count);
    return list;
}

/// What WriteList wrote.
template <typename T>
std::vector<T> ReadList(SceneStream& stream) {
    uint32_t count = 0;
    stream.Transfer(count);
    return ReadValues<T>(stream, count);
}

}  // namespace trovik
