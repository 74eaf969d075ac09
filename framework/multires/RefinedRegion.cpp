// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/RefinedRegion.h"

#include "framework/math/SameBits.h"
#include "framework/mesh/CatmullClarkRules.h"
#include "framework/mesh/IndexSet.h"
#include "framework/mesh/LocalRefiner.h"
#include "framework/mesh/VertexNeighbours.h"

#include <algorithm>
#include <unordered_map>

namespace trovik {

namespace {

/// The sums of the points around a coarse vertex, in both states.
struct TwoSums {
    RunningSum before;
    RunningSum after;

    void Add(const RefinedRegion::Point& point) {
        before.Add(point.before);
        after.Add(point.after);
    }
};

/// State of an edge point between two faces that have both been visited.
constexpr uint32_t isClosed = 0xfffffffeu;
constexpr uint32_t isUnseen = 0xffffffffu;

}  // namespace

/// Refines one face at a time. Each face point and edge point is computed once, and the sums around
/// vertices are accumulated at the same time.
class RefinedRegion::Refinement {
public:
    Refinement(RefinedRegion& ofRegion, const OlderValues<Vector>& seenPositions)
        : region(ofRegion), seen(seenPositions), edges(region.vertices.size(), isUnseen) {
        const auto end = std::lower_bound(
            region.vertices.begin(), region.vertices.end(), region.coarse.VertexCount());
        input.reserve(static_cast<std::size_t>(end - region.vertices.begin()));
        for (auto vertex = region.vertices.begin(); vertex != end; ++vertex) {
            const Vector present = region.coarse.Position(*vertex);
            const Vector* older = seen.Find(*vertex);
            input.push_back({older == nullptr ? present : *older, present});
        }
        around.resize(input.size());
    }

    void Run() {
        for (const FacePoints& face : region.facePoints) RefineFace(face);
        for (const FacePoints& face : region.facePoints) RefineBorder(face);
        std::vector<bool> isDone(input.size(), false);
        for (const Quad& quad : region.quads) {
            for (const uint32_t point : quad) {
                if (point >= input.size() || isDone[point]) continue;
                RefineVertex(point);
                isDone[point] = true;
            }
        }
    }

private:
    void RefineFace(const FacePoints& face) {
        Vector before[4];
        Vector after[4];
        const uint32_t cornersPerFace = region.corners;
        for (uint32_t k = 0; k < cornersPerFace; ++k) {
            before[k] = input[face.corner[k]].before;
            after[k] = input[face.corner[k]].after;
        }
        Point& centre = region.points[face.centre];
        centre.before = FacePointRule(ExactSum(before, cornersPerFace), cornersPerFace);
        centre.after = SameBits(before, after)
                           ? centre.before
                           : FacePointRule(ExactSum(after, cornersPerFace), cornersPerFace);
        for (uint32_t side = 0; side < cornersPerFace; ++side) {
            const uint32_t a = face.corner[side];
            const uint32_t b = face.corner[(side + 1) % cornersPerFace];
            around[a].Add(centre);
            around[a].Add(input[b]);
            const uint32_t edge = face.edge[side];
            if (edges[edge] == isUnseen) {
                edges[edge] = face.centre;
                continue;
            }
            const Point& across = region.points[edges[edge]];
            Point& point = region.points[edge];
            point.before =
                EdgePointRule(input[a].before, input[b].before, across.before, centre.before);
            point.after = EdgePointRule(input[a].after, input[b].after, across.after, centre.after);
            edges[edge] = isClosed;
        }
    }

    // The outer edges of the faces around the region are treated as border edges. Neither these
    // edges nor their endpoints belong to the region.
    void RefineBorder(const FacePoints& face) {
        for (uint32_t side = 0; side < region.corners; ++side) {
            if (edges[face.edge[side]] == isClosed) continue;
            const uint32_t a = face.corner[side];
            const uint32_t b = face.corner[(side + 1) % region.corners];
            Point& point = region.points[face.edge[side]];
            point.before = BorderEdgePointRule(input[a].before, input[b].before);
            point.after = BorderEdgePointRule(input[a].after, input[b].after);
            borderEnds[a].Add(input[b]);
            borderEnds[b].Add(input[a]);
        }
    }

