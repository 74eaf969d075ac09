// SPDX-License-Identifier: Apache-2.0
#include "framework/pictures/EmbreeScene.h"

#include "framework/memory/AddressSpace.h"
#include "framework/modules/Module.h"

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

/// Normals go by the inverse of the matrix, transposed; its cofactors do as well up to length.
Vector NormalToWorld(const PictureMesh& mesh, const Vector& n) {
    const float* m = mesh.localToWorld;
    const Vector x(m[0], m[1], m[2]);
    const Vector y(m[4], m[5], m[6]);
    const Vector z(m[8], m[9], m[10]);
    const float side = ((x & y) | z) < 0.0f ? -1.0f : 1.0f;
    return ((y & z) * n.x + (z & x) * n.y + (x & y) * n.z) * side;
}

float DistanceToLine(const Vector& p, const Vector& a, const Vector& b) {
    const Vector way = b - a;
    const float length = way.Length();
    return length == 0.0f ? (p - a).Length() : (way & (p - a)).Length() / length;
}

/// What loading the ray library and making a device of it map.
constexpr uint64_t rayLibraryBytes = uint64_t{64} << 20;

/// The threads for the ray library and for casting rays: all processors, unless the address space
/// of the process is limited.
std::size_t RenderThreads(const std::vector<PictureMesh>& meshes) {
    // The ray library takes about 200 bytes a face, the copies of the positions the rest.
    constexpr uint64_t bytesPerFace = 256;
    uint64_t bytes = rayLibraryBytes;
    for (const PictureMesh& mesh : meshes) bytes += mesh.faceCount * bytesPerFace;
    const std::size_t allowed =
        tbb::global_control::active_value(tbb::global_control::max_allowed_parallelism);
    return static_cast<std::size_t>(
        AffordableThreads(static_cast<int>(allowed), bytes));
}

const RayLibrary& LoadedRayLibrary() {
    static const auto& library = ModuleInterface<RayLibrary>(
        {"trovik-embree.so", "renders", rayLibraryBytes});
    return library;
}

}  // namespace

EmbreeScene::EmbreeScene(const std::vector<PictureMesh>& shown)
    : meshes(shown),
      positions(shown.size()),
      threads(tbb::global_control::max_allowed_parallelism, RenderThreads(shown)) {
    std::vector<RayMesh> rayMeshes;
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        const PictureMesh& mesh = meshes[i];
        std::vector<float>& world = positions[i];
        // The ray library reads vertices in groups of four floats.
        world.resize(static_cast<std::size_t>(mesh.vertexCount) * 3 + 4);
        const float* m = mesh.localToWorld;
        for (uint32_t v = 0; v < mesh.vertexCount; ++v) {
            const float* p = At(mesh.positions, mesh.positionStride, v);
            for (std::size_t k = 0; k < 3; ++k)
                world[v * std::size_t{3} + k] =
                    p[0] * m[k] + p[1] * m[4 + k] + p[2] * m[8 + k] + m[12 + k];
        }
        rayMeshes.push_back({world.data(),
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
    return way.x >= 0.0f && std::isfinite(way.Length()) ? way.Length() : 0.0f;
}

bool EmbreeScene::Hit(const Vector& origin, const Vector& direction, SurfaceSample& sample) const {
    RayHit hit;
    if (!caster->Hit(origin, direction, hit)) return false;
    sample = Describe(origin, direction, hit);
    return true;
}

bool EmbreeScene::IsBlocked(const Vector& origin, const Vector& direction, float distance) const {
    return caster->IsBlocked(origin, direction, distance);
}

SurfaceSample EmbreeScene::Describe(const Vector& origin,
                                    const Vector& direction,
                                    const RayHit& hit) const {
    const PictureMesh& mesh = meshes[hit.mesh];
    const std::vector<float>& world = positions[hit.mesh];
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
        const float* a = world.data() + v[k] * std::size_t{3};
        const float* b = world.data() + v[(k + 1) % corners] * std::size_t{3};
        sample.edgeDistance =
            std::min(sample.edgeDistance,
                     DistanceToLine(sample.position, {a[0], a[1], a[2]}, {b[0], b[1], b[2]}));
    }
    return sample;
}

}  // namespace trovik
