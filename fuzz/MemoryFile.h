// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/errors/HostError.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

namespace trovik {

/// A file in memory, for readers that take a path.
class MemoryFile {
public:
    MemoryFile(const std::uint8_t* bytes, std::size_t size)
        : file(memfd_create("fuzz", MFD_CLOEXEC)), path("/proc/self/fd/" + std::to_string(file)) {
        if (file < 0 || write(file, bytes, size) != static_cast<ssize_t>(size)) {
            std::perror("fuzz: cannot create a file in memory");
            std::abort();
        }
    }
    ~MemoryFile() { close(file); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    /// Runs a reader on the file. The reader must succeed, or throw a HostError whose message is
    /// one line that names the file; otherwise, the process is aborted.
    template <class Reader>
    void Read(const Reader& read) const {
        try {
            read(path);
        } catch (const HostError& refused) {
            const std::string_view message = refused.what();
            if (message.find(path) == std::string_view::npos ||
                message.find('\n') != std::string_view::npos) {
                std::fprintf(stderr,
                             "fuzz: message without the file name, or with several lines: %s\n",
                             refused.what());
                std::abort();
            }
        }
    }

private:
    int file;
    std::string path;
};

}  // namespace trovik
