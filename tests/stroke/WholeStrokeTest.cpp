// SPDX-License-Identifier: Apache-2.0

/// \file Tests whole strokes with each tool on each kind of mesh: vertices move, all values stay
/// finite, and undo and redo restore bit-identical states.
#include "tests/brush/ToolRows.h"
#include "tests/brush/ToolStrength.h"
#include "tests/fixture/StrokeFixture.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/meshes/MirrorAtX.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace trovik::test {
namespace {

void Roughen(LevelMesh& mesh, float amount) {
    uint32_t seed = 1;
    const auto random = [&seed] {
        seed = seed * 1664525u + 1013904223u;
        return static_cast<float>(seed >> 8) / 16777216.0f - 0.5f;
    };
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
        const Vector p = mesh.Position(v);
        const float x = random();
        const float y = random();
        mesh.SetPosition(v, p + Vector(x, y, random()) * amount);
    }
    mesh.ComputeNormals();
}

float Extent(const LevelMesh& mesh) {
    AxisAlignedBoundingBox box;
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) box.Extend(mesh.Position(v));
    return Vector(box.maxX - box.minX, box.maxY - box.minY, box.maxZ - box.minZ).Length();
}

bool AllFinite(const LevelMesh& mesh) {
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
        const Vector p = mesh.Position(v);
        if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z)) return false;
    }
    return true;
}

/// The vertices whose positions differ.
std::vector<uint32_t> MovedBetween(const std::vector<VertexBits>& a,
                                   const std::vector<VertexBits>& b) {
    std::vector<uint32_t> moved;
    for (uint32_t v = 0; v < a.size(); ++v)
        for (int k = 0; k < 3; ++k)
            if (a[v].position[k] != b[v].position[k]) {
                moved.push_back(v);
                break;
            }
    return moved;
}

/// A strength that moves vertices by a fraction of the brush radius, regardless of the unit of the
/// tool's strength.
float StrengthOf(Tool tool, float radius) {
    if (HasStrengthInPercent(tool)) return 60.0f;
    return tool == Tool::Wax ? radius * 4.0f : radius * 0.2f;
}

/// Four dabs on adjacent faces with increasing pressure.
void StrokeOver(StrokeFixture& bench,
                Tool tool,
                int direction,
                float radius,
                BrushOperation::Modifier modifier = BrushOperation::ModifierNone) {
    bench.Activate(tool, 2);
    SwiftStroke& brush = *bench.brush;
    brush.directionAttribute.SetValue(direction, true);
    brush.SetPreviousPatchPosition({});
    const float strength = StrengthOf(tool, radius);
    const uint32_t faces = bench.Mesh().faceCount;
    bench.Begin(modifier);
    for (uint32_t i = 0; i < 4; ++i) {
        const SurfacePoint hit = bench.HitFace((faces / 3 + i) % faces);
        AxisAlignedBoundingBox box;
        brush.ApplyDab(hit,
                       bench.WorldOf(hit.position),
                       radius,
                       0.25f * static_cast<float>(i + 1),
                       strength,
                       box);
        brush.SetPreviousPatchPosition(hit.position);
    }
    bench.End();
}

/// Undoes steps until the history is at `position`.
void UndoTo(StrokeFixture& bench, std::size_t position) {
    UndoHistory& history = bench.geometry->History();
    while (history.Position() > position && history.Undo(*bench.geometry)) {
    }
}
void RedoAll(StrokeFixture& bench) {
    while (bench.geometry->History().Redo(*bench.geometry)) {
    }
}

/// Runs a stroke and checks the invariants that hold for every stroke. \return the vertices that
/// moved.
std::vector<uint32_t> CheckedStroke(
    StrokeFixture& bench,
    Tool tool,
    int direction,
    float radius,
    BrushOperation::Modifier modifier = BrushOperation::ModifierNone) {
    LevelMesh& mesh = bench.Mesh();
    const auto before = BitsOf(mesh);
    const std::size_t position = bench.geometry->History().Position();
    StrokeOver(bench, tool, direction, radius, modifier);
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
    EXPECT_TRUE(AllFinite(mesh));
    EXPECT_EQ(mesh.changeRecordCount, 0u);
    const auto after = BitsOf(mesh);
    UndoTo(bench, position);
    EXPECT_EQ(BitsOf(mesh), before);
    RedoAll(bench);
    EXPECT_EQ(BitsOf(mesh), after);
    return MovedBetween(before, after);
}

