// SPDX-License-Identifier: Apache-2.0
#include "framework/scene/SceneChunks.h"

#include "framework/errors/HostError.h"
#include "framework/io/Crc32.h"
#include "framework/jobs/JobPhase.h"

#include <algorithm>
#include <cassert>
#include <cctype>
#include <cstring>

namespace trovik {

namespace {

constexpr const char* firstChunk = "HEAD";
constexpr const char* lastChunk = "TEND";
constexpr std::size_t fixedHeaderBytes = 16;
/// Maximum number of classes, more than any program needs.
constexpr uint32_t maxClasses = 4096;
constexpr uint32_t maxClassNameBytes = 1024;

uint32_t NumberAt(const std::vector<uint8_t>& bytes, std::size_t offset) {
    uint32_t number = 0;
    std::memcpy(&number, bytes.data() + offset, sizeof number);
    return number;
}

/// Number of bytes in a chunk that are processed at a time.
constexpr std::size_t runBytes = std::size_t{1} << 20;

/// Calls work(first, size) for consecutive ranges of a chunk.
template <typename Work>
void ForEachRun(JobPhase& phase, std::size_t total, Work work) {
    for (std::size_t first = 0; first < total; first += runBytes) {
        const std::size_t size = std::min(runBytes, total - first);
        work(first, size);
        phase.Add(size);
    }
}

/// Returns the name in printable form, because a damaged file can contain arbitrary bytes.
std::string Printable(const std::string& name) {
    std::string text;
    for (const char letter : name) {
        const bool plain = letter > ' ' && letter <= '~';
        text += plain ? letter : '?';
    }
    return text;
}

}  // namespace

SceneWriter::SceneWriter(const std::string& path, const SceneStream& header, JobControl* jobControl)
    : file(path), job(jobControl), prototype(header.Section()) {
    prototype.SetJob(job);
    const std::vector<uint8_t> bytes = prototype.ToBytes();
    Put(bytes.data(), bytes.size());
    SceneStream check = Section();
    uint32_t checksum = Crc32(bytes.data(), bytes.size());
    check.Transfer(checksum);
    Write(firstChunk, check);
}

void SceneWriter::Put(const void* bytes, std::size_t size) {
    file.Write(bytes, size);
    written += size;
}

void SceneWriter::Write(std::string_view name, const SceneStream& content) {
    assert(name.size() == chunkNameBytes);
    const std::vector<uint8_t>& bytes = content.Data();
    const uint64_t length = bytes.size();
    uint32_t checksum = Crc32(name.data(), name.size());
    checksum = Crc32(&length, sizeof length, checksum);
    JobPhase phase(job, "Writing the scene", length * 2, 1);
    ForEachRun(phase, bytes.size(), [&](std::size_t first, std::size_t size) {
        checksum = Crc32(bytes.data() + first, size, checksum);
    });
    Put(name.data(), name.size());
    Put(&checksum, sizeof checksum);
    Put(&length, sizeof length);
    ForEachRun(phase, bytes.size(), [&](std::size_t first, std::size_t size) {
        Put(bytes.data() + first, size);
    });
    phase.Finish();
}

void SceneWriter::Commit(const std::function<void(const std::string&)>& beforeReplacing) {
    SceneStream end = Section();
    uint64_t length = written + chunkHeaderBytes + sizeof length;
    end.Transfer(length);
    Write(lastChunk, end);
    file.Commit(beforeReplacing);
}

SceneReader::SceneReader(const std::string& path, JobControl* jobControl)
    : file(path), job(jobControl), header(ReadHeader()) {
    uint32_t checksum = 0;
    if (!Next() || name != firstChunk)
        Fail(contentOffset, "chunk HEAD is missing; the file is damaged");
    Read([&checksum](SceneStream& stream) { stream.Transfer(checksum); });
    if (checksum != headerChecksum)
        Fail(0, "the header does not match its checksum; the file is damaged");
}

void SceneReader::Fail(uint64_t byte, const std::string& reason) const {
    throw HostError(file.Path() + ": byte " + std::to_string(byte) + ": " + reason);
}

void SceneReader::TakeHeader(std::vector<uint8_t>& bytes, std::size_t count) {
    const unsigned char* taken = file.Take(count);
    if (taken == nullptr)
        Fail(file.Position() + file.Remaining(), "the file ends inside the scene header");
    bytes.insert(bytes.end(), taken, taken + count);
}

// Read in pieces, because the length of the header depends on its fields.
SceneStream SceneReader::ReadHeader() {
    std::vector<uint8_t> bytes;
    TakeHeader(bytes, fixedHeaderBytes);
    const std::vector<uint8_t> sample = SceneStream().ToBytes();
    if (std::memcmp(bytes.data(), sample.data(), 8) != 0)
        Fail(0, "not a scene: the first eight bytes are not TROVIKSC");
    const uint32_t format = NumberAt(bytes, 8);
    if (format > SceneStream::currentFormat) {
        Fail(8,
             "the file has format " + std::to_string(format) +
                 " or is damaged; this program reads formats up to " +
                 std::to_string(SceneStream::currentFormat));
    }
    const uint32_t classes = NumberAt(bytes, 12);
    if (classes > maxClasses)
        Fail(12, "too many classes (" + std::to_string(classes) + "); the file is damaged");
    for (uint32_t i = 0; i < classes; ++i) {
        const uint64_t offset = file.Position();
        TakeHeader(bytes, sizeof(uint32_t));
        const uint32_t length = NumberAt(bytes, bytes.size() - sizeof(uint32_t));
        if (length > maxClassNameBytes)
            Fail(offset, "the name of a class is too long; the file is damaged");
        TakeHeader(bytes, length + sizeof(int32_t));
    }
    headerChecksum = Crc32(bytes.data(), bytes.size());
    return SceneStream(std::move(bytes));
}

bool SceneReader::Next() {
    if (ended) return false;
    const uint64_t offset = file.Position();
    contentOffset = offset;
    if (file.Remaining() == 0) Fail(offset, "the file is truncated: chunk TEND is missing");
    const unsigned char* head = file.Take(chunkHeaderBytes);
    if (head == nullptr) Fail(offset, "the file is truncated inside a chunk header");
    name.assign(reinterpret_cast<const char*>(head), chunkNameBytes);
    uint32_t expected = 0;
    std::memcpy(&expected, head + chunkNameBytes, sizeof expected);
    std::memcpy(&contentBytes, head + chunkNameBytes + sizeof expected, sizeof contentBytes);
    const std::string what = "chunk " + Printable(name);
    if (contentBytes > file.Remaining()) {
        Fail(offset,
             what + " should have " + std::to_string(contentBytes) + " bytes, but the file has " +
                 std::to_string(file.Remaining()) + " left: it is truncated or damaged");
    }
    contentOffset = file.Position();
    // One pass for reading and one for the checksum.
    JobPhase phase(job, "Reading the scene", contentBytes * 2, 1);
    content =
        contentBytes == 0 ? nullptr : file.Take(static_cast<std::size_t>(contentBytes), &phase);
    if (contentBytes != 0 && content == nullptr)
        Fail(contentOffset, "the file was truncated while it was being read");
    uint32_t checksum = Crc32(name.data(), name.size());
    checksum = Crc32(&contentBytes, sizeof contentBytes, checksum);
    phase.Reach(contentBytes);
    ForEachRun(
        phase, static_cast<std::size_t>(contentBytes), [&](std::size_t first, std::size_t size) {
            checksum = Crc32(content + first, size, checksum);
        });
    phase.Finish();
    if (checksum != expected)
        Fail(offset, what + " does not match its checksum; the file is damaged");
    if (name != lastChunk) return true;
    ended = true;
    uint64_t length = 0;
    Read([&length](SceneStream& stream) { stream.Transfer(length); });
    if (file.Remaining() != 0)
        Fail(file.Position(), "bytes follow the end of the scene; the file is damaged");
    if (length != file.Position()) {
        Fail(file.Position(),
             "the scene should be " + std::to_string(length) +
                 " bytes long, but parts of it are missing");
    }
    return false;
}

void SceneReader::Read(const std::function<void(SceneStream&)>& read) {
    const std::string what = "chunk " + Printable(name);
    // Used for an empty chunk, because a null pointer means that no bytes are borrowed.
    static constexpr uint8_t none = 0;
    SceneStream stream = header.Section(content == nullptr ? &none : content,
                                        contentBytes,
                                        contentOffset,
                                        QString::fromStdString(what));
    stream.SetJob(job);
    try {
        read(stream);
        stream.ExpectEnd();
    } catch (Error* error) {
        const std::string reason = error->Message().toStdString();
        Error::Dispose(error);
        Fail(stream.Offset(), what + ": " + reason);
    } catch (const HostError& error) {
        Fail(stream.Offset(), what + ": " + error.what());
    }
}

}  // namespace trovik
