// SPDX-License-Identifier: Apache-2.0

/// \file Compares whole dabs on triangle meshes with independent calculations in double precision,
/// and tests all tools with every influence on a vertex enabled at once.
#include "tests/brush/ToolRows.h"
#include "tests/fixture/Triangles.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/meshes/MirrorAtX.h"
#include "tests/topology/DoublePosition.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>

namespace trovik::test {
namespace {

double Distance(const Triple& a, const Triple& b) {
    return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}
void ExpectAt(const LevelMesh& mesh, uint32_t vertex, const Triple& wanted, double tolerance) {
    EXPECT_LT(Distance(PositionOf(mesh, vertex), wanted), tolerance) << vertex;
}

PolygonMesh RoundTriangles() { return Triangulated(SphereQuads(2)); }

std::set<uint32_t> NeighboursOf(const LevelMesh& mesh, uint32_t vertex) {
    std::set<uint32_t> around;
    for (uint32_t f = 0; f < mesh.faceCount; ++f) {
        const uint32_t* c = mesh.faceVertexIndices.array + f * 3;
        if (std::find(c, c + 3, vertex) != c + 3) around.insert(c, c + 3);
    }
    around.erase(vertex);
    return around;
}

/// On a closed mesh, each neighbour is reported in one face. The mean is therefore that of the unit
/// normals of all faces around the vertex, and is not normalised.
Triple MeanFaceNormal(const LevelMesh& mesh, uint32_t vertex) {
    Triple sum{};
    double count = 0;
    for (uint32_t f = 0; f < mesh.faceCount; ++f) {
        const uint32_t* c = mesh.faceVertexIndices.array + f * 3;
        if (std::find(c, c + 3, vertex) == c + 3) continue;
        const Triple p = PositionOf(mesh, c[0]);
        const Triple q = PositionOf(mesh, c[1]);
        const Triple r = PositionOf(mesh, c[2]);
        const Triple a = {q[0] - p[0], q[1] - p[1], q[2] - p[2]};
        const Triple b = {r[0] - p[0], r[1] - p[1], r[2] - p[2]};
        const Triple n = {
            a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
        const double length = std::hypot(n[0], n[1], n[2]);
        for (std::size_t k = 0; k < 3; ++k) sum[k] += n[k] / length;
        ++count;
    }
    for (double& s : sum) s /= count;
    return sum;
}

TEST(TriangleDab, WeightDependsOnDistanceAndFalloff) {
    StrokeFixture bench(RoundTriangles());
    LevelMesh& mesh = bench.Mesh();
    bench.Activate(Tool::Sculpt, 3);
    bench.brush->directionAttribute.SetValue(7, true);
    const SurfacePoint hit = bench.HitFace(20);
    const double radius = 0.61;
    std::vector<Triple> before;
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) before.push_back(PositionOf(mesh, v));
    bench.Begin();
    std::vector<float> table(bench.brush->falloffTable,
                             bench.brush->falloffTable + bench.brush->falloffLast + 1);
    bench.Dab(hit, static_cast<float>(radius), 0.3f, 0.5f);
    bench.Dab(hit, static_cast<float>(radius), 0.3f, 0.5f);
    bench.End();
    const Triple center = {static_cast<double>(hit.position.x),
                           static_cast<double>(hit.position.y),
                           static_cast<double>(hit.position.z)};
    int moved = 0;
    for (uint32_t v = 0; v < before.size(); ++v) {
        const double distance = Distance(before[v], center);
        double weight = 0.0;
        if (distance <= radius) {
            const auto index =
                static_cast<std::size_t>(distance / radius * static_cast<double>(table.size() - 1));
            weight = static_cast<double>(table[index]);
        }
        // The second dab measures distances from the positions at first touch, and the build-up of
        // the first dab weakens it.
        const double total = weight + weight * (1.0 - weight * 0.5);
        ExpectAt(mesh, v, {before[v][0], before[v][1], before[v][2] + 0.3 * total}, 2e-6);
        moved += weight > 0.0;
    }
    EXPECT_GT(moved, 8);
    EXPECT_LT(moved, 40);
}

TEST(TriangleDab, UpdatesTheNormalsOfAllReportedVertices) {
    StrokeFixture bench(RoundTriangles());
    LevelMesh& mesh = bench.Mesh();
    const auto before = BitsOf(mesh);
    bench.Activate(Tool::Sculpt, 2);
    bench.Stroke(bench.HitFace(20), 0.6f, 0.4f);
    std::set<uint32_t> met;
    for (const FaceVisit& visit : mesh.LastVertexWalk()) met.insert(visit.face);
    EXPECT_LT(met.size(), mesh.VertexCount());
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
        const PackedNormal& n = mesh.vertexNormals.array[v];
        if (met.count(v) == 0) {
            EXPECT_EQ(n.x, before[v].normal[0]);
            EXPECT_EQ(n.y, before[v].normal[1]);
            EXPECT_EQ(n.z, before[v].normal[2]);
            continue;
        }
        const Triple normal = MeanFaceNormal(mesh, v);
        EXPECT_NEAR(n.x, normal[0] * 32767.0, 1.0);
        EXPECT_NEAR(n.y, normal[1] * 32767.0, 1.0);
        EXPECT_NEAR(n.z, normal[2] * 32767.0, 1.0);
    }
    // The neighbours of moved vertices were also reported, so that no normal is stale.
    const auto after = BitsOf(mesh);
    for (uint32_t v = 0; v < before.size(); ++v) {
        if (std::equal(before[v].position, before[v].position + 3, after[v].position)) continue;
        for (const uint32_t around : NeighboursOf(mesh, v)) {
            EXPECT_EQ(met.count(around), 1u) << v << ", " << around;
        }
    }
}

TEST(TriangleDab, SmoothWorksInPlaceInTheOrderOfTheWalk) {
    StrokeFixture bench(RoundTriangles());
    LevelMesh& mesh = bench.Mesh();
    uint32_t seed = 7;
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
        seed = seed * 1664525u + 1013904223u;
        mesh.SetPosition(v, mesh.Position(v) * (0.9f + static_cast<float>(seed >> 8) * 1e-8f));
    }
    bench.Activate(Tool::Smooth);
    const SurfacePoint hit = bench.HitFace(33);
    std::vector<Triple> places;
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) places.push_back(PositionOf(mesh, v));
    const std::vector<Triple> before = places;
    bench.Stroke(hit, 0.7f, 60.0f);

    const Triple center = {static_cast<double>(hit.position.x),
                           static_cast<double>(hit.position.y),
                           static_cast<double>(hit.position.z)};
    int moved = 0;
    for (const FaceVisit& visit : mesh.LastVertexWalk()) {
        const uint32_t v = visit.face;
        const bool reached = Distance(before[v], center) <= static_cast<double>(0.7f);
        EXPECT_EQ(visit.answer, reached);
        if (!reached) continue;
        Triple mean = places[v];
        const std::set<uint32_t> around = NeighboursOf(mesh, v);
        for (const uint32_t other : around)
            for (std::size_t k = 0; k < 3; ++k) mean[k] += places[other][k];
        for (std::size_t k = 0; k < 3; ++k) {
            mean[k] /= static_cast<double>(around.size() + 1);
            places[v][k] += 0.6 * (mean[k] - places[v][k]);
        }
        ++moved;
    }
    EXPECT_GT(moved, 10);
    for (uint32_t v = 0; v < places.size(); ++v) ExpectAt(mesh, v, places[v], 2e-6);
}

