// SPDX-License-Identifier: Apache-2.0
#include "framework/trace/MeshState.h"

#include "framework/errors/HostError.h"
#include "framework/io/FilePath.h"
#include "framework/layers/SculptLayer.h"
#include "framework/multires/LevelChange.h"
#include "framework/nodes/HostKernel.h"
#include "framework/trace/ChangeHash.h"
#include "framework/trace/JsonFields.h"
#include "framework/trace/NpyFile.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>

namespace trovik {

namespace {

void MakeFolder(const std::string& folder) {
    std::error_code failed;
    std::filesystem::create_directories(folder, failed);
    if (failed) throw HostError("cannot create the folder " + folder + ": " + failed.message());
}

void WriteText(const std::string& path, const std::string& text) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) ThrowFileError("write", path, errno);
    const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    const int reason = errno;
    if (std::fclose(file) != 0 || !written) ThrowFileError("write", path, reason);
}

/// Receives the files of a state. Writing and hashing use the same interface, so that both process
/// the same content.
class StateSink {
public:
    virtual void Array(const std::string& name,
                       const char* elementType,
                       const std::vector<uint64_t>& shape,
                       const void* data,
                       std::size_t sizeBytes) = 0;
    virtual void Text(const std::string& name, const std::string& text) = 0;

protected:
    ~StateSink() = default;
};

class FolderSink final : public StateSink {
public:
    explicit FolderSink(std::string stateFolder) : folder(std::move(stateFolder)) {}
    void Array(const std::string& name,
               const char* elementType,
               const std::vector<uint64_t>& shape,
               const void* data,
               std::size_t sizeBytes) override {
        const std::string path = folder + "/" + name;
        MakeFolder(std::filesystem::path(path).parent_path().string());
        WriteNpyFile(path, elementType, shape, data, sizeBytes);
    }
    void Text(const std::string& name, const std::string& text) override {
        WriteText(folder + "/" + name, text);
    }

private:
    std::string folder;
};

class HashSink final : public StateSink {
public:
    void Array(const std::string& name,
               const char* elementType,
               const std::vector<uint64_t>& shape,
               const void* data,
               std::size_t sizeBytes) override {
        const std::string_view content(static_cast<const char*>(data), sizeBytes);
        hashes[name] = ChangeHash(content, ChangeHash(NpyHeader(elementType, shape)));
    }
    void Text(const std::string& name, const std::string& text) override {
        hashes[name] = ChangeHash(text);
    }

    MeshStateHashes hashes;
};

template <typename T, typename Of>
void PutByVertex(StateSink& sink,
                 const std::string& name,
                 const char* elementType,
                 const LevelMesh& mesh,
                 Of valueOf) {
    std::vector<T> values(mesh.VertexCount());
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) values[v] = valueOf(v);
    std::vector<uint64_t> shape = {mesh.VertexCount()};
    if constexpr (std::is_same_v<T, Vector>) shape.push_back(3);
    sink.Array(name, elementType, shape, values.data(), values.size() * sizeof(T));
}

void PutLevel(StateSink& sink, const LevelMesh& mesh) {
    const std::string folder = "level-" + std::to_string(mesh.Index());
    const uint32_t corners = mesh.CornersPerFace();
    const std::size_t slots = static_cast<std::size_t>(mesh.faceCount) * corners;
    sink.Array(folder + "/face_vertex_indices.npy",
               npyUint32,
               {mesh.faceCount, corners},
               mesh.faceVertexIndices.array,
               slots * sizeof(uint32_t));
    PutByVertex<Vector>(sink, folder + "/positions.npy", npyFloat32, mesh, [&mesh](uint32_t v) {
        return mesh.Position(v);
    });
    sink.Array(
        folder + "/face_flags.npy", npyUint8, {mesh.faceCount}, mesh.faceFlags, mesh.faceCount);
}

void PutBoundLevel(StateSink& sink, const LevelMesh& mesh) {
    static_assert(sizeof(PackedNormal) == 4 * sizeof(int16_t));
    sink.Array("normals.npy",
               npyInt16,
               {mesh.VertexCount(), 4},
               mesh.vertexNormals.array,
               mesh.VertexCount() * sizeof(PackedNormal));
    PutByVertex<uint8_t>(sink, "freeze.npy", npyUint8, mesh, [&mesh](uint32_t v) {
        return mesh.vertices.array[v].freeze;
    });
    PutByVertex<uint32_t>(sink, "change_link.npy", npyUint32, mesh, [&mesh](uint32_t v) {
        return mesh.vertices.array[v].changeLink;
    });
    if (const LevelChange* change = mesh.OpenChange()) {
        const Store<StoredVertexInfo>& records = change->Records();
        sink.Array("records.npy",
                   npyRecord,
                   {records.fill},
                   records.array,
                   records.fill * sizeof(StoredVertexInfo));
    }
    if (const SculptLayer* layer = mesh.ActiveLayer()) {
        PutByVertex<Vector>(
            sink, "layer.npy", npyFloat32, mesh, [layer](uint32_t v) { return layer->Offset(v); });
        PutByVertex<Vector>(sink, "layer_rest.npy", npyFloat32, mesh, [layer](uint32_t v) {
            return layer->Rest(v);
        });
    }
}

