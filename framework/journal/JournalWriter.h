// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/journal/JournalRecord.h"
#include "host/Api.h"

#include <memory>
#include <string>
#include <vector>

namespace trovik {

class FileReplacement;

/// Writes the records of a journal, each by one call of the system at most.
///
/// A new journal comes into being beside the one that it takes the place of; PutInPlace renames it.
/// So there is a whole journal under the name at any moment. The journal is locked (FileLock) from
/// its creation to the end of the writer.
/// Errors: HostError naming the path and the system's reason. A record that could not be written
/// whole is a torn one, which readers leave out; nothing may be appended behind it.
class TROVIK_API JournalWriter {
public:
    explicit JournalWriter(const std::string& path);
    ~JournalWriter();
    JournalWriter(const JournalWriter&) = delete;
    JournalWriter& operator=(const JournalWriter&) = delete;

    /// Adds a record to those that wait for Flush.
    void Append(RecordKind kind, const void* content, std::size_t size);
    void Append(RecordKind kind, const std::string& text) {
        Append(kind, text.data(), text.size());
    }
    template <typename Content>
    void AppendValue(RecordKind kind, const Content& content) {
        static_assert(std::is_trivially_copyable_v<Content>);
        Append(kind, &content, sizeof content);
    }
    /// Hands what waits to the system: from here on the end of this process loses none of it.
    void Flush();
    /// Flush, and waits until the disk has it: from here on not even the machine's end does.
    void Sync();
    /// Sync, and puts the journal under its name. To be called once. \param mayReplace  whether a
    /// file may be there already; otherwise the call fails then.
    void PutInPlace(bool mayReplace);

    const std::string& Path() const { return path; }

private:
    std::string path;
    std::unique_ptr<FileReplacement> replacement;
    int file = -1;
    /// Descriptor that holds the lock once the journal is in place.
    int lock = -1;
    uint32_t count = 0;
    std::vector<unsigned char> waiting;
};

}  // namespace trovik
