// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/files/MeshWriters.h"
#include "framework/io/FilePath.h"

#include <string>

namespace trovik {

namespace {

bool IsGltf(const std::string& extension) { return extension == ".gltf" || extension == ".glb"; }

}  // namespace

PolygonMesh ReadMeshFile(const std::string& path, JobControl* job) {
    const std::string extension = LowerExtension(path);
    if (extension == ".obj") {
        return ReadObj(path, job);
    }
    if (extension == ".ply") {
        return ReadPly(path, job);
    }
    if (extension == ".stl") {
        return ReadStl(path, job);
    }
    if (IsGltf(extension)) {
        return ReadGltf(path, job);
    }
    throw HostError(
        path + ": cannot be read as a mesh: the extension must be .obj, .ply, .stl, .gltf or .glb");
}

void RequireWritableMesh(const std::string& path) {
    const std::string extension = LowerExtension(path);
    for (const char* known : {".obj", ".ply", ".stl", ".gltf", ".glb", ".usda"})
        if (extension == known) return;
    throw HostError(path +
                    ": cannot be written as a mesh: the extension must be .obj, .ply, .stl, .gltf, "
                    ".glb or .usda");
}

std::vector<std::string> WriteMeshFile(const std::string& path,
                                       const MeshSource& source,
                                       JobControl* job) {
    RequireWritableMesh(path);
    const std::string extension = LowerExtension(path);
    CheckFinite(path, source, job);
    if (extension == ".obj") {
        return WriteObj(path, source, job);
    }
    if (extension == ".ply") {
        WritePly(path, source, PlyEncoding::BinaryLittleEndian, job);
    } else if (extension == ".stl") {
        WriteStl(path, source, StlEncoding::Binary, job);
    } else if (IsGltf(extension)) {
        WriteGltf(path, source, extension == ".glb", job);
    } else {
        WriteUsd(path, source, job);
    }
    return {};
}

void WriteObj(const std::string& path, const PolygonMesh& mesh) {
    const PolygonSource source(mesh);
    CheckFinite(path, source);
    WriteObj(path, source, nullptr);
}

void WritePly(const std::string& path, const PolygonMesh& mesh, PlyEncoding encoding) {
    const PolygonSource source(mesh);
    CheckFinite(path, source);
    WritePly(path, source, encoding, nullptr);
}

void WriteStl(const std::string& path, const PolygonMesh& mesh, StlEncoding encoding) {
    const PolygonSource source(mesh);
    CheckFinite(path, source);
    WriteStl(path, source, encoding, nullptr);
}

void WriteMeshFile(const std::string& path, const PolygonMesh& mesh) {
    WriteMeshFile(path,
                  PolygonSource(mesh, SpaceForFile(path, mesh.attributes.space, MeshSpace())));
}

MeshSpace SpaceForFile(const std::string& path, const MeshSpace& present, const MeshSpace& asked) {
    if (!IsGltf(LowerExtension(path))) {
        return Overlaid(present, asked);
    }
    const MeshSpace gltf = {1.0, UpAxis::Y};
    if (Overlaid(gltf, asked) != gltf) {
        throw HostError(path + ": glTF files are always in metres with y up");
    }
    return gltf;
}

}  // namespace trovik
