// SPDX-License-Identifier: Apache-2.0
#include "framework/render/RenderImage.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

/// Calls `visit` with the world-space position of each finite vertex; if the mesh has hidden faces,
/// only for the corners of visible faces.
template <typename Visit>
void ForEachPoint(const std::vector<RenderMesh>& meshes, Visit visit) {
    for (const RenderMesh& mesh : meshes) {
        const float* m = mesh.localToWorld;
        const auto visitVertex = [&](uint32_t v) {
            const auto* p = reinterpret_cast<const float*>(
                reinterpret_cast<const char*>(mesh.positions) + mesh.positionStride * v);
            const Vector world(p[0] * m[0] + p[1] * m[4] + p[2] * m[8] + m[12],
                               p[0] * m[1] + p[1] * m[5] + p[2] * m[9] + m[13],
                               p[0] * m[2] + p[1] * m[6] + p[2] * m[10] + m[14]);
            if (std::isfinite(world.x + world.y + world.z)) visit(world);
        };
        if (!mesh.HasHiddenFaces()) {
            for (uint32_t v = 0; v < mesh.vertexCount; ++v) visitVertex(v);
            continue;
        }
        const uint32_t* corner = mesh.faceVertexIndices;
        for (uint32_t face = 0; face < mesh.faceCount; ++face, corner += mesh.cornersPerFace)
            if (!mesh.IsHidden(face))
                for (uint32_t k = 0; k < mesh.cornersPerFace; ++k) visitVertex(corner[k]);
    }
}

/// Returns `v` rotated about the unit vector `axis`. See Rodrigues: "Des lois géométriques qui
/// régissent les déplacements d'un système solide dans l'espace" (1840).
Vector Turned(const Vector& v, const Vector& axis, float radians) {
    const float cosine = std::cos(radians);
    return v * cosine + (axis & v) * std::sin(radians) + axis * ((axis | v) * (1.0f - cosine));
}

}  // namespace

RenderCamera FrameMeshes(const std::vector<RenderMesh>& meshes,
                         const Vector& direction,
                         float verticalFieldOfView,
                         float aspect,
                         const Vector& wantedUp,
                         bool isOrthographic) {
    RenderCamera camera;
    camera.verticalFieldOfView = verticalFieldOfView;
    camera.isOrthographic = isOrthographic;
    const Vector forward = direction.Normalized();
    const Vector upright = wantedUp.Normalized();
    // If the camera looks along the up direction, another up direction is used.
    const bool steep = std::fabs(forward | upright) > 0.999f;
    const bool alongZ = std::fabs(upright.z) > 0.9f;
    camera.up = !steep ? upright : alongZ ? Vector(0, 1, 0) : Vector(0, 0, -1);
    const Vector back = -forward;
    const Vector right = (camera.up & back).Normalized();
    const Vector up = back & right;

    AxisAlignedBoundingBox box;
    ForEachPoint(meshes, [&box](const Vector& p) { box.Extend(p); });
    if (box.IsEmpty()) return camera;
    camera.target = Vector(box.minX + box.maxX, box.minY + box.maxY, box.minZ + box.maxZ) * 0.5f;

    // Every point must be inside the four side planes of the view frustum; each plane requires a
    // minimum camera distance.
    constexpr float margin = 1.08f;
    const float tangent = std::tan(verticalFieldOfView * 0.5f * 0.017453293f);
    float distance = 0.0f;
    ForEachPoint(meshes, [&](const Vector& p) {
        const Vector way = p - camera.target;
        const float depth = isOrthographic ? 0.0f : way | back;
        distance = std::max(distance, depth + std::fabs(way | up) * margin / tangent);
        distance = std::max(distance, depth + std::fabs(way | right) * margin / (tangent * aspect));
    });
    camera.eye = camera.target + back * (distance > 0.0f ? distance : 1.0f);
    return camera;
}

RenderCamera TurntableFrame(const RenderCamera& camera, int index, int count) {
    RenderCamera turned = camera;
    const float radians =
        -6.28318531f * static_cast<float>(index) / static_cast<float>(std::max(count, 1));
    if (index != 0)
        turned.eye =
            camera.target + Turned(camera.eye - camera.target, camera.up.Normalized(), radians);
    return turned;
}

RenderCamera FrameTurntable(const std::vector<RenderMesh>& meshes,
                            const Vector& direction,
                            float verticalFieldOfView,
                            float aspect,
                            const Vector& up,
                            int count,
                            bool isOrthographic) {
    RenderCamera widest =
        FrameMeshes(meshes, direction, verticalFieldOfView, aspect, up, isOrthographic);
    const Vector back = (widest.eye - widest.target).Normalized();
    float distance = (widest.eye - widest.target).Length();
    for (int i = 1; i < count; ++i) {
        const RenderCamera turned = TurntableFrame(widest, i, count);
        const RenderCamera framed = FrameMeshes(meshes,
                                                turned.target - turned.eye,
                                                verticalFieldOfView,
                                                aspect,
                                                widest.up,
                                                isOrthographic);
        distance = std::max(distance, (framed.eye - framed.target).Length());
    }
    widest.eye = widest.target + back * distance;
    return widest;
}

}  // namespace trovik
