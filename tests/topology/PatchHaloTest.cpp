// SPDX-License-Identifier: Apache-2.0
#include "tests/fixture/StrokeFixture.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <set>

namespace trovik::test {
namespace {

void Roughen(LevelMesh& mesh, unsigned seed) {
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
        seed = seed * 1664525u + 1013904223u;
        const float jitter = static_cast<float>(seed >> 8) / 16777216.0f * 0.05f;
        const Vector p = mesh.Position(v);
        mesh.SetPosition(v, {p.x + jitter, p.y - jitter * 0.5f, p.z + jitter * 0.7f});
    }
    mesh.ComputeNormals();
}

/// Prepares a fixture's brush, including its grids, as for a dab on patches of level
/// `patchMeshLevel`.
class HaloState {
public:
    HaloState(StrokeFixture& bench, uint32_t patchMeshLevel, bool smooth, bool allLayers)
        : brush(*bench.brush), mesh(bench.Mesh()) {
        bench.Activate(smooth ? Tool::Smooth : Tool::Sculpt);
        brush.affectAllLayers.SetValue(allLayers, true);
        bench.Begin();
        brush.patchMeshLevel = patchMeshLevel;
        brush.patchLevel = mesh.Index() - static_cast<int32_t>(patchMeshLevel);
        brush.facesPerPatch = (1u << brush.patchLevel) * (1u << brush.patchLevel);
        brush.patchMesh = bench.geometry->Level(patchMeshLevel);
        brush.gridStride = (1u << brush.patchLevel) + 3;
        const HWVector unwritten(-777.0f, -777.0f, -777.0f, 0.0f);
        positions.assign(brush.gridStride * brush.gridStride, unwritten);
        offsets.assign(brush.gridStride * brush.gridStride, unwritten);
        brush.positionGrid = positions.data();
        brush.layerGrid = offsets.data();
    }
    ~HaloState() { brush.EndStroke(); }

    Vector Cell(uint32_t row, uint32_t column) const {
        return static_cast<Vector>(positions[row * brush.gridStride + column]);
    }
    uint32_t PatchVertex(uint32_t patch, uint32_t row, uint32_t column) const {
        const auto level = static_cast<uint32_t>(brush.patchLevel);
        const uint32_t points = (1u << level) + 1;
        return brush.PatchSlice(
            patch)[SubdivisionLevel::QuadVertexIndexTable(level).array[row * points + column]];
    }

