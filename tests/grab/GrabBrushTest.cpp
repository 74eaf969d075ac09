// SPDX-License-Identifier: Apache-2.0

/// \file Tests dabs of the grab brush.
#include "framework/brushes/Falloff.h"
#include "framework/math/SameBits.h"
#include "framework/multires/HiddenFaces.h"
#include "framework/nodes/SceneStream.h"
#include "framework/strokes/MirrorMaps.h"
#include "tests/grab/GrabFixture.h"

#include <gmock/gmock.h>

#include <cmath>
#include <map>

namespace trovik::test {
namespace {

constexpr Vector up{0.0f, 0.3f, 0.1f};

TEST_F(GrabBrushTest, MovesByFalloffTimesDisplacementFromTheStart) {
    const Surface before(Level());
    const uint32_t tip = NearestVertex({0.2f, 0.1f, 0.97f});
    const Vector center = Level().Position(tip);
    const StrokeDab press = At(center, {});
    // Intermediate displacements have no effect on the result.
    Stroke({press, Moved(press, {1.0f, 0.0f, 0.0f}), Moved(press, up)});
    std::size_t moved = 0;
    for (uint32_t v = 0; v < Level().VertexCount(); ++v) {
        const Vector start = before.positions[v];
        const float distance = (start - center).Length();
        const float weight =
            distance <= 0.4f ? FalloffValue(smoothFalloffIndex, distance / 0.4f) : 0.0f;
        EXPECT_LT((Level().Position(v) - (start + up * weight)).Length(), 0.01f) << v;
        moved += Level().Position(v) == start ? 0u : 1u;
    }
    EXPECT_GT(moved, 20u);
    EXPECT_LT((Level().Position(tip) - (center + up)).Length(), 1e-6f);
    ExpectCurrentNormals();
    Undo();
    EXPECT_TRUE(Surface(Level()) == before);
}

TEST_F(GrabBrushTest, MovingBackRestoresTheStartExactly) {
    MatrixTransform transform;
    transform.Set({1.3f, 0.7f, 2.1f}, {13.0f, 27.0f, 61.0f}, {5.0f, -3.0f, 1.0f});
    geometry->Transform() = transform;
    const Surface before(Level());
    loop->SetMirrors(4, MirrorMaps({{0, 1}, 3, 2}));
    for (const char* tool : {"Grab", "ElasticGrab"}) {
        Select(tool);
        Vector world;
        const Vector local(0.1f, 0.4f, 0.9f);
        transform.LocalToWorld(&world, &local, 1.0f);
        const StrokeDab press = At(world, {}, 1.0f);
        Stroke({press, Moved(press, up), Moved(press, {0.2f, 0.1f, 0.0f}), press});
        EXPECT_TRUE(Surface(Level()) == before) << tool;
        EXPECT_EQ(geometry->History().StepCount(), 0u);
        Stroke({press, Moved(press, up)});
        EXPECT_FALSE(Surface(Level()) == before) << tool;
        Undo();
        geometry->History().Clear();
    }
}

TEST_F(GrabBrushTest, MirroredStrokesAreBitSymmetric) {
    for (const char* tool : {"Grab", "ElasticGrab", "SnakeHook"}) {
        Open(SphereQuads(4));
        Select(tool);
        // Near the plane, so that both sides overlap.
        loop->SetMirrors(1, MirrorMaps({{0}, 1, 1}));
        std::map<std::array<float, 3>, uint32_t> vertices;
        const Surface before(Level());
        for (uint32_t v = 0; v < Level().VertexCount(); ++v) {
            const Vector& p = before.positions[v];
            vertices[{p.x + 0.0f, p.y + 0.0f, p.z + 0.0f}] = v;
        }
        const StrokeDab press = At({0.1f, 0.2f, 0.95f}, {});
        Stroke({press, Moved(press, {0.1f, 0.2f, 0.3f})});
        const Surface after(Level());
        std::size_t moved = 0;
        for (uint32_t v = 0; v < Level().VertexCount(); ++v) {
            const Vector& start = before.positions[v];
            const auto twin = vertices.find({0.0f - start.x, start.y + 0.0f, start.z + 0.0f});
            ASSERT_NE(twin, vertices.end());
            const Vector p = after.positions[v];
            const Vector q = after.positions[twin->second];
            EXPECT_EQ(q, Vector(-p.x, p.y, p.z)) << tool << ", vertex " << v;
            moved += std::fabs(p.Length() - 1.0f) > 1e-4f ? 1u : 0u;
        }
        EXPECT_GT(moved, 30u) << tool;
    }
}

// The regions of all four copies overlap. Quarter turns map the sphere to itself.
TEST_F(GrabBrushTest, RotatedCopiesAreSymmetric) {
    for (const char* tool : {"Grab", "ElasticGrab"}) {
        Open(SphereQuads(4));
        Select(tool);
        loop->SetMirrors(4, MirrorMaps({{}, 4, 1}));
        const Surface before(Level());
        const StrokeDab press = At({0.2f, 0.95f, 0.1f}, {});
        Stroke({press, Moved(press, {0.2f, 0.1f, 0.3f}), Moved(press, {0.1f, 0.3f, 0.05f})});
        std::size_t moved = 0;
        for (uint32_t v = 0; v < Level().VertexCount(); ++v) {
            const Vector& start = before.positions[v];
            const Vector p = Level().Position(v);
            moved += p == start ? 0u : 1u;
            if (p == start) continue;
            std::size_t twin = 0;
            const Vector turned(start.z, start.y, -start.x);
            while (twin < before.positions.size() &&
                   (before.positions[twin] - turned).Length() > 1e-4f)
                ++twin;
            ASSERT_LT(twin, before.positions.size());
            const Vector q = Level().Position(static_cast<uint32_t>(twin));
            EXPECT_LT((q - Vector(p.z, p.y, -p.x)).Length(), 1e-4f) << tool << ", vertex " << v;
        }
        EXPECT_GT(moved, 30u) << tool;
        ExpectCurrentNormals();
        Undo();
        EXPECT_TRUE(Surface(Level()) == before) << tool;
    }
}

TEST_F(GrabBrushTest, CoincidingSidesMoveOnce) {
    loop->SetMirrors(1, MirrorMaps({{0}, 1, 1}));
    const uint32_t tip = NearestVertex({0.0f, 0.0f, 1.0f});
    ASSERT_EQ(Level().Position(tip).x, 0.0f);
    const Vector center = Level().Position(tip);
    const StrokeDab press = At(center, {});
    Stroke({press, Moved(press, {0.2f, 0.3f, 0.1f})});
    // The components across the plane cancel each other.
    EXPECT_LT((Level().Position(tip) - (center + Vector(0.0f, 0.3f, 0.1f))).Length(), 1e-6f);
}

TEST_F(GrabBrushTest, MaskedAndHiddenVerticesStay) {
    for (uint32_t v = 0; v < Level().VertexCount(); ++v)
        if (Level().Position(v).y > 0.1f) Level().SetFreeze(v, 127);
    std::vector<FaceRun> hidden;
    for (uint32_t f = 0; f < Level().faceCount; ++f)
        if (Level().Position(Level().faceVertexIndices.array[4 * f]).x > 0.1f)
            hidden.push_back({f, 1});
    Level().ToggleHidden(hidden);
    const Surface before(Level());
    for (const char* tool : {"Grab", "ElasticGrab", "SnakeHook"}) {
        Select(tool);
        const StrokeDab press = At({0.0f, 0.0f, 1.0f}, {});
        Stroke({press, Moved(press, {0.1f, 0.2f, 0.3f})});
        std::size_t moved = 0;
        for (uint32_t v = 0; v < Level().VertexCount(); ++v) {
            const bool isHeld = before.positions[v].y > 0.1f || Level().IsVertexHidden(v);
            const bool isMoved = !SameBits(Level().Position(v), before.positions[v]);
            EXPECT_FALSE(isHeld && isMoved) << tool << ", vertex " << v;
            moved += isMoved ? 1u : 0u;
        }
        EXPECT_GT(moved, 5u) << tool;
        Undo();
        EXPECT_TRUE(Surface(Level()) == before) << tool;
    }
}

// Two grids, 0.2 apart: the lower one is within the radius, but not connected.
TEST_F(GrabBrushTest, ConnectedOnlyLeavesOtherPartsInPlace) {
    PolygonMesh sheets = GridMesh(8, 8);
    const auto count = static_cast<uint32_t>(sheets.positions.size());
    const auto corners = sheets.faceVertices;
    const auto sizes = sheets.faceSizes;
    for (uint32_t v = 0; v < count; ++v)
        sheets.positions.push_back(
            {sheets.positions[v][0], sheets.positions[v][1], sheets.positions[v][2] - 0.2f});
    for (const uint32_t corner : corners) sheets.faceVertices.push_back(corner + count);
    sheets.faceSizes.insert(sheets.faceSizes.end(), sizes.begin(), sizes.end());
    for (const bool isConnected : {false, true}) {
        Open(sheets);
        brush.connectedOnly = isConnected;
        const StrokeDab press = At({4.0f, 4.0f, 0.0f}, {}, 2.0f);
        const uint32_t above = NearestVertex({4.0f, 4.0f, 0.0f});
        const uint32_t below = NearestVertex({4.0f, 4.0f, -0.2f});
        Stroke({press, Moved(press, {0.0f, 0.0f, 1.0f})});
        EXPECT_EQ(Level().Position(above).z, 1.0f);
        EXPECT_EQ(Level().Position(below).z == -0.2f, isConnected);
    }
}

TEST_F(GrabBrushTest, MovesAreRecordedInTheActiveLayer) {
    for (const char* tool : {"Grab", "ElasticGrab", "SnakeHook"}) {
        Open(SphereQuads(4));
        Select(tool);
        SculptLayer layer(&Level(), "layer");
        layer.SetStrength(0.5f);
        Level().SetActiveLayer(&layer);
        const Surface before(Level());
        const uint32_t tip = NearestVertex({0.2f, 0.1f, 0.97f});
        const Vector center = Level().Position(tip);
        const StrokeDab press = At(center, {});
        Stroke({press, Moved(press, {1.0f, 0.0f, 0.0f}), press});
        if (std::string(tool) != "SnakeHook") {
            EXPECT_TRUE(Surface(Level()) == before) << tool;
            EXPECT_EQ(geometry->History().StepCount(), 0u) << tool;
        } else {
            Undo();
        }
        Stroke({press, Moved(press, up)});
        EXPECT_LT((Level().Position(tip) - (center + up)).Length(), 1e-6f) << tool;
        EXPECT_LT((layer.Offset(tip) - up * 2.0f).Length(), 1e-5f) << tool;
        const Surface after(Level());
        Undo();
        EXPECT_TRUE(Surface(Level()) == before) << tool;
        EXPECT_EQ(layer.Offset(tip), Vector()) << tool;
        geometry->History().Redo(*geometry);
        EXPECT_TRUE(Surface(Level()) == after) << tool;
        // A locked layer accepts no moves.
        layer.SetWritable(false);
        Stroke({press, Moved(press, up * 0.5f)});
        EXPECT_TRUE(Surface(Level()) == after) << tool;
        Level().SetActiveLayer(nullptr);
        Close();
    }
}

TEST_F(GrabBrushTest, RefusesElasticSettingsThatAreOutOfRange) {
    Select("ElasticGrab");
    const auto errorWith = [&](int mode, int scales) {
        SceneStream written;
        brush.elasticMode = mode;
        brush.elasticScales = scales;
        brush.Serialize(written);
        SceneStream read(written.ToBytes());
        try {
            GrabBrush().Serialize(read);
        } catch (Error* error) {
            std::string reason = error->Message().toStdString();
            Error::Dispose(error);
            return reason;
        }
        return std::string();
    };
    EXPECT_EQ(errorWith(3, 3), "");
    EXPECT_THAT(errorWith(4, 3), testing::HasSubstr("unknown elastic deformation 4"));
    EXPECT_THAT(errorWith(-1, 3), testing::HasSubstr("unknown elastic deformation -1"));
    EXPECT_THAT(errorWith(0, 0), testing::HasSubstr("0 elastic scales; 1 to 3 are accepted"));
}

TEST_F(GrabBrushTest, ResultsDoNotDependOnTheNumberOfThreads) {
    for (const char* tool : {"Grab", "ElasticGrab", "SnakeHook"}) {
        std::unique_ptr<Surface> first;
        for (const unsigned threads : {1u, 4u}) {
            Open(SphereQuads(7));
            Select(tool);
            brush.SetThreads(threads);
            loop->SetMirrors(1, MirrorMaps({{0}, 1, 1}));
            const StrokeDab press = At({0.2f, 0.2f, 0.95f}, {}, 1.2f);
            Stroke({press, Moved(press, up)});
            if (first == nullptr)
                first = std::make_unique<Surface>(Level());
            else
                EXPECT_TRUE(Surface(Level()) == *first) << tool << ", " << threads << " threads";
        }
        ExpectCurrentNormals();
    }
}

}  // namespace
}  // namespace trovik::test
