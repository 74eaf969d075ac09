// SPDX-License-Identifier: Apache-2.0
#include "framework/render/SurfaceSample.h"

#include "framework/render/EmbreeScene.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

const int16_t* NormalAt(const RenderMesh& mesh, uint32_t index) {
    return reinterpret_cast<const int16_t*>(reinterpret_cast<const char*>(mesh.normals) +
                                            mesh.normalStride * index);
}

/// Returns a power of two that scales the largest entry of the matrix to about 1, so that products
/// of three entries stay within float range. The scale affects only the length of a normal.
float NormalScale(const float* m) {
    float largest = 0.0f;
    for (const int row : {0, 4, 8})
        for (int k = 0; k < 3; ++k) largest = std::max(largest, std::fabs(m[row + k]));
    return largest > 0.0f ? std::ldexp(1.0f, std::clamp(-std::ilogb(largest), -120, 120)) : 1.0f;
}

/// Normals are transformed by the inverse transpose of the matrix; its cofactors give the same
/// direction.
Vector NormalToWorld(const RenderMesh& mesh, const Vector& n) {
    const float* m = mesh.localToWorld;
    const float scale = NormalScale(m);
    const Vector x = Vector(m[0], m[1], m[2]) * scale;
    const Vector y = Vector(m[4], m[5], m[6]) * scale;
    const Vector z = Vector(m[8], m[9], m[10]) * scale;
    const float side = ((x & y) | z) < 0.0f ? -1.0f : 1.0f;
    return ((y & z) * n.x + (z & x) * n.y + (x & y) * n.z) * side;
}

const uint32_t* CornersOf(const RenderMesh& mesh, uint32_t face) {
    return mesh.faceVertexIndices + std::size_t{face} * mesh.cornersPerFace;
}

}  // namespace

SurfaceSample EmbreeScene::Describe(const Vector& origin,
                                    const Vector& direction,
                                    const RayHit& hit) const {
    const RenderMesh& mesh = meshes[hit.mesh];
    const uint32_t corners = mesh.cornersPerFace;
    const uint32_t* vertices = CornersOf(mesh, hit.face);
    const float u = hit.u;
    const float w = hit.v;

    SurfaceSample sample;
    sample.mesh = hit.mesh;
    sample.face = hit.face;
    // A quad is interpolated bilinearly as a whole, so that no diagonal is visible in the shading.
    sample.weights[0] = corners == 4 ? (1 - u) * (1 - w) : 1 - u - w;
    sample.weights[1] = corners == 4 ? u * (1 - w) : u;
    sample.weights[2] = corners == 4 ? u * w : w;
    sample.weights[3] = corners == 4 ? (1 - u) * w : 0.0f;

    sample.distance = hit.distance;
    sample.position = origin + direction * hit.distance;
    const Vector given = hit.normal.Normalized();
    sample.faceNormal = (given | direction) > 0.0f ? -given : given;
    sample.shadingNormal = sample.faceNormal;
    sample.rayStart = sample.position;
    if (mesh.normals != nullptr) {
        Vector normals[4];
        Vector sum;
        Vector weighted;
        for (uint32_t k = 0; k < corners; ++k) {
            const int16_t* n = NormalAt(mesh, vertices[k]);
            normals[k] = NormalToWorld(mesh, Vector(n[0], n[1], n[2])).Normalized();
            sum += normals[k];
            weighted += normals[k] * sample.weights[k];
        }
        // The side is determined by the sum of the corner normals, because individual normals near
        // silhouettes may face away.
        const float side = (sum | sample.faceNormal) < 0.0f ? -1.0f : 1.0f;
        if (weighted.Length() > 1e-3f) sample.shadingNormal = weighted.Normalized() * side;
        for (uint32_t k = 0; k < corners; ++k) {
            const Vector normal = normals[k] * side;
            const float height = (sample.position - WorldPosition(hit.mesh, vertices[k])) | normal;
            sample.rayStart += normal * (-std::min(0.0f, height) * sample.weights[k]);
        }
    }
    return sample;
}

Vector FrozenTint(const RenderMesh& mesh, const SurfaceSample& sample, const Vector& base) {
    if (mesh.freeze == nullptr) return base;
    float frozen = 0.0f;
    const uint32_t* vertices = CornersOf(mesh, sample.face);
    for (uint32_t k = 0; k < mesh.cornersPerFace; ++k)
        frozen += static_cast<float>(mesh.freeze[mesh.freezeStride * vertices[k]] & 127) *
                  sample.weights[k] / 127.0f;
    const float brightness = (base.x + base.y + base.z) / 3.0f;
    const Vector ice = Vector(0.30f, 0.60f, 1.25f) * brightness;
    return base + (ice - base) * (0.75f * frozen);
}

float CurvatureAt(const RenderMesh& mesh, const SurfaceSample& sample) {
    if (mesh.curvatures == nullptr) return 0.0f;
    float curvature = 0.0f;
    const uint32_t* vertices = CornersOf(mesh, sample.face);
    for (uint32_t k = 0; k < mesh.cornersPerFace; ++k)
        curvature += mesh.curvatures[vertices[k]] * sample.weights[k];
    return curvature;
}

Vector VertexColorAt(const RenderMesh& mesh, const SurfaceSample& sample) {
    if (mesh.vertexColors == nullptr) return {0.5f, 0.5f, 0.5f};
    Vector color;
    const uint32_t* vertices = CornersOf(mesh, sample.face);
    for (uint32_t k = 0; k < mesh.cornersPerFace; ++k) {
        const float* own = mesh.vertexColors + std::size_t{vertices[k]} * 3;
        color += Vector(own[0], own[1], own[2]) * sample.weights[k];
    }
    return color;
}

bool UvAt(const RenderMesh& mesh, const SurfaceSample& sample, float& u, float& v) {
    if (mesh.cornerUvs == nullptr) return false;
    const float* uvs = mesh.cornerUvs + std::size_t{sample.face} * mesh.cornersPerFace * 2;
    u = v = 0.0f;
    for (uint32_t k = 0; k < mesh.cornersPerFace; ++k) {
        u += uvs[k * std::size_t{2}] * sample.weights[k];
        v += uvs[k * std::size_t{2} + 1] * sample.weights[k];
    }
    return std::isfinite(u + v);
}

}  // namespace trovik