    SwiftStroke& brush;
    LevelMesh& mesh;
    std::vector<HWVector> positions;
    std::vector<HWVector> offsets;
};

TEST(PatchHalo, GhostCellsHaveTheVertexOneStepAcrossEachSide) {
    StrokeFixture bench(FlatGrid(3), 2);
    HaloState state(bench, 0, false, true);
    state.brush.FillPatchHalo(state.brush.patchMesh, 4);
    // Patch 4 covers 1 to 2 in x and y, with cells a quarter of a unit wide.
    for (uint32_t i = 0; i <= 4; ++i) {
        const float along = 1.0f + 0.25f * static_cast<float>(i);
        EXPECT_EQ(state.Cell(0, i + 1), Vector(along, 0.75f, 0.0f));
        EXPECT_EQ(state.Cell(6, i + 1), Vector(along, 2.25f, 0.0f));
        EXPECT_EQ(state.Cell(i + 1, 0), Vector(0.75f, along, 0.0f));
        EXPECT_EQ(state.Cell(i + 1, 6), Vector(2.25f, along, 0.0f));
    }
}

TEST(PatchHalo, OutermostCornersAreNeverWritten) {
    StrokeFixture bench(FlatGrid(3), 2);
    HaloState state(bench, 0, true, true);
    state.brush.FillPatchHalo(state.brush.patchMesh, 4);
    for (const uint32_t row : {0u, 6u})
        for (const uint32_t column : {0u, 6u})
            EXPECT_EQ(state.Cell(row, column), Vector(-777.0f, -777.0f, -777.0f));
}

TEST(PatchHalo, OtherToolsDoNotReadThePatchItself) {
    StrokeFixture bench(FlatGrid(3), 1);
    HaloState state(bench, 0, false, true);
    state.brush.FillPatchHalo(state.brush.patchMesh, 4);
    EXPECT_EQ(state.Cell(1, 1), Vector(-777.0f, -777.0f, -777.0f));
}

TEST(PatchHalo, OpenBorderRepeatsTheEdgeOfThePatch) {
    StrokeFixture bench(FlatGrid(1), 2);
    Roughen(bench.Mesh(), 5);
    HaloState state(bench, 0, true, true);
    state.brush.FillPatchHalo(state.brush.patchMesh, 0);
    for (uint32_t i = 1; i <= 5; ++i) {
        EXPECT_EQ(state.Cell(0, i), state.Cell(1, i));
        EXPECT_EQ(state.Cell(6, i), state.Cell(5, i));
        EXPECT_EQ(state.Cell(i, 0), state.Cell(i, 1));
        EXPECT_EQ(state.Cell(i, 6), state.Cell(i, 5));
    }
}

TEST(PatchHalo, PatchLevelZeroUsesTheFourMiddleCells) {
    StrokeFixture bench(FlatGrid(3));
    HaloState state(bench, 0, true, true);
    EXPECT_EQ(state.brush.gridStride, 4u);
    state.brush.FillPatchHalo(state.brush.patchMesh, 4);
    EXPECT_EQ(static_cast<Vector>(state.positions[5]), Vector(1.0f, 1.0f, 0.0f));
    EXPECT_EQ(static_cast<Vector>(state.positions[6]), Vector(2.0f, 1.0f, 0.0f));
    EXPECT_EQ(static_cast<Vector>(state.positions[9]), Vector(1.0f, 2.0f, 0.0f));
    EXPECT_EQ(static_cast<Vector>(state.positions[10]), Vector(2.0f, 2.0f, 0.0f));
    EXPECT_EQ(static_cast<Vector>(state.positions[1]), Vector(1.0f, 0.0f, 0.0f));
    EXPECT_EQ(static_cast<Vector>(state.positions[4]), Vector(0.0f, 1.0f, 0.0f));
    EXPECT_EQ(static_cast<Vector>(state.positions[7]), Vector(3.0f, 1.0f, 0.0f));
    EXPECT_EQ(static_cast<Vector>(state.positions[14]), Vector(2.0f, 3.0f, 0.0f));
}

/// The vertices connected to `vertex` by an edge, found by checking every face.
std::set<uint32_t> NeighboursByBruteForce(const LevelMesh& mesh, uint32_t vertex) {
    std::set<uint32_t> found;
    for (uint32_t face = 0; face < mesh.faceCount; ++face) {
        const uint32_t* corners = mesh.faceVertexIndices.array + face * 4;
        for (uint32_t k = 0; k < 4; ++k) {
            if (corners[k] != vertex) continue;
            found.insert(corners[(k + 1) % 4]);
            found.insert(corners[(k + 3) % 4]);
        }
    }
    return found;
}

TEST(PatchHalo, GhostVerticesAreNeighboursAcrossTheSideOnEveryMesh) {
    for (const ZooMesh& entry : QuadMeshes()) {
        SCOPED_TRACE(entry.name);
        StrokeFixture bench(entry.mesh, 3);
        Roughen(bench.Mesh(), 11);
        HaloState state(bench, 1, true, true);
        LevelMesh& patches = *bench.geometry->Level(1);
        for (uint32_t patch = 0; patch < patches.faceCount; patch += 3) {
            state.brush.FillPatchHalo(&patches, patch);
            // Along side 0, away from the corners, the four grid neighbours are those of the mesh.
            if (patches.QuadEdgeNeighbour(patch, 0) == openBorder) continue;
            for (uint32_t column = 1; column < 4; ++column) {
                const uint32_t vertex = state.PatchVertex(patch, 0, column);
                std::set<std::tuple<float, float, float>> expected, seen;
                for (const uint32_t other : NeighboursByBruteForce(state.mesh, vertex)) {
                    const Vector p = state.mesh.Position(other);
                    expected.insert({p.x, p.y, p.z});
                }
                for (const auto& [r, c] : {std::pair{0u, column + 1},
                                           {2u, column + 1},
                                           {1u, column},
                                           {1u, column + 2}}) {
                    const Vector p = state.Cell(r, c);
                    seen.insert({p.x, p.y, p.z});
                }
                EXPECT_EQ(seen, expected) << "patch " << patch << " column " << column;
            }
        }
    }
}

TEST(PatchHalo, FiveCellMeanAtCornersIsTheTrueRingMeanForAnyValence) {
    std::set<std::size_t> valences;
    for (const ZooMesh& entry : QuadMeshes()) {
        SCOPED_TRACE(entry.name);
        StrokeFixture bench(entry.mesh, 2);
        Roughen(bench.Mesh(), 3);
        HaloState state(bench, 0, true, true);
        LevelMesh& patches = *bench.geometry->Level(0);
        const uint32_t last = 1u << state.brush.patchLevel;
        for (uint32_t patch = 0; patch < patches.faceCount; ++patch) {
            state.brush.FillPatchHalo(&patches, patch);
            Vector saved[8];
            state.brush.CorrectCorners(patch, saved);
            for (const auto& [row, column] :
                 {std::pair{0u, 0u}, {0u, last}, {last, 0u}, {last, last}}) {
                const uint32_t vertex = state.PatchVertex(patch, row, column);
                const std::set<uint32_t> ring = NeighboursByBruteForce(state.mesh, vertex);
                valences.insert(ring.size());
                double mean[3] = {};
                const auto add = [&mean](const Vector& p) {
                    mean[0] += static_cast<double>(p.x);
                    mean[1] += static_cast<double>(p.y);
                    mean[2] += static_cast<double>(p.z);
                };
                add(state.mesh.Position(vertex));
                for (const uint32_t other : ring) add(state.mesh.Position(other));
                const Vector five = (state.Cell(row + 1, column + 1) + state.Cell(row, column + 1) +
                                     state.Cell(row + 2, column + 1) + state.Cell(row + 1, column) +
                                     state.Cell(row + 1, column + 2)) *
                                    0.2f;
                const auto count = static_cast<double>(ring.size() + 1);
                EXPECT_NEAR(static_cast<double>(five.x), mean[0] / count, 2e-6);
                EXPECT_NEAR(static_cast<double>(five.y), mean[1] / count, 2e-6);
                EXPECT_NEAR(static_cast<double>(five.z), mean[2] / count, 2e-6);
            }
        }
    }
    // The meshes contain irregular, regular and open corners.
    for (const std::size_t valence : {2u, 3u, 4u, 5u, 6u}) EXPECT_TRUE(valences.count(valence));
}

TEST(PatchHalo, RestoredCornersAreTheCellsBeforeTheCorrection) {
    StrokeFixture bench(FlatGrid(3), 2);
    Roughen(bench.Mesh(), 9);
    HaloState state(bench, 0, true, true);
    state.brush.FillPatchHalo(state.brush.patchMesh, 4);
    std::vector<Vector> before;
    for (const HWVector& cell : state.positions) before.push_back(static_cast<Vector>(cell));
    Vector saved[8];
    state.brush.CorrectCorners(4, saved);
    EXPECT_EQ(state.Cell(0, 1), Vector());
    state.brush.RestoreCorners(saved);
    for (std::size_t i = 0; i < before.size(); ++i)
        EXPECT_EQ(static_cast<Vector>(state.positions[i]), before[i]) << "cell " << i;
}

TEST(PatchHalo, RegularInteriorCornerUsesThePlainMean) {
    StrokeFixture bench(FlatGrid(3), 1);
    HaloState state(bench, 0, true, true);
    Vector mean;
    const uint32_t corner = state.PatchVertex(4, 0, 0);
    state.brush.RingAverage(mean, corner, 16);
    EXPECT_EQ(mean, Vector(1.0f, 1.0f, 0.0f));
    EXPECT_EQ(state.brush.ringCount, 5u);
}

TEST(PatchHalo, ReadingLayerGhostCellsMakesRecordsOfTheirVertices) {
    StrokeFixture bench(FlatGrid(3), 1);
    SculptLayer& layer = bench.AddLayer();
    HaloState state(bench, 0, true, false);
    const auto [slot, offset] = std::pair{layer.SlotOf(0), Vector(0.0f, 0.0f, 0.25f)};
    layer.set(nullptr, slot, 0, &offset, true);
    EXPECT_EQ(*state.brush.CurrentChange()->recordCount, 0u);
    state.brush.FillPatchHalo(state.brush.patchMesh, 4);
    // Nine patch vertices and three ghost cells on each of four sides.
    EXPECT_EQ(*state.brush.CurrentChange()->recordCount, 9u + 12u);
    for (uint32_t row = 1; row <= 3; ++row)
        for (uint32_t column = 1; column <= 3; ++column)
            EXPECT_EQ(static_cast<Vector>(state.offsets[row * state.brush.gridStride + column]),
                      Vector());
}

TEST(PatchHalo, SmoothAtACornerOfAnyValenceMovesTowardsItsNeighbours) {
    for (unsigned valence = 3; valence <= 8; ++valence) {
        SCOPED_TRACE(valence);
        StrokeFixture bench(ValenceFan(valence), 2);
        LevelMesh& mesh = bench.Mesh();
        // The fan's centre is vertex 0 at every level; it is moved out of the surface.
        Vector centre = mesh.Position(0);
        centre.z += 0.2f;
        mesh.SetPosition(0, centre);
        mesh.ComputeNormals();
        Vector mean = centre;
        const std::set<uint32_t> ring = NeighboursByBruteForce(mesh, 0);
        ASSERT_EQ(ring.size(), valence);
        for (const uint32_t other : ring) mean += mesh.Position(other);
        mean *= 1.0f / static_cast<float>(valence + 1);

        bench.Activate(Tool::Smooth);
        bench.Stroke(bench.HitVertex(0), 0.05f, 100.0f);
        const Vector moved = mesh.Position(0);
        EXPECT_NEAR(moved.x, mean.x, 1e-5f);
        EXPECT_NEAR(moved.y, mean.y, 1e-5f);
        EXPECT_NEAR(moved.z, mean.z, 1e-5f);
    }
}

TEST(PatchNormals, SeamVerticesGetTheNormalOfTheSurface) {
    StrokeFixture bench(FlatGrid(4), 2);
    LevelMesh& mesh = bench.Mesh();
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
        const Vector p = mesh.Position(v);
        mesh.SetPosition(v, {p.x, p.y, 0.5f * p.x - 0.25f * p.y});
    }
    const Vector expected = Vector(-0.5f, 0.25f, 1.0f).Normalized();
    bench.Stroke(bench.HitFace(mesh.faceCount / 2), 10.0f, 0.0f);
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
        const PackedNormal& n = mesh.vertexNormals.array[v];
        EXPECT_NEAR(n.x, expected.x * 32767.0f, 1.5f) << v;
        EXPECT_NEAR(n.y, expected.y * 32767.0f, 1.5f) << v;
        EXPECT_NEAR(n.z, expected.z * 32767.0f, 1.5f) << v;
    }
}

TEST(PatchNormals, FourthWordIsNotWritten) {
    StrokeFixture bench(FlatGrid(3), 1);
    LevelMesh& mesh = bench.Mesh();
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v)
        mesh.vertexNormals.array[v].reserved = static_cast<int16_t>(v + 1);
    bench.Stroke(bench.HitFace(17), 1.0f);
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v)
        EXPECT_EQ(mesh.vertexNormals.array[v].reserved, static_cast<int16_t>(v + 1));
}

}  // namespace
}  // namespace trovik::test
