// SPDX-License-Identifier: Apache-2.0
#include "framework/history/SpillFile.h"

#include "framework/errors/HostError.h"
#include "framework/io/Crc32.h"

#include <cassert>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <iterator>
#include <new>
#include <unistd.h>

namespace trovik {

namespace {

std::string Title(const std::string& folder) { return "undo file in " + folder + ": "; }

}  // namespace

SpillFile::SpillFile(const std::string& ofFolder) : folder(ofFolder) {
    std::string path = folder + "/trovik-undo-XXXXXX";
    file = mkostemp(path.data(), O_CLOEXEC);
    if (file < 0) throw HostError(Title(folder) + "cannot be created: " + std::strerror(errno));
    unlink(path.c_str());
}

SpillFile::~SpillFile() { close(file); }

std::string SpillFile::OpenPath() const { return "/proc/self/fd/" + std::to_string(file); }

SpillFile::Extent SpillFile::Reserve(uint64_t length) {
    Extent extent{end, length, 0};
    used += length;
    for (auto gap = gaps.begin(); gap != gaps.end(); ++gap) {
        if (gap->second < length) continue;
        extent.start = gap->first;
        const uint64_t left = gap->second - length;
        gaps.erase(gap);
        if (left != 0) gaps[extent.start + length] = left;
        return extent;
    }
    end += length;
    return extent;
}

void SpillFile::Fill(Extent& extent, const std::vector<uint8_t>& bytes) const {
    assert(bytes.size() == extent.length);
    extent.checksum = Crc32(bytes.data(), bytes.size());
    for (uint64_t done = 0; done < extent.length;) {
        const ssize_t count = pwrite(file,
                                     bytes.data() + done,
                                     static_cast<std::size_t>(extent.length - done),
                                     static_cast<off_t>(extent.start + done));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0)
            throw HostError(Title(folder) + "cannot be written: " + std::strerror(errno));
        if (count == 0) throw HostError(Title(folder) + "cannot be written: the disk is full");
        done += static_cast<uint64_t>(count);
    }
}

std::vector<uint8_t> SpillFile::Read(const Extent& extent) const {
    std::vector<uint8_t> bytes(static_cast<std::size_t>(extent.length));
    const std::string where = Title(folder) + "byte " + std::to_string(extent.start) + ": ";
    for (uint64_t done = 0; done < extent.length;) {
        const ssize_t count = pread(file,
                                    bytes.data() + done,
                                    static_cast<std::size_t>(extent.length - done),
                                    static_cast<off_t>(extent.start + done));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw HostError(where + "cannot be read: " + std::strerror(errno));
        if (count == 0)
            throw HostError(where + "the file ends in the middle of the step stored here");
        done += static_cast<uint64_t>(count);
    }
    if (Crc32(bytes.data(), bytes.size()) != extent.checksum)
        throw HostError(where + "the step stored here is damaged: its checksum does not match");
    return bytes;
}

void SpillFile::Free(const Extent& extent) {
    if (extent.length == 0) return;
    used -= extent.length;
    auto gap = gaps.end();
    try {
        gap = gaps.emplace(extent.start, extent.length).first;
    } catch (const std::bad_alloc&) {
        // Called by destructors, so errors are ignored: the bytes then stay unused until the file
        // is closed.
        return;
    }
    const auto next = std::next(gap);
    if (next != gaps.end() && gap->first + gap->second == next->first) {
        gap->second += next->second;
        gaps.erase(next);
    }
    if (gap != gaps.begin()) {
        const auto before = std::prev(gap);
        if (before->first + before->second == gap->first) {
            before->second += gap->second;
            gaps.erase(gap);
            gap = before;
        }
    }
    if (gap->first + gap->second != end) return;
    const uint64_t newEnd = gap->first;
    // If truncation fails, the only effect is wasted disk space until the program ends.
    if (ftruncate(file, static_cast<off_t>(newEnd)) != 0) return;
    end = newEnd;
    gaps.erase(gap);
}

}  // namespace trovik
