// SPDX-License-Identifier: Apache-2.0

/// \file Tests the per-vertex step on meshes without patches: compares its return value, its
/// records and its displacement with independent calculations.
#include "tests/fixture/Triangles.h"
#include "tests/memory/MemoryLimit.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/topology/DoublePosition.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>

namespace trovik::test {
namespace {

/// A stroke over a mesh of triangles, whose vertices a test passes to the step one by one. The
/// dab's centre is the mesh's origin until Aim is called.
class VertexKernel : public ::testing::Test {
protected:
    void Open(const PolygonMesh& polygons, Tool tool = Tool::Sculpt) {
        bench = std::make_unique<StrokeFixture>(polygons);
        bench->Activate(tool);
    }
    void Begin() {
        bench->Begin();
        SwiftStroke& b = Brush();
        b.patchMesh = &Mesh();
        b.dabStrength = 1.0f;
        b.dabPressure = 1.0f;
        b.brushSpace->direction = HWVector(Vector(0.0f, 0.0f, 1.0f));
        b.dabStamp = ++Mesh().visitStamp;
        Aim({}, 1.0f);
    }
    void Aim(const Vector& center, float radius) {
        Brush().setRadius(radius);
        Brush().brushSpace->center = HWVector(center);
    }
    bool Step(uint32_t vertex, uint32_t face) {
        VertexEnumerator& steps = Brush();
        return steps.Tester(&Mesh(), vertex, face);
    }
    bool Step(uint32_t vertex) { return Step(vertex, Mesh().LowestFaceOf(vertex)); }
    float Height(uint32_t vertex) { return Mesh().Position(vertex).z; }
    const StoredVertexInfo* Record(uint32_t vertex) {
        for (uint32_t i = 0; i < Mesh().changeRecordCount; ++i)
            if (Mesh().changeRecords[i].vertexIndex == vertex) return Mesh().changeRecords + i;
        return nullptr;
    }
    ~VertexKernel() override {
        if (bench == nullptr) return;
        Brush().deferredNormals.Clear();
        Brush().useTessellator = false;
        Brush().EndStroke();
    }
    SwiftStroke& Brush() { return *bench->brush; }
    LevelMesh& Mesh() { return bench->Mesh(); }

