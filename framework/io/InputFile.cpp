// SPDX-License-Identifier: Apache-2.0
#include "framework/io/InputFile.h"

#include "framework/errors/HostError.h"
#include "framework/io/FilePath.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace trovik {

namespace {

constexpr std::size_t ReadBytes = std::size_t{1} << 20;

}  // namespace

InputFile::InputFile(const std::string& filePath, JobControl* job)
    : path(filePath),
      size(RegularFileSize(filePath)),
      // The elements of the phase are bytes, and each read covers many of them.
      phase(job, "Reading the file", size, 1) {
    file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        ThrowFileError("read", path, errno);
    }
}

InputFile::~InputFile() { close(file); }

bool InputFile::Fill(std::size_t wanted, JobPhase* bytes) {
    if (Buffered() >= wanted) {
        return true;
    }
    if (begin > 0) {
        std::memmove(buffer.data(), buffer.data() + begin, Buffered());
        end -= begin;
        begin = 0;
    }
    while (end < wanted) {
        if (end == buffer.size()) {
            buffer.resize(std::max(std::max(wanted, ReadBytes), buffer.size() * 2));
        }
        // Reads in pieces, so that a large read can be cancelled.
        const std::size_t room = std::min(buffer.size() - end, ReadBytes);
        const ssize_t got = read(file, buffer.data() + end, room);
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            ThrowFileError("read", path, errno);
        }
        if (got == 0) {
            return false;
        }
        end += static_cast<std::size_t>(got);
        readBytes += static_cast<std::size_t>(got);
        if (bytes != nullptr) bytes->Add(static_cast<std::size_t>(got));
        if (readBytes < size) {
            phase.Reach(readBytes);
        } else if (!isRead) {
            isRead = true;
            phase.Finish();
        }
    }
    return true;
}

bool InputFile::NextLine(std::string_view& line, std::size_t maxBytes) {
    std::size_t searched = 0;
    std::size_t length = 0;
    std::size_t lineEnd = 0;
    for (;;) {
        const char* start = buffer.data() + begin;
        const void* found = searched < Buffered()
                                ? std::memchr(start + searched, '\n', Buffered() - searched)
                                : nullptr;
        if (found != nullptr) {
            length = static_cast<std::size_t>(static_cast<const char*>(found) - start);
            lineEnd = 1;
            break;
        }
        searched = Buffered();
        if (searched > maxBytes) {
            length = searched;
            break;
        }
        if (!Fill(searched + 1)) {
            if (searched == 0) {
                return false;
            }
            length = searched;
            break;
        }
    }
    if (length > maxBytes) {
        throw HostError(path + ", byte " + std::to_string(position) + ": a line of more than " +
                        std::to_string(maxBytes) + " bytes");
    }
    line = std::string_view(buffer.data() + begin, length);
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    begin += length + lineEnd;
    position += length + lineEnd;
    return true;
}

const unsigned char* InputFile::Take(std::size_t sizeBytes, JobPhase* bytes) {
    // Checked before memory is allocated, because a length from the file may have any value.
    if (sizeBytes > Remaining() || !Fill(sizeBytes, bytes)) {
        return nullptr;
    }
    const char* taken = buffer.data() + begin;
    begin += sizeBytes;
    position += sizeBytes;
    return reinterpret_cast<const unsigned char*>(taken);
}

bool InputFile::Skip(std::uint64_t sizeBytes) {
    while (sizeBytes > 0) {
        const std::size_t piece =
            static_cast<std::size_t>(std::min<std::uint64_t>(sizeBytes, ReadBytes));
        if (Take(piece) == nullptr) {
            return false;
        }
        sizeBytes -= piece;
    }
    return true;
}

}  // namespace trovik
