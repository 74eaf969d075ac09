// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/BrushSettings.h"
#include "framework/brushes/Falloff.h"
#include "framework/freeze/FreezeBrush.h"
#include "framework/images/StampImage.h"
#include "framework/nodes/HostKernel.h"
#include "framework/strokes/DabStrength.h"
#include "framework/strokes/StrokePath.h"
#include "tests/freeze/FreezeGrid.h"
#include "tests/meshes/MirrorAtX.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace trovik::test {
namespace {

using Row = std::vector<int>;

/// A grid of 16 x 16 quads under the freeze brush with a constant falloff.
class FreezeBrushTest : public testing::Test {
protected:
    FreezeBrushTest()
        : grid((HostKernel::Instance(), 16)),
          tree(&grid.Level()),
          loop(brush, grid.geometry, tree) {
        HostKernel::Instance().Scene()->AddGeometry(&grid.geometry);
        brush.SetFalloff(QStringLiteral("constant"));
    }
    ~FreezeBrushTest() override {
        HostKernel::Instance().Scene()->RemoveGeometry(&grid.geometry);
        CheckableFloatArray::s_bActive = false;
    }

    StrokeDab At(float x, float y, float radius = 1.1f, float strength = 100.0f) {
        StrokeDab dab;
        const auto hit = HitNear(grid.geometry, tree, {x, y, 0.0f});
        dab.hit = SurfacePoint(&grid.Level(), 0, hit->face);
        dab.hit.position = hit->position;
        dab.hit.normal = {0.0f, 0.0f, 1.0f};
        dab.position = hit->position;
        dab.size = radius;
        dab.strength = strength;
        return dab;
    }
    void Stroke(const std::vector<StrokeDab>& dabs,
                BrushOperation::Modifier modifier = BrushOperation::ModifierNone) {
        loop.Begin(modifier);
        for (const StrokeDab& dab : dabs) loop.Dab(dab);
        loop.End();
    }

