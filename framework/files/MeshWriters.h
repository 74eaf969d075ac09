// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/files/MeshFiles.h"
#include "framework/mesh/MeshSource.h"

#include <string>
#include <vector>

/// \file
/// One writer a format. Each writes the file as a whole or not at all (OutputFile), block by block.
/// They are called through WriteMeshFile, WriteObj, WritePly and WriteStl for polygons, which check
/// the source first (CheckFinite).
/// Errors: HostError naming the file and the system's reason; Cancelled.
namespace trovik {

/// \throw HostError naming `path` and the first number of the source that is not finite: of
/// positions, normals, UVs, colours and morph targets, as the source hands them out.
/// Cost: one pass over the source.
void CheckFinite(const std::string& path, const MeshSource& source, JobControl* job = nullptr);

/// \return copies of material files that were written.
std::vector<std::string> WriteObj(const std::string& path,
                                  const MeshSource& source,
                                  JobControl* job);
void WritePly(const std::string& path,
              const MeshSource& source,
              PlyEncoding encoding,
              JobControl* job);

/// Faces of more than three corners become fans of triangles around their first corner: of a quad
/// the triangles 0 1 2 and 0 2 3.
void WriteStl(const std::string& path,
              const MeshSource& source,
              StlEncoding encoding,
              JobControl* job);
/// \param isBinary  .glb; otherwise .gltf with its buffer inside, as letters.
void WriteGltf(const std::string& path, const MeshSource& source, bool isBinary, JobControl* job);
void WriteUsd(const std::string& path, const MeshSource& source, JobControl* job);

}  // namespace trovik
