// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/LevelMesh.h"

#include <array>
#include <vector>

namespace trovik {

/// \name Corners of a face's children
/// The indices of the face point and of the edge point of a side; see LevelTopology.cpp.
/// @{
inline constexpr uint32_t facePointSlot = 2;
inline uint32_t EdgePointSlot(uint32_t corners, uint32_t side) {
    return side * 4 + (corners == 4 ? (side + 1) & 3u : 1u);
}
/// @}

/// The Catmull-Clark refinement of some faces of a level, for an older state of the level and for
/// the current one. Results are bit-identical to those of LevelRefiner. Cost: linear in the number
/// of these faces and the faces around them.
///
/// Points are vertices of the finer level, numbered from 0 in ascending order. Points outside the
/// region do not have a position.
class RefinedRegion {
public:
    struct Point {
        Vector before;
        Vector after;
    };
    /// The points at the corners of a face of the finer level.
    using Quad = std::array<uint32_t, 4>;

    /// \param seen  the older positions of the coarse level, sorted.
    /// \param regionFaces  faces of the coarse level, in ascending order.
    RefinedRegion(LevelMesh& coarseLevel,
                  const LevelMesh& fineLevel,
                  const OlderValues<Vector>& seen,
                  const std::vector<uint32_t>& regionFaces);

    uint32_t PointCount() const { return static_cast<uint32_t>(vertices.size()); }
    uint32_t VertexOf(uint32_t point) const { return vertices[point]; }
    const Point& At(uint32_t point) const { return points[point]; }
    /// The children of the region's faces, in this order.
    const std::vector<Quad>& Quads() const { return quads; }

private:
    class Refinement;
    /// The points of a coarse face: its corners, edge points and face point.
    struct FacePoints {
        std::array<uint32_t, 4> corner{};
        std::array<uint32_t, 4> edge{};
        uint32_t centre = 0;
    };
    void NumberPoints(const LevelMesh& fine, const std::vector<uint32_t>& faces);
    /// See LevelTopology.cpp.
    void AddQuads(const FacePoints& face);

    LevelMesh& coarse;
    uint32_t corners;
    /// The vertex number of each point on the finer level.
    std::vector<uint32_t> vertices;
    std::vector<Point> points;
    /// For the region's faces and the faces around them.
    std::vector<FacePoints> facePoints;
    std::vector<Quad> quads;
};

}  // namespace trovik
