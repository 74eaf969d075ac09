// SPDX-License-Identifier: Apache-2.0
#include "framework/scene/MeshChunk.h"

#include "framework/errors/HostError.h"
#include "framework/jobs/JobPhase.h"
#include "framework/math/IsFinite.h"
#include "framework/mesh/BaseLevel.h"
#include "framework/multires/Steps.h"
#include "framework/scene/SceneChunks.h"
#include "framework/scene/VertexPositions.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace trovik {

namespace {

/// Optional parts of a level.
enum LevelParts : uint32_t {
    HasFreeze = 1,
    HasFaceFlags = 2,
    HasSeen = 4,
    IsNotLockable = 8,
    HasSeenFromBelow = 16,
    HasSeenFreeze = 32,
    HasSeenFreezeFromBelow = 64,
    AllParts = 127
};

void WriteSeen(SceneStream& stream, const SeenDifferences& seen) {
    auto count = static_cast<uint32_t>(seen.vertices.size());
    stream.Transfer(count);
    WriteGathered<VertexPosition>(stream, count, [&seen](uint64_t i) {
        return VertexPosition{seen.vertices[i], seen.positions[i]};
    });
}

SeenDifferences ReadSeen(SceneStream& stream, const LevelMesh& level) {
    SeenDifferences seen;
    seen.kept = true;
    for (const VertexPosition& entry : ReadVertexPositions(stream, level)) {
        seen.vertices.push_back(entry.vertex);
        seen.positions.push_back(entry.position);
    }
    return seen;
}

/// If there are no amounts, writes an empty list, which is equivalent to a list without
/// differences.
void WriteSeenFreeze(SceneStream& stream, const FreezeDifferences& seen) {
    WriteList(stream, seen.vertices);
    WriteValues(stream, seen.amounts.data(), seen.amounts.size());
}

FreezeDifferences ReadSeenFreeze(SceneStream& stream, const LevelMesh& level) {
    FreezeDifferences seen;
    seen.kept = true;
    seen.vertices = ReadList<uint32_t>(stream);
    seen.amounts = ReadValues<uint8_t>(stream, seen.vertices.size());
    for (std::size_t i = 0; i < seen.vertices.size(); ++i) {
        if (seen.vertices[i] >= level.VertexCount())
            SceneStream::Refuse(QStringLiteral("there is no vertex %1").arg(seen.vertices[i]));
        if (seen.amounts[i] > freezeAmountMask) {
            SceneStream::Refuse(QStringLiteral("vertex %1 has freeze amount %2, above %3")
                                    .arg(seen.vertices[i])
                                    .arg(seen.amounts[i])
                                    .arg(freezeAmountMask));
        }
    }
    return seen;
}

QString LevelText(uint64_t index) { return QStringLiteral("level %1").arg(index); }

/// The freeze byte of a scene: the amount that the user has set, even if the vertex is hidden.
uint8_t StoredFreeze(const LevelMesh& level, uint32_t vertex) {
    return static_cast<uint8_t>((level.vertices.array[vertex].freeze & ~freezeAmountMask) |
                                level.Freeze(vertex));
}

/// The optional parts that a level needs because of its own vertices and faces.
/// \throw HostError if a position is not finite; Cancelled.
uint32_t PartsOf(const LevelMesh& level, uint32_t index, JobControl* job) {
    uint32_t parts = 0;
    if (!level.IsLockable()) parts |= IsNotLockable;
    JobPhase phase(job, "Checking the level", uint64_t{level.VertexCount()} + level.faceCount);
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        phase.Add();
        if (!IsFinite(level.Position(v))) {
            throw HostError("the position of vertex " + std::to_string(v) + " of level " +
                            std::to_string(index) + " is not finite; such a mesh cannot be saved");
        }
        if (StoredFreeze(level, v) != 0) parts |= HasFreeze;
    }
    for (uint32_t face = 0; face < level.faceCount; ++face) {
        phase.Add();
        if (level.faceFlags[face] != faceIsLive) parts |= HasFaceFlags;
    }
    phase.Finish();
    return parts;
}

}  // namespace

