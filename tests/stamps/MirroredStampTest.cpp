// SPDX-License-Identifier: Apache-2.0

/// \file Tests that, with a topological mirror, the mirrored side reads the stamp at the position
/// of the vertex's mirror image.
#include "tests/stamps/StampFixture.h"
#include "tests/stroke/FakeMesh.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

/// Three vertices of one triangle at (0, 0), (1, 1) and (2, 4); the mirror swaps the first and the
/// last. A traversal visits all three.
class MirrorLevel : public FakeLevel {
public:
    using FakeLevel::FakeLevel;
    void EnumerateVertices(uint32_t face, VertexEnumerator* enumerator) override {
        for (uint32_t v = 0; v < 3; ++v) enumerator->Tester(this, v, face);
        ++visitStamp;
    }
    uint32_t EnumerateAdjacentVertices(AdjacentVertexEnumerator* enumerator,
                                       uint32_t vertex,
                                       uint32_t face) override {
        enumerator->Operator((vertex + 1) % 3, face);
        enumerator->Operator((vertex + 2) % 3, face);
        return 2;
    }
    int32_t MirrorVertex(uint32_t face,
                         uint32_t corner,
                         uint32_t* outFace,
                         uint32_t* outCorner) override {
        asked.emplace_back(face, corner);
        if (!mirrors) return -1;
        *outFace = face;
        *outCorner = 2 - corner;
        return 2 - static_cast<int32_t>(corner);
    }
    bool mirrors = true;
    std::vector<std::pair<uint32_t, uint32_t>> asked;
};

class MirrorGeometry : public Geometry {
public:
    explicit MirrorGeometry(CallLog& log) : level("M", log) { level.geometry = this; }
    SubdivisionLevel* LowestLevel() const override { return const_cast<MirrorLevel*>(&level); }
    SubdivisionLevel* HighestLevel() const override { return LowestLevel(); }
    SubdivisionLevel* LevelByIndex(uint32_t) const override { return LowestLevel(); }
    trovik::Transformation* Transformation() const override {
        return const_cast<FakeTransform*>(&place);
    }
    MirrorLevel level;
    FakeTransform place;
};

