// SPDX-License-Identifier: Apache-2.0
#include "framework/scene/ImportChunk.h"

#include "framework/errors/HostError.h"
#include "framework/jobs/JobPhase.h"
#include "framework/math/SameBits.h"
#include "framework/mesh/BaseLevel.h"
#include "framework/mesh/LevelPositions.h"
#include "framework/scene/AttributeChunk.h"
#include "framework/scene/VertexPositions.h"

#include <algorithm>
#include <array>

namespace trovik {

namespace {

/// The vertices whose positions differ from those of the level.
template <typename PositionOf>
std::vector<VertexPosition> Differences(const LevelMesh& level,
                                        JobControl* job,
                                        PositionOf positionOf) {
    std::vector<VertexPosition> list;
    JobPhase phase(job, "Comparing positions", level.VertexCount());
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        phase.Add();
        const Vector position = positionOf(v);
        if (!SameBits(position, level.Position(v))) list.push_back({v, position});
    }
    phase.Finish();
    return list;
}

/// Returns whether the mesh has the same faces as the level, corner by corner.
bool HasFacesOf(const LevelMesh& level, const PolygonMesh& mesh, JobControl* job) {
    const uint64_t corners = mesh.faceVertices.size();
    if (mesh.positions.size() != level.VertexCount() || corners != level.faceVertexIndices.fill)
        return false;
    const uint32_t* ofLevel = level.faceVertexIndices.array;
    bool isSame = true;
    JobPhase phase(job, "Comparing faces", corners);
    phase.ForEachRun([&](uint64_t first, uint64_t end) {
        isSame =
            isSame && std::equal(ofLevel + first, ofLevel + end, mesh.faceVertices.data() + first);
    });
    phase.Finish();
    return isSame;
}

}  // namespace

void WriteImportChunk(SceneStream& stream,
                      const LevelGeometry& geometry,
                      const PolygonMesh& imported,
                      const std::string& scenePath,
                      JobControl* job) {
    const PolygonMesh uniform = ToUniformFaces(imported, job);
    const LevelMesh& base = *geometry.Level(0);
    // The attributes of a mesh that is stored as differences are read from level 0. Of these, only
    // the colours can differ while the faces are the same; older formats lose this difference.
    const SurfaceAttributes& now = geometry.Attributes();
    const bool sameColors =
        !stream.IsFormatAtLeast(carriedDownFormat) ||
        (uniform.attributes.colors == now.colors && uniform.attributes.hasAlpha == now.hasAlpha);
    const bool isSame = sameColors && HasFacesOf(base, uniform, job);
    if (stream.IsFormatAtLeast(carriedDownFormat)) {
        uint8_t isOther = isSame ? 0 : 1;
        stream.Transfer(isOther);
    } else if (!isSame) {
        throw HostError(
            "level 0 differs from the imported mesh, which this format does not support");
    }
    if (isSame) {
        WriteList(stream, Differences(base, job, [&uniform](uint32_t v) {
                      const auto& p = uniform.positions[v];
                      return Vector(p[0], p[1], p[2]);
                  }));
        return;
    }
    uint32_t corners = uniform.faceSizes[0];
    stream.Transfer(corners);
    WriteList(stream, uniform.faceVertices);
    WriteList(stream, uniform.positions);
    WriteAttributes(stream, uniform.attributes, scenePath);
}

PolygonMesh ReadImportChunk(SceneStream& stream,
                            const LevelGeometry& geometry,
                            const std::string& name,
                            const std::string& scenePath,
                            bool& isOther,
                            JobControl* job) {
    PolygonMesh mesh;
    mesh.name = name;
    uint8_t otherFaces = 0;
    if (stream.IsFormatAtLeast(carriedDownFormat)) stream.Transfer(otherFaces);
    isOther = otherFaces != 0;
    if (isOther) {
        uint32_t corners = 0;
        stream.Transfer(corners);
        if (corners != 3 && corners != 4)
            SceneStream::Refuse(
                QStringLiteral("the imported mesh has faces with %1 corners").arg(corners));
        mesh.faceVertices = ReadList<uint32_t>(stream);
        mesh.faceSizes.assign(mesh.faceVertices.size() / corners, corners);
        mesh.positions = ReadList<std::array<float, 3>>(stream);
        if (mesh.faceVertices.size() % corners != 0)
            SceneStream::Refuse(QStringLiteral("the imported mesh ends within a face"));
        mesh.attributes =
            ReadAttributes(stream,
                           {mesh.positions.size(), mesh.faceSizes.size(), mesh.faceVertices.size()},
                           "the imported mesh",
                           scenePath);
        CheckPolygonMesh(mesh, "the imported mesh", job);
        if (!MakeOrientedManifold(mesh, job).Untouched())
            SceneStream::Refuse(QStringLiteral("the imported mesh is not an oriented manifold"));
        return mesh;
    }
    const LevelMesh& base = *geometry.Level(0);
    std::vector<Vector> positions = PositionsOf(base);
    for (const VertexPosition& entry : ReadVertexPositions(stream, base))
        positions[entry.vertex] = entry.position;
    mesh.positions.reserve(positions.size());
    for (const Vector& p : positions) mesh.positions.push_back({p.x, p.y, p.z});
    mesh.faceSizes.assign(base.faceCount, base.CornersPerFace());
    mesh.faceVertices.assign(base.faceVertexIndices.array,
                             base.faceVertexIndices.array + base.faceVertexIndices.fill);
    return mesh;
}

}  // namespace trovik