void WriteGeometryChunk(SceneStream& stream,
                        const LevelGeometry& geometry,
                        const std::string& name) {
    const LevelMesh& base = *geometry.Level(0);
    QString text = QString::fromStdString(name);
    static_cast<Stream&>(stream).Transfer(text);
    for (uint32_t number : {base.CornersPerFace(),
                            base.faceCount,
                            base.VertexCount(),
                            geometry.LevelCount(),
                            geometry.BoundIndex()})
        stream.Transfer(number);
    WriteValues(stream, base.faceVertexIndices.array, base.faceVertexIndices.fill);
    Matrix toWorld = geometry.Transform().ToWorld();
    Matrix toLocal = geometry.Transform().ToLocal();
    Vector scale;
    geometry.Transform().Scale(&scale);
    stream.Transfer(toWorld);
    stream.Transfer(toLocal);
    stream.Transfer(scale);
}

GeometryChunk ReadGeometryChunk(SceneStream& stream) {
    GeometryChunk chunk;
    QString name;
    static_cast<Stream&>(stream).Transfer(name);
    chunk.base.name = name.toStdString();
    uint32_t corners = 0;
    uint32_t faces = 0;
    for (uint32_t* number : {&corners, &faces, &chunk.vertexCount, &chunk.levelCount, &chunk.bound})
        stream.Transfer(*number);
    if (corners != 3 && corners != 4)
        SceneStream::Refuse(QStringLiteral("level 0 has faces with %1 corners").arg(corners));
    if (chunk.levelCount == 0 || chunk.bound >= chunk.levelCount) {
        SceneStream::Refuse(QStringLiteral("the bound level is %2, but the scene has %1 levels")
                                .arg(chunk.levelCount)
                                .arg(chunk.bound));
    }
    chunk.base.faceVertices = ReadValues<uint32_t>(stream, uint64_t{faces} * corners);
    chunk.base.faceSizes.assign(faces, corners);
    stream.Transfer(chunk.toWorld);
    stream.Transfer(chunk.toLocal);
    stream.Transfer(chunk.scale);
    bool finite = IsFinite(chunk.scale);
    for (const Matrix* matrix : {&chunk.toWorld, &chunk.toLocal})
        for (const auto& row : matrix->m)
            for (const float number : row) finite = finite && std::isfinite(number);
    if (!finite) SceneStream::Refuse(QStringLiteral("the transform is not finite"));
    return chunk;
}

void WriteLevelChunk(SceneStream& stream,
                     LevelGeometry& geometry,
                     uint32_t index,
                     JobControl* job) {
    LevelMesh& level = *geometry.Level(index);
    const uint32_t vertices = level.VertexCount();
    uint32_t parts = PartsOf(level, index, job);
    const SeenByNeighbours seen = geometry.Seen(index, job);
    if (seen.fromAbove.kept) parts |= HasSeen;
    if (seen.fromBelow.kept && stream.IsFormatAtLeast(carriedDownFormat)) parts |= HasSeenFromBelow;
    if (stream.IsFormatAtLeast(carriedDownFormat)) {
        if (!seen.freezeFromAbove.vertices.empty()) parts |= HasSeenFreeze;
        if (!seen.freezeFromBelow.vertices.empty()) parts |= HasSeenFreezeFromBelow;
    }
    uint32_t number = index;
    uint32_t count = vertices;
    stream.Transfer(number);
    stream.Transfer(count);
    stream.Transfer(parts);
    stream.Reserve(uint64_t{vertices} * (sizeof(Vector) + sizeof(PackedNormal) + 1) +
                   level.faceCount + seen.Bytes());
    WriteGathered<Vector>(stream, vertices, [&level](uint64_t vertex) {
        return level.Position(static_cast<uint32_t>(vertex));
    });
    WriteValues(stream, level.vertexNormals.array, vertices);
    if ((parts & HasFreeze) != 0) {
        WriteGathered<uint8_t>(stream, vertices, [&level](uint64_t vertex) {
            return StoredFreeze(level, static_cast<uint32_t>(vertex));
        });
    }
    if ((parts & HasFaceFlags) != 0) WriteValues(stream, level.faceFlags, level.faceCount);
    if ((parts & HasSeen) != 0) WriteSeen(stream, seen.fromAbove);
    if ((parts & HasSeenFromBelow) != 0) WriteSeen(stream, seen.fromBelow);
    if ((parts & HasSeenFreeze) != 0) WriteSeenFreeze(stream, seen.freezeFromAbove);
    if ((parts & HasSeenFreezeFromBelow) != 0) WriteSeenFreeze(stream, seen.freezeFromBelow);
    level.Serialize(stream);
}

