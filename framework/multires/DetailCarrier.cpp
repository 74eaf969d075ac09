// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/DetailCarrier.h"

#include "framework/math/IsFinite.h"
#include "framework/math/SameBits.h"
#include "framework/math/SurfaceTurn.h"
#include "framework/mesh/LocalRefiner.h"
#include "framework/mesh/VertexNeighbours.h"
#include "framework/multires/TurnedLayers.h"

#include <algorithm>
#include <cstddef>

namespace trovik {

namespace {

/// Returns the vertices whose position differs from the recorded one, ascending.
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

/// A point of the fine level near a change of the coarse level, refined for two states.
struct RefinedPoint {
    uint32_t vertex;
    /// The lowest coarse face that uses the point, among the visited faces.
    uint32_t owner;
    bool touched;
    SurfaceMove move;
};

/// The points of some fine faces, and the point of each corner of these faces.
class PointTable {
public:
    PointTable(const LevelMesh& fine, const std::vector<uint32_t>& fineFaces) {
        OlderValues<uint32_t> numbers;
        numbers.Keep();
        const std::vector<uint32_t> vertices = CornersOf(fine, fineFaces);
        points.reserve(vertices.size());
        for (const uint32_t vertex : vertices) {
            numbers.Note(vertex, static_cast<uint32_t>(points.size()));
            points.push_back({vertex, openBorder, false, {}});
        }
        numbers.Sort();
        cornerPoints.reserve(fineFaces.size() * 4);
        for (const uint32_t face : fineFaces)
            for (uint32_t k = 0; k < 4; ++k)
                cornerPoints.push_back(
                    *numbers.Find(fine.faceVertexIndices.array[std::size_t{face} * 4 + k]));
    }

