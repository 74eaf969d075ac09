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

/// A record of a journal. Its content lies in the reader's bytes.
struct JournalRecord {
    RecordKind kind;
    /// Place of the record in the file.
    uint64_t byte;
    std::string_view content;
};

/// A journal as bytes: which records are whole, and what became of the rest.
///
/// What was cut off at the end, as a process that is killed leaves it, is no error: such a tail has
/// no whole record behind it, and is told as a note. Anything else is damage.
class TROVIK_API JournalReader {
public:
    /// \throw HostError "FILE: byte N: reason" for what is no journal, or one of a version that
    /// this program does not read.
    explicit JournalReader(const std::string& path);

    const std::string& Path() const { return path; }
    /// The whole records up to the end, or up to the damage.
    const std::vector<JournalRecord>& Records() const { return records; }
    /// Why the records end before the file does, as "FILE: byte N: reason"; empty where they do not
    /// or where only a tail is torn.
    const std::string& Damage() const { return damage; }
    /// What was left out at the end, in one line; empty for nothing.
    const std::string& TornTail() const { return tornTail; }
    [[noreturn]] void Fail(uint64_t byte, const std::string& reason) const;

private:
    struct Frame {
        uint32_t length;
        uint32_t kind;
        uint32_t number;
    };
    /// The record at this place, if it is whole.
    std::optional<Frame> WholeFrameAt(std::size_t place) const;
    /// Whether a whole record with a number of at least `number` lies anywhere from here on.
    bool RecordFollows(std::size_t place, uint32_t number) const;
    void ReadHeader();
    void ReadRecords();

    std::string path;
    std::string bytes;
    std::vector<JournalRecord> records;
    std::string damage;
    std::string tornTail;
};

}  // namespace trovik
