// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/FineMoves.h"

#include "framework/math/SameBits.h"
#include "framework/multires/RefinedRegion.h"

namespace trovik {

namespace {

/// Properties of a region's point; may be combined.
enum PointFlag : uint32_t {
    IsMoved = 1,
    /// The point is a corner of a face with a moved corner.
    IsTouched = 2,
    /// IsMet: the point is a corner of a face in the region. IsOwned: the lowest-numbered of these
    /// faces is one of the owners.
    IsMet = 4,
    IsOwned = 8,
    /// The surface rotation at the point is needed.
    IsRotated = 16
};
using PointFlags = std::vector<uint32_t>;

/// The surface rotations at some points of a region.
class PointRotations {
public:
    PointRotations(const RefinedRegion& ofRegion, const PointFlags& flags)
        : region(ofRegion), ends(region.PointCount(), 0) {
        quads.reserve(region.Quads().size());
        normals.reserve(region.Quads().size());
        for (const RefinedRegion::Quad& quad : region.Quads()) {
            if (((flags[quad[0]] | flags[quad[1]] | flags[quad[2]] | flags[quad[3]]) & IsRotated) ==
                0)
                continue;
            for (const uint32_t point : quad) ++ends[point];
            quads.push_back(quad);
            normals.push_back(NormalsOf(quad));
        }
        // Lists of the corners at each point, each in ascending order, stored consecutively.
        uint32_t total = 0;
        for (uint32_t& end : ends) {
            const uint32_t count = end;
            end = total;
            total += count;
        }
        slots.resize(total);
        for (uint32_t quad = 0; quad < quads.size(); ++quad)
            for (uint32_t k = 0; k < 4; ++k) slots[ends[quads[quad][k]]++] = quad * 4 + k;
    }

    /// \param turn  receives the rotation; must be newly constructed.
    void Find(uint32_t point, FrameRotation& turn) {
        const uint32_t* const first = slots.data() + (point == 0 ? 0 : ends[point - 1]);
        const uint32_t* const end = slots.data() + ends[point];
        for (const uint32_t* slot = first; slot != end; ++slot) turn.AddNormal(normals[*slot / 4]);
        turn.CloseNormals();
        // An inner edge is added by both of its faces, a border edge by its only face.
        edges.clear();
        for (const uint32_t* slot = first; slot != end; ++slot) {
            const RefinedRegion::Quad& quad = quads[*slot / 4];
            turn.AddEdge(EdgeTo(quad[(*slot + 1) & 3u], point, turn));
            turn.AddEdge(EdgeTo(quad[(*slot + 3) & 3u], point, turn));
        }
        turn.CloseEdges();
    }

private:
    FrameRotation::Face NormalsOf(const RefinedRegion::Quad& quad) const {
        const RefinedRegion::Point& a = region.At(quad[0]);
        const RefinedRegion::Point& b = region.At(quad[1]);
        const RefinedRegion::Point& c = region.At(quad[2]);
        const RefinedRegion::Point& d = region.At(quad[3]);
        return {(c.before - a.before) & (d.before - b.before),
                (c.after - a.after) & (d.after - b.after)};
    }
    const FrameRotation::Edge& EdgeTo(uint32_t end, uint32_t point, const FrameRotation& turn) {
        for (const KnownEdge& known : edges)
            if (known.end == end) return known.edge;
        const RefinedRegion::Point& from = region.At(point);
        const RefinedRegion::Point& to = region.At(end);
        edges.push_back({end, turn.EdgeOf(to.before - from.before, to.after - from.after)});
        return edges.back().edge;
    }

    struct KnownEdge {
        uint32_t end;
        FrameRotation::Edge edge;
    };
    const RefinedRegion& region;
    /// The quads of the region with a point whose rotation is needed.
    std::vector<RefinedRegion::Quad> quads;
    std::vector<FrameRotation::Face> normals;
    /// The values 4 * quad + corner, grouped by point; `ends` stores the end of each group.
    std::vector<uint32_t> slots;
    std::vector<uint32_t> ends;
    /// The edges of the last point.
    std::vector<KnownEdge> edges;
};

}  // namespace

FineMoves FindFineMoves(LevelMesh& coarse,
                        const LevelMesh& fine,
                        const OlderValues<Vector>& seen,
                        const FineMoveRun& run,
                        bool withSurface) {
    const uint32_t corners = coarse.CornersPerFace();
    const RefinedRegion region(coarse, fine, seen, run.faces);
    const uint32_t count = region.PointCount();
    FineMoves found;
    found.counts.refined = count;

    PointFlags flags(count, 0);
    for (uint32_t point = 0; point < count; ++point)
        if (!SameBits(region.At(point).before, region.At(point).after)) flags[point] = IsMoved;
    auto quad = region.Quads().begin();
    for (const uint32_t face : run.faces) {
        const bool owns = face >= run.firstOwner && face <= run.lastOwner;
        const uint32_t met = owns ? IsMet | IsOwned : IsMet;
        for (uint32_t child = 0; child < corners; ++child, ++quad) {
            uint32_t any = 0;
            for (const uint32_t point : *quad) any |= flags[point];
            const uint32_t touched = (any & IsMoved) != 0 ? IsTouched : 0u;
            for (const uint32_t point : *quad)
                flags[point] |= touched | ((flags[point] & IsMet) != 0 ? 0u : met);
        }
    }

    // A vertex without detail moves with its point, regardless of the surface rotation.
    for (uint32_t point = 0; point < count; ++point) {
        if ((flags[point] & IsTouched) == 0 || (flags[point] & IsOwned) == 0) continue;
        const Vector detail = fine.Position(region.VertexOf(point)) - region.At(point).before;
        if (withSurface || !(detail == Vector())) flags[point] |= IsRotated;
    }
    PointRotations turns(region, flags);
    for (uint32_t point = 0; point < count; ++point) {
        if ((flags[point] & IsTouched) == 0 || (flags[point] & IsOwned) == 0) continue;
        SurfaceMove move{region.At(point).before, region.At(point).after, {}};
        if ((flags[point] & IsRotated) != 0) {
            ++found.counts.turned;
            turns.Find(point, move.turn);
        }
        const uint32_t vertex = region.VertexOf(point);
        found.vertices.push_back(vertex);
        found.positions.push_back(move.Carried(fine.Position(vertex)));
        if (withSurface) found.surface.push_back(move);
    }
    return found;
}

}  // namespace trovik