TEST(TriangleDab, PinchMovesATenthOfTheDistanceForAWeightOfOne) {
    StrokeFixture bench(RoundTriangles());
    LevelMesh& mesh = bench.Mesh();
    bench.Activate(Tool::Pinch);
    const SurfacePoint hit = bench.HitVertex(5);
    std::vector<Triple> before;
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) before.push_back(PositionOf(mesh, v));
    // Pinch uses a hundredth of the strength.
    bench.Stroke(hit, 0.8f, 150.0f);
    for (uint32_t v = 0; v < before.size(); ++v) {
        Triple wanted = before[v];
        const double share = Distance(before[v], before[5]) <= 0.8 ? 0.15 : 0.0;
        for (std::size_t k = 0; k < 3; ++k) wanted[k] += share * (before[5][k] - wanted[k]);
        ExpectAt(mesh, v, wanted, 2e-6);
    }
}

TEST(TriangleDab, MeasuresInWorldSpaceUnderNonUniformScale) {
    StrokeFixture bench(RoundTriangles());
    LevelMesh& mesh = bench.Mesh();
    const Triple scale = {2.0, 1.0, 0.5};
    bench.geometry->Transform().Set({2.0f, 1.0f, 0.5f}, {}, {});
    bench.Activate(Tool::Sculpt);
    bench.brush->directionAttribute.SetValue(5, true);
    const SurfacePoint hit = bench.HitVertex(5);
    std::vector<Triple> before;
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) before.push_back(PositionOf(mesh, v));
    bench.Stroke(hit, 0.9f, 0.3f);
    int moved = 0;
    for (uint32_t v = 0; v < before.size(); ++v) {
        Triple away{};
        for (std::size_t k = 0; k < 3; ++k) away[k] = scale[k] * (before[v][k] - before[5][k]);
        Triple wanted = before[v];
        // The step is multiplied by the inverse of the x scale. The product of the three scales is
        // 1.
        if (Distance(away, {}) <= 0.9) {
            wanted[0] += 0.3 / 2.0;
            ++moved;
        }
        ExpectAt(mesh, v, wanted, 2e-6);
    }
    EXPECT_GT(moved, 3);
}