class WholeStroke : public ::testing::TestWithParam<std::size_t> {
protected:
    const Tool tool = allTools[GetParam()];

    /// Runs strokes on one of the test meshes at the given depth, in the first three direction
    /// modes.
    void Run(const ZooMesh& zoo, unsigned subdivisions) {
        SCOPED_TRACE(zoo.name + " refined " + std::to_string(subdivisions) + " times");
        // On a single face, all dabs are at the same point; on two faces back to back, the normals
        // cancel.
        const bool degenerate = subdivisions == 0 && zoo.mesh.faceSizes.size() <= 2;
        std::size_t movedByAny = 0;
        for (const int direction : {0, 1, 2}) {
            SCOPED_TRACE("direction " + std::to_string(direction));
            StrokeFixture bench(zoo.mesh, subdivisions);
            const float extent = Extent(bench.Mesh());
            Roughen(bench.Mesh(), 0.02f * extent);
            // The radius is large enough to reach the corners of a face of any size.
            const float radius = (subdivisions == 0 ? 0.7f : 0.3f) * extent;
            const std::size_t moved = CheckedStroke(bench, tool, direction, radius).size();
            movedByAny += moved;
            if (!degenerate && !MovesOneWayOnly()) {
                EXPECT_GT(moved, 0u);
            }
        }
        if (!degenerate) {
            EXPECT_GT(movedByAny, 0u);
        }
    }
    /// On a round surface, all vertices may be on the side of the plane on which these tools have
    /// no effect.
    bool MovesOneWayOnly() const { return tool == Tool::Scrape || tool == Tool::Fill; }
};
INSTANTIATE_TEST_SUITE_P(Tools,
                         WholeStroke,
                         ::testing::Range(std::size_t{0}, std::size_t{15}),
                         [](const auto& tested) { return std::string(toolNames[tested.param]); });

TEST_P(WholeStroke, WorksOnQuadsOfAllValencesAndOpenBorders) {
    for (const ZooMesh& zoo : QuadMeshes()) Run(zoo, 2);
}

TEST_P(WholeStroke, WorksOnQuadsAtTheLowestLevel) {
    for (const ZooMesh& zoo : QuadMeshes()) Run(zoo, 0);
}

TEST_P(WholeStroke, WorksOnTheVertexPathOfTriangles) {
    for (const ZooMesh& zoo : TriangleMeshes()) Run(zoo, 0);
}

TEST_P(WholeStroke, WorksOnQuadLevelsAboveTriangles) {
    for (const ZooMesh& zoo : TriangleMeshes()) {
        Run(zoo, 1);
        Run(zoo, 3);
    }
}

TEST_P(WholeStroke, WorksOnMixedPolygons) { Run({"polygons", NgonMix()}, 2); }

TEST_P(WholeStroke, WorksWithSmallAndLargeBrushes) {
    for (const float share : {0.03f, 0.1f, 0.6f, 3.0f}) {
        SCOPED_TRACE(share);
        StrokeFixture bench(Cube(), 4);
        const float extent = Extent(bench.Mesh());
        Roughen(bench.Mesh(), 0.003f * extent);
        EXPECT_FALSE(CheckedStroke(bench, tool, 1, share * extent).empty());
    }
}

TEST_P(WholeStroke, MaskedVerticesNeverMove) {
    for (const auto& [mesh, subdivisions] :
         {std::pair{Cube(), 3u}, {Icosahedron(), 0u}, {FlatGrid(3), 2u}}) {
        StrokeFixture bench(mesh, subdivisions);
        const float extent = Extent(bench.Mesh());
        Roughen(bench.Mesh(), 0.02f * extent);
        for (uint32_t v = 0; v < bench.Mesh().VertexCount(); v += 2) bench.Mesh().SetFreeze(v, 127);
        const auto moved = CheckedStroke(bench, tool, 1, 0.4f * extent);
        EXPECT_FALSE(moved.empty());
        for (const uint32_t v : moved) EXPECT_EQ(v % 2, 1u);
        for (uint32_t v = 0; v < bench.Mesh().VertexCount(); ++v) bench.Mesh().SetFreeze(v, 127);
        EXPECT_TRUE(CheckedStroke(bench, tool, 1, 0.4f * extent).empty());
    }
}

