// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/io/FilePath.h"
#include "host/Api.h"

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace trovik {

/// A file that is written sequentially through a 1 MiB buffer and replaces its target as a whole.
///
/// The target is unchanged until Commit. If the object is destroyed without Commit, for example
/// after an error, the new file is removed. See FileReplacement. Numbers are written independently
/// of the locale. Errors: HostError with the path and the system's reason, such as a missing folder
/// or a full disk. Cost: one system call per MiB.
class TROVIK_API OutputFile {
public:
    explicit OutputFile(const std::string& path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void Write(const void* data, std::size_t sizeBytes);
    void Write(std::string_view text) { Write(text.data(), text.size()); }

    void Put(char letter) {
        Room(1);
        *next++ = letter;
    }

    /// Writes the shortest text that round-trips to the same float, with at most nine digits.
    void Number(float value) {
        // Enough for a sign, nine digits, a point and an exponent of four characters, with a
        // margin.
        Room(LongestNumber);
        next = std::to_chars(next, next + LongestNumber, value).ptr;
    }

    void Number(std::uint64_t value) {
        Room(LongestNumber);
        next = std::to_chars(next, next + LongestNumber, value).ptr;
    }

    /// Syncs the content to disk and replaces the target. Call it once, after the last write.
    /// \param beforeReplacing  see FileReplacement::Commit.
    void Commit(const std::function<void(const std::string& temporaryPath)>& beforeReplacing = {});

private:
    static constexpr std::size_t BufferBytes = std::size_t{1} << 20;
    static constexpr std::size_t LongestNumber = 32;

    /// Makes room for this number of bytes at `next`.
    void Room(std::size_t sizeBytes) {
        if (static_cast<std::size_t>(buffer.get() + BufferBytes - next) < sizeBytes) {
            Flush();
        }
    }
    void Flush();
    void WriteThrough(const char* data, std::size_t sizeBytes);

    FileReplacement replacement;
    int file = -1;
    std::unique_ptr<char[]> buffer;
    char* next = nullptr;
};

}  // namespace trovik
