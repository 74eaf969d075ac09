// SPDX-License-Identifier: Apache-2.0
#include "framework/render/RenderedLevel.h"

#include "framework/errors/HostError.h"
#include "framework/mesh/MeanCurvature.h"
#include "framework/mesh/SurfaceNormal.h"
#include "framework/multires/LevelSource.h"

#include <algorithm>
#include <limits>

namespace trovik {

namespace {

/// Radius of a concavity that the cavity mode shows at half its full darkness, as a fraction of the
/// diagonal of the mesh's bounding box.
constexpr float cavitySize = 0.012f;
constexpr uint32_t cavityRings = 1;

}  // namespace

RenderMesh VisibleLevel(const LevelGeometry& geometry) {
    const LevelMesh& level = *geometry.Bound();
    RenderMesh shown;
    shown.positions = &level.vertices.array->x;
    shown.positionStride = sizeof(Vertex);
    shown.vertexCount = level.VertexCount();
    shown.normals = &level.vertexNormals.array->x;
    shown.normalStride = sizeof(PackedNormal);
    shown.faceVertexIndices = level.faceVertexIndices.array;
    shown.faceCount = level.faceCount;
    shown.cornersPerFace = level.CornersPerFace();
    const Matrix& matrix = geometry.Transform().ToWorld();
    std::copy(&matrix.m[0][0], &matrix.m[0][0] + 16, shown.localToWorld);
    if (level.HiddenFaceCount() != 0) {
        shown.faceFlags = level.faceFlags;
        shown.hiddenBit = faceIsHidden;
    }
    // Vertex::freeze contains the vertex's own freeze amount, unless the vertex is hidden.
    if (level.FrozenVertexCount() != 0) {
        shown.freeze = &level.vertices.array->freeze;
        shown.freezeStride = sizeof(Vertex);
    }
    return shown;
}

RenderedLevel::RenderedLevel(const LevelGeometry& geometry, ShadingMode shading)
    : mesh(VisibleLevel(geometry)) {
    AddFor(geometry, shading);
}

RenderedLevel::RenderedLevel(const LevelGeometry& geometry,
                             ShadingMode shading,
                             const std::vector<Vector>& positions,
                             const std::vector<PackedNormal>& normals)
    : mesh(VisibleLevel(geometry)) {
    mesh.positions = &positions.data()->x;
    mesh.positionStride = sizeof(Vector);
    mesh.normals = &normals.data()->x;
    mesh.freeze = nullptr;
    AddFor(geometry, shading);
}

void RenderedLevel::AddFor(const LevelGeometry& geometry, ShadingMode shading) {
    if (shading == ShadingMode::Cavity) AddCurvatures(geometry);
    if (shading == ShadingMode::Uv) AddUvs(geometry);
}

void RenderedLevel::AddCurvatures(const LevelGeometry& geometry) {
    const Matrix& toWorld = geometry.Transform().ToWorld();
    const auto* position = reinterpret_cast<const char*>(mesh.positions);
    const auto* normal = reinterpret_cast<const char*>(mesh.normals);
    std::vector<Vector> positions;
    std::vector<Vector> normals;
    positions.reserve(mesh.vertexCount);
    normals.reserve(mesh.vertexCount);
    AxisAlignedBoundingBox box;
    for (uint32_t v = 0; v < mesh.vertexCount; ++v) {
        const auto* p = reinterpret_cast<const float*>(position + v * mesh.positionStride);
        const auto* n = reinterpret_cast<const int16_t*>(normal + v * mesh.normalStride);
        positions.push_back(toWorld.AffineTransform({p[0], p[1], p[2]}, 1.0f));
        normals.push_back(WorldNormal(geometry.Transform(), Unpacked({n[0], n[1], n[2], 0})));
        box.Extend(positions.back());
    }
    const Vector diagonal(box.maxX - box.minX, box.maxY - box.minY, box.maxZ - box.minZ);
    curvatures = MeanCurvatures(
        *geometry.Bound(), positions, normals, diagonal.Length() * cavitySize, cavityRings);
    mesh.curvatures = curvatures.data();
}

void RenderedLevel::AddUvs(const LevelGeometry& geometry) {
    if (geometry.Attributes().cornerUvs.empty())
        throw HostError("the mesh has no texture coordinates, which the shading mode \"uv\" needs");
    cornerUvs.reserve(std::size_t{mesh.faceCount} * mesh.cornersPerFace * 2);
    LevelSource(geometry, {}).ReadFaces(MeshSource::Uvs, [this](const FaceBlock& block) {
        for (std::size_t corner = 0; corner < block.uvs.size(); ++corner) {
            const bool hasUv = block.uvIndices[corner] != SurfaceAttributes::none;
            for (const float value : block.uvs[corner])
                cornerUvs.push_back(hasUv ? value : std::numeric_limits<float>::quiet_NaN());
        }
    });
    mesh.cornerUvs = cornerUvs.data();
}

}  // namespace trovik
