// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/files/MeshFiles.h"
#include "framework/mesh/MeshSource.h"

#include <string>
#include <vector>

/// \file
/// The writers, one per format. Each writes the file completely or not at all (OutputFile), block
/// by block. They are called by WriteMeshFile and, for polygon meshes, by WriteObj, WritePly and
/// WriteStl; these functions check the source first (CheckFinite). Errors: HostError with the file
/// and the system's reason; Cancelled.
namespace trovik {

/// Checks the positions, normals, UVs, colours and morph targets that the source returns.
/// \throw HostError with `path` and the first non-finite number.
/// Cost: one pass over the source.
void CheckFinite(const std::string& path, const MeshSource& source, JobControl* job = nullptr);

/// \return the copies of material files that were written.
std::vector<std::string> WriteObj(const std::string& path,
                                  const MeshSource& source,
                                  JobControl* job);
void WritePly(const std::string& path,
              const MeshSource& source,
              PlyEncoding encoding,
              JobControl* job);

/// Faces with more than three corners become triangle fans around their first corner: a quad
/// becomes the triangles 0 1 2 and 0 2 3.
void WriteStl(const std::string& path,
              const MeshSource& source,
              StlEncoding encoding,
              JobControl* job);
/// \param isBinary  true for .glb; false for .gltf with an embedded base64 buffer.
void WriteGltf(const std::string& path, const MeshSource& source, bool isBinary, JobControl* job);
void WriteUsd(const std::string& path, const MeshSource& source, JobControl* job);

}  // namespace trovik
