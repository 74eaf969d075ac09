// SPDX-License-Identifier: Apache-2.0
#include "framework/pictures/EmbreeScene.h"

#include "framework/modules/Module.h"
#include "framework/pictures/RenderRange.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace trovik {

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();

const float* At(const float* first, std::size_t stride, uint32_t index) {
    return reinterpret_cast<const float*>(reinterpret_cast<const char*>(first) + stride * index);
}

const int16_t* NormalAt(const PictureMesh& mesh, uint32_t index) {
    return reinterpret_cast<const int16_t*>(reinterpret_cast<const char*>(mesh.normals) +
                                            mesh.normalStride * index);
}

/// A power of two that brings the largest entry of the matrix near 1, so that products of three
/// entries stay in the range of floats. Scaled by it, only the length of a normal changes.
float NormalScale(const float* m) {
    float largest = 0.0f;
    for (const int row : {0, 4, 8})
        for (int k = 0; k < 3; ++k) largest = std::max(largest, std::fabs(m[row + k]));
    return largest > 0.0f ? std::ldexp(1.0f, std::clamp(-std::ilogb(largest), -120, 120)) : 1.0f;
}

/// Normals go by the inverse of the matrix, transposed; its cofactors do as well up to length.
Vector NormalToWorld(const PictureMesh& mesh, const Vector& n) {
    const float* m = mesh.localToWorld;
    const float scale = NormalScale(m);
    const Vector x = Vector(m[0], m[1], m[2]) * scale;
    const Vector y = Vector(m[4], m[5], m[6]) * scale;
    const Vector z = Vector(m[8], m[9], m[10]) * scale;
    const float side = ((x & y) | z) < 0.0f ? -1.0f : 1.0f;
    return ((y & z) * n.x + (z & x) * n.y + (x & y) * n.z) * side;
}

float DistanceToLine(const Vector& p, const Vector& a, const Vector& b) {
    const Vector way = b - a;
    const float length = way.Length();
    return length == 0.0f ? (p - a).Length() : (way & (p - a)).Length() / length;
}

/// Fills `world` with the positions in world space. \return the largest coordinate of the vertices
/// that are finite, without its sign.
float PlaceVertices(const PictureMesh& mesh, std::vector<float>& world) {
    // The ray library reads vertices in groups of four floats.
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

/// What loading the ray library and making a device of it map.
constexpr uint64_t rayLibraryBytes = uint64_t{64} << 20;

const RayLibrary& LoadedRayLibrary() {
    static const auto& library =
        ModuleInterface<RayLibrary>({"trovik-embree.so", "renders", rayLibraryBytes});
    return library;
}

}  // namespace

EmbreeScene::EmbreeScene(const std::vector<PictureMesh>& shown)
    : meshes(shown), positions(shown.size()) {
    float largest = 0.0f;
    for (std::size_t i = 0; i < meshes.size(); ++i)
        largest = std::max(largest, PlaceVertices(meshes[i], positions[i]));
    // Bounded so that both the unit and its inverse are normal floats.
    const int exponent = largest > 0.0f ? std::clamp(std::ilogb(largest) + 1, -120, 120) : 0;
    unit = std::ldexp(1.0f, exponent);
    perUnit = std::ldexp(1.0f, -exponent);

    std::vector<RayMesh> rayMeshes;
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        const PictureMesh& mesh = meshes[i];
        for (float& coordinate : positions[i]) coordinate *= perUnit;
        rayMeshes.push_back({positions[i].data(),
                             mesh.vertexCount,
                             mesh.faceVertexIndices,
                             mesh.faceCount,
                             mesh.cornersPerFace});
    }
    caster = LoadedRayLibrary().MakeCaster(rayMeshes);
}

float EmbreeScene::Extent() const {
    const RayBounds box = caster->Bounds();
    const Vector way = box.high - box.low;
    return way.x >= 0.0f && std::isfinite(way.Length()) ? way.Length() * unit : 0.0f;
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

SurfaceSample EmbreeScene::Describe(const Vector& origin,
                                    const Vector& direction,
                                    const RayHit& hit) const {
    const PictureMesh& mesh = meshes[hit.mesh];
    const std::vector<float>& inUnits = positions[hit.mesh];
    const uint32_t corners = mesh.cornersPerFace;
    const uint32_t* v = mesh.faceVertexIndices + std::size_t{hit.face} * corners;
    const float u = hit.u;
    const float w = hit.v;
    // A quad is taken over its whole square, so that shading has no diagonal.
    const float share[4] = {corners == 4 ? (1 - u) * (1 - w) : 1 - u - w,
                            corners == 4 ? u * (1 - w) : u,
                            corners == 4 ? u * w : w,
                            (1 - u) * w};

    SurfaceSample sample;
    sample.distance = hit.distance;
    sample.position = origin + direction * hit.distance;
    sample.faceNormal = hit.normal.Normalized();
    if ((sample.faceNormal | direction) > 0.0f) sample.faceNormal = -sample.faceNormal;
    sample.shadingNormal = sample.faceNormal;
    if (mesh.normals != nullptr) {
        Vector sum;
        for (uint32_t k = 0; k < corners; ++k) {
            const int16_t* n = NormalAt(mesh, v[k]);
            sum += Vector(n[0], n[1], n[2]) * share[k];
        }
        Vector normal = NormalToWorld(mesh, sum).Normalized();
        if ((normal | sample.faceNormal) < 0.0f) normal = -normal;
        if (normal.Length() > 0.5f) sample.shadingNormal = normal;
    }

    float frozen = 0.0f;
    for (uint32_t k = 0; mesh.freeze != nullptr && k < corners; ++k)
        frozen +=
            static_cast<float>(mesh.freeze[mesh.freezeStride * v[k]] & 127) * share[k] / 127.0f;
    const float ice[3] = {0.12f, 0.24f, 0.5f};
    for (int k = 0; k < 3; ++k)
        sample.color[k] = mesh.color[k] + (ice[k] - mesh.color[k]) * 0.75f * frozen;

    sample.edgeDistance = infinity;
    for (uint32_t k = 0; k < corners; ++k) {
        const float* a = inUnits.data() + v[k] * std::size_t{3};
        const float* b = inUnits.data() + v[(k + 1) % corners] * std::size_t{3};
        const float distance =
            DistanceToLine(sample.position * perUnit, {a[0], a[1], a[2]}, {b[0], b[1], b[2]});
        sample.edgeDistance = std::min(sample.edgeDistance, distance * unit);
    }
    return sample;
}

}  // namespace trovik
