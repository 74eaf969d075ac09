// SPDX-License-Identifier: Apache-2.0
#include "framework/journal/JournalReader.h"

#include "framework/errors/HostError.h"
#include "framework/io/Crc32.h"
#include "framework/io/InputFile.h"

#include <algorithm>
#include <cstring>

namespace trovik {

namespace {

uint32_t NumberAt(const std::string& bytes, std::size_t offset) {
    uint32_t number = 0;
    std::memcpy(&number, bytes.data() + offset, sizeof number);
    return number;
}

}  // namespace

JournalReader::JournalReader(const std::string& journalPath) : path(journalPath) {
    InputFile file(path);
    // Read in pieces, so that memory depends on the actual content and not on the reported file
    // size.
    constexpr uint64_t pieceBytes = uint64_t{1} << 20;
    while (file.Remaining() > 0) {
        const auto size = static_cast<std::size_t>(std::min(pieceBytes, file.Remaining()));
        const unsigned char* piece = file.Take(size);
        if (piece == nullptr)
            Fail(file.Position(), "the file was truncated while it was being read");
        bytes.append(reinterpret_cast<const char*>(piece), size);
    }
    ReadHeader();
    ReadRecords();
}

void JournalReader::Fail(uint64_t byte, const std::string& reason) const {
    throw HostError(path + ": byte " + std::to_string(byte) + ": " + reason);
}

void JournalReader::ReadHeader() {
    if (bytes.size() < journalHeaderBytes)
        Fail(bytes.size(), "the file ends inside the journal header");
    if (std::memcmp(bytes.data(), journalMagic.data(), journalMagic.size()) != 0)
        Fail(0, "not a journal: the first eight bytes are not TROVIKJN");
    const uint32_t version = NumberAt(bytes, 8);
    if (Crc32(bytes.data(), 12) != NumberAt(bytes, 12))
        Fail(0, "the header does not match its checksum; the file is damaged");
    if (version != journalVersion) {
        Fail(8,
             "the journal has version " + std::to_string(version) +
                 "; this program reads version " + std::to_string(journalVersion));
    }
}

std::optional<JournalReader::Frame> JournalReader::WholeFrameAt(std::size_t offset) const {
    if (bytes.size() - offset < recordHeaderBytes) return std::nullopt;
    const Frame frame{
        NumberAt(bytes, offset), NumberAt(bytes, offset + 4), NumberAt(bytes, offset + 8)};
    if (frame.kind == 0 || frame.kind > highestRecordKind) return std::nullopt;
    if (frame.length > bytes.size() - offset - recordHeaderBytes) return std::nullopt;
    const uint32_t checksum = Crc32(
        bytes.data() + offset + recordHeaderBytes, frame.length, Crc32(bytes.data() + offset, 12));
    if (checksum != NumberAt(bytes, offset + 12)) return std::nullopt;
    return frame;
}

// A checksum is computed only for bytes that look like a record, and only up to a limit. Otherwise,
// the time would be quadratic in the size of a file that is crafted to look like a record at every
// byte.
bool JournalReader::RecordFollows(std::size_t offset, uint32_t number) const {
    uint64_t effort = uint64_t{16} * bytes.size();
    for (; offset + recordHeaderBytes <= bytes.size(); ++offset) {
        const uint32_t kind = NumberAt(bytes, offset + 4);
        const uint64_t length = NumberAt(bytes, offset);
        const uint32_t found = NumberAt(bytes, offset + 8);
        if (kind == 0 || kind > highestRecordKind || found < number) continue;
        if (length > bytes.size() - offset - recordHeaderBytes) continue;
        if (length > effort) return true;
        effort -= length;
        if (WholeFrameAt(offset)) return true;
    }
    return false;
}

void JournalReader::ReadRecords() {
    std::size_t offset = journalHeaderBytes;
    const auto tell = [this](std::size_t byte, const std::string& reason) {
        damage = path + ": byte " + std::to_string(byte) + ": " + reason;
    };
    while (offset < bytes.size()) {
        const auto number = static_cast<uint32_t>(records.size());
        const auto frame = WholeFrameAt(offset);
        if (!frame) {
            if (RecordFollows(offset + 1, number)) {
                tell(offset,
                     "record " + std::to_string(number) +
                         " does not match its checksum; "
                         "the journal is damaged here, and more records follow");
            } else {
                truncatedEnd = path + ": the last " + std::to_string(bytes.size() - offset) +
                               " bytes, from byte " + std::to_string(offset) +
                               " on, are an incomplete record and are skipped";
            }
            return;
        }
        if (frame->number != number) {
            tell(offset,
                 "record " + std::to_string(number) + " is missing; record " +
                     std::to_string(frame->number) + " follows");
            return;
        }
        records.push_back(
            {static_cast<RecordKind>(frame->kind),
             offset,
             std::string_view(bytes).substr(offset + recordHeaderBytes, frame->length)});
        offset += recordHeaderBytes + frame->length;
    }
}

}  // namespace trovik
