// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/SourceSurface.h"

#include "framework/jobs/JobPhase.h"
#include "framework/multires/AttributeCarrying.h"
#include "framework/picking/TriangleQueries.h"
#include "framework/threads/WorkerThreads.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace trovik {

namespace {

/// Number of queries between two progress reports.
constexpr std::size_t queriesPerRun = 16384;

/// Finds the triangle of the face that contains the point, and its weights in this triangle.
NearestPoint Resolved(const LevelMesh& level, const PickHit& hit) {
    NearestPoint nearest;
    nearest.face = hit.face;
    nearest.position = hit.position;
    nearest.normal = hit.normal;
    nearest.distance = hit.t;
    const uint32_t corners = level.CornersPerFace();
    const uint32_t* v = level.faceVertexIndices.array + std::size_t{hit.face} * corners;
    double least = 0.0;
    for (uint32_t second = 1; second + 1 < corners; ++second) {
        const std::array<uint32_t, 3> triangle = {v[0], v[second], v[second + 1]};
        const TrianglePoint point = NearestOfTriangle(ToDouble(hit.position),
                                                      ToDouble(level.Position(triangle[0])),
                                                      ToDouble(level.Position(triangle[1])),
                                                      ToDouble(level.Position(triangle[2])));
        if (second > 1 && point.t >= least) continue;
        least = point.t;
        nearest.vertices = triangle;
        for (std::size_t i = 0; i < 3; ++i)
            nearest.weights[i] = static_cast<float>(point.weights[i]);
    }
    return nearest;
}

}  // namespace

const SurfaceAttributes& SourceSurface::Attributes(JobControl* job) {
    if (!attributes) attributes = AttributesOfLevel(geometry, geometry.BoundIndex(), job);
    return *attributes;
}

std::vector<NearestPoint> SourceSurface::Nearest(const std::vector<Vector>& points,
                                                 const std::vector<NearestLimits>& limits,
                                                 JobControl* job) {
    if (!tree) tree.emplace(&Level(), job);
    std::vector<NearestPoint> nearest(points.size());
    JobPhase phase(job, "Finding nearest points", points.size());
    for (std::size_t first = 0; first < points.size(); first += queriesPerRun) {
        const std::size_t count = std::min(queriesPerRun, points.size() - first);
        RunInParallel(static_cast<uint32_t>(count), 256, [&](uint32_t i) {
            NearestLimits limit = limits.empty() ? NearestLimits{} : limits[first + i];
            auto hit = tree->Nearest(points[first + i], limit);
            if (!hit) {
                limit.facing = {};
                hit = tree->Nearest(points[first + i], limit);
            }
            if (hit) nearest[first + i] = Resolved(Level(), *hit);
        });
        phase.Add(count);
    }
    phase.Finish();
    return nearest;
}

PolygonMesh SourceSurface::Polygons(JobControl* job) {
    PolygonMesh mesh = geometry.ToPolygons(false);
    mesh.normals.clear();
    mesh.attributes = Attributes(job);
    return mesh;
}

float SourceSurface::LocalLength(float worldLength) const {
    Vector scale;
    geometry.Transform().Scale(&scale);
    return worldLength /
           std::max({std::fabs(scale.x), std::fabs(scale.y), std::fabs(scale.z), FLT_MIN});
}

std::vector<uint32_t> TrianglesOf(const LevelMesh& level) {
    const uint32_t corners = level.CornersPerFace();
    std::vector<uint32_t> triangles;
    triangles.reserve(std::size_t{level.faceCount} * (corners - 2) * 3);
    for (uint32_t face = 0; face < level.faceCount; ++face) {
        const uint32_t* v = level.faceVertexIndices.array + std::size_t{face} * corners;
        for (uint32_t second = 1; second + 1 < corners; ++second)
            triangles.insert(triangles.end(), {v[0], v[second], v[second + 1]});
    }
    return triangles;
}

float MaxDistance(SourceSurface& surface, const std::vector<Vector>& points, JobControl* job) {
    float largest = 0.0f;
    for (const NearestPoint& nearest : surface.Nearest(points, job))
        largest = std::max(largest, nearest.distance);
    return largest;
}

}  // namespace trovik