void PutMirrorCorners(StateSink& sink, LevelMesh& mesh) {
    const uint32_t corners = mesh.CornersPerFace();
    std::vector<int32_t> answers;
    answers.reserve(static_cast<std::size_t>(mesh.faceCount) * corners * 3);
    for (uint32_t face = 0; face < mesh.faceCount; ++face) {
        for (uint32_t corner = 0; corner < corners; ++corner) {
            uint32_t mirrorFace = 0;
            uint32_t mirrorCorner = 0;
            const int32_t vertex = mesh.MirrorVertex(face, corner, &mirrorFace, &mirrorCorner);
            const bool none = vertex < 0;
            answers.push_back(none ? -1 : vertex);
            answers.push_back(none ? -1 : static_cast<int32_t>(mirrorFace));
            answers.push_back(none ? -1 : static_cast<int32_t>(mirrorCorner));
        }
    }
    sink.Array(mirrorCornersFile,
               npyInt32,
               {mesh.faceCount, corners, 3},
               answers.data(),
               answers.size() * sizeof(int32_t));
}

std::string MetaText(LevelGeometry& geometry, const MeshUnlocker* unlocker) {
    LevelMesh& mesh = *geometry.Bound();
    const Mesh* plain = &mesh;
    const MatrixTransform& transform = geometry.Transform();
    const SculptLayer* layer = mesh.ActiveLayer();
    Vector scale;
    transform.Scale(&scale);
    std::vector<std::string> types;
    for (uint32_t level = 0; level < geometry.LevelCount(); ++level)
        types.push_back(std::to_string(geometry.Level(level)->meshType));
    JsonFields meta;
    meta.Set("meshType", std::to_string(mesh.meshType));
    meta.Set("level", std::to_string(mesh.Index()));
    meta.Set("lowestLevel", std::to_string(geometry.LowestLevel()->Index()));
    meta.Set("highestLevel", std::to_string(geometry.HighestLevel()->Index()));
    meta.Set("levelMeshTypes", JsonList(types));
    meta.Set("visitStamp", std::to_string(mesh.visitStamp));
    meta.Set("vertexCount", std::to_string(mesh.VertexCount()));
    meta.Set("faceCount", std::to_string(mesh.faceCount));
    meta.Set("localToWorld", JsonMatrix(transform.ToWorld()));
    meta.Set("worldToLocal", JsonMatrix(transform.ToLocal()));
    meta.Set("scale", JsonVector(scale));
    meta.Set("freezeQuery", std::to_string(mesh.FreezeQuery()));
    meta.Set("hasLayer", JsonBool(layer != nullptr));
    meta.Set("layerWritable", JsonBool(layer != nullptr && layer->Writable()));
    meta.Set("layerStrength", JsonFloat(layer == nullptr ? 1.0f : layer->Strength()));
    meta.Set("lockable", JsonBool(mesh.WouldLock(unlocker)));
    meta.Set("isSubdivisionLevel",
             JsonBool(dynamic_cast<const SubdivisionLevel*>(plain) != nullptr));
    return meta.Text();
}

void PutState(StateSink& sink,
              LevelGeometry& geometry,
              const MeshUnlocker* unlocker,
              bool mirrorCorners) {
    for (uint32_t level = 0; level < geometry.LevelCount(); ++level)
        PutLevel(sink, *geometry.Level(level));
    PutBoundLevel(sink, *geometry.Bound());
    if (mirrorCorners) PutMirrorCorners(sink, *geometry.Bound());
    sink.Text("meta.json", MetaText(geometry, unlocker) + "\n");
}

}  // namespace

void WriteMeshState(const std::string& folder,
                    LevelGeometry& geometry,
                    const MeshUnlocker* unlocker,
                    bool mirrorCorners) {
    FolderSink sink(folder);
    PutState(sink, geometry, unlocker, mirrorCorners);
}

std::vector<LevelGeometry*> SceneGeometries() {
    const HostScene& scene = *HostKernel::Instance().Scene();
    std::vector<LevelGeometry*> geometries;
    for (unsigned i = 0; i < scene.GeometryCount(); ++i)
        if (auto* geometry = dynamic_cast<LevelGeometry*>(scene.GeometryAt(i)))
            geometries.push_back(geometry);
    return geometries;
}

MeshStateHashes HashMeshState(LevelGeometry& geometry,
                              const MeshUnlocker* unlocker,
                              bool mirrorCorners) {
    HashSink sink;
    PutState(sink, geometry, unlocker, mirrorCorners);
    return std::move(sink.hashes);
}

}  // namespace trovik
