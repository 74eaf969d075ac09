// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/WallThickness.h"

#include "framework/errors/HostError.h"
#include "framework/jobs/JobPhase.h"
#include "framework/math/MatrixOrientation.h"
#include "framework/remesh/FaceOrientation.h"
#include "framework/remesh/FaceTable.h"
#include "framework/remesh/ReducedFiles.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

namespace trovik {

namespace {

/// The number of rays that are cast together, which limits the memory for the results.
constexpr std::size_t raysPerRun = std::size_t{1} << 18;

/// A triangle of a face: its number, its centre, and its normal with the length of twice its area.
struct Triangle {
    std::size_t face;
    Vector centre;
    Vector normal;
};

Vector At(const PolygonMesh& mesh, uint32_t vertex) {
    const auto& p = mesh.positions[vertex];
    return {p[0], p[1], p[2]};
}

Vector NormalOf(const Vector& a, const Vector& b, const Vector& c) { return (b - a) & (c - a); }

std::vector<Triangle> TrianglesOf(const PolygonMesh& mesh) {
    std::vector<Triangle> triangles;
    const FaceTable faces(mesh);
    for (std::size_t face = 0; face < faces.FaceCount(); ++face) {
        const auto v = faces.Vertices(face);
        for (std::size_t second = 1; second + 1 < v.size(); ++second) {
            const Vector a = At(mesh, v[0]);
            const Vector b = At(mesh, v[second]);
            const Vector c = At(mesh, v[second + 1]);
            triangles.push_back({face, (a + b + c) * (1.0f / 3.0f), NormalOf(a, b, c)});
        }
    }
    return triangles;
}

/// Rays start this far below the surface, so that they do not meet the triangle at which they
/// start.
float StartDepth(const PolygonMesh& mesh, float limit) {
    float largest = 0.0f;
    for (const auto& p : mesh.positions)
        for (const float coordinate : p) largest = std::max(largest, std::fabs(coordinate));
    return std::max(limit * 1e-4f, largest * 8.0f * FLT_EPSILON);
}

class WallMeasurement {
public:
    WallMeasurement(const PolygonMesh& mesh, float thinLimit, JobControl* job)
        : limit(thinLimit),
          depth(StartDepth(mesh, limit)),
          triangles(TrianglesOf(mesh)),
          geometry(CopyForReduction(mesh, job)),
          surface(*geometry) {}

    ThinWalls Result(JobControl* job) {
        for (const Triangle& triangle : triangles) walls.totalArea += AreaOf(triangle);
        for (std::size_t first = 0; first < triangles.size(); first += raysPerRun)
            Measure(first, std::min(triangles.size(), first + raysPerRun), job);
        return walls;
    }

private:
    static double AreaOf(const Triangle& triangle) {
        return static_cast<double>(triangle.normal.Length()) * 0.5;
    }

    void Measure(std::size_t first, std::size_t end, JobControl* job) {
        std::vector<Vector> points;
        std::vector<Vector> directions;
        for (std::size_t i = first; i < end; ++i) {
            const float length = triangles[i].normal.Length();
            const Vector inwards =
                length > 0.0f ? triangles[i].normal * (-1.0f / length) : Vector();
            directions.push_back(inwards);
            points.push_back(triangles[i].centre + inwards * depth);
        }
        const std::vector<NearestPoint> hits = surface.FirstHits(points, directions, limit, job);
        for (std::size_t i = first; i < end; ++i) {
            const NearestPoint& hit = hits[i - first];
            const float thickness = hit.distance + depth;
            if (!(thickness < limit) || !IsLeft(hit, directions[i - first])) continue;
            walls.area += AreaOf(triangles[i]);
            walls.thinnest = std::min(walls.thinnest.value_or(thickness), thickness);
            if (lastFace != triangles[i].face || walls.faces == 0) ++walls.faces;
            lastFace = triangles[i].face;
        }
    }

    /// Whether a ray leaves the solid at its end.
    bool IsLeft(const NearestPoint& hit, const Vector& direction) const {
        const LevelMesh& level = *geometry->Bound();
        return (NormalOf(level.Position(hit.vertices[0]),
                         level.Position(hit.vertices[1]),
                         level.Position(hit.vertices[2])) |
                direction) > 0.0f;
    }

    float limit;
    float depth;
    std::vector<Triangle> triangles;
    std::unique_ptr<LevelGeometry> geometry;
    SourceSurface surface;
    ThinWalls walls;
    /// The last face that was counted.
    std::size_t lastFace = 0;
};

}  // namespace

ThinWalls FindThinWalls(const PolygonMesh& mesh, float limit, JobControl* job) {
    if (StartDepth(mesh, limit) * 4.0f > limit)
        throw HostError("walls as thin as " + std::to_string(limit) +
                        " cannot be measured with coordinates as large as those of the mesh");
    return WallMeasurement(mesh, limit, job).Result(job);
}

ThinWalls FindThinWalls(const LevelGeometry& geometry, float limit, JobControl* job) {
    NewSurface world;
    world.mesh = GatherPolygons(LevelSource(geometry, {.world = true, .space = {}}));
    world.mesh.attributes = {};
    if (ReversesOrientation(geometry.Transform().ToWorld()))
        FlipFaces(world, std::vector<bool>(world.mesh.faceSizes.size(), true));
    return FindThinWalls(world.mesh, limit, job);
}

}  // namespace trovik
