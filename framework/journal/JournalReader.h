// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/journal/JournalRecord.h"
#include "host/Api.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace trovik {

/// A record of a journal. Its content points into the reader's buffer.
struct JournalRecord {
    RecordKind kind;
    /// Offset of the record in the file.
    uint64_t byte;
    std::string_view content;
};

/// Parses the bytes of a journal into complete records, and determines whether the remaining bytes
/// are a truncated end or damage.
///
/// An incomplete record at the end of the file, such as a killed process leaves behind, is reported
/// as a note and not as an error. Anything else is damage.
class TROVIK_API JournalReader {
public:
    /// \throw HostError "FILE: byte N: reason" for a file that is not a journal or whose version is
    /// not supported.
    explicit JournalReader(const std::string& path);

    const std::string& Path() const { return path; }
    /// The complete records up to the end or the damage.
    const std::vector<JournalRecord>& Records() const { return records; }
    /// If reading stopped at a damaged record, describes the damage as "FILE: byte N: reason".
    /// Empty otherwise, even if the end of the file is truncated.
    const std::string& Damage() const { return damage; }
    /// Describes the skipped end in one line; empty if nothing was skipped.
    const std::string& TruncatedEnd() const { return truncatedEnd; }
    [[noreturn]] void Fail(uint64_t byte, const std::string& reason) const;

private:
    struct Frame {
        uint32_t length;
        uint32_t kind;
        uint32_t number;
    };
    /// Returns the record at this offset, if it is complete.
    std::optional<Frame> WholeFrameAt(std::size_t offset) const;
    /// Returns whether a complete record with this number or a higher one exists at or after this
    /// offset.
    bool RecordFollows(std::size_t offset, uint32_t number) const;
    void ReadHeader();
    void ReadRecords();

    std::string path;
    std::string bytes;
    std::vector<JournalRecord> records;
    std::string damage;
    std::string truncatedEnd;
};

}  // namespace trovik