    std::unique_ptr<StrokeFixture> bench;
};

TEST_F(VertexKernel, PlaneSamplingWalkMovesNothing) {
    Open(FlatTriangles(2));
    Begin();
    Brush().planeSampling = true;
    EXPECT_TRUE(Step(0));
    EXPECT_FALSE(Step(8));
    EXPECT_EQ(Brush().planeSampleWeight, 1.0f);
    EXPECT_EQ(Brush().deferredNormals.fill, 0u);
    EXPECT_EQ(Mesh().changeRecordCount, 0u);
    EXPECT_EQ(Height(0), 0.0f);
    Brush().planeSampling = false;
}

TEST_F(VertexKernel, VertexInReachIsMovedAndReturnsTrue) {
    Open(FlatTriangles(2));
    Begin();
    EXPECT_TRUE(Step(0, 1));
    EXPECT_EQ(Height(0), 1.0f);
    ASSERT_EQ(Brush().deferredNormals.fill, 1u);
    EXPECT_EQ(Brush().deferredNormals[0].face, 1u);
    EXPECT_EQ(Brush().deferredNormals[0].vertex, 0u);
    ASSERT_NE(Record(0), nullptr);
    EXPECT_EQ(Record(0)->visitStampWord, Brush().dabStamp);
    EXPECT_EQ(Record(0)->buildUp, 1.0f);
}

TEST_F(VertexKernel, VertexFirstVisitedOutOfReachHasARecordAndAPendingNormal) {
    Open(FlatTriangles(2));
    Begin();
    EXPECT_FALSE(Step(8));
    EXPECT_EQ(Height(8), 0.0f);
    ASSERT_NE(Record(8), nullptr);
    EXPECT_EQ(Record(8)->visitStampWord, Brush().dabStamp);
    EXPECT_EQ(Brush().deferredNormals.fill, 1u);
}

TEST_F(VertexKernel, VertexVisitedTwiceIsMovedOnceAndReturnsTrueWithinTheRadius) {
    Open(FlatTriangles(2));
    Begin();
    EXPECT_TRUE(Step(0, 0));
    EXPECT_TRUE(Step(0, 1));
    EXPECT_EQ(Height(0), 1.0f);
    EXPECT_FALSE(Step(8));
    EXPECT_FALSE(Step(8));
    EXPECT_EQ(Brush().deferredNormals.fill, 4u);
    EXPECT_EQ(Mesh().changeRecordCount, 2u);
    // A vertex on the rim is within the radius.
    EXPECT_TRUE(Step(1));
    EXPECT_TRUE(Step(1));
}

TEST_F(VertexKernel, RefusingLayerStopsTheVertexButNotItsNormal) {
    Open(FlatTriangles(2));
    bench->AddLayer().SetWritable(false);
    Begin();
    EXPECT_FALSE(Step(0));
    EXPECT_EQ(Height(0), 0.0f);
    EXPECT_EQ(Mesh().changeRecordCount, 0u);
    EXPECT_EQ(Brush().deferredNormals.fill, 1u);
}

TEST_F(VertexKernel, MovesThroughTheLayer) {
    Open(FlatTriangles(2));
    SculptLayer& layer = bench->AddLayer();
    layer.SetStrength(0.5f);
    Begin();
    EXPECT_TRUE(Step(0));
    EXPECT_EQ(layer.Offset(0), Vector(0.0f, 0.0f, 1.0f));
    EXPECT_EQ(Height(0), 0.5f);
    EXPECT_FALSE(Step(8));
    EXPECT_NE(layer.FindSlot(8), SculptLayer::noSlot);
}

TEST_F(VertexKernel, WholeMeshFlagHasNoEffect) {
    Open(FlatTriangles(2));
    Begin();
    Brush().wholeMesh = true;
    EXPECT_FALSE(Step(8));
    EXPECT_TRUE(Step(0));
    EXPECT_EQ(Height(0), 1.0f);
    EXPECT_EQ(Record(0)->buildUp, 1.0f);
    Brush().wholeMesh = false;
}

TEST_F(VertexKernel, ApplicationToAWholeMeshOfTrianglesMovesNothing) {
    for (const bool byFacing : {false, true}) {
        Open(Icosahedron());
        std::vector<Vector> before;
        // One vertex is at the world origin, the centre of the whole-mesh pass.
        Mesh().SetPosition(Mesh().faceVertexIndices[1], {});
        for (uint32_t v = 0; v < 12; ++v) before.push_back(Mesh().Position(v));
        const auto bits = BitsOf(Mesh());
        bench->Begin();
        Brush().ApplyToWholeMesh(&Mesh(), 1.0f, byFacing);
        EXPECT_EQ(Brush().radius, 0.0f);
        EXPECT_GE(Mesh().LastVertexWalk().size(), 3u);
        bench->End();
        for (uint32_t v = 0; v < 12; ++v) EXPECT_EQ(Mesh().Position(v), before[v]);
        while (bench->geometry->History().Undo(*bench->geometry)) {
        }
        EXPECT_EQ(BitsOf(Mesh()), bits);
    }
}

TEST_F(VertexKernel, StampThatDoesNotReachTheVertexReturnsFalse) {
    Open(FlatTriangles(2));
    Begin();
    SwiftStroke& b = Brush();
    b.stampEnabled = true;
    b.stampWidth = b.stampHeight = 1;
    b.stampFactor = 1.0f;
    delete[] b.stampPixels;
    b.stampPixels = new float[1]{0.5f};
    Aim({}, 9.0f);
    for (int k = 0; k < 4; ++k) b.brushSpace->stampMatrix[k][k] = 1.0f;
    EXPECT_TRUE(Step(0));
    EXPECT_EQ(Height(0), 0.5f);
    EXPECT_FALSE(Step(4));
    EXPECT_EQ(Height(4), 0.0f);
    // The whole-mesh pass takes the same code path here.
    b.wholeMesh = true;
    EXPECT_FALSE(Step(5));
    b.wholeMesh = false;
    b.stampTiled = true;
    EXPECT_TRUE(Step(8));
    EXPECT_EQ(Height(8), 0.5f);
    b.stampEnabled = false;
}

TEST_F(VertexKernel, MaskIsReadAtTheBinding) {
    Open(FlatTriangles(2));
    Mesh().SetFreeze(0, 127);
    Mesh().SetFreeze(1, 64);
    Begin();
    EXPECT_TRUE(Step(0));
    EXPECT_EQ(Height(0), 0.0f);
    EXPECT_TRUE(Step(1));
    EXPECT_NEAR(Height(1), 63.0f / 127.0f, 1e-6f);

    // The mesh is masked during a stroke. A mesh that had no mask when it was bound is not queried
    // again.
    Open(FlatTriangles(2));
    Begin();
    Mesh().SetFreeze(0, 127);
    EXPECT_TRUE(Step(0));
    EXPECT_EQ(Height(0), 1.0f);
}

TEST_F(VertexKernel, FollowsVertexNormalsOnlyWhenTheDabDoes) {
    Open(Icosahedron());
    Begin();
    Aim({}, 9.0f);
    const Triple start = PositionOf(Mesh(), 0);
    Brush().followVertexNormal = true;
    EXPECT_TRUE(Step(0));
    const double length = std::hypot(start[0], start[1], start[2]);
    const Triple moved = PositionOf(Mesh(), 0);
    for (std::size_t k = 0; k < 3; ++k)
        EXPECT_NEAR(moved[k], start[k] * (1.0 + 1.0 / length), 1e-4);
    Brush().followVertexNormal = false;
    const Triple other = PositionOf(Mesh(), 1);
    EXPECT_TRUE(Step(1));
    EXPECT_NEAR(PositionOf(Mesh(), 1)[0], other[0], 1e-6);
    EXPECT_NEAR(PositionOf(Mesh(), 1)[2], other[2] + 1.0, 1e-6);
}

TEST_F(VertexKernel, EveryRendererIsNotifiedOfEachWrittenVertex) {
    Open(FlatTriangles(2));
    RecordingRenderer& first = bench->AddRenderer(1.0f);
    RecordingRenderer& second = bench->AddRenderer(1.0f);
    Begin();
    EXPECT_TRUE(Brush().rendererTakesFaces);
    Step(8);
    EXPECT_TRUE(first.notices.empty());
    Step(0, 1);
    Step(0, 0);
    Step(1, 2);
    EXPECT_EQ(first.notices, (std::vector<RecordingRenderer::Notice>{{0, 1}, {1, 2}}));
    EXPECT_EQ(second.notices, first.notices);
}

TEST_F(VertexKernel, NormalsAreUpdatedAtTheEndOfTheDab) {
    Open(FlatTriangles(2));
    Begin();
    const auto before = BitsOf(Mesh());
    Step(0);
    for (uint32_t v = 0; v < 9; ++v)
        EXPECT_TRUE(std::equal(before[v].normal, before[v].normal + 3, BitsOf(Mesh())[v].normal));
    Brush().FlushDeferredNormals();
    EXPECT_LT(Mesh().vertexNormals.array[0].z, 30000);
    EXPECT_EQ(Brush().deferredNormals.fill, 0u);
}

TEST_F(VertexKernel, SmoothMovesToTheRingMeanWithoutBuildUp) {
    Open(FlatTriangles(2), Tool::Smooth);
    Mesh().SetPosition(4, {1.25f, 1.0f, 3.0f});
    Begin();
    Aim({1.0f, 1.0f, 0.0f}, 9.0f);
    // Vertex 4 and its six neighbours, which exclude the two corners off the diagonals.
    EXPECT_TRUE(Step(4));
    EXPECT_NEAR(Height(4), 3.0f / 7.0f, 1e-6f);
    EXPECT_NEAR(Mesh().Position(4).x, (1.25f + 6.0f) / 7.0f, 1e-6f);
    EXPECT_EQ(Record(4)->buildUp, 0.0f);
    // Smoothing works in place: a later vertex reads the new position. Vertex 0 has the neighbours
    // 1, 3 and 4.
    EXPECT_TRUE(Step(0));
    EXPECT_NEAR(Height(0), 3.0f / 7.0f / 4.0f, 1e-6f);
}

TEST_F(VertexKernel, SmoothOfALayerUsesTheMeanOfOffsets) {
    Open(FlatTriangles(2), Tool::Smooth);
    Mesh().SetPosition(4, {1.0f, 1.0f, 3.0f});
    SculptLayer& layer = bench->AddLayer();
    const Vector offset(0.0f, 0.7f, 0.0f);
    layer.set(nullptr, layer.SlotOf(4), 4, &offset, true);
    Brush().affectAllLayers.SetValue(false, true);
    Begin();
    Aim({}, 9.0f);
    Brush().followVertexNormal = true;
    EXPECT_TRUE(Step(4));
    EXPECT_NEAR(layer.Offset(4).y, 0.1f, 1e-6f);
    EXPECT_EQ(layer.Rest(4), Vector(1.0f, 1.0f, 3.0f));
    EXPECT_EQ(Height(4), 3.0f);
    // Reading the one-ring created records of all its vertices, but only this vertex was processed.
    EXPECT_EQ(Mesh().changeRecordCount, 7u);
    EXPECT_TRUE(Step(1));
    EXPECT_NEAR(layer.Offset(1).y, 0.1f / 5.0f, 1e-6f);
}

TEST_F(VertexKernel, SmoothOfALayerWithoutOneActsOnPositions) {
    Open(FlatTriangles(2), Tool::Smooth);
    Mesh().SetPosition(4, {1.0f, 1.0f, 3.0f});
    Brush().affectAllLayers.SetValue(false, true);
    Begin();
    Aim({}, 9.0f);
    EXPECT_TRUE(Step(4));
    EXPECT_NEAR(Height(4), 3.0f / 7.0f, 1e-6f);
}

/// A fixture whose snapshot has pages of two records and contains the vertices below a limit.
class OriginalRecords : public VertexKernel {
protected:
    void Open(uint32_t limit) {
        VertexKernel::Open(FlatTriangles(2));
        auxiliary.resize(9);
        for (uint8_t v = 0; v < 9; ++v)
            for (uint8_t k = 0; k < 8; ++k)
                auxiliary[v].bytes[k] = static_cast<uint8_t>(16 * v + k);
        source = Mesh().vertexAuxiliary;
        Mesh().vertexAuxiliary = auxiliary.data();
        data.vertexLimit = limit;
        data.sourceMesh = &Mesh();
        data.recordOfVertex = records.data();
        data.recordsPerPage = 2;
        data.pageShift = 1;
        data.pageMask = 1;
        data.pageAlignment = 64;
        Begin();
        Brush().useTessellator = true;
        Brush().originalData = &data;
    }
    ~OriginalRecords() override {
        Brush().originalData = nullptr;
        Mesh().vertexAuxiliary = source;
        for (uint32_t i = 0; i < data.pages.fill; ++i) Block::AlignedFree(data.pages[i]);
    }
    /// The bytes of record i.
    const uint8_t* RecordAt(uint32_t i) {
        return static_cast<const uint8_t*>(data.pages[i / 2]) + (i % 2) * 28;
    }
    template <typename T>
    static T At(const uint8_t* bytes, int offset) {
        T value;
        std::memcpy(&value, bytes + offset, sizeof value);
        return value;
    }

