// SPDX-License-Identifier: Apache-2.0
#include "framework/pictures/Picture.h"

#include <algorithm>
#include <cmath>

namespace trovik {

PictureCamera FrameMeshes(const std::vector<PictureMesh>& meshes,
                          const Vector& direction,
                          float verticalFieldOfView,
                          float aspect) {
    PictureCamera camera;
    camera.verticalFieldOfView = verticalFieldOfView;
    const Vector forward = direction.Normalized();
    // Straight up or down the mesh's own depth axis stands for up.
    const bool steep = std::fabs(forward.y) > 0.999f;
    camera.up = steep ? Vector(0, 0, -1) : Vector(0, 1, 0);
    const Vector back = -forward;
    const Vector right = (camera.up & back).Normalized();
    const Vector up = back & right;

    AxisAlignedBoundingBox box;
    const auto eachPoint = [&meshes](auto visit) {
        for (const PictureMesh& mesh : meshes) {
            const float* m = mesh.localToWorld;
            for (uint32_t v = 0; v < mesh.vertexCount; ++v) {
                const auto* p = reinterpret_cast<const float*>(
                    reinterpret_cast<const char*>(mesh.positions) + mesh.positionStride * v);
                const Vector world(p[0] * m[0] + p[1] * m[4] + p[2] * m[8] + m[12],
                                   p[0] * m[1] + p[1] * m[5] + p[2] * m[9] + m[13],
                                   p[0] * m[2] + p[1] * m[6] + p[2] * m[10] + m[14]);
                if (std::isfinite(world.x + world.y + world.z)) visit(world);
            }
        }
    };
    eachPoint([&box](const Vector& p) { box.Extend(p); });
    if (box.IsEmpty()) return camera;
    camera.target = Vector(box.minX + box.maxX, box.minY + box.maxY, box.minZ + box.maxZ) * 0.5f;

    // Every point must lie inside the four planes of view: each asks for a distance.
    constexpr float margin = 1.08f;
    const float tangent = std::tan(verticalFieldOfView * 0.5f * 0.017453293f);
    float distance = 0.0f;
    eachPoint([&](const Vector& p) {
        const Vector way = p - camera.target;
        const float depth = way | back;
        distance = std::max(distance, depth + std::fabs(way | up) * margin / tangent);
        distance = std::max(distance, depth + std::fabs(way | right) * margin / (tangent * aspect));
    });
    camera.eye = camera.target + back * (distance > 0.0f ? distance : 1.0f);
    return camera;
}

}  // namespace trovik
