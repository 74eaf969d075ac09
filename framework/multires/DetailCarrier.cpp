// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/DetailCarrier.h"

#include "framework/math/FrameRotation.h"
#include "framework/math/IsFinite.h"
#include "framework/math/SameBits.h"
#include "framework/mesh/VertexNeighbours.h"
#include "framework/multires/RefinedRegion.h"
#include "framework/multires/RotatedLayers.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace trovik {

namespace {

/// Returns, in ascending order, the vertices whose position differs from the recorded one.
std::vector<uint32_t> Changed(const LevelMesh& level,
                              const OlderValues<Vector>& seen,
                              JobControl* job) {
    std::vector<uint32_t> changed;
    const std::vector<uint32_t>& written = seen.Vertices();
    JobPhase phase(job, "Finding changes", written.size());
    phase.ForEachRun([&](uint64_t first, uint64_t end) {
        for (uint64_t i = first; i < end; ++i)
            if (!SameBits(seen.Values()[i], level.Position(written[i])))
                changed.push_back(written[i]);
    });
    phase.Finish();
    return changed;
}

Vector SeenPosition(const LevelMesh& level, const OlderValues<Vector>& seen, uint32_t vertex) {
    const Vector* position = seen.Find(vertex);
    return position == nullptr ? level.Position(vertex) : *position;
}

/// Number of coarse faces that are processed at a time, which bounds the memory for large changes.
constexpr std::size_t batchFaces = std::size_t{1} << 15;

/// Flags of a point in the region; may be combined.
enum PointFlag : uint32_t {
    isMoved = 1,
    /// The point is a corner of a face with a moved corner.
    isTouched = 2,
    /// A face of the region uses the point, and the lowest-numbered such face is one of the owners.
    isMet = 4,
    isOwned = 8,
    /// The surface rotation at the point is needed.
    isTurned = 16
};
using PointFlags = std::vector<uint32_t>;

/// The surface rotations at some points of a region.
class PointTurns {
public:
    PointTurns(const RefinedRegion& ofRegion, const PointFlags& flags, JobPhase& phase)
        : region(ofRegion), ends(region.PointCount(), 0) {
        for (const RefinedRegion::Quad& quad : region.Quads()) {
            phase.Poll();
            if (((flags[quad[0]] | flags[quad[1]] | flags[quad[2]] | flags[quad[3]]) & isTurned) ==
                0)
                continue;
            for (const uint32_t point : quad) ++ends[point];
            quads.push_back(quad);
            normals.push_back(NormalsOf(quad));
        }
        // The corners at each point: one ascending list per point, stored consecutively.
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

    /// \param turn  must be newly constructed.
    void Find(uint32_t point, FrameRotation& turn) {
        const uint32_t* const first = slots.data() + (point == 0 ? 0 : ends[point - 1]);
        const uint32_t* const end = slots.data() + ends[point];
        for (const uint32_t* slot = first; slot != end; ++slot) turn.AddNormal(normals[*slot / 4]);
        turn.CloseNormals();
        // An inner edge is added by both of its faces, a border edge by only one.
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
    /// The region's quads that have a point whose rotation is needed.
    std::vector<RefinedRegion::Quad> quads;
    std::vector<FrameRotation::Face> normals;
    /// 4 x quad + corner, grouped by point; `ends` holds the end of each group.
    std::vector<uint32_t> slots;
    std::vector<uint32_t> ends;
    /// The edges of the last point.
    std::vector<KnownEdge> edges;
};

}  // namespace

void DetailCarrier::MoveVertex(LevelMesh& level,
                               uint32_t vertex,
                               const Vector& to,
                               CarriedLevel& carried) {
    const Vector present = level.Position(vertex);
    if (SameBits(to, present) || (!IsFinite(to) && IsFinite(present))) return;
    carried.vertices.push_back(vertex);
    carried.positionsBefore.push_back(present);
    level.SetPosition(vertex, to);
}

void DetailCarrier::CarryFaces(const std::vector<uint32_t>& faces,
                               uint32_t firstOwner,
                               uint32_t lastOwner,
                               const OlderValues<Vector>& seen,
                               RotatedLayers* layers,
                               JobPhase& phase,
                               CarriedLevel& carried) {
    const uint32_t corners = coarse.CornersPerFace();
    const RefinedRegion region(coarse, fine, seen, faces, phase);
    const uint32_t count = region.PointCount();
    counts.refined += count;

    PointFlags flags(count, 0);
    for (uint32_t point = 0; point < count; ++point)
        if (!SameBits(region.At(point).before, region.At(point).after)) flags[point] = isMoved;
    auto quad = region.Quads().begin();
    for (const uint32_t face : faces) {
        phase.Poll();
        const bool owns = face >= firstOwner && face <= lastOwner;
        const uint32_t met = owns ? isMet | isOwned : isMet;
        for (uint32_t child = 0; child < corners; ++child, ++quad) {
            uint32_t any = 0;
            for (const uint32_t point : *quad) any |= flags[point];
            const uint32_t touched = (any & isMoved) != 0 ? isTouched : 0u;
            for (const uint32_t point : *quad)
                flags[point] |= touched | ((flags[point] & isMet) != 0 ? 0u : met);
        }
    }

    // A vertex without detail moves with its point, however the surface rotates.
    for (uint32_t point = 0; point < count; ++point) {
        if ((flags[point] & isTouched) == 0 || (flags[point] & isOwned) == 0) continue;
        const Vector detail = fine.Position(region.VertexOf(point)) - region.At(point).before;
        if (layers != nullptr || !(detail == Vector())) flags[point] |= isTurned;
    }
    PointTurns turns(region, flags, phase);
    for (uint32_t point = 0; point < count; ++point) {
        if ((flags[point] & isTouched) == 0 || (flags[point] & isOwned) == 0) continue;
        phase.Poll();
        SurfaceMove move{region.At(point).before, region.At(point).after, {}};
        if ((flags[point] & isTurned) != 0) {
            ++counts.turned;
            turns.Find(point, move.turn);
        }
        const uint32_t vertex = region.VertexOf(point);
        const Vector newPosition = move.Carried(fine.Position(vertex));
        if (layers != nullptr) layers->Turn(vertex, newPosition, move);
        MoveVertex(fine, vertex, newPosition, carried);
    }
}

void DetailCarrier::Up(const OlderValues<Vector>& seen,
                       RotatedLayers* layers,
                       CarriedLevel& carried) {
    carried.level = static_cast<uint32_t>(fine.Index());
    const std::vector<uint32_t> changed = Changed(coarse, seen, job);
    if (changed.empty()) return;

    // Refined points change in the faces around a changed vertex. The surface also rotates at the
    // points next to them, so rotations are computed for one additional ring of points, using the
    // points of all these faces.
    const std::vector<uint32_t> faces = WithFacesAround(coarse, FacesAt(coarse, changed));
    JobPhase phase(job, "Propagating details up", faces.size());
    if (faces.size() <= batchFaces) {
        CarryFaces(faces, 0, openBorder, seen, layers, phase, carried);
    } else {
        for (std::size_t first = 0; first < faces.size(); first += batchFaces) {
            const std::size_t end = std::min(faces.size(), first + batchFaces);
            const std::vector<uint32_t> batch(faces.begin() + static_cast<std::ptrdiff_t>(first),
                                              faces.begin() + static_cast<std::ptrdiff_t>(end));
            CarryFaces(WithFacesAround(coarse, batch),
                       batch.front(),
                       batch.back(),
                       seen,
                       layers,
                       phase,
                       carried);
            phase.Add(batch.size());
        }
    }
    phase.Finish();
    // A vertex without faces has no surface rotation to apply.
    for (const uint32_t vertex : changed) {
        if (coarse.LowestFaceOf(vertex) != openBorder) continue;
        const SurfaceMove move{SeenPosition(coarse, seen, vertex), coarse.Position(vertex), {}};
        const Vector newPosition = move.Carried(fine.Position(vertex));
        if (layers != nullptr) layers->Turn(vertex, newPosition, move);
        MoveVertex(fine, vertex, newPosition, carried);
    }
    RefreshNormals(fine, carried, job);
    if (layers != nullptr) layers->Finish();
}

void DetailCarrier::Down(const OlderValues<Vector>& seen, CarriedLevel& carried) {
    carried.level = static_cast<uint32_t>(coarse.Index());
    const std::vector<uint32_t> changed = Changed(fine, seen, job);
    if (changed.empty()) return;

    const uint32_t corners = coarse.CornersPerFace();
    std::vector<uint32_t> faces = FacesAt(fine, changed);
    for (uint32_t& face : faces) face /= corners;
    MakeSet(faces);
    const auto moveOf = [&](uint32_t vertex) {
        return fine.Position(vertex) - SeenPosition(fine, seen, vertex);
    };
    const uint32_t* all = fine.faceVertexIndices.array;
    std::vector<uint32_t> around;
    const std::vector<uint32_t> fitted = CornersOf(coarse, faces);
    JobPhase phase(job, "Propagating changes down", fitted.size());
    for (const uint32_t vertex : fitted) {
        phase.Add();
        ++counts.fitted;
        FacesAt(coarse, vertex, around);
        Vector edges;
        Vector borderEdges;
        Vector centres;
        uint32_t count = 0;
        bool onBorder = false;
        for (const uint32_t face : around) {
            const uint32_t* v = coarse.faceVertexIndices.array + face * corners;
            const uint32_t* slots = all + face * corners * 4;
            for (uint32_t side = 0; side < corners; ++side) {
                const bool starts = v[side] == vertex;
                if (!starts && v[(side + 1) % corners] != vertex) continue;
                const Vector edge = moveOf(slots[EdgePointSlot(corners, side)]);
                if (coarse.QuadEdgeNeighbour(face, side) == openBorder) {
                    onBorder = true;
                    borderEdges += edge;
                }
                if (!starts) continue;
                ++count;
                edges += edge;
                centres += moveOf(slots[facePointSlot]);
            }
        }
        Vector move = moveOf(vertex);
        if (onBorder && count > 1) {
            move = move * 0.5f + borderEdges * 0.25f;
        } else if (!onBorder) {
            const float share = 1.0f / static_cast<float>(count);
            move = move * 0.25f + (edges * share) * 0.5f + (centres * share) * 0.25f;
        }
        if (move == Vector()) continue;
        MoveVertex(coarse, vertex, coarse.Position(vertex) + move, carried);
    }
    phase.Finish();
    for (const uint32_t vertex : changed) {
        if (vertex >= coarse.VertexCount() || coarse.LowestFaceOf(vertex) != openBorder) continue;
        MoveVertex(coarse, vertex, coarse.Position(vertex) + moveOf(vertex), carried);
    }
    RefreshNormals(coarse, carried, job);
}

void DetailCarrier::RefreshNormals(LevelMesh& level, CarriedLevel& carried, JobControl* job) {
    std::vector<uint32_t>& touched = carried.normalVertices;
    std::vector<PackedNormal>& before = carried.normalsBefore;
    const std::vector<uint32_t> faces = FacesAt(level, carried.vertices);
    const IndexSet corners = CornerSetOf(level, faces);
    touched = corners.Members();
    before.resize(touched.size());
    for (std::size_t i = 0; i < touched.size(); ++i)
        before[i] = level.vertexNormals.array[touched[i]];
    level.ComputeNormalsOf(corners, FacesAt(level, corners, faces), job);
    std::size_t kept = 0;
    for (std::size_t i = 0; i < touched.size(); ++i) {
        if (SameBits(before[i], level.vertexNormals.array[touched[i]])) continue;
        touched[kept] = touched[i];
        before[kept++] = before[i];
    }
    touched.resize(kept);
    before.resize(kept);
    carried.vertices.shrink_to_fit();
    carried.positionsBefore.shrink_to_fit();
    carried.normalVertices.shrink_to_fit();
    carried.normalsBefore.shrink_to_fit();
}

}  // namespace trovik