class MirroredStamp : public ::testing::Test {
protected:
    MirroredStamp() {
        // Pixel k is at x = k; the heights identify the pixel that was read.
        SetTestStamp(brush, QStringLiteral("plain"), 3, 1, {1.0f, 2.0f, 4.0f});
        Matrix& m = brush.Settings().stampMatrix;
        m.m[1][1] = 0.0f;
        brush.Settings().mirroredStampRead = true;
        SetMode(MirrorConfiguration::Topological);
    }
    void SetMode(int mode) {
        MirrorConfiguration mirror;
        mirror.SetMirrorMode(mode);
        brush.SetMirrorConfig(mirror);
    }
    void Begin() {
        brush.BeginStroke(&level, BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
    }
    /// A dab over everything, without pressure, so that there is no build-up.
    void Dab(bool mirroredPass) {
        SurfacePoint hit;
        hit.mesh = &level;
        hit.normal = Vector(0.0f, 0.0f, 1.0f);
        hit.mirror = mirroredPass;
        AxisAlignedBoundingBox box;
        brush.ApplyDab(hit, {}, 100.0f, 0.0f, 1.0f, box);
    }
    /// Puts the brush into its state in a mirrored pass, just before it processes a vertex.
    void EnterMirroredPass() {
        brush.mirrorPass = 1;
        brush.dabStamp = level.visitStamp;
        brush.setRadius(100.0f);
        brush.dabStrength = 1.0f;
        brush.brushSpace->direction = HWVector(Vector(0.0f, 0.0f, 1.0f));
        for (int k = 0; k < 4; ++k) brush.brushSpace->stampMatrix[k][k] = k == 1 ? 0.0f : 1.0f;
    }
    std::vector<float> HeightsAfter(bool mirroredPass) {
        Begin();
        Dab(mirroredPass);
        brush.EndStroke();
        return Heights();
    }
    std::vector<float> Heights() const {
        std::vector<float> heights;
        for (uint32_t v = 0; v < 3; ++v) heights.push_back(level.vertices.array[v].z);
        return heights;
    }

    CallLog log;
    MirrorGeometry geometry{log};
    MirrorLevel& level = geometry.level;
    StrokeFixture bench{FlatGrid(1)};
    SwiftStroke& brush = *bench.brush;
};

TEST_F(MirroredStamp, MainPassReadsAtTheVertex) {
    EXPECT_EQ(HeightsAfter(false), (std::vector<float>{1.0f, 2.0f, 4.0f}));
    EXPECT_TRUE(level.asked.empty());
}

TEST_F(MirroredStamp, MirroredPassReadsAtTheMirrorImage) {
    EXPECT_EQ(HeightsAfter(true), (std::vector<float>{4.0f, 2.0f, 1.0f}));
    EXPECT_EQ(level.asked,
              (std::vector<std::pair<uint32_t, uint32_t>>{{0u, 0u}, {0u, 1u}, {0u, 2u}}));
}

TEST_F(MirroredStamp, OtherMirrorModesReadAtTheVertex) {
    SetMode(MirrorConfiguration::PlaneX);
    EXPECT_EQ(HeightsAfter(true), (std::vector<float>{1.0f, 2.0f, 4.0f}));
}

TEST_F(MirroredStamp, SwitchedOffReadsAtTheVertex) {
    brush.Settings().mirroredStampRead = false;
    EXPECT_EQ(HeightsAfter(true), (std::vector<float>{1.0f, 2.0f, 4.0f}));
}

TEST_F(MirroredStamp, MeshWithoutAMirrorReadsAtTheVertex) {
    level.mirrors = false;
    EXPECT_EQ(HeightsAfter(true), (std::vector<float>{1.0f, 2.0f, 4.0f}));
    EXPECT_EQ(level.asked.size(), 3u);
}

TEST_F(MirroredStamp, MirrorImageIsReadAtItsFirstTouchPosition) {
    // The stamp is tilted, so raising a vertex moves it onto the adjacent pixels.
    brush.Settings().stampMatrix.m[2][0] = 1.0f;
    Begin();
    Dab(false);
    EXPECT_EQ(Heights(), (std::vector<float>{1.0f, 2.0f, 4.0f}));
    Dab(true);
    EXPECT_EQ(Heights(), (std::vector<float>{5.0f, 4.0f, 5.0f}));
    brush.EndStroke();
}

TEST_F(MirroredStamp, UntouchedMirrorImageGetsARecord) {
    Begin();
    EnterMirroredPass();
    VertexEnumerator& steps = brush;
    EXPECT_TRUE(steps.Tester(&level, 0, 0));
    EXPECT_EQ(Heights(), (std::vector<float>{4.0f, 0.0f, 0.0f}));
    ASSERT_EQ(level.changeRecordCount, 2u);
    EXPECT_EQ(level.changeRecords[0].vertexIndex, 0u);
    EXPECT_EQ(level.changeRecords[0].visitStampWord, brush.dabStamp);
    EXPECT_EQ(level.changeRecords[1].vertexIndex, 2u);
    EXPECT_EQ(level.changeRecords[1].originalPosition[0], 2.0f);
    // The mirror vertex was only read; it has not been processed yet.
    EXPECT_NE(level.changeRecords[1].visitStampWord, brush.dabStamp);
    EXPECT_TRUE(steps.Tester(&level, 2, 0));
    EXPECT_EQ(Heights(), (std::vector<float>{4.0f, 0.0f, 1.0f}));
    EXPECT_EQ(level.changeRecordCount, 2u);
    brush.deferredNormals.Clear();
    brush.EndStroke();
}

TEST_F(MirroredStamp, MirrorImageGetsARecordUnderAnEmptyStamp) {
    SetTestStamp(brush, QStringLiteral("none"), 0, 0, {});
    Begin();
    EnterMirroredPass();
    VertexEnumerator& steps = brush;
    EXPECT_FALSE(steps.Tester(&level, 0, 0));
    EXPECT_EQ(Heights(), (std::vector<float>{0.0f, 0.0f, 0.0f}));
    ASSERT_EQ(level.changeRecordCount, 2u);
    EXPECT_EQ(level.changeRecords[1].vertexIndex, 2u);
    brush.EndStroke();
}

}  // namespace
}  // namespace trovik::test