/// All tools with a layer, a mask, mirrored dabs, a renderer and a snapshot of the original data.
class TrianglesByEachTool : public ::testing::TestWithParam<std::size_t> {
protected:
    /// Runs a mirrored stroke of three dabs with every influence enabled.
    void Run(const PolygonMesh& polygons, bool withLayer, BrushOperation::Modifier modifier) {
        StrokeFixture bench(polygons);
        SwiftStroke& brush = *bench.brush;
        LevelMesh& mesh = bench.Mesh();
        std::vector<VertexAuxiliary> auxiliary(mesh.VertexCount());
        mesh.vertexAuxiliary = auxiliary.data();
        for (uint32_t v = 0; v < mesh.VertexCount(); v += 3) mesh.SetFreeze(v, 127);
        for (uint32_t v = 1; v < mesh.VertexCount(); v += 3) mesh.SetFreeze(v, 40);
        if (withLayer) bench.AddLayer();
        RecordingRenderer& renderer = bench.AddRenderer(1.0f);

        const auto before = BitsOf(mesh);
        const Tool tool = allTools[GetParam()];
        bench.Activate(tool, 2);
        brush.SetMirrorConfig(MirroredAtX());
        bench.Begin(modifier);
        OriginalData data;
        std::vector<int32_t> records(mesh.VertexCount(), -1);
        data.vertexLimit = mesh.VertexCount();
        data.sourceMesh = &mesh;
        data.recordOfVertex = records.data();
        data.recordsPerPage = 8;
        data.pageShift = 3;
        data.pageMask = 7;
        data.pageAlignment = 16;
        brush.originalData = &data;
        brush.useTessellator = true;
        const float strength = tool == Tool::Sculpt || GetParam() > 8 ? 0.2f : 30.0f;
        for (uint32_t dab = 0; dab < 3; ++dab) {
            for (const bool mirrored : {false, true}) {
                SurfacePoint hit = bench.HitFace((dab + (mirrored ? 5 : 0)) % mesh.faceCount);
                hit.mirror = mirrored;
                brush.SetPreviousPatchPosition(hit.position + Vector(0.1f, 0.2f, 0.3f));
                bench.Dab(hit, 1.4f, strength, 0.5f);
                EXPECT_EQ(brush.deferredNormals.fill, 0u);
            }
        }
        // The original position of a touched vertex is both in its undo record and in the snapshot,
        // since the first touch writes both.
        EXPECT_EQ(data.recordCount, mesh.changeRecordCount);
        for (uint32_t i = 0; i < mesh.changeRecordCount; ++i) {
            const StoredVertexInfo& undo = mesh.changeRecords[i];
            const int32_t at = records[undo.vertexIndex];
            ASSERT_GE(at, 0);
            const auto* record =
                static_cast<const uint8_t*>(data.pages[static_cast<uint32_t>(at) / 8]) +
                at % 8 * 28;
            // Bits are compared. NOLINTNEXTLINE(bugprone-suspicious-memory-comparison)
            EXPECT_EQ(std::memcmp(record, undo.originalPosition, 12), 0);
        }
        brush.useTessellator = false;
        brush.originalData = nullptr;
        bench.End();
        for (uint32_t i = 0; i < data.pages.fill; ++i) Block::AlignedFree(data.pages[i]);
        mesh.vertexAuxiliary = nullptr;

        const auto after = BitsOf(mesh);
        int moved = 0;
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
            const Vector p = mesh.Position(v);
            EXPECT_TRUE(std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z));
            const bool same =
                std::equal(before[v].position, before[v].position + 3, after[v].position);
            if (v % 3 == 0) {
                EXPECT_TRUE(same) << "frozen vertex " << v;
            }
            moved += !same;
        }
        if (tool != Tool::Scrape && tool != Tool::Fill) {
            EXPECT_GT(moved, 0);
        }
        EXPECT_FALSE(renderer.notices.empty());
        while (bench.geometry->History().Undo(*bench.geometry)) {
        }
        EXPECT_EQ(BitsOf(mesh), before);
        while (bench.geometry->History().Redo(*bench.geometry)) {
        }
        EXPECT_EQ(BitsOf(mesh), after);
        EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
    }
};
INSTANTIATE_TEST_SUITE_P(Tools,
                         TrianglesByEachTool,
                         ::testing::Range(std::size_t{0}, std::size_t{15}),
                         [](const auto& tested) { return std::string(toolNames[tested.param]); });

TEST_P(TrianglesByEachTool, StayConsistentWithEveryInfluenceEnabled) {
    for (const PolygonMesh& mesh : {Icosahedron(), RoundTriangles(), TriangleStrip(6)}) {
        for (const bool withLayer : {false, true}) {
            for (const auto modifier : {BrushOperation::ModifierNone,
                                        BrushOperation::ModifierSmooth,
                                        BrushOperation::ModifierInvert}) {
                SCOPED_TRACE(testing::Message() << mesh.name << withLayer << modifier);
                Run(mesh, withLayer, modifier);
            }
        }
    }
}

}  // namespace
}  // namespace trovik::test
