// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/DetailCarrier.h"

#include "framework/math/IsFinite.h"
#include "framework/math/SameBits.h"
#include "framework/mesh/VertexNeighbours.h"
#include "framework/multires/FineMoves.h"
#include "framework/multires/RefinedRegion.h"
#include "framework/multires/RotatedLayers.h"
#include "framework/threads/WorkerThreads.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <utility>

namespace trovik {

namespace {

/// Returns the vertices whose positions differ from the recorded ones, in ascending order.
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

/// Number of faces that are processed at a time. With shorter runs, the faces around the runs would
/// be visited more often; longer runs would not fit into the caches. The runs, the order of the
/// results and the counted work depend only on the number of faces.
constexpr std::size_t coarseFacesPerRun = 2048;
constexpr std::size_t fineFacesPerRun = 4096;

/// Consecutive runs of about the same length.
class Runs {
public:
    Runs(std::size_t elements, std::size_t perRun)
        : total(elements), count(std::max<std::size_t>(1, (elements + perRun - 1) / perRun)) {}
    std::size_t Count() const { return count; }
    std::size_t First(std::size_t run) const { return total * run / count; }
    std::size_t End(std::size_t run) const { return First(run + 1); }
    std::size_t Length(std::size_t run) const { return End(run) - First(run); }

private:
    std::size_t total;
    std::size_t count;
};

/// Number of runs that are computed before their results are stored.
std::size_t RunsPerWave(const Runs& runs) {
    constexpr std::size_t perThread = 2;
    return runs.Count() == 1 ? 1 : perThread * LimitWorkerThreads();
}

Vector SeenPosition(const LevelMesh& level, const OlderValues<Vector>& seen, uint32_t vertex) {
    const Vector* position = seen.Find(vertex);
    return position == nullptr ? level.Position(vertex) : *position;
}

/// The normals at the corners of a run of faces. A corner belongs to the first run that contains
/// one of its faces.
class NormalRun {
public:
    /// Stores the old normals and computes the new ones.
    /// \param all  the faces of all runs, in ascending order; this run is the range from `first` to
    /// `end`.
    void Compute(LevelMesh& level,
                 const std::vector<uint32_t>& all,
                 std::size_t first,
                 std::size_t end) {
        const std::vector<uint32_t> faces(all.begin() + static_cast<std::ptrdiff_t>(first),
                                          all.begin() + static_cast<std::ptrdiff_t>(end));
        const IndexSet corners = CornerSetOf(level, faces);
        const std::vector<uint32_t> around = FacesAt(level, corners, faces);
        vertices = corners.Members();
        if (first == 0) {
            Update(level, corners, around);
            return;
        }
        const uint32_t cornersPerFace = level.CornersPerFace();
        std::vector<bool> isOfEarlierRun(vertices.size(), false);
        for (auto face = around.begin(); face != around.end() && *face < faces.front(); ++face) {
            if (!std::binary_search(
                    all.begin(), all.begin() + static_cast<std::ptrdiff_t>(first), *face))
                continue;
            const uint32_t* corner =
                level.faceVertexIndices.array + std::size_t{*face} * cornersPerFace;
            for (uint32_t k = 0; k < cornersPerFace; ++k) {
                const uint32_t rank = corners.RankOf(corner[k]);
                if (rank != IndexSet::noRank) isOfEarlierRun[rank] = true;
            }
        }
        std::size_t kept = 0;
        for (std::size_t i = 0; i < vertices.size(); ++i)
            if (!isOfEarlierRun[i]) vertices[kept++] = vertices[i];
        vertices.resize(kept);
        Update(level, IndexSet(vertices), around);
    }

    /// Appends the vertices whose normals have changed and their old normals to the lists.
    void MoveTo(const LevelMesh& level, CarriedLevel& carried) {
        for (std::size_t i = 0; i < before.size(); ++i) {
            if (SameBits(before[i], level.vertexNormals.array[vertices[i]])) continue;
            carried.normalVertices.push_back(vertices[i]);
            carried.normalsBefore.push_back(before[i]);
        }
        before.clear();
    }

private:
    void Update(LevelMesh& level, const IndexSet& which, const std::vector<uint32_t>& around) {
        before.reserve(vertices.size());
        for (const uint32_t vertex : vertices) before.push_back(level.vertexNormals.array[vertex]);
        level.StoreNormalsOf(which, around);
    }

