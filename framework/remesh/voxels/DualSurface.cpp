// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/voxels/DualSurface.h"

#include "framework/errors/HostError.h"
#include "framework/jobs/JobPhase.h"
#include "framework/remesh/voxels/CellField.h"
#include "framework/remesh/voxels/CellLoops.h"
#include "framework/threads/WorkerThreads.h"

#include <algorithm>
#include <bit>

namespace trovik {

namespace {

constexpr uint64_t maxFaces = 0xfffffffeu / 4;
/// Number of blocks between two progress reports.
constexpr std::size_t blocksPerRun = 1024;

/// A cell that crosses the surface.
struct Cell {
    Voxel at;
    uint8_t code = 0;
    /// See CellLoops.
    uint8_t joined = 0;
    uint8_t ambiguous = 0;
    uint32_t firstVertex = 0;

    CellLoops Loops() const { return {code, joined}; }
};

/// Runs `work(block)` for each block, on several threads.
template <typename Work>
void ForEachBlock(std::size_t count, const char* name, JobControl* job, const Work& work) {
    JobPhase phase(job, name, count);
    for (std::size_t first = 0; first < count; first += blocksPerRun) {
        const std::size_t run = std::min(blocksPerRun, count - first);
        RunInParallel(static_cast<uint32_t>(run), 16, [&](uint32_t i) { work(first + i); });
        phase.Add(run);
    }
    phase.Finish();
}

/// Finds cells by their voxels.
class CellNumbers {
public:
    static constexpr uint32_t none = 0xffffffffu;

    explicit CellNumbers(const std::vector<Cell>& ofCells)
        : cells(ofCells), slots(std::bit_ceil(ofCells.size() * 2), none) {
        for (std::size_t i = 0; i < cells.size(); ++i)
            slots[SlotOf(cells[i].at)] = static_cast<uint32_t>(i);
    }
    /// \throw HostError if there is no cell. In a consistent field, each neighbour of a cell across
    /// an edge or side that crosses the surface is also a cell.
    uint32_t At(const Voxel& voxel) const {
        const uint32_t number = slots[SlotOf(voxel)];
        if (number == none)
            throw HostError(
                "the distances to the surface are inconsistent; try another voxel size");
        return number;
    }

private:
    /// Returns the slot of the cell, or the free slot in which it would be.
    std::size_t SlotOf(const Voxel& voxel) const {
        uint64_t hash = 0;
        for (const int32_t c : voxel)
            hash = (hash ^ static_cast<uint32_t>(c)) * 0x9e3779b97f4a7c15u;
        std::size_t slot = (hash ^ hash >> 32) & (slots.size() - 1);
        while (slots[slot] != none && cells[slots[slot]].at != voxel)
            slot = (slot + 1) & (slots.size() - 1);
        return slot;
    }

    const std::vector<Cell>& cells;
    std::vector<uint32_t> slots;
};

/// Builds the surface; the functions are called in this order.
class Dual {
public:
    Dual(const VoxelField& ofField, JobControl* ofJob)
        : field(ofField), job(ofJob), origins(OriginsOfCells(ofField)) {}

    void FindCells() {
        std::vector<std::vector<Cell>> found(origins.size());
        ForEachBlock(origins.size(), "Finding cells", job, [&](std::size_t block) {
            const BlockCells values(field, origins[block]);
            BlockCells::ForEach([&](int32_t x, int32_t y, int32_t z) {
                const auto corners = values.Corners(x, y, z);
                const uint8_t code = BlockCells::CodeOf(corners);
                if (code == 0 || code == 0xff) return;
                const Voxel& o = origins[block];
                Cell cell{{o[0] + x, o[1] + y, o[2] + z}, code};
                cell.ambiguous = CellLoops::AmbiguousSides(code);
                cell.joined = Joined(cell, corners);
                found[block].push_back(cell);
            });
        });
        for (const auto& list : found) {
            firstCells.push_back(cells.size());
            cells.insert(cells.end(), list.begin(), list.end());
            if (cells.size() > maxFaces)
                throw HostError("the voxels are too small: a level holds at most " +
                                std::to_string(maxFaces) + " faces");
        }
        firstCells.push_back(cells.size());
    }

    /// Splits the loops of each two cells between which four quads would share an edge.
    void SplitLoops() {
        const CellNumbers numbers(cells);
        for (Cell& cell : cells) {
            if (cell.ambiguous == 0) continue;
            // The low sides are the high sides of other cells.
            for (uint32_t axis = 0; axis < 3; ++axis) {
                const uint32_t high = axis * 2 + 1;
                if ((cell.ambiguous >> high & 1) == 0 || !cell.Loops().PassesTwice(high)) continue;
                Voxel next = cell.at;
                ++next[axis];
                Cell& other = cells[numbers.At(next)];
                if (!other.Loops().PassesTwice(axis * 2)) continue;
                cell.joined = static_cast<uint8_t>(cell.joined ^ 1u << high);
                other.joined = static_cast<uint8_t>(other.joined ^ 1u << axis * 2);
            }
        }
    }

    void PlaceVertices(PolygonMesh& mesh) {
        uint32_t vertices = 0;
        for (Cell& cell : cells) {
            cell.firstVertex = vertices;
            vertices += cell.Loops().count;
        }
        mesh.positions.resize(vertices);
        ForEachBlock(origins.size(), "Placing vertices", job, [&](std::size_t block) {
            if (firstCells[block] == firstCells[block + 1]) return;
            const BlockCells values(field, origins[block]);
            const Voxel& o = origins[block];
            for (std::size_t i = firstCells[block]; i < firstCells[block + 1]; ++i) {
                const Voxel& at = cells[i].at;
                PlaceVertices(
                    cells[i], values.Corners(at[0] - o[0], at[1] - o[1], at[2] - o[2]), mesh);
            }
        });
    }