TEST_P(WholeStroke, HalfMaskedVerticesMoveLess) {
    // Pushing tools only: the displacement by other tools depends on the vertex position, which the
    // mask changes.
    if (tool != Tool::Sculpt && tool != Tool::Bulge && tool != Tool::Smear) GTEST_SKIP();
    std::vector<Vector> free;
    for (const uint8_t amount : {uint8_t{0}, uint8_t{64}}) {
        StrokeFixture bench(FlatGrid(4), 2);
        std::vector<Vector> before;
        for (uint32_t v = 0; v < bench.Mesh().VertexCount(); ++v) {
            bench.Mesh().SetFreeze(v, amount);
            before.push_back(bench.Mesh().Position(v));
        }
        bench.Activate(tool);
        const SurfacePoint hit = bench.HitFace(100);
        bench.Begin();
        bench.brush->SetPreviousPatchPosition(hit.position - Vector(1.0f, 0.0f, 0.0f));
        bench.Dab(hit, 1.0f, 0.5f);
        bench.End();
        int moved = 0;
        for (uint32_t v = 0; v < before.size(); ++v) {
            const Vector step = bench.Mesh().Position(v) - before[v];
            if (amount == 0) {
                free.push_back(step);
            } else {
                moved += step != Vector();
                EXPECT_NEAR((step - free[v] * (63.0f / 127.0f)).Length(), 0.0f, 1e-5f);
            }
        }
        if (amount != 0) {
            EXPECT_GT(moved, 10);
        }
    }
}

TEST_P(WholeStroke, WorksThroughALayer) {
    for (const auto& [mesh, subdivisions] :
         {std::pair{Cube(), 3u}, {Icosahedron(), 0u}, {Icosahedron(), 2u}, {FlatGrid(3), 2u}}) {
        StrokeFixture bench(mesh, subdivisions);
        const float extent = Extent(bench.Mesh());
        Roughen(bench.Mesh(), 0.02f * extent);
        SculptLayer& layer = bench.AddLayer();
        const auto rest = BitsOf(bench.Mesh());
        EXPECT_FALSE(CheckedStroke(bench, tool, 1, 0.4f * extent).empty());
        EXPECT_GT(layer.SlotCount(), 0u);
        for (uint32_t slot = 0; slot < layer.SlotCount(); ++slot) {
            const uint32_t v = layer.VertexOfSlot(slot);
            Vector offset;
            layer.get(&offset, slot);
            const Vector below = layer.Rest(v);
            EXPECT_EQ(bench.Mesh().Position(v),
                      Vector(below.x + offset.x, below.y + offset.y, below.z + offset.z));
        }
        // Without the layer, the mesh is unchanged.
        layer.SetStrength(0.0f);
        EXPECT_TRUE(MovedBetween(rest, BitsOf(bench.Mesh())).empty());
    }
}

TEST_P(WholeStroke, LockedLayerStaysUnchanged) {
    for (const auto& [mesh, subdivisions] :
         {std::pair{Cube(), 2u}, {Icosahedron(), 0u}, {FlatGrid(3), 1u}}) {
        StrokeFixture bench(mesh, subdivisions);
        const float extent = Extent(bench.Mesh());
        Roughen(bench.Mesh(), 0.02f * extent);
        SculptLayer& layer = bench.AddLayer();
        layer.SetWritable(false);
        const auto before = BitsOf(bench.Mesh());
        StrokeOver(bench, tool, 1, 0.4f * extent);
        EXPECT_TRUE(MovedBetween(before, BitsOf(bench.Mesh())).empty());
        for (uint32_t slot = 0; slot < layer.SlotCount(); ++slot)
            EXPECT_EQ(layer.Offset(layer.VertexOfSlot(slot)), Vector());
    }
}

