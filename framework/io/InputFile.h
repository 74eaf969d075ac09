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

/// A regular file that is read from start to end, by lines or by bytes.
///
/// Requested data is returned contiguously in a buffer that grows to the requested size, but never
/// beyond the file size. Errors: HostError with the path and the system's reason; Cancelled. Not
/// thread-safe.
class TROVIK_API InputFile {
public:
    /// \param job  receives the progress of reading the whole file as one phase, in bytes; may be
    /// null. Borrowed.
    /// \throw HostError also for a folder, a device or a pipe.
    explicit InputFile(const std::string& path, JobControl* job = nullptr);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    const std::string& Path() const { return path; }
    /// Returns how many bytes have been consumed so far.
    std::uint64_t Position() const { return position; }
    /// Returns how many bytes are left, based on the file size at the time of opening.
    std::uint64_t Remaining() const { return size > position ? size - position : 0; }

    /// Reads the next line without its terminator (LF or CR LF), which may be missing at the end of
    /// the file.
    /// \param line  valid until the next call.
    /// \return false at the end of the file.
    /// \throw HostError for a line longer than `maxBytes`.
    bool NextLine(std::string_view& line, std::size_t maxBytes);

    /// Reads the next `sizeBytes` bytes.
    /// \param bytes  a phase that is advanced by the number of bytes read from the system; may be
    /// null.
    /// \return a pointer that is valid until the next call; null if the file has fewer bytes left.
    const unsigned char* Take(std::size_t sizeBytes, JobPhase* bytes = nullptr);

    /// Skips bytes.
    /// \return false if the file has fewer bytes left.
    bool Skip(std::uint64_t sizeBytes);

private:
    /// Reads until `wanted` bytes are in the buffer.
    /// \return false at the end of the file.
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
