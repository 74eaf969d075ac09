// SPDX-License-Identifier: Apache-2.0
#include "framework/pictures/Picture.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace trovik {

namespace {

constexpr float radiansPerDegree = 0.017453293f;
/// Share of the picture, from its centre to its edge, that the meshes may fill.
constexpr float filledShare = 0.9f;

template <typename Visit>
void ForEachFinitePoint(const std::vector<PictureMesh>& meshes, const Visit& visit) {
    for (const PictureMesh& mesh : meshes) {
        const float* m = mesh.localToWorld;
        for (uint32_t v = 0; v < mesh.vertexCount; ++v) {
            const auto* p = reinterpret_cast<const float*>(
                reinterpret_cast<const char*>(mesh.positions) + mesh.positionStride * v);
            const Vector world(p[0] * m[0] + p[1] * m[4] + p[2] * m[8] + m[12],
                               p[0] * m[1] + p[1] * m[5] + p[2] * m[9] + m[13],
                               p[0] * m[2] + p[1] * m[6] + p[2] * m[10] + m[14]);
            if (std::isfinite(world.x) && std::isfinite(world.y) && std::isfinite(world.z))
                visit(world);
        }
    }
}

/// The two planes of view left and right (or below and above): every point asks each of them to
/// stand at least so far out.
struct SidePlanes {
    explicit SidePlanes(float widening) : slope(widening) {}

    void Include(float across, float towardsEye) {
        high = std::max(high, across + slope * towardsEye);
        low = std::max(low, slope * towardsEye - across);
    }
    /// Where both planes just touch the points.
    float EyeAcross() const { return (high - low) * 0.5f; }
    float EyeTowards() const { return (high + low) * 0.5f / slope; }

    float slope;
    float high = -std::numeric_limits<float>::infinity();
    float low = -std::numeric_limits<float>::infinity();
};

}  // namespace

PictureCamera FrameMeshes(const std::vector<PictureMesh>& meshes,
                          const Vector& direction,
                          float verticalFieldOfView,
                          float aspect) {
    const Vector back = -direction.Normalized();
    const bool isSteep = std::fabs(back.y) > 0.999f;
    const Vector upHint = isSteep ? Vector(0, 0, -1) : Vector(0, 1, 0);
    const Vector right = (upHint & back).Normalized();
    const Vector up = back & right;

    PictureCamera camera;
    camera.verticalFieldOfView = verticalFieldOfView;
    camera.up = upHint;
    camera.target = Vector();
    camera.eye = back;

    // Measured from the middle of the box, so that meshes far from the origin keep their digits.
    AxisAlignedBoundingBox box;
    ForEachFinitePoint(meshes, [&box](const Vector& p) { box.Extend(p); });
    if (box.IsEmpty()) return camera;
    const Vector middle(box.minX + (box.maxX - box.minX) * 0.5f,
                        box.minY + (box.maxY - box.minY) * 0.5f,
                        box.minZ + (box.maxZ - box.minZ) * 0.5f);

    const float slope = std::tan(verticalFieldOfView * 0.5f * radiansPerDegree) * filledShare;
    SidePlanes horizontal(slope * aspect);
    SidePlanes vertical(slope);
    float nearest = -std::numeric_limits<float>::infinity();
    float farthest = std::numeric_limits<float>::infinity();
    ForEachFinitePoint(meshes, [&](const Vector& p) {
        const Vector way = p - middle;
        const float towardsEye = way | back;
        horizontal.Include(way | right, towardsEye);
        vertical.Include(way | up, towardsEye);
        nearest = std::max(nearest, towardsEye);
        farthest = std::min(farthest, towardsEye);
    });

    float eyeTowards = std::max(horizontal.EyeTowards(), vertical.EyeTowards());
    // A single point, or a line along the line of sight, asks for no distance at all.
    if (!(eyeTowards > nearest)) eyeTowards = nearest + std::max(1.0f, nearest - farthest);
    const Vector centre =
        middle + right * horizontal.EyeAcross() + up * vertical.EyeAcross();
    camera.target = centre;
    camera.eye = centre + back * eyeTowards;
    // Behind the middle of the box lies nothing to turn around; then the nearest depth will do.
    if (!(eyeTowards > 0.0f)) camera.target = camera.eye - back;
    return camera;
}

}  // namespace trovik
