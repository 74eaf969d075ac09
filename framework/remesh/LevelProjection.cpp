// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/LevelProjection.h"

#include "framework/mesh/LevelPositions.h"
#include "framework/mesh/SurfaceNormal.h"

#include <algorithm>

namespace trovik {

namespace {

/// A point along the normal is preferred to the nearest point if it is not farther away than this
/// many times the distance of the nearest point.
constexpr float maxDetour = 3.0f;

}  // namespace

// Nearest points leave out the surface next to convex edges, where the vertices of several faces
// would have to be, and crowd in concave ones. Points along the normals are spread evenly.
void ProjectLevel(LevelMesh& level, SourceSurface& surface, float reach, JobControl* job) {
    const std::vector<Vector> positions = PositionsOf(level);
    std::vector<Vector> normals(positions.size());
    for (uint32_t v = 0; v < level.VertexCount(); ++v)
        normals[v] = Unpacked(level.vertexNormals.array[v]);
    const std::vector<NearestPoint> nearest = surface.Nearest(positions, job);
    const std::vector<NearestPoint> along = surface.NearestAlong(positions, normals, reach, job);
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        for (const NearestPoint* to : {&along[v], &nearest[v]}) {
            if (to->distance > std::min(reach, nearest[v].distance * maxDetour)) continue;
            if ((normals[v] | to->normal) <= 0.0f) continue;
            level.SetPosition(v, to->position);
            break;
        }
    }
    level.ComputeNormals();
    level.ContentChanged();
}

}  // namespace trovik
