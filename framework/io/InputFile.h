// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/jobs/JobPhase.h"
#include "host/Api.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace trovik {

/// A regular file read from start to end, in lines or in bytes.
///
/// What is asked for lies in one piece in a buffer, which grows to what was asked for, and never by
/// more than the file holds.
/// Errors: HostError naming the path and the system's reason; Cancelled. Not for use by several
/// threads.
class TROVIK_API InputFile {
public:
    /// \param job  reading the whole file is one phase of it, in bytes; null: nobody. Borrowed.
    /// \throw HostError also for a folder, a device or a pipe.
    explicit InputFile(const std::string& path, JobControl* job = nullptr);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    const std::string& Path() const { return path; }
    /// Bytes handed out so far.
    std::uint64_t Position() const { return position; }
    /// Bytes not handed out yet, by the size that the file had when it was opened.
    std::uint64_t Remaining() const { return size > position ? size - position : 0; }

    /// Takes the next line, without its end (LF or CR LF); the last may lack one.
    /// \param line  valid until the next call.
    /// \return false at the end of the file.
    /// \throw HostError for a line of more than `maxBytes`.
    bool NextLine(std::string_view& line, std::size_t maxBytes);

    /// Takes the next `sizeBytes` bytes.
    /// \param bytes  a phase to which the bytes are added that are read from the system; null:
    /// none. \return where they lie until the next call; null where the file holds fewer.
    const unsigned char* Take(std::size_t sizeBytes, JobPhase* bytes = nullptr);

    /// Passes over bytes. \return false where the file holds fewer.
    bool Skip(std::uint64_t sizeBytes);

private:
    /// Reads on until `wanted` bytes lie in the buffer; \return false at the end of the file.
    bool Fill(std::size_t wanted, JobPhase* bytes = nullptr);
    std::size_t Buffered() const { return end - begin; }

    std::string path;
    int file = -1;
    std::uint64_t size = 0;
    std::uint64_t position = 0;
    /// Bytes read from the system.
    std::uint64_t readBytes = 0;
    bool isRead = false;
    JobPhase phase;
    std::vector<char> buffer;
    std::size_t begin = 0;
    std::size_t end = 0;
};

}  // namespace trovik
