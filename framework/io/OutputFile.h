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

/// A file that is written from start to end through a buffer of one mebibyte, and replaces its
/// target as a whole.
///
/// Until Commit the target is unchanged. If the object is destroyed without Commit, for example
/// after an error, no file is left. See FileReplacement. Numbers are written independently of the
/// locale. Errors: HostError with the path and the reason given by the system (missing folder, full
/// disk). Cost: one system call per mebibyte.
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

    /// Writes the shortest text that restores the float exactly, at most nine digits.
    void Number(float value) {
        // Sign, nine digits, point, and an exponent of four characters, with a margin.
        Room(LongestNumber);
        next = std::to_chars(next, next + LongestNumber, value).ptr;
    }

    void Number(std::uint64_t value) {
        Room(LongestNumber);
        next = std::to_chars(next, next + LongestNumber, value).ptr;
    }

    /// Syncs the content to disk and replaces the target. Called once, after the last write.
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
