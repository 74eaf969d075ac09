// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/files/MeshSource.h"

#include <string>

/// \file
/// One writer a format. Each writes the file as a whole or not at all (OutputFile), block by block.
/// Errors: HostError naming the file and the system's reason.
namespace trovik {

void WriteObj(const std::string& path, const MeshSource& source, const WriteProgress& listener);
void WritePly(const std::string& path,
              const MeshSource& source,
              PlyEncoding encoding,
              const WriteProgress& listener);

/// Faces of more than three corners become fans of triangles around their first corner: of a quad
/// the triangles 0 1 2 and 0 2 3.
void WriteStl(const std::string& path,
              const MeshSource& source,
              StlEncoding encoding,
              const WriteProgress& listener);
/// \param isBinary  .glb; otherwise .gltf with its buffer inside, as letters.
void WriteGltf(const std::string& path,
               const MeshSource& source,
               bool isBinary,
               const WriteProgress& listener);
void WriteUsd(const std::string& path, const MeshSource& source, const WriteProgress& listener);

}  // namespace trovik
