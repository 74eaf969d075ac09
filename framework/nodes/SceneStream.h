// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/jobs/JobControl.h"
#include "host/ClassDesc.h"
#include "host/Stream.h"

#include <map>
#include <string>
#include <vector>

namespace trovik {

/// A stream of nodes in memory, for writing or reading. It is either a complete stream that
/// includes its header, or one section of a scene file, in which case the header is at the start of
/// the file.
///
/// Header: "TROVIKSC", format number (uint32), class count (uint32), for each class its name
/// (uint32 length, UTF-8) and version (int32); then the nodes' data. All values are little-endian.
class TROVIK_API SceneStream : public Stream {
public:
    using Stream::Transfer;
    static constexpr uint32_t currentFormat = 334;

    /// Creates a stream for writing. The class versions are taken from the registry.
    explicit SceneStream(uint32_t format = currentFormat);
    /// Creates a stream for reading.
    /// \throw Error* if the bytes are not a scene or end within the header.
    explicit SceneStream(std::vector<uint8_t> bytes);

    /// Returns an empty stream for writing. It has no header, and has this stream's format, class
    /// versions and job.
    SceneStream Section() const;
    /// Returns a stream that reads `size` borrowed bytes with this stream's format, class versions
    /// and job.
    /// \param offset  the offset of the first byte in its file, for messages.
    /// \param what  the name of the section for messages, such as "chunk LEVL".
    SceneStream Section(const uint8_t* bytes, uint64_t size, uint64_t offset, QString what) const;

    /// Sets the job that receives the progress of reading and writing arrays of a megabyte or more.
    /// Reading or writing such an array then throws Cancelled if the job is cancelled.
    /// \param jobControl  may be null. Borrowed.
    void SetJob(JobControl* jobControl) { job = jobControl; }
    JobControl* Job() const { return job; }
    /// Allocates memory for the bytes that will be written next. Existing content is copied to the
    /// new memory, and the job receives the progress of this copy.
    /// \throw Cancelled.
    void Reserve(uint64_t bytes);

    /// Sets the version that the stream contains for a class, so that the class is written as an
    /// older program would write it.
    void SetClassVersion(const ClassDesc* classDesc, int version);
    /// Returns the header and the data of a written stream.
    std::vector<uint8_t> ToBytes() const;
    /// Writes the scene to a new file that replaces the old one.
    /// \throw HostError with the file name.
    void ToFile(const std::string& path) const;
    /// Opens a scene for reading.
    /// \throw HostError with the file name, if the file cannot be read or is not a scene.
    static SceneStream FromFile(const std::string& path);

    int ClassVersion(const ClassDesc* classDesc) const override;
    bool IsFormatAtLeast(uint32_t number) const override { return format >= number; }
    bool IsStoring() const override { return storing; }
    void ReadElements(void* elements, uint32_t elementSize, uint64_t count) override;
    void WriteElements(const void* elements, uint32_t elementSize, uint64_t count) override;
    void ReadStore(Store<uint32_t>& store) override;
    void WriteStore(const Store<uint32_t>& store) override;

    uint64_t Remaining() const { return size - position; }
    /// The data of a stream that is being written, without the header.
    const std::vector<uint8_t>& Data() const { return data; }
    /// The next byte to be read.
    const uint8_t* Next() const { return Bytes() + position; }
    /// The offset of the next byte in the file; in a complete stream, the offset from the end of
    /// its header.
    uint64_t Offset() const { return origin + position; }
    uint32_t Format() const { return format; }

    /// \throw Error* if too few bytes are left for this many elements. Called before allocating
    /// memory for an element count that was read from the file.
    void Expect(uint64_t count, uint64_t elementSize) const;
    /// Skips bytes.
    /// \throw Error* if fewer are left.
    void Skip(uint64_t bytes);
    /// \throw Error* if bytes are left over.
    void ExpectEnd() const;
    /// \throw Error* with this reason.
    [[noreturn]] static void Refuse(const QString& reason);

private:
    const uint8_t* Bytes() const { return borrowed != nullptr ? borrowed : data.data(); }

    bool storing;
    uint32_t format;
    std::vector<uint8_t> data;
    /// The bytes to read if they are borrowed and not in `data`; otherwise null.
    const uint8_t* borrowed = nullptr;
    uint64_t size = 0;
    uint64_t position = 0;
    uint64_t origin = 0;
    JobControl* job = nullptr;
    QString title = QStringLiteral("the scene");
    std::map<std::string, int32_t> versions;
};

}  // namespace trovik
