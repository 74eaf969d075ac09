// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/files/FilePath.h"
#include "framework/files/MeshWriters.h"

#include <string>

namespace trovik {

PolygonMesh ReadMeshFile(const std::string& path) {
    const std::string extension = LowerExtension(path);
    if (extension == ".obj") {
        return ReadObj(path);
    }
    if (extension == ".ply") {
        return ReadPly(path);
    }
    throw HostError(path + ": cannot be read as a mesh, since its name ends in none of .obj, .ply");
}

void WriteMeshFile(const std::string& path,
                   const MeshSource& source,
                   const WriteProgress& progress) {
    const std::string extension = LowerExtension(path);
    if (extension == ".obj") {
        WriteObj(path, source, progress);
    } else if (extension == ".ply") {
        WritePly(path, source, PlyEncoding::BinaryLittleEndian, progress);
    } else {
        throw HostError(path +
                        ": cannot be written as a mesh, since its name ends in none of .obj, .ply");
    }
}

void WriteMeshFile(const std::string& path, const PolygonMesh& mesh) {
    WriteMeshFile(path,
                  PolygonSource(mesh, SpaceForFile(path, mesh.attributes.space, MeshSpace())));
}

MeshSpace SpaceForFile(const std::string& path, const MeshSpace& present, const MeshSpace& asked) {
    (void)path;
    return Overlaid(present, asked);
}

}  // namespace trovik
