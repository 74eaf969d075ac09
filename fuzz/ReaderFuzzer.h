// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/errors/HostError.h"
#include "framework/files/PolygonMesh.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

namespace trovik {

/// Lets a reader read these bytes as a file that lies in memory. It must give a mesh that can be
/// sculpted or refuse in one line that names the file; all else ends the run.
template <class Reader>
void FuzzReader(const std::uint8_t* bytes, std::size_t size, const Reader& read) {
    const int file = memfd_create("fuzz", MFD_CLOEXEC);
    const std::string path = "/proc/self/fd/" + std::to_string(file);
    if (file < 0 || write(file, bytes, size) != static_cast<ssize_t>(size)) {
        std::perror("fuzz: cannot make a file in memory");
        std::abort();
    }
    try {
        PolygonMesh mesh = read(path);
        CheckPolygonMesh(mesh, path);
        MakeOrientedManifold(mesh);
        CheckPolygonMesh(mesh, path);
    } catch (const HostError& refused) {
        const std::string_view message = refused.what();
        if (message.find(path) == std::string_view::npos ||
            message.find('\n') != std::string_view::npos) {
            std::fprintf(stderr, "fuzz: a poor message: %s\n", refused.what());
            std::abort();
        }
    }
    close(file);
}

}  // namespace trovik