    /// \param slot  4 x index of the face in the list + corner.
    RefinedPoint& AtCorner(std::size_t slot) { return points[cornerPoints[slot]]; }
    std::vector<RefinedPoint>& All() { return points; }

private:
    std::vector<RefinedPoint> points;
    std::vector<uint32_t> cornerPoints;
};

Vector QuadNormal(const Vector& a, const Vector& b, const Vector& c, const Vector& d) {
    return (c - a) & (d - b);
}

/// Returns the corner of the edge point, counted over the children of a face; see LevelMesh.
uint32_t EdgeSlot(uint32_t corners, uint32_t side) {
    return side * 4 + (corners == 4 ? (side + 1) & 3u : 1u);
}

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
                               TurnedLayers* layers,
                               JobPhase& phase,
                               CarriedLevel& carried) {
    const uint32_t corners = coarse.CornersPerFace();
    std::vector<uint32_t> children;
    children.reserve(faces.size() * corners);
    for (const uint32_t face : faces)
        for (uint32_t k = 0; k < corners; ++k) children.push_back(face * corners + k);
    PointTable points(fine, children);
    LocalRefiner before(coarse, seen);
    LocalRefiner after(coarse, nullptr);
    for (std::size_t i = 0; i < faces.size(); ++i) {
        phase.Poll();
        const uint32_t face = faces[i];
        const std::size_t slots = i * corners * 4;
        RefinedPoint& centre = points.AtCorner(slots + 2);
        centre.owner = face;
        centre.move.before = before.FacePoint(face);
        centre.move.after = after.FacePoint(face);
        for (uint32_t side = 0; side < corners; ++side) {
            // The coarse vertex is corner k of child k of a quad, and corner 0 of a child of a
            // triangle.
            RefinedPoint& start = points.AtCorner(slots + side * 4 + (corners == 4 ? side : 0));
            start.owner = std::min(start.owner, face);
            RefinedPoint& edge = points.AtCorner(slots + EdgeSlot(corners, side));
            if (edge.owner != openBorder) continue;
            edge.owner = face;
            edge.move.before = before.EdgePoint(face, side);
            edge.move.after = after.EdgePoint(face, side);
        }
    }
    for (RefinedPoint& point : points.All()) {
        if (point.vertex >= coarse.VertexCount()) break;
        phase.Poll();
        point.move.before = before.VertexPoint(point.vertex);
        point.move.after = after.VertexPoint(point.vertex);
    }
    counts.refined += points.All().size();

    const auto forEachFace = [&](auto&& visit) {
        for (std::size_t slot = 0; slot < children.size() * 4; slot += 4) {
            phase.Poll();
            RefinedPoint* const corner[4] = {&points.AtCorner(slot),
                                             &points.AtCorner(slot + 1),
                                             &points.AtCorner(slot + 2),
                                             &points.AtCorner(slot + 3)};
            visit(corner);
        }
    };
    forEachFace([](RefinedPoint* const(&corner)[4]) {
        const auto moved = [](const RefinedPoint* p) {
            return !SameBits(p->move.before, p->move.after);
        };
        if (std::any_of(corner, corner + 4, moved))
            for (RefinedPoint* p : corner) p->touched = true;
    });
    forEachFace([](RefinedPoint* const(&corner)[4]) {
        const Vector normal = QuadNormal(corner[0]->move.before,
                                         corner[1]->move.before,
                                         corner[2]->move.before,
                                         corner[3]->move.before);
        const Vector newNormal = QuadNormal(corner[0]->move.after,
                                            corner[1]->move.after,
                                            corner[2]->move.after,
                                            corner[3]->move.after);
        for (RefinedPoint* p : corner)
            if (p->touched) p->move.turn.AddNormal(normal, newNormal);
    });
    for (RefinedPoint& point : points.All())
        if (point.touched) point.move.turn.CloseNormals();
    // An inner edge is visited from both its faces, a border edge from one.
    forEachFace([](RefinedPoint* const(&corner)[4]) {
        for (uint32_t k = 0; k < 4; ++k) {
            RefinedPoint& p = *corner[k];
            if (!p.touched) continue;
            for (const uint32_t to : {(k + 1) & 3u, (k + 3) & 3u})
                p.move.turn.AddEdge(corner[to]->move.before - p.move.before,
                                    corner[to]->move.after - p.move.after);
        }
    });

    for (RefinedPoint& point : points.All()) {
        if (!point.touched || point.owner < firstOwner || point.owner > lastOwner) continue;
        phase.Poll();
        ++counts.turned;
        point.move.turn.CloseEdges();
        const Vector place = point.move.Carried(fine.Position(point.vertex));
        if (layers != nullptr) layers->Turn(point.vertex, place, point.move);
        MoveVertex(fine, point.vertex, place, carried);
    }
}

void DetailCarrier::Up(const OlderValues<Vector>& seen,
                       TurnedLayers* layers,
                       CarriedLevel& carried) {
    carried.level = static_cast<uint32_t>(fine.Index());
    const std::vector<uint32_t> changed = Changed(coarse, seen, job);
    if (changed.empty()) return;

    // Refined points change in the faces around a changed vertex. The surface rotates around those
    // points as well, so the rotations of one further ring are computed from the points of all
    // these faces.
    const std::vector<uint32_t> faces =
        FacesAt(coarse, CornersOf(coarse, FacesAt(coarse, changed)));
    JobPhase phase(job, "Propagating details up", faces.size());
    if (faces.size() <= batchFaces) {
        CarryFaces(faces, 0, openBorder, seen, layers, phase, carried);
    } else {
        for (std::size_t first = 0; first < faces.size(); first += batchFaces) {
            const std::size_t end = std::min(faces.size(), first + batchFaces);
            const std::vector<uint32_t> batch(faces.begin() + static_cast<std::ptrdiff_t>(first),
                                              faces.begin() + static_cast<std::ptrdiff_t>(end));
            CarryFaces(FacesAt(coarse, CornersOf(coarse, batch)),
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
    // At a vertex without faces there is no surface rotation to apply.
    for (const uint32_t vertex : changed) {
        if (coarse.LowestFaceOf(vertex) != openBorder) continue;
        const SurfaceMove move{SeenPosition(coarse, seen, vertex), coarse.Position(vertex), {}};
        const Vector place = move.Carried(fine.Position(vertex));
        if (layers != nullptr) layers->Turn(vertex, place, move);
        MoveVertex(fine, vertex, place, carried);
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
                const Vector edge = moveOf(slots[EdgeSlot(corners, side)]);
                if (coarse.QuadEdgeNeighbour(face, side) == openBorder) {
                    onBorder = true;
                    borderEdges += edge;
                }
                if (!starts) continue;
                ++count;
                edges += edge;
                centres += moveOf(slots[2]);
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
    touched = CornersOf(level, FacesAt(level, carried.vertices));
    before.resize(touched.size());
    for (std::size_t i = 0; i < touched.size(); ++i)
        before[i] = level.vertexNormals.array[touched[i]];
    level.ComputeNormalsOf(touched, job);
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
