// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/LevelProjection.h"

#include "framework/mesh/LevelPositions.h"
#include "framework/mesh/SurfaceNormal.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace trovik {

namespace {

/// A point along the normal is preferred to the nearest point if it is not farther away than this
/// many times the distance of the nearest point.
constexpr float maxDetour = 3.0f;

/// Returns which points are inside the surface: from there, a ray along the normal leaves the
/// surface. These are points of parts that intersect other parts.
std::vector<bool> AreInside(const std::vector<NearestPoint>& points,
                            SourceSurface& surface,
                            float reach,
                            JobControl* job) {
    std::vector<Vector> starts;
    std::vector<Vector> directions;
    for (const NearestPoint& point : points) {
        starts.push_back(point.position + point.normal * (reach * 1e-3f));
        directions.push_back(point.normal);
    }
    const std::vector<NearestPoint> hits =
        surface.FirstHits(starts, directions, std::numeric_limits<float>::max(), job);
    std::vector<bool> isInside(points.size());
    for (std::size_t i = 0; i < points.size(); ++i)
        isInside[i] = std::isfinite(hits[i].distance) && (hits[i].normal | points[i].normal) > 0.0f;
    return isInside;
}

}  // namespace

std::vector<NearestPoint> NearestAlong(SourceSurface& surface,
                                       const std::vector<Vector>& points,
                                       const std::vector<Vector>& directions,
                                       float reach,
                                       JobControl* job) {
    std::vector<NearestPoint> nearest = surface.FirstHits(points, directions, reach, job);
    std::vector<Vector> opposite;
    opposite.reserve(directions.size());
    for (const Vector& direction : directions) opposite.push_back(direction * -1.0f);
    const std::vector<NearestPoint> others = surface.FirstHits(points, opposite, reach, job);
    for (std::size_t i = 0; i < points.size(); ++i)
        if (others[i].distance < nearest[i].distance) nearest[i] = others[i];
    return nearest;
}

// Nearest points are sparse next to convex edges of the surface and dense next to concave ones.
// Points along the normals are spaced evenly.
void ProjectLevel(LevelMesh& level, SourceSurface& surface, float reach, JobControl* job) {
    const std::vector<Vector> positions = PositionsOf(level);
    std::vector<Vector> normals(positions.size());
    for (uint32_t v = 0; v < level.VertexCount(); ++v)
        normals[v] = Unpacked(level.vertexNormals.array[v]);
    const std::vector<NearestPoint> nearest = surface.Nearest(positions, job);
    const std::vector<NearestPoint> along = NearestAlong(surface, positions, normals, reach, job);
    const std::vector<bool> isNearestInside = AreInside(nearest, surface, reach, job);
    const std::vector<bool> isAlongInside = AreInside(along, surface, reach, job);
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        const auto isUsable = [&](const NearestPoint& to, bool isInside) {
            return !isInside && to.distance <= std::min(reach, nearest[v].distance * maxDetour) &&
                   (normals[v] | to.normal) > 0.0f;
        };
        if (isUsable(along[v], isAlongInside[v]))
            level.SetPosition(v, along[v].position);
        else if (isUsable(nearest[v], isNearestInside[v]))
            level.SetPosition(v, nearest[v].position);
    }
    level.ComputeNormals();
    level.ContentChanged();
}

}  // namespace trovik