    FreezeGrid grid;
    PatchTree tree;
    FreezeBrush brush;
    StrokeLoop loop;
};

TEST_F(FreezeBrushTest, MasksTheVerticesWithinItsRadius) {
    Stroke({At(5.0f, 5.0f)});
    EXPECT_EQ(grid.Level().FrozenVertexCount(), 5u);
    for (const auto& [x, y] : {std::pair{5, 5}, {4, 5}, {6, 5}, {5, 4}, {5, 6}})
        EXPECT_EQ(grid.Level().Freeze(grid.At(x, y)), 127);
    EXPECT_NE(grid.Level().FreezeQuery(), 0);
}

TEST_F(FreezeBrushTest, AmountIsFalloffTimesStrength) {
    SetFalloffSamples(brush, {1.0f, 0.75f, 0.5f, 0.25f});
    Stroke({At(5.0f, 5.0f, 4.0f, 50.0f)});
    // With a radius of 4, a distance of 1 selects sample 1, and so on: 127 * 0.5 * sample, rounded
    // to nearest.
    const auto row = grid.Row(5);
    EXPECT_EQ(Row(row.begin() + 1, row.begin() + 10), (Row{16, 16, 32, 48, 64, 48, 32, 16, 16}));
}

TEST_F(FreezeBrushTest, DabsOfAStrokeAccumulateInFullPrecision) {
    // The result is 127 * (1 - 0.995^300). If amounts were rounded after each dab, the first dab
    // would give 1 instead of 0.635.
    Stroke(std::vector<StrokeDab>(300, At(5.0f, 5.0f, 0.5f, 0.5f)));
    const double expected = 127.0 * (1.0 - std::pow(0.995, 300.0));
    EXPECT_EQ(grid.Level().Freeze(grid.At(5, 5)), std::lround(expected));
}

TEST_F(FreezeBrushTest, InvertedBrushUnmasks) {
    for (uint32_t v = 0; v < grid.Level().VertexCount(); ++v) grid.Level().SetFreeze(v, 100);
    Stroke({At(5.0f, 5.0f, 0.5f, 25.0f)}, BrushOperation::ModifierInvert);
    EXPECT_EQ(grid.Level().Freeze(grid.At(5, 5)), 75);
    EXPECT_EQ(grid.Level().Freeze(grid.At(6, 5)), 100);
    Stroke({At(5.0f, 5.0f, 0.5f)}, BrushOperation::ModifierInvert);
    EXPECT_EQ(grid.Level().Freeze(grid.At(5, 5)), 0);
    EXPECT_EQ(grid.Level().FrozenVertexCount(), grid.Level().VertexCount() - 1);
}

TEST_F(FreezeBrushTest, SmoothingBlursTheStateBeforeTheDab) {
    grid.Set(5, 5, 120);
    Stroke({At(5.0f, 5.0f)}, BrushOperation::ModifierSmooth);
    // Each amount is the mean of the neighbours' amounts before the dab: no vertex uses the new
    // amount of another vertex.
    EXPECT_EQ(grid.Level().Freeze(grid.At(5, 5)), 0);
    EXPECT_EQ(grid.Level().Freeze(grid.At(4, 5)), 30);
    EXPECT_EQ(grid.Level().Freeze(grid.At(5, 6)), 30);
    EXPECT_EQ(grid.Level().Freeze(grid.At(3, 5)), 0) << "out of reach";
}

TEST_F(FreezeBrushTest, StrokeIsOneUndoStep) {
    grid.Set(5, 5, 40);
    const auto before = FreezeAmounts(grid.Level());
    Stroke({At(5.0f, 5.0f), At(6.0f, 5.0f), At(7.0f, 5.0f)});
    const auto after = FreezeAmounts(grid.Level());
    UndoHistory& history = grid.geometry.History();
    ASSERT_EQ(history.StepCount(), 1u);
    EXPECT_EQ(history.Label(0), "Freeze");
    history.Undo(grid.geometry);
    EXPECT_EQ(FreezeAmounts(grid.Level()), before);
    EXPECT_EQ(grid.Level().FrozenVertexCount(), 1u);
    history.Redo(grid.geometry);
    EXPECT_EQ(FreezeAmounts(grid.Level()), after);
    // Masking fully masked vertices does not create an undo step.
    Stroke({At(5.0f, 5.0f)});
    EXPECT_EQ(history.StepCount(), 1u);
}

TEST_F(FreezeBrushTest, MovesNothingAndCostFollowsTheDab) {
    const auto boxes = tree.BoxesRefitted();
    const std::vector<Vertex> before(grid.Level().vertices.array,
                                     grid.Level().vertices.array + grid.Level().VertexCount());
    Stroke({At(5.0f, 5.0f, 2.0f)});
    EXPECT_EQ(tree.BoxesRefitted(), boxes);
    for (uint32_t v = 0; v < before.size(); ++v) {
        EXPECT_EQ(grid.Level().Position(v), Vector(before[v].x, before[v].y, before[v].z));
        EXPECT_EQ(grid.Level().vertices.array[v].changeLink, before[v].changeLink);
    }
    EXPECT_EQ(loop.DirtyBox().minX, 3.0f);
    EXPECT_EQ(loop.DirtyBox().maxX, 7.0f);
    // The traversal visits 4 faces around the hit vertex, then rings of faces. It does not continue
    // from a face without a corner within the radius.
    const auto reached = VerticesUnderDab(grid.Level(), At(5.0f, 5.0f).hit.face, {5, 5, 0}, 2.0f);
    EXPECT_EQ(reached.size(), 13u);
    EXPECT_LE(grid.Level().LastFaceWalk().size(), 40u);
}

TEST_F(FreezeBrushTest, MirrorsLikeSculpting) {
    loop.SetMirrors(MirrorConfiguration::PlaneX, {MirrorAtX(8.0f)});
    SetFalloffSamples(brush, {1.0f, 0.8f, 0.6f, 0.4f, 0.2f, 0.1f});
    Stroke({At(3.0f, 5.0f, 3.0f, 70.0f), At(4.0f, 6.0f, 3.0f, 70.0f)});
    for (int y = 0; y <= 16; ++y) {
        const auto row = grid.Row(y);
        EXPECT_EQ(row, Row(row.rbegin(), row.rend())) << y;
    }
    EXPECT_GT(grid.Level().Freeze(grid.At(13, 5)), 0);
}

TEST_F(FreezeBrushTest, PathsPressureAndSpacingWorkAsInStrokes) {
    PathOptions options;
    options.radius = 0.4f;
    options.spacing = 2.5f;
    options.strength = [this](float pressure) { return DabStrength(brush, pressure, 0.4f); };
    loop.Begin(BrushOperation::ModifierNone);
    PathSample from;
    from.position = {2.0f, 5.0f, 0.0f};
    PathSample to;
    to.position = {6.0f, 5.0f, 0.0f};
    to.pressure = 0.0f;
    EXPECT_EQ(StrokeAlongSurface(loop, grid.geometry, tree, {from, to}, options), 5u);
    loop.End();
    const auto row = grid.Row(5);
    // One dab on each vertex, each dab weaker than the last by a quarter of full strength.
    EXPECT_EQ(Row(row.begin() + 1, row.begin() + 7), (Row{0, 127, 95, 64, 32, 0}));
}

TEST_F(FreezeBrushTest, StampAndItsInversionShapeTheDab) {
    FloatImage image;
    image.width = 2;
    image.height = 1;
    image.channels = 1;
    image.pixels = {0.0f, 1.0f};
    brush.Settings().stamp.enabled = true;
    brush.Settings().stampImage = std::make_shared<StampImage>(image, 0);
    Matrix toPixels;
    // One pixel per unit of x; the centre of pixel 0 is at x = 4.
    toPixels.m[3][0] = -4.0f;
    toPixels.m[1][1] = 0.0f;
    const auto dab = At(4.5f, 5.0f, 3.0f);
    const auto apply = [&] {
        brush.Settings().stampMatrix = toPixels;
        brush.BeginStroke(
            &grid.Level(), BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
        AxisAlignedBoundingBox box;
        brush.ApplyDab(dab.hit, dab.position, dab.size, 1.0f, 100.0f, box);
        brush.EndStroke();
    };
    apply();
    auto row = grid.Row(5);
    EXPECT_EQ(Row(row.begin() + 2, row.begin() + 8), (Row{0, 0, 0, 127, 0, 0}));
    grid.geometry.History().Undo(grid.geometry);
    brush.Settings().stampInverted = true;
    apply();
    row = grid.Row(5);
    EXPECT_EQ(Row(row.begin() + 2, row.begin() + 8), (Row{0, 0, 127, 0, 0, 0}));
    grid.geometry.History().Undo(grid.geometry);
    brush.Settings().stampTiled = true;
    brush.Settings().stampFactor = 0.5f;
    apply();
    row = grid.Row(5);
    EXPECT_EQ(Row(row.begin() + 2, row.begin() + 8), (Row{64, 0, 64, 0, 64, 0}));
}

TEST_F(FreezeBrushTest, FacingReducesTheAmountWhereTheSurfaceTurnsAway) {
    brush.SetFalloffBasedOnFacingAngle(true, 0.0f, 90.0f);
    // A camera at the given position; the grid's normals point along z.
    Matrix camera;
    camera.m[3][0] = 5.0f;
    camera.m[3][1] = 5.0f;
    camera.m[3][2] = 10.0f;
    HostKernel::Instance().Scene()->OwnCamera().Transform().SetMatrix(camera);
    Stroke({At(5.0f, 5.0f, 0.5f)});
    EXPECT_EQ(grid.Level().Freeze(grid.At(5, 5)), 127) << "directly below the eye";
    camera.m[3][0] = 15.0f;
    HostKernel::Instance().Scene()->OwnCamera().Transform().SetMatrix(camera);
    Stroke({At(5.0f, 8.0f, 0.5f)});
    // The camera is 10 units above the vertex and offset by 10 and 3 units in the plane, so the
    // angle is 46.2 degrees.
    const double angle = std::atan(std::sqrt(109.0) / 10.0) * 57.29578;
    EXPECT_EQ(grid.Level().Freeze(grid.At(5, 8)), std::lround(127.0 * (1.0 - angle / 90.0)));
    HostKernel::Instance().Scene()->OwnCamera().Transform().SetMatrix(Matrix());
}

TEST_F(FreezeBrushTest, WholeMeshModeUsesTheStrength) {
    loop.Begin(BrushOperation::ModifierNone);
    loop.WholeMesh(50.0f, false);
    loop.End();
    EXPECT_EQ(grid.Row(0), Row(17, 64));
    EXPECT_EQ(grid.Row(16), Row(17, 64));
}

TEST(FreezeBrushOnParts, PartsCloseInSpaceButNotConnectedAreNotReached) {
    HostKernel::Instance();
    // Two grids, one directly above the other.
    PolygonMesh mesh = GridMesh(4, 4);
    const auto first = static_cast<uint32_t>(mesh.positions.size());
    for (uint32_t v = 0; v < first; ++v) {
        const auto p = mesh.positions[v];
        mesh.positions.push_back({p[0], p[1], -0.1f});
    }
    const std::size_t corners = mesh.faceVertices.size();
    for (std::size_t i = 0; i < corners; ++i)
        mesh.faceVertices.push_back(first + mesh.faceVertices[i]);
    mesh.faceSizes.resize(mesh.faceSizes.size() * 2, 4);
    LevelGeometry geometry(mesh);
    const auto reached = VerticesUnderDab(*geometry.Bound(), 0, {0.5f, 0.5f, 0.0f}, 100.0f);
    EXPECT_EQ(reached.size(), first);
    for (const FreezeReach& one : reached) {
        EXPECT_LT(one.vertex, first);
        EXPECT_GE(geometry.Bound()->CornerOf(one.face, one.vertex), 0);
    }
}

TEST(FreezeBrushOnParts, RadiusIsInWorldSpace) {
    HostKernel::Instance();
    FreezeGrid grid(8);
    grid.geometry.Transform().Set({3.0f, 1.0f, 1.0f}, Vector(), Vector());
    const auto reached = VerticesUnderDab(grid.Level(), 0, {0.0f, 0.0f, 0.0f}, 3.0f);
    std::size_t alongX = 0;
    std::size_t alongY = 0;
    for (const FreezeReach& one : reached) {
        const Vector p = grid.Level().Position(one.vertex);
        EXPECT_FLOAT_EQ(one.distance, std::sqrt(9.0f * p.x * p.x + p.y * p.y));
        alongX += p.y == 0.0f ? 1u : 0u;
        alongY += p.x == 0.0f ? 1u : 0u;
    }
    EXPECT_EQ(alongX, 2u);
    EXPECT_EQ(alongY, 4u);
}

}  // namespace
}  // namespace trovik::test
