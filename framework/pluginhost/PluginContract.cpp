// SPDX-License-Identifier: Apache-2.0
#include "framework/pluginhost/PluginContract.h"

#include "framework/errors/HostError.h"
#include "host/Contract.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <elf.h>
#include <fstream>
#include <link.h>
#include <vector>

namespace trovik {

namespace {

/// The version of plug-ins from before the note was introduced.
constexpr uint32_t versionWithoutNote = 1;
/// Notes are small; larger sizes occur only in damaged files.
constexpr uint64_t maxNoteBytes = uint64_t{1} << 20;

template <typename Record>
bool ReadAt(std::ifstream& file, uint64_t offset, Record* records, std::size_t count) {
    file.clear();
    file.seekg(static_cast<std::streamoff>(offset));
    file.read(reinterpret_cast<char*>(records),
              static_cast<std::streamsize>(count * sizeof(Record)));
    return file.good();
}

std::size_t Padded(std::size_t size, std::size_t alignment) {
    return (size + alignment - 1) / alignment * alignment;
}

/// Returns the contract version in a segment of notes.
std::optional<uint32_t> FindNote(const std::vector<char>& notes, std::size_t alignment) {
    const ContractNote wanted;
    for (std::size_t at = 0; at + sizeof(ElfW(Nhdr)) <= notes.size();) {
        ElfW(Nhdr) header;
        std::memcpy(&header, notes.data() + at, sizeof header);
        const std::size_t name = at + sizeof header;
        const std::size_t description = name + Padded(header.n_namesz, alignment);
        const std::size_t end = description + Padded(header.n_descsz, alignment);
        if (description > notes.size() || end > notes.size() + alignment) return std::nullopt;
        if (header.n_type == ContractNote::noteType && header.n_namesz == wanted.nameSize &&
            header.n_descsz == wanted.descriptionSize &&
            description + sizeof(uint32_t) <= notes.size() &&
            std::memcmp(notes.data() + name, wanted.name, sizeof wanted.name) == 0) {
            uint32_t version = 0;
            std::memcpy(&version, notes.data() + description, sizeof version);
            return version;
        }
        at = end;
    }
    return std::nullopt;
}

}  // namespace

std::optional<uint32_t> ContractVersionOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw HostError(path + ": cannot open the plug-in: " + std::strerror(errno));
    ElfW(Ehdr) header;
    if (!ReadAt(file, 0, &header, 1) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 ||
        header.e_ident[EI_CLASS] != (sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32) ||
        header.e_phentsize != sizeof(ElfW(Phdr)))
        return std::nullopt;
    std::vector<ElfW(Phdr)> segments(header.e_phnum);
    if (!ReadAt(file, header.e_phoff, segments.data(), segments.size())) return std::nullopt;
    for (const ElfW(Phdr) & segment : segments) {
        if (segment.p_type != PT_NOTE || segment.p_filesz > maxNoteBytes) continue;
        std::vector<char> notes(segment.p_filesz);
        if (!ReadAt(file, segment.p_offset, notes.data(), notes.size())) continue;
        const std::optional<uint32_t> version = FindNote(notes, segment.p_align == 8 ? 8 : 4);
        if (version) return version;
    }
    return std::nullopt;
}

void RequireContract(const std::string& path) {
    const uint32_t version = ContractVersionOf(path).value_or(versionWithoutNote);
    if (version == contractVersion) return;
    throw HostError(path + ": the plug-in was built for version " + std::to_string(version) +
                    " of the plug-in contract, but this program has version " +
                    std::to_string(contractVersion) +
                    "; build the plug-in again with the headers "
                    "of this version");
}

}  // namespace trovik