LevelMesh& LevelChunkReader::NextLevel(const std::vector<Vector>& positions) {
    if (geometry != nullptr) return geometry->AddLevel(job);
    PolygonMesh base = head.base;
    base.positions.resize(positions.size());
    for (std::size_t v = 0; v < positions.size(); ++v)
        base.positions[v] = {positions[v].x, positions[v].y, positions[v].z};
    CheckPolygonMesh(base, "level 0", job);
    if (!MakeOrientedManifold(base, job).Untouched())
        throw HostError("the faces of level 0 are not an oriented manifold");
    geometry = std::make_unique<LevelGeometry>(base, job);
    return *geometry->Level(0);
}

void LevelChunkReader::Read(SceneStream& stream) {
    const uint64_t next = geometry == nullptr ? 0 : geometry->LevelCount();
    uint32_t index = 0;
    uint32_t vertices = 0;
    uint32_t parts = 0;
    stream.Transfer(index);
    stream.Transfer(vertices);
    stream.Transfer(parts);
    if (index != next || index >= head.levelCount) {
        SceneStream::Refuse(
            LevelText(index) +
            QStringLiteral(" is out of order; the scene has %1 levels").arg(head.levelCount));
    }
    // Checked before memory is allocated for the level: the vertex count must follow from the level
    // below, and the file must contain the data of all vertices.
    const uint64_t expected =
        geometry == nullptr ? head.vertexCount : geometry->CountNextLevelVertices();
    if (vertices != expected) {
        SceneStream::Refuse(
            LevelText(index) +
            QStringLiteral(" has %1 vertices instead of %2").arg(vertices).arg(expected));
    }
    if ((parts & ~uint32_t{AllParts}) != 0)
        SceneStream::Refuse(LevelText(index) + QStringLiteral(" has unknown parts"));
    stream.Expect(vertices, sizeof(Vector) + sizeof(PackedNormal));
    const auto positions = ReadValues<Vector>(stream, vertices);
    JobPhase phase(job, "Reading the level", vertices);
    for (uint32_t v = 0; v < vertices; ++v) {
        phase.Add();
        if (!IsFinite(positions[v]))
            SceneStream::Refuse(QStringLiteral("the position of vertex %1 is not finite").arg(v));
    }
    phase.Finish();
    LevelMesh& level = NextLevel(positions);
    JobPhase placing(job, "Filling the level", vertices);
    for (uint32_t v = 0; v < vertices; ++v) {
        placing.Add();
        level.SetPosition(v, positions[v]);
    }
    placing.Finish();
    stream.ReadElements(level.vertexNormals.array, sizeof(PackedNormal), vertices);
    if ((parts & HasFreeze) != 0) {
        const auto freeze = ReadValues<uint8_t>(stream, vertices);
        for (uint32_t v = 0; v < vertices; ++v) {
            level.vertices.array[v].freeze = freeze[v] & static_cast<uint8_t>(~freezeAmountMask);
            level.SetFreeze(v, freeze[v] & freezeAmountMask);
        }
    }
    if ((parts & HasFaceFlags) != 0) stream.ReadElements(level.faceFlags, 1, level.faceCount);
    seen.emplace_back();
    if ((parts & HasSeen) != 0) seen.back().fromAbove = ReadSeen(stream, level);
    if ((parts & HasSeenFromBelow) != 0) seen.back().fromBelow = ReadSeen(stream, level);
    if ((parts & HasSeenFreeze) != 0) seen.back().freezeFromAbove = ReadSeenFreeze(stream, level);
    if ((parts & HasSeenFreezeFromBelow) != 0)
        seen.back().freezeFromBelow = ReadSeenFreeze(stream, level);
    level.SetLockable((parts & IsNotLockable) == 0);
    level.Serialize(stream);
}

std::unique_ptr<LevelGeometry> LevelChunkReader::Take() {
    geometry->Restore(head.bound, seen);
    geometry->Transform().Restore(head.toWorld, head.toLocal, head.scale);
    return std::move(geometry);
}

void WriteMirrorChunk(SceneStream& stream, const LevelGeometry& geometry) {
    WriteList(stream, geometry.Mirror()->Images());
}

void ReadMirrorChunk(SceneStream& stream, LevelGeometry& geometry) {
    auto mirror = TopologicalMirror::FromImages(*geometry.Level(0), ReadList<uint32_t>(stream));
    if (mirror == nullptr) SceneStream::Refuse(QStringLiteral("this is not a mirror of level 0"));
    geometry.RestoreMirror(std::move(mirror));
}

}  // namespace trovik