    void RefineVertex(uint32_t number) {
        const TwoSums& sums = around[number];
        const auto border = borderEnds.find(number);
        const bool isOnBorder = border != borderEnds.end();
        const uint32_t faces = sums.before.Count() / 2;
        const auto refined = [&](const Vector& p, const RunningSum& sum) {
            return isOnBorder ? BorderVertexPointRule(p, sum.Value(), faces)
                              : VertexPointRule(p, sum.Value(), faces);
        };
        const TwoSums& used = isOnBorder ? border->second : sums;
        Point& point = region.points[number];
        const uint32_t vertex = region.vertices[number];
        point.before = used.before.IsExact()
                           ? refined(input[number].before, used.before)
                           : LocalRefiner(region.coarse, seen).VertexPoint(vertex);
        point.after = used.after.IsExact()
                          ? refined(input[number].after, used.after)
                          : LocalRefiner(region.coarse, nullptr).VertexPoint(vertex);
    }

    RefinedRegion& region;
    const OlderValues<Vector>& seen;
    /// Coarse position of each point.
    std::vector<Point> input;
    /// For each edge point, the face point on one side, or the state of its computation.
    std::vector<uint32_t> edges;
    /// Face points and next corners around each coarse vertex.
    std::vector<TwoSums> around;
    /// The opposite endpoints of the border edges at a coarse vertex.
    std::unordered_map<uint32_t, TwoSums> borderEnds;
};

RefinedRegion::RefinedRegion(LevelMesh& coarseLevel,
                             const LevelMesh& fineLevel,
                             const OlderValues<Vector>& seen,
                             const std::vector<uint32_t>& regionFaces)
    : coarse(coarseLevel), corners(coarseLevel.CornersPerFace()) {
    const std::vector<uint32_t> faces = WithFacesAround(coarse, regionFaces);
    NumberPoints(fineLevel, faces);
    quads.reserve(regionFaces.size() * corners);
    std::size_t i = 0;
    for (const uint32_t face : regionFaces) {
        while (faces[i] != face) ++i;
        AddQuads(facePoints[i]);
    }
    points.resize(vertices.size());
    Refinement(*this, seen).Run();
}

void RefinedRegion::NumberPoints(const LevelMesh& fine, const std::vector<uint32_t>& faces) {
    std::vector<uint32_t> all;
    all.reserve(faces.size() * (2 * std::size_t{corners} + 1));
    for (const uint32_t face : faces) {
        const uint32_t* corner = coarse.faceVertexIndices.array + std::size_t{face} * corners;
        const uint32_t* slots = fine.faceVertexIndices.array + std::size_t{face} * corners * 4;
        all.insert(all.end(), corner, corner + corners);
        for (uint32_t side = 0; side < corners; ++side)
            all.push_back(slots[EdgePointSlot(corners, side)]);
        all.push_back(slots[facePointSlot]);
    }
    const IndexSet set(all);
    vertices = set.Members();
    facePoints.resize(faces.size());
    const uint32_t* next = all.data();
    for (FacePoints& face : facePoints) {
        for (uint32_t k = 0; k < corners; ++k) face.corner[k] = set.RankOf(*next++);
        for (uint32_t k = 0; k < corners; ++k) face.edge[k] = set.RankOf(*next++);
        face.centre = set.RankOf(*next++);
    }
}

void RefinedRegion::AddQuads(const FacePoints& face) {
    uint32_t edgeBefore = face.edge[corners - 1];
    for (uint32_t child = 0; child < corners; ++child) {
        const uint32_t first = corners == 4 ? child : 0;
        Quad& quad = quads.emplace_back();
        quad[first] = face.corner[child];
        quad[(first + 1) & 3u] = face.edge[child];
        quad[(first + 2) & 3u] = face.centre;
        quad[(first + 3) & 3u] = edgeBefore;
        edgeBefore = face.edge[child];
    }
}

}  // namespace trovik
