// SPDX-License-Identifier: Apache-2.0
#include "framework/render/EmbreeScene.h"

#include "framework/modules/Module.h"
#include "framework/render/RenderRange.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace trovik {

namespace {

const float* At(const float* first, std::size_t stride, uint32_t index) {
    return reinterpret_cast<const float*>(reinterpret_cast<const char*>(first) + stride * index);
}

/// Fills `world` with the world-space positions.
/// \return the largest absolute coordinate of the finite vertices.
float PlaceVertices(const RenderMesh& mesh, std::vector<float>& world) {
    // The ray tracing library reads vertices in groups of four floats.
    world.resize(static_cast<std::size_t>(mesh.vertexCount) * 3 + 4);
    const float* m = mesh.localToWorld;
    float largest = 0.0f;
    for (uint32_t v = 0; v < mesh.vertexCount; ++v) {
        const float* p = At(mesh.positions, mesh.positionStride, v);
        float* w = world.data() + v * std::size_t{3};
        for (std::size_t k = 0; k < 3; ++k)
            w[k] = p[0] * m[k] + p[1] * m[4 + k] + p[2] * m[8 + k] + m[12 + k];
        const Vector position(w[0], w[1], w[2]);
        if (IsRenderable(position)) {
            for (std::size_t k = 0; k < 3; ++k) largest = std::max(largest, std::fabs(w[k]));
        } else if (std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2])) {
            CheckRenderable("vertex " + std::to_string(v), position);
        }
    }
    return largest;
}

/// Returns the vertex indices of all faces, with those of hidden faces replaced by `nowhere`, so
/// that face numbers do not change.
std::vector<uint32_t> VisibleFaces(const RenderMesh& mesh, uint32_t nowhere) {
    const uint32_t* indices = mesh.faceVertexIndices;
    std::vector<uint32_t> corners(indices,
                                  indices + std::size_t{mesh.faceCount} * mesh.cornersPerFace);
    for (uint32_t face = 0; face < mesh.faceCount; ++face) {
        if (!mesh.IsHidden(face)) continue;
        std::fill_n(
            corners.data() + std::size_t{face} * mesh.cornersPerFace, mesh.cornersPerFace, nowhere);
    }
    return corners;
}

/// Address space needed to load the ray tracing library and to create a device.
constexpr uint64_t rayLibraryBytes = uint64_t{64} << 20;

const RayLibrary& LoadedRayLibrary() {
    static const auto& library =
        ModuleInterface<RayLibrary>({"trovik-embree.so", "renders", rayLibraryBytes});
    return library;
}

}  // namespace

EmbreeScene::EmbreeScene(const std::vector<RenderMesh>& shown, JobControl* job)
    : meshes(shown), positions(shown.size()), visibleFaces(shown.size()) {
    float largest = 0.0f;
    for (std::size_t i = 0; i < meshes.size(); ++i)
        largest = std::max(largest, PlaceVertices(meshes[i], positions[i]));
    // Limited so that both the unit and its inverse are normal floats.
    const int exponent = largest > 0.0f ? std::clamp(std::ilogb(largest) + 1, -120, 120) : 0;
    unit = std::ldexp(1.0f, exponent);
    perUnit = std::ldexp(1.0f, -exponent);

    std::vector<RayMesh> rayMeshes;
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        const RenderMesh& mesh = meshes[i];
        for (float& coordinate : positions[i]) coordinate *= perUnit;
        uint32_t vertexCount = mesh.vertexCount;
        const uint32_t* indices = mesh.faceVertexIndices;
        if (mesh.HasHiddenFaces()) {
            // The padding holds one additional vertex with a non-finite position; faces that use it
            // are never hit.
            visibleFaces[i] = VisibleFaces(mesh, vertexCount);
            std::fill_n(positions[i].data() + std::size_t{3} * vertexCount,
                        3,
                        std::numeric_limits<float>::quiet_NaN());
            ++vertexCount;
            indices = visibleFaces[i].data();
        }
        rayMeshes.push_back(
            {positions[i].data(), vertexCount, indices, mesh.faceCount, mesh.cornersPerFace});
    }
    caster = LoadedRayLibrary().MakeCaster(rayMeshes, job);
}

float EmbreeScene::Extent() const {
    const RayBounds box = caster->Bounds();
    const Vector way = box.high - box.low;
    return way.x >= 0.0f && std::isfinite(way.Length()) ? way.Length() * unit : 0.0f;
}

float EmbreeScene::NearestDepth(const Vector& position, const Vector& direction) const {
    const RayBounds box = caster->Bounds();
    if (!(box.low.x <= box.high.x)) return 0.0f;
    const Vector corner(direction.x > 0.0f ? box.low.x : box.high.x,
                        direction.y > 0.0f ? box.low.y : box.high.y,
                        direction.z > 0.0f ? box.low.z : box.high.z);
    return (corner * unit - position) | direction;
}

bool EmbreeScene::Hit(const Vector& origin, const Vector& direction, SurfaceSample& sample) const {
    RayHit hit;
    if (!caster->Hit(origin * perUnit, direction, hit)) return false;
    hit.distance *= unit;
    sample = Describe(origin, direction, hit);
    return true;
}

bool EmbreeScene::IsBlocked(const Vector& origin, const Vector& direction, float distance) const {
    return caster->IsBlocked(origin * perUnit, direction, distance * perUnit);
}

}  // namespace trovik
