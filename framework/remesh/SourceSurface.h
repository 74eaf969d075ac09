// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/picking/PatchTree.h"

#include <array>
#include <optional>
#include <vector>

namespace trovik {

/// Operations that keep masked areas keep the vertices with this mask amount or a higher one.
inline constexpr uint8_t keptMaskAmount = (freezeAmountMask + 1) / 2;

/// The point of a surface that is nearest to some other point.
struct NearestPoint {
    uint32_t face = 0;
    /// The corners of the triangle that contains the point, and their weights, which add up to 1.
    std::array<uint32_t, 3> vertices = {0, 0, 0};
    std::array<float, 3> weights = {1.0f, 0.0f, 0.0f};
    /// Mesh-local.
    Vector position;
    Vector normal;
    float distance = 0.0f;
};

/// The current level of a geometry, from which an operation computes a new mesh. Borrows the
/// geometry, which must not change. Not thread-safe, except where noted.
class TROVIK_API SourceSurface {
public:
    explicit SourceSurface(LevelGeometry& ofGeometry) : geometry(ofGeometry) {}

    LevelGeometry& Geometry() const { return geometry; }
    LevelMesh& Level() const { return *geometry.Bound(); }

    /// The attributes of the level, as if it were level 0. Computed by the first call.
    /// \throw Cancelled.
    const SurfaceAttributes& Attributes(JobControl* job = nullptr);

    /// Returns the nearest point of the surface for each point. Points are mesh-local and finite.
    /// Runs on several threads; the results do not depend on their number.
    /// \throw Cancelled. Cost: the first call builds a pick tree, O(n log n).
    std::vector<NearestPoint> Nearest(const std::vector<Vector>& points,
                                      JobControl* job = nullptr) {
        return Nearest(points, {}, job);
    }
    /// The same with limits for each point. If the direction of its limits excludes all faces, only
    /// the number of the part is used.
    std::vector<NearestPoint> Nearest(const std::vector<Vector>& points,
                                      const std::vector<NearestLimits>& limits,
                                      JobControl* job = nullptr);

    /// Returns, for each point, the first intersection of the surface with the ray from the point.
    /// If there is none within the distance `reach`, the `distance` of the result is infinite.
    /// Otherwise like Nearest.
    /// \param directions  one per point; a ray whose direction is zero has no intersection.
    std::vector<NearestPoint> FirstHits(const std::vector<Vector>& points,
                                        const std::vector<Vector>& directions,
                                        float reach,
                                        JobControl* job = nullptr);

    /// Returns the level as a polygon mesh with its attributes, in mesh-local coordinates and
    /// without normals.
    PolygonMesh Polygons(JobControl* job = nullptr);

    /// Converts a length in world units to mesh-local units. If the scale differs between the axes,
    /// the result is the shortest local length that corresponds to it, so limits are never
    /// exceeded.
    float LocalLength(float worldLength) const;

private:
    template <typename Query>
    std::vector<NearestPoint> FindAll(std::size_t count, JobControl* job, const Query& query);

    LevelGeometry& geometry;
    std::optional<SurfaceAttributes> attributes;
    std::optional<PatchTree> tree;
};

/// Splits each quad of a level into the triangles (0, 1, 2) and (0, 2, 3), as for picking. Returns
/// three vertices for each triangle, face by face.
TROVIK_API std::vector<uint32_t> TrianglesOf(const LevelMesh& level);

/// Returns the largest distance from a point to the surface, mesh-local; 0 without points.
/// \throw Cancelled.
TROVIK_API float MaxDistance(SourceSurface& surface,
                             const std::vector<Vector>& points,
                             JobControl* job = nullptr);

}  // namespace trovik