    void AddFaces(PolygonMesh& mesh) const {
        const CellNumbers numbers(cells);
        JobPhase phase(job, "Adding faces", cells.size());
        for (const Cell& cell : cells) {
            phase.Add();
            for (uint32_t axis = 0; axis < 3; ++axis) {
                const bool startsInside = (cell.code & 1) != 0;
                const bool endsInside = (cell.code >> (1u << axis) & 1) != 0;
                if (startsInside == endsInside) continue;
                std::array<uint32_t, 4> quad = QuadAround(cell, axis, numbers);
                if (endsInside) std::swap(quad[1], quad[3]);
                mesh.faceVertices.insert(mesh.faceVertices.end(), quad.begin(), quad.end());
            }
        }
        phase.Finish();
        mesh.faceSizes.assign(mesh.faceVertices.size() / 4, 4);
    }

private:
    /// Returns which ambiguous sides have joined inside corners, by the sign of the bilinear
    /// interpolation at its saddle point; see Nielson, Hamann: "The Asymptotic Decider" (1991).
    static uint8_t Joined(const Cell& cell, const std::array<float, 8>& corners) {
        uint32_t joined = 0;
        for (uint32_t side = 0; side < 6; ++side) {
            if ((cell.ambiguous >> side & 1) == 0) continue;
            const auto c = CellLoops::CornersOf(side);
            const float first = corners[c[0]] * corners[c[2]];
            const float second = corners[c[1]] * corners[c[3]];
            const bool isFirstInside = corners[c[0]] < 0.0f;
            if (isFirstInside ? first > second : second > first) joined |= 1u << side;
        }
        return static_cast<uint8_t>(joined);
    }

    static void PlaceVertices(const Cell& cell,
                              const std::array<float, 8>& corners,
                              PolygonMesh& mesh) {
        const CellLoops loops = cell.Loops();
        std::array<std::array<float, 3>, 4> sums{};
        std::array<float, 4> counts{};
        for (uint32_t edge = 0; edge < 12; ++edge) {
            const uint8_t loop = loops.ofEdge[edge];
            if (loop == CellLoops::none) continue;
            const uint32_t axis = edge / 4;
            const uint32_t u = (axis + 1) % 3;
            const uint32_t v = (axis + 2) % 3;
            const uint32_t low = (edge & 1) << u | (edge >> 1 & 1) << v;
            const float start = corners[low];
            sums[loop][axis] += start / (start - corners[low | 1u << axis]);
            sums[loop][u] += static_cast<float>(edge & 1);
            sums[loop][v] += static_cast<float>(edge >> 1 & 1);
            counts[loop] += 1.0f;
        }
        for (uint32_t loop = 0; loop < loops.count; ++loop)
            for (std::size_t axis = 0; axis < 3; ++axis)
                mesh.positions[cell.firstVertex + loop][axis] =
                    static_cast<float>(cell.at[axis]) + sums[loop][axis] / counts[loop];
    }

    /// Returns the vertices of the four cells around the lowest edge of a cell along an axis,
    /// counterclockwise if seen from the end of the axis.
    std::array<uint32_t, 4> QuadAround(const Cell& cell,
                                       uint32_t axis,
                                       const CellNumbers& numbers) const {
        constexpr std::array<std::array<uint32_t, 2>, 4> around = {
            {{0, 0}, {1, 0}, {1, 1}, {0, 1}}};
        std::array<uint32_t, 4> quad{};
        for (std::size_t k = 0; k < 4; ++k) {
            const auto [u, v] = around[k];
            Voxel at = cell.at;
            at[(axis + 1) % 3] -= static_cast<int32_t>(u);
            at[(axis + 2) % 3] -= static_cast<int32_t>(v);
            const Cell& other = cells[numbers.At(at)];
            quad[k] = other.firstVertex + other.Loops().ofEdge[axis * 4 + (u | v << 1)];
        }
        return quad;
    }

    const VoxelField& field;
    JobControl* job;
    std::vector<Voxel> origins;
    std::vector<Cell> cells;
    /// For each block, the number of its first cell; the last entry is the number of cells.
    std::vector<std::size_t> firstCells;
};

}  // namespace

PolygonMesh DualSurfaceOf(const VoxelField& field, JobControl* job) {
    PolygonMesh mesh;
    Dual dual(field, job);
    dual.FindCells();
    dual.SplitLoops();
    dual.PlaceVertices(mesh);
    dual.AddFaces(mesh);
    return mesh;
}

uint64_t CountDualFaces(const VoxelField& field, JobControl* job) {
    const std::vector<Voxel> origins = OriginsOfCells(field);
    std::vector<uint64_t> counts(origins.size());
    ForEachBlock(origins.size(), "Counting faces", job, [&](std::size_t block) {
        const BlockCells values(field, origins[block]);
        BlockCells::ForEach([&](int32_t x, int32_t y, int32_t z) {
            const uint32_t code = BlockCells::CodeOf(values.Corners(x, y, z));
            for (uint32_t axis = 0; axis < 3; ++axis)
                counts[block] += (code ^ code >> (1u << axis)) & 1;
        });
    });
    uint64_t count = 0;
    for (const uint64_t one : counts) count += one;
    return count;
}

}  // namespace trovik