    std::vector<VertexAuxiliary> auxiliary;
    VertexAuxiliary* source = nullptr;
    OriginalData data;
    std::vector<int32_t> records = std::vector<int32_t>(9, -1);
};

TEST_F(OriginalRecords, HavePositionItemNumberAndMaskOfEachVertexAtFirstTouch) {
    Open(9);
    Mesh().SetFreeze(5, 64);
    for (const uint32_t v : {5u, 0u, 7u, 0u, 5u}) Step(v);
    EXPECT_EQ(data.recordCount, 3u);
    EXPECT_EQ(data.pages.fill, 2u);
    EXPECT_EQ(records, (std::vector<int32_t>{1, -1, -1, -1, -1, 0, -1, 2, -1}));
    // Records do not depend on whether vertices are in reach or move: vertex 0 was moved after its
    // record was created.
    EXPECT_EQ(Height(0), 1.0f);
    const uint32_t order[3] = {5, 0, 7};
    for (uint32_t i = 0; i < 3; ++i) {
        const uint8_t* record = RecordAt(i);
        const uint32_t column = order[i] % 3;
        const uint32_t row = order[i] / 3;
        EXPECT_EQ(At<float>(record, 0), static_cast<float>(column));
        EXPECT_EQ(At<float>(record, 4), static_cast<float>(row));
        EXPECT_EQ(At<float>(record, 8), 0.0f);
        EXPECT_EQ(std::memcmp(record + 12, &auxiliary[order[i]], 8), 0);
        EXPECT_EQ(At<uint32_t>(record, 20), order[i]);
        EXPECT_EQ(At<float>(record, 24), i == 0 ? 64.0f * 0.007874016f : 0.0f);
    }
    for (uint32_t i = 0; i < 2; ++i)
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(data.pages[i]) % 64, 0u);
}

TEST_F(OriginalRecords, MaskOfARecordExcludesTheTopBit) {
    Open(9);
    Mesh().vertices.array[3].freeze = 0xff;
    Step(3);
    EXPECT_EQ(At<float>(RecordAt(0), 24), 127.0f * 0.007874016f);
}

TEST_F(OriginalRecords, AreKeptForVerticesBelowTheLimitOnly) {
    Open(5);
    for (uint32_t v = 0; v < 9; ++v) Step(v);
    EXPECT_EQ(data.recordCount, 5u);
    EXPECT_EQ(data.pages.fill, 3u);
    EXPECT_EQ(records, (std::vector<int32_t>{0, 1, 2, 3, 4, -1, -1, -1, -1}));
}

TEST_F(OriginalRecords, AreMadeBeforeTheReachTestButAfterALayerRefusal) {
    Open(9);
    EXPECT_FALSE(Step(8));
    EXPECT_EQ(records[8], 0);
    bench->AddLayer().SetWritable(false);
    Brush().layer = bench->layer.get();
    Brush().meshHasLayer = true;
    EXPECT_FALSE(Step(4));
    EXPECT_EQ(records[4], -1);
}

TEST_F(OriginalRecords, RefusedPageLeavesTheRecordsUnchanged) {
    Open(9);
    {
        const MemoryLimit limit(0);
        EXPECT_THROW(Step(0), Error*);
    }
    EXPECT_EQ(data.recordCount, 0u);
    EXPECT_EQ(data.pages.fill, 0u);
    EXPECT_EQ(records[0], -1);
    EXPECT_TRUE(Step(0));
    EXPECT_EQ(records[0], 0);
}

TEST_F(OriginalRecords, AreNotMadeWithoutATessellatingStroke) {
    Open(9);
    Brush().useTessellator = false;
    Step(0);
    Brush().useTessellator = true;
    Brush().originalData = nullptr;
    Step(1);
    EXPECT_EQ(data.recordCount, 0u);
    EXPECT_EQ(data.pages.fill, 0u);
}

}  // namespace
}  // namespace trovik::test
