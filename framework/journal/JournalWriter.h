// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/journal/JournalRecord.h"
#include "host/Api.h"

#include <memory>
#include <string>
#include <vector>

namespace trovik {

class FileReplacement;

/// Writes the records of a journal, each with at most one system call.
///
/// A new journal is written next to the one that it replaces; PutInPlace renames it, so that there
/// is always a complete journal at the path. The journal is locked (FileLock) from its creation
/// until the writer is destroyed. Errors: HostError naming the path and the system's reason. If a
/// record could not be written completely, readers skip it as a truncated end, and nothing may be
/// appended after it.
class TROVIK_API JournalWriter {
public:
    explicit JournalWriter(const std::string& path);
    ~JournalWriter();
    JournalWriter(const JournalWriter&) = delete;
    JournalWriter& operator=(const JournalWriter&) = delete;

    /// Adds a record to the buffer that Flush writes.
    void Append(RecordKind kind, const void* content, std::size_t size);
    void Append(RecordKind kind, const std::string& text) {
        Append(kind, text.data(), text.size());
    }
    template <typename Content>
    void AppendValue(RecordKind kind, const Content& content) {
        static_assert(std::is_trivially_copyable_v<Content>);
        Append(kind, &content, sizeof content);
    }
    /// Passes the buffer to the operating system. After that, its records survive the end of this
    /// process.
    void Flush();
    /// Calls Flush and waits for the disk. After that, the records survive a crash of the machine.
    void Sync();
    /// \throw HostError if the path no longer refers to the file that this object writes.
    void RequireInPlace() const;
    /// Calls Sync and renames the journal to its path. Call it once. \param mayReplace  whether an
    /// existing file may be replaced; otherwise, the call fails if there is one.
    void PutInPlace(bool mayReplace);

    const std::string& Path() const { return path; }

private:
    std::string path;
    std::unique_ptr<FileReplacement> replacement;
    int file = -1;
    /// File descriptor that holds the lock once the journal is in place.
    int lock = -1;
    uint32_t count = 0;
    std::vector<unsigned char> waiting;
};

}  // namespace trovik