    std::vector<uint32_t> vertices;
    /// The previous normal of each vertex; empty before Compute and after MoveTo.
    std::vector<PackedNormal> before;
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

void DetailCarrier::MoveFineVertices(const std::vector<uint32_t>& faces,
                                     const OlderValues<Vector>& seen,
                                     RotatedLayers* layers,
                                     CarriedLevel& carried) {
    if (faces.empty()) return;
    JobPhase phase(job, "Propagating details up", faces.size());
    const Runs runs(faces.size(), coarseFacesPerRun);
    const std::size_t step = RunsPerWave(runs);
    std::vector<FineMoves> found(step);
    for (std::size_t wave = 0; wave < runs.Count(); wave += step) {
        const std::size_t count = std::min(step, runs.Count() - wave);
        RunInParallel(static_cast<uint32_t>(count), 1, [&](uint32_t i) {
            const std::span<const uint32_t> owned =
                std::span(faces).subspan(runs.First(wave + i), runs.Length(wave + i));
            FineMoveRun run{{owned.begin(), owned.end()}, owned.front(), owned.back()};
            if (runs.Count() > 1) run.faces = WithFacesAround(coarse, std::move(run.faces));
            found[i] = FindFineMoves(coarse, fine, seen, run, layers != nullptr);
        });
        for (std::size_t i = 0; i < count; ++i) {
            const FineMoves& moves = found[i];
            counts.refined += moves.counts.refined;
            counts.turned += moves.counts.turned;
            for (std::size_t k = 0; k < moves.vertices.size(); ++k) {
                phase.Poll();
                if (layers != nullptr)
                    layers->Turn(moves.vertices[k], moves.positions[k], moves.surface[k]);
                MoveVertex(fine, moves.vertices[k], moves.positions[k], carried);
            }
            phase.Add(runs.Length(wave + i));
        }
    }
    phase.Finish();
}

void DetailCarrier::Up(const OlderValues<Vector>& seen,
                       RotatedLayers* layers,
                       CarriedLevel& carried) {
    carried.level = static_cast<uint32_t>(fine.Index());
    const std::vector<uint32_t> changed = Changed(coarse, seen, job);
    if (changed.empty()) return;

    // The refined points of the faces around a changed vertex change. The surface also rotates at
    // the neighbours of these points, so rotations are computed for one additional ring of points,
    // using the points of all faces in the list.
    const std::vector<uint32_t> faces = WithFacesAround(coarse, FacesAt(coarse, changed));
    MoveFineVertices(faces, seen, layers, carried);
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
    const std::vector<uint32_t> faces = FacesAt(level, carried.vertices);
    JobPhase phase(job, "Updating normals", faces.size());
    level.CountOutsideEdit();
    const Runs runs(faces.size(), fineFacesPerRun);
    const std::size_t step = RunsPerWave(runs);
    std::vector<NormalRun> found(step);
    for (std::size_t wave = 0; wave < runs.Count(); wave += step) {
        const std::size_t count = std::min(step, runs.Count() - wave);
        const auto record = [&] {
            for (NormalRun& run : found) run.MoveTo(level, carried);
        };
        try {
            RunInParallel(static_cast<uint32_t>(count), 1, [&](uint32_t i) {
                found[i].Compute(level, faces, runs.First(wave + i), runs.End(wave + i));
            });
        } catch (...) {
            record();
            throw;
        }
        record();
        for (std::size_t i = runs.First(wave); i < runs.End(wave + count - 1); ++i) phase.Add();
    }
    phase.Finish();
    carried.vertices.shrink_to_fit();
    carried.positionsBefore.shrink_to_fit();
    carried.normalVertices.shrink_to_fit();
    carried.normalsBefore.shrink_to_fit();
}

}  // namespace trovik