TEST_P(WholeStroke, WorksUnderNonUniformScale) {
    for (const auto& [mesh, subdivisions] :
         {std::pair{Cube(), 3u}, {Icosahedron(), 0u}, {FlatGrid(3), 2u}}) {
        StrokeFixture bench(mesh, subdivisions);
        bench.geometry->Transform().Set(
            {2.0f, 1.0f, 0.5f}, {20.0f, 30.0f, 40.0f}, {1.0f, 2.0f, 3.0f});
        const float extent = Extent(bench.Mesh());
        Roughen(bench.Mesh(), 0.02f * extent);
        EXPECT_FALSE(CheckedStroke(bench, tool, 1, 0.4f * extent).empty());
        EXPECT_TRUE(bench.brush->nonUniformScale);
    }
}

TEST_P(WholeStroke, WorksUnderAMirroringTransform) {
    for (const Vector& scale : {Vector(-1.0f, -1.0f, -1.0f),
                                Vector(-2.0f, 2.0f, 2.0f),
                                Vector(-1.0f, -0.5f, -2.0f),
                                Vector(1.0f, -1.0f, -1.0f)}) {
        StrokeFixture bench(Cube(), 3);
        bench.geometry->Transform().Set(scale, {20.0f, 30.0f, 40.0f}, {1.0f, 2.0f, 3.0f});
        const float extent = Extent(bench.Mesh());
        Roughen(bench.Mesh(), 0.02f * extent);
        EXPECT_FALSE(CheckedStroke(bench, tool, 0, 0.4f * extent).empty());
    }
}

TEST_P(WholeStroke, WorksWithModifiers) {
    for (const auto modifier : {BrushOperation::ModifierSmooth, BrushOperation::ModifierInvert}) {
        StrokeFixture bench(Cube(), 3);
        const float extent = Extent(bench.Mesh());
        Roughen(bench.Mesh(), 0.02f * extent);
        EXPECT_FALSE(CheckedStroke(bench, tool, 1, 0.4f * extent, modifier).empty());
        EXPECT_EQ(bench.brush->ActiveConfiguration(), RowOf(tool));
    }
}

TEST_P(WholeStroke, MirroredPairsMakeASymmetricShape) {
    // Smooth works in place, row by row, so the result is not exactly symmetric.
    if (tool == Tool::Smooth) GTEST_SKIP();
    StrokeFixture bench(SphereQuads(3));
    LevelMesh& mesh = bench.Mesh();
    std::vector<uint32_t> image(mesh.VertexCount());
    for (uint32_t v = 0; v < image.size(); ++v) {
        float nearest = std::numeric_limits<float>::max();
        Vector wanted = mesh.Position(v);
        wanted.x = -wanted.x;
        for (uint32_t other = 0; other < image.size(); ++other) {
            const float distance = (mesh.Position(other) - wanted).Length();
            if (distance < nearest) {
                nearest = distance;
                image[v] = other;
            }
        }
        ASSERT_LT(nearest, 1e-5f);
    }
    SurfacePoint hit;
    for (uint32_t f = 0; f < mesh.faceCount; ++f) {
        hit = bench.HitFace(f);
        if (hit.position.x > 0.3f && hit.position.y > 0.4f && hit.position.z > 0.2f) break;
    }
    SurfacePoint mirrored;
    float nearest = std::numeric_limits<float>::max();
    for (uint32_t f = 0; f < mesh.faceCount; ++f) {
        const SurfacePoint other = bench.HitFace(f);
        const Vector wanted(-hit.position.x, hit.position.y, hit.position.z);
        if ((other.position - wanted).Length() >= nearest) continue;
        nearest = (other.position - wanted).Length();
        mirrored = other;
    }
    mirrored.mirror = true;

    for (const int direction : {0, 2, 3, 4, 5, 6, 7, 10, 11, 12}) {
        SCOPED_TRACE(direction);
        bench.Activate(tool);
        SwiftStroke& brush = *bench.brush;
        brush.SetMirrorConfig(MirroredAtX());
        brush.directionAttribute.SetValue(direction, true);
        const auto before = BitsOf(mesh);
        bench.Begin();
        const Vector motion(0.1f, 0.2f, -0.15f);
        brush.SetPreviousPatchPosition(hit.position - motion);
        // The dabs are small enough that the two sides do not overlap.
        bench.Dab(hit, 0.25f, StrengthOf(tool, 0.25f));
        brush.SetPreviousPatchPosition(mirrored.position - Vector(-motion.x, motion.y, motion.z));
        bench.Dab(mirrored, 0.25f, StrengthOf(tool, 0.25f));
        bench.End();
        if (!MovesOneWayOnly()) {
            EXPECT_FALSE(MovedBetween(before, BitsOf(mesh)).empty());
        }
        for (uint32_t v = 0; v < image.size(); ++v) {
            Vector wanted = mesh.Position(v);
            wanted.x = -wanted.x;
            EXPECT_NEAR((mesh.Position(image[v]) - wanted).Length(), 0.0f, 1e-4f) << v;
        }
        UndoTo(bench, 0);
        EXPECT_EQ(BitsOf(mesh), before);
    }
}

