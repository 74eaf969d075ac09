// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/PolygonMesh.h"
#include "fuzz/MemoryFile.h"

namespace trovik {

/// Runs a mesh reader on these bytes. The reader must return a valid mesh or throw a HostError.
template <class Reader>
void FuzzReader(const std::uint8_t* bytes, std::size_t size, const Reader& read) {
    const MemoryFile file(bytes, size);
    file.Read([&read](const std::string& path) {
        PolygonMesh mesh = read(path, nullptr);
        CheckPolygonMesh(mesh, path);
        MakeOrientedManifold(mesh);
        CheckPolygonMesh(mesh, path);
    });
}

}  // namespace trovik
