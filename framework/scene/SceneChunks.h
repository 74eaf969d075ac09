// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/io/InputFile.h"
#include "framework/io/OutputFile.h"
#include "framework/jobs/JobPhase.h"
#include "framework/nodes/SceneStream.h"
#include "framework/scene/NoPadding.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// \file A scene file as a sequence of chunks after the header of SceneStream. A chunk consists of
/// its name (four letters), the CRC-32 of name, length and content, the length (uint64), and the
/// content. The first chunk is "HEAD", which contains the CRC-32 of the header; the last is "TEND",
/// which contains the length of the file.
namespace trovik {

inline constexpr std::size_t chunkNameBytes = 4;
inline constexpr std::size_t chunkHeaderBytes = 16;

/// Writes a scene to a new file next to the old one, and replaces the old one at the end. Errors:
/// HostError naming the file and the system's reason.
class TROVIK_API SceneWriter {
public:
    /// \param header  provides the format and class versions of the file.
    /// \param job  receives the progress of Write, which throws Cancelled; may be null. Borrowed.
    SceneWriter(const std::string& path, const SceneStream& header, JobControl* job = nullptr);
    /// Returns a stream for the content of a chunk.
    SceneStream Section() const { return prototype.Section(); }
    void Write(std::string_view name, const SceneStream& content);
    /// Closes the file and replaces the old one. Must be the last call.
    /// \param beforeReplacing  see FileReplacement::Commit.
    void Commit(const std::function<void(const std::string& temporaryPath)>& beforeReplacing = {});

private:
    void Put(const void* bytes, std::size_t size);

    OutputFile file;
    JobControl* job;
    SceneStream prototype;
    uint64_t written = 0;
};

/// Reads a scene file chunk by chunk and verifies the length and the checksum of each chunk. Memory
/// is proportional to the longest chunk. Errors: HostError "FILE: byte N: reason".
class TROVIK_API SceneReader {
public:
    /// Opens the file and reads its header.
    /// \param job  receives the progress of the constructor and of Next, which throw Cancelled; may
    /// be null. Borrowed.
    explicit SceneReader(const std::string& path, JobControl* job = nullptr);
    /// Reads the next chunk. \return false after the last chunk.
    bool Next();
    /// Name of the current chunk.
    const std::string& Name() const { return name; }
    /// Calls `read` with the content of the current chunk, which is valid until the next call to
    /// Next, and checks that all of it was read. The file, the byte and the chunk are added to
    /// errors that `read` throws.
    void Read(const std::function<void(SceneStream& content)>& read);

    const SceneStream& Header() const { return header; }
    const std::string& Path() const { return file.Path(); }
    [[noreturn]] void Fail(uint64_t byte, const std::string& reason) const;

private:
    SceneStream ReadHeader();
    /// Reads bytes of the header. \throw HostError if the file ends too early.
    void TakeHeader(std::vector<uint8_t>& bytes, std::size_t count);

    InputFile file;
    JobControl* job;
    uint32_t headerChecksum = 0;
    SceneStream header;
    std::string name;
    const uint8_t* content = nullptr;
    uint64_t contentBytes = 0;
    uint64_t contentOffset = 0;
    bool ended = false;
};

/// Writes `count` plain values as raw bytes.
template <NoPadding T>
void WriteValues(SceneStream& stream, const T* values, uint64_t count) {
    stream.WriteElements(values, sizeof(T), count);
}

/// Writes a list of plain values, preceded by its count.
template <NoPadding T>
void WriteList(SceneStream& stream, const std::vector<T>& list) {
    auto count = static_cast<uint32_t>(list.size());
    stream.Transfer(count);
    WriteValues(stream, list.data(), list.size());
}

/// Writes the values that `valueOf(index)` returns for the indices 0 to count - 1, without
/// gathering all of them first, and reports them to the stream's job.
template <NoPadding T, typename ValueOf>
void WriteGathered(SceneStream& stream, uint64_t count, ValueOf valueOf) {
    stream.Reserve(count * sizeof(T));
    JobPhase phase(stream.Job(), "Gathering the scene", count);
    std::vector<T> run;
    phase.ForEachRun([&](uint64_t first, uint64_t end) {
        run.clear();
        for (uint64_t i = first; i < end; ++i) run.push_back(valueOf(i));
        WriteValues(stream, run.data(), run.size());
    });
    phase.Finish();
}

/// Reads values written by WriteValues, and reports them to the stream's job. \throw Error*, before
/// any memory is allocated, if the stream is too short.
template <typename T>
std::vector<T> ReadValues(SceneStream& stream, uint64_t count) {
    stream.Expect(count, sizeof(T));
    std::vector<T> list;
    list.reserve(static_cast<std::size_t>(count));
    JobPhase phase(stream.Job(), "Unpacking the scene", count);
    phase.ForEachRun([&](uint64_t first, uint64_t end) {
        list.resize(static_cast<std::size_t>(end));
        stream.ReadElements(list.data() + first, sizeof(T), end - first);
    });
    phase.Finish();
    return list;
}

/// Reads a list written by WriteList.
template <typename T>
std::vector<T> ReadList(SceneStream& stream) {
    uint32_t count = 0;
    stream.Transfer(count);
    return ReadValues<T>(stream, count);
}

}  // namespace trovik