TEST_P(WholeStroke, RepeatsBitExactly) {
    std::vector<VertexBits> first;
    for (int run = 0; run < 2; ++run) {
        StrokeFixture bench(SteppedBox(), 3);
        const float extent = Extent(bench.Mesh());
        Roughen(bench.Mesh(), 0.02f * extent);
        StrokeOver(bench, tool, 1, 0.3f * extent);
        if (run == 0)
            first = BitsOf(bench.Mesh());
        else
            EXPECT_EQ(BitsOf(bench.Mesh()), first);
    }
}

TEST(LayerSmoothing, ChangesOnlyTheOffsetsOfTheLayer) {
    StrokeFixture bench(FlatGrid(3), 3);
    Roughen(bench.Mesh(), 0.05f);
    SculptLayer& layer = bench.AddLayer();
    // Only one vertex of the layer is raised.
    bench.Activate(Tool::Sculpt);
    const SurfacePoint peak = bench.HitVertex(bench.Mesh().faceVertexIndices[300]);
    bench.Stroke(peak, 0.01f, 1.0f);
    const uint32_t v = bench.Mesh().faceVertexIndices[300];
    const float height = layer.Offset(v).Length();
    EXPECT_NEAR(height, 1.0f, 1e-4f);

    bench.Activate(Tool::Smooth);
    bench.brush->affectAllLayers.SetValue(false, true);
    const auto before = BitsOf(bench.Mesh());
    bench.Stroke(bench.HitVertex(v), 1.0f, 100.0f);
    // The mean of five offsets, four of them zero.
    EXPECT_NEAR(layer.Offset(v).Length(), height * 0.2f, 1e-4f);
    EXPECT_TRUE(AllFinite(bench.Mesh()));
    ASSERT_TRUE(bench.geometry->History().Undo(*bench.geometry));
    EXPECT_EQ(BitsOf(bench.Mesh()), before);
    EXPECT_NEAR(layer.Offset(v).Length(), height, 1e-6f);
}

TEST(LayerSmoothing, WithoutALayerActsOnPositions) {
    for (const int direction : {0, 2}) {
        StrokeFixture bench(SteppedBox(), 2);
        const float extent = Extent(bench.Mesh());
        Roughen(bench.Mesh(), 0.05f * extent);
        bench.Activate(Tool::Smooth);
        bench.brush->affectAllLayers.SetValue(false, true);
        bench.brush->directionAttribute.SetValue(direction, true);
        const auto before = BitsOf(bench.Mesh());
        bench.Stroke(bench.HitFace(7), 0.4f * extent, 100.0f);
        EXPECT_FALSE(MovedBetween(before, BitsOf(bench.Mesh())).empty());
        EXPECT_TRUE(AllFinite(bench.Mesh()));
        UndoTo(bench, 0);
        EXPECT_EQ(BitsOf(bench.Mesh()), before);
    }
}

TEST(LayerSmoothing, VertexNormalDirectionOnALayerStaysFinite) {
    StrokeFixture bench(SteppedBox(), 2);
    const float extent = Extent(bench.Mesh());
    Roughen(bench.Mesh(), 0.05f * extent);
    bench.AddLayer();
    StrokeOver(bench, Tool::Sculpt, 0, 0.4f * extent);
    bench.Activate(Tool::Smooth);
    bench.brush->affectAllLayers.SetValue(false, true);
    bench.brush->directionAttribute.SetValue(2, true);
    bench.Stroke(bench.HitFace(7), 0.4f * extent, 100.0f);
    EXPECT_TRUE(AllFinite(bench.Mesh()));
}

}  // namespace
}  // namespace trovik::test
