// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/SourceSurface.h"

#include "framework/jobs/JobPhase.h"
#include "framework/multires/AttributeCarrying.h"
#include "framework/picking/TriangleQueries.h"
#include "framework/threads/WorkerThreads.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>

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

template <typename Query>
std::vector<NearestPoint> SourceSurface::FindAll(std::size_t count,
                                                 JobControl* job,
                                                 const Query& query) {
    if (!tree) tree.emplace(&Level(), job);
    std::vector<NearestPoint> found(count);
    JobPhase phase(job, "Finding nearest points", count);
    for (std::size_t first = 0; first < count; first += queriesPerRun) {
        const std::size_t run = std::min(queriesPerRun, count - first);
        RunInParallel(static_cast<uint32_t>(run), 256, [&](uint32_t i) {
            query(first + i, found[first + i]);
        });
        phase.Add(run);
    }
    phase.Finish();
    return found;
}

std::vector<NearestPoint> SourceSurface::Nearest(const std::vector<Vector>& points,
                                                 const std::vector<NearestLimits>& limits,
                                                 JobControl* job) {
    return FindAll(points.size(), job, [&](std::size_t i, NearestPoint& nearest) {
        NearestLimits limit = limits.empty() ? NearestLimits{} : limits[i];
        auto hit = tree->Nearest(points[i], limit);
        if (!hit) {
            limit.facing = {};
            hit = tree->Nearest(points[i], limit);
        }
        if (hit) nearest = Resolved(Level(), *hit);
    });
}

std::vector<NearestPoint> SourceSurface::FirstHits(const std::vector<Vector>& points,
                                                   const std::vector<Vector>& directions,
                                                   float reach,
                                                   JobControl* job) {
    return FindAll(points.size(), job, [&](std::size_t i, NearestPoint& first) {
        first.distance = std::numeric_limits<float>::infinity();
        const float length = directions[i].Length();
        if (!(length > 0.0f)) return;
        const auto hit = tree->Pick({points[i], directions[i] * (1.0f / length), reach});
        if (hit) first = Resolved(Level(), *hit);
    });
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
