// SPDX-License-Identifier: Apache-2.0
#include "framework/nodes/HostKernel.h"
#include "tests/detail/DetailDocument.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace trovik::test {
namespace {

const Vector top(0.0f, 0.0f, 1.0f);
const std::vector<Vector> path = {top, Vector(0.2f, 0.0f, 1.0f), Vector(0.4f, 0.1f, 1.0f)};

class DetailTools : public testing::TestWithParam<const char*> {};

TEST_P(DetailTools, UndoAndRedoRestoreEveryBit) {
    const auto document = DetailDocument(Triangles(SphereQuads(3)), 0.15f);
    ASSERT_TRUE(document->SelectTool(GetParam()));
    document->Settings().radius = 0.4f;
    const std::string before = BitsOf(*document);
    Stroke(*document, path);
    EXPECT_EQ(FaultOf(*document), "");
    const std::string after = BitsOf(*document);
    EXPECT_GT(document->Geometry().Bound()->faceCount, 900u);
    Stroke(*document, {Vector(0.0f, 0.5f, 1.0f), top});
    EXPECT_EQ(FaultOf(*document), "");
    const std::string last = BitsOf(*document);
    UndoHistory& history = document->Geometry().History();
    ASSERT_EQ(history.StepCount(), 2u);
    ASSERT_TRUE(document->Undo());
    EXPECT_EQ(FaultOf(*document), "");
    EXPECT_EQ(BitsOf(*document), after);
    ASSERT_TRUE(document->Undo());
    EXPECT_EQ(FaultOf(*document), "");
    EXPECT_EQ(BitsOf(*document), before);
    ASSERT_TRUE(document->Redo());
    EXPECT_EQ(BitsOf(*document), after);
    ASSERT_TRUE(document->Redo());
    EXPECT_EQ(BitsOf(*document), last);
    EXPECT_EQ(FaultOf(*document), "");
}

INSTANTIATE_TEST_SUITE_P(All,
                         DetailTools,
                         testing::Values("Sculpt",
                                         "Smear",
                                         "Bulge",
                                         "Foamy",
                                         "Spray",
                                         "Repeat",
                                         "Imprint",
                                         "Amplify",
                                         "Flatten",
                                         "Scrape",
                                         "Fill",
                                         "Wax",
                                         "Smooth",
                                         "Pinch",
                                         "Knife"),
                         [](const auto& test) { return std::string(test.param); });

TEST(DetailStroke, RevertedStrokeContinuesFromTheOldTopology) {
    const auto document = DetailDocument(Triangles(SphereQuads(3)), 0.15f);
    const std::string before = BitsOf(*document);
    BeginStroke(*document, BrushOperation::ModifierNone, std::nullopt);
    Dab(*document, top);
    EXPECT_NE(BitsOf(*document), before);
    document->Loop().RevertStroke();
    EXPECT_EQ(BitsOf(*document), before);
    EXPECT_EQ(FaultOf(*document), "");
    Dab(*document, Vector(1, 0, 0));
    document->Loop().End();
    EXPECT_EQ(FaultOf(*document), "");
    ASSERT_TRUE(document->Undo());
    EXPECT_EQ(BitsOf(*document), before);
}

TEST(DetailStroke, StrokeThatIsRevertedAtItsEndLeavesNoStep) {
    const auto document = DetailDocument(Triangles(SphereQuads(3)), 0.15f);
    const std::string before = BitsOf(*document);
    BeginStroke(*document, BrushOperation::ModifierNone, std::nullopt);
    Dab(*document, top);
    document->Loop().RevertStroke();
    document->Loop().End();
    EXPECT_EQ(BitsOf(*document), before);
    EXPECT_EQ(document->Geometry().History().StepCount(), 0u);
}

TEST(DetailStroke, TheSameStrokesGiveTheSameBits) {
    const auto bits = [] {
        const auto document = DetailDocument(Triangles(SphereQuads(3)), 0.12f);
        Stroke(*document, path);
        document->SelectTool("Smooth");
        Stroke(*document, path, 50.0f);
        return BitsOf(*document);
    };
    EXPECT_EQ(bits(), bits());
}

TEST(DetailStroke, NewVerticesShareTheBuildUpOfTheStroke) {
    const auto heightOf = [](DetailSettings::Measure measure, int dabs) {
        const auto document = DetailDocument(Triangles(SphereQuads(5)), 0.04f);
        document->Settings().detail.measure = measure;
        const uint32_t faces = document->Geometry().Bound()->faceCount;
        Stroke(*document, std::vector<Vector>(static_cast<std::size_t>(dabs), top));
        EXPECT_EQ(document->Geometry().Bound()->faceCount > faces + 100,
                  measure != DetailSettings::Measure::Off);
        return document->Tree().Nearest(Vector(0, 0, 3))->position.z;
    };
    // The build-up limits repeated dabs in the same way whether or not triangles were added.
    EXPECT_NEAR(heightOf(DetailSettings::Measure::Radius, 6),
                heightOf(DetailSettings::Measure::Off, 6),
                0.01f);
}

TEST(DetailStroke, NewVerticesMoveAlongTheirNormals) {
    const auto document = DetailDocument(Triangles(SphereQuads(3)), 0.1f);
    document->Brush().directionAttribute.SetValue(2, true);
    // The second dab refines faces whose corners the first one has moved.
    BeginStroke(*document, BrushOperation::ModifierNone, std::nullopt);
    Dab(*document, top);
    document->Settings().detail.length = 0.05f;
    Dab(*document, Vector(0.2f, 0.0f, 1.0f));
    Dab(*document, Vector(0.3f, 0.0f, 1.0f));
    document->Loop().End();
    LevelMesh& level = *document->Geometry().Bound();
    // Each vertex rises almost as far as the mean of its neighbours: there are no pits.
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        const Vector p = level.Position(v);
        if (p.z < 0.9f) continue;
        float sum = 0.0f;
        float count = 0.0f;
        std::vector<uint32_t> faces;
        level.FacesAround(v, level.LowestFaceOf(v), faces);
        for (const uint32_t face : faces) {
            for (uint32_t k = 0; k < 3; ++k) {
                sum += level.Position(level.faceVertexIndices.array[face * 3 + k]).Length();
                count += 1.0f;
            }
        }
        EXPECT_GT(p.Length(), sum / count - 0.02f);
    }
}

TEST(DetailStroke, SceneKeepsTheRefinedMeshAndTheSettings) {
    const auto document = DetailDocument(Triangles(SphereQuads(3)), 0.15f);
    document->Settings().detail.creaseAngle = 70.0f;
    Stroke(*document, path);
    const TemporaryFolder folder;
    document->Save(folder.Path("work.trovik"));
    const std::unique_ptr<Document> scene = Document::OpenScene(folder.Path("work.trovik"));
    Document& loaded = *scene;
    EXPECT_EQ(BitsOf(loaded), BitsOf(*document));
    EXPECT_EQ(loaded.Settings().detail, document->Settings().detail);
    EXPECT_EQ(FaultOf(loaded), "");
    Stroke(loaded, {top});
    Stroke(*document, {top});
    EXPECT_EQ(BitsOf(loaded), BitsOf(*document));
}

TEST(DetailStroke, MaskedPartKeepsItsTriangles) {
    const auto document = DetailDocument(Triangles(SphereQuads(3)), 0.1f);
    LevelMesh& level = *document->Geometry().Bound();
    std::vector<uint8_t> mask(level.VertexCount());
    for (uint32_t v = 0; v < mask.size(); ++v) mask[v] = level.Position(v).x < 0.0f ? 127 : 0;
    document->Freeze(mask, FreezeMode::Replace);
    const auto masked = [&] {
        std::vector<std::array<float, 9>> faces;
        for (uint32_t face = 0; face < level.faceCount; ++face) {
            std::array<float, 9> corners{};
            bool isMasked = true;
            for (uint32_t k = 0; k < 3; ++k) {
                const uint32_t v = level.faceVertexIndices.array[face * 3 + k];
                isMasked = isMasked && level.Freeze(v) == 127;
                const Vector p = level.Position(v);
                corners[k * 3] = p.x;
                corners[k * 3 + 1] = p.y;
                corners[k * 3 + 2] = p.z;
            }
            if (isMasked) faces.push_back(corners);
        }
        std::sort(faces.begin(), faces.end());
        return faces;
    };
    const auto before = masked();
    Stroke(*document, {top, top});
    EXPECT_EQ(masked(), before);
    EXPECT_EQ(FaultOf(*document), "");
    EXPECT_GT(level.faceCount, 900u);
}

TEST(DetailStroke, AttributesAreInterpolated) {
    PolygonMesh grid = GridMesh(4, 4);
    for (const auto& p : grid.positions) {
        grid.attributes.colors.push_back({p[0] * 0.25f, p[1] * 0.25f, 0.5f, 1.0f});
        grid.attributes.uvs.push_back({p[0], p[1]});
    }
    grid.attributes.cornerUvs = grid.faceVertices;
    grid.attributes.groupNames = {"left", "right"};
    std::size_t first = 0;
    for (const uint32_t size : grid.faceSizes) {
        float x = 0.0f;
        for (uint32_t k = 0; k < size; ++k) x += grid.positions[grid.faceVertices[first + k]][0];
        grid.attributes.faceGroups.push_back(x < 8.0f ? 0 : 1);
        first += size;
    }
    const auto document = DetailDocument(Triangles(grid), 0.2f);
    const std::string before = BitsOf(*document);
    Stroke(*document, {Vector(2, 2, 0), Vector(2.4f, 2, 0)}, 0.0f);
    EXPECT_EQ(FaultOf(*document), "");
    LevelMesh& level = *document->Geometry().Bound();
    EXPECT_GT(level.faceCount, 120u);
    const SurfaceAttributes& attributes = document->Geometry().Attributes();
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        const Vector p = level.Position(v);
        EXPECT_NEAR(attributes.colors[v][0], p.x * 0.25f, 0.02f);
        EXPECT_NEAR(attributes.colors[v][1], p.y * 0.25f, 0.02f);
    }
    for (uint32_t face = 0; face < level.faceCount; ++face) {
        float x = 0.0f;
        for (uint32_t k = 0; k < 3; ++k) {
            const uint32_t corner = face * 3 + k;
            const Vector p = level.Position(level.faceVertexIndices.array[corner]);
            const std::array<float, 2>& uv = attributes.uvs[attributes.cornerUvs[corner]];
            EXPECT_NEAR(uv[0], p.x, 1e-4f);
            EXPECT_NEAR(uv[1], p.y, 1e-4f);
            x += p.x;
        }
        EXPECT_EQ(attributes.faceGroups[face], x < 6.0f ? 0u : 1u);
    }
    ASSERT_TRUE(document->Undo());
    EXPECT_EQ(BitsOf(*document), before);
}

TEST(DetailStroke, HiddenFacesStayAsTheyAre) {
    const auto document = DetailDocument(Triangles(SphereQuads(3)), 0.1f);
    LevelMesh& level = *document->Geometry().Bound();
    FaceChoice chosen(level.faceCount);
    for (std::size_t face = 0; face < chosen.size(); face += 7) chosen[face] = 1;
    ASSERT_TRUE(document->ChangeVisibility(VisibilityChange::Hide, chosen));
    const auto hidden = [&] {
        std::vector<std::array<float, 3>> corners;
        for (uint32_t face = 0; face < level.faceCount; ++face) {
            for (uint32_t k = 0; k < 3 && level.IsFaceHidden(face); ++k) {
                const Vector p = level.Position(level.faceVertexIndices.array[face * 3 + k]);
                corners.push_back({p.x, p.y, p.z});
            }
        }
        std::sort(corners.begin(), corners.end());
        return corners;
    };
    const auto before = hidden();
    ASSERT_FALSE(before.empty());
    Stroke(*document, {top, top}, 0.0f);
    EXPECT_EQ(hidden(), before);
    EXPECT_EQ(FaultOf(*document), "");
}

TEST(DetailStroke, MeshOfQuadsIsSculptedWithoutRefinementAndAMessageSaysWhy) {
    const auto document = DetailDocument(SphereQuads(3), 0.1f);
    HostKernel::Instance().ClearHUDMessages();
    const uint32_t faces = document->Geometry().Bound()->faceCount;
    Stroke(*document, {top, top});
    EXPECT_EQ(document->Geometry().Bound()->faceCount, faces);
    ASSERT_EQ(HostKernel::Instance().HUDMessages().size(), 1u);
    EXPECT_THAT(HostKernel::Instance().HUDMessages()[0], testing::HasSubstr("consists of quads"));
    EXPECT_GT(document->Tree().Nearest(Vector(0, 0, 3))->position.z, 1.01f);
    HostKernel::Instance().ClearHUDMessages();
}

TEST(DetailStroke, MeshWithLayersIsSculptedWithoutRefinement) {
    const auto document = DetailDocument(Triangles(SphereQuads(3)), 0.1f);
    HostKernel::Instance().ClearHUDMessages();
    document->AddLayer("bumps");
    const uint32_t faces = document->Geometry().Bound()->faceCount;
    Stroke(*document, {top, top});
    EXPECT_EQ(document->Geometry().Bound()->faceCount, faces);
    ASSERT_EQ(HostKernel::Instance().HUDMessages().size(), 1u);
    EXPECT_THAT(HostKernel::Instance().HUDMessages()[0], testing::HasSubstr("has layers"));
    HostKernel::Instance().ClearHUDMessages();
}

TEST(DetailStroke, TopologicalMirrorIsDiscardedAndRestoredByUndo) {
    const auto document = DetailDocument(Icosahedron(), 0.3f);
    LevelGeometry& geometry = document->Geometry();
    ASSERT_TRUE(geometry.FindMirror());
    Stroke(*document, {top});
    EXPECT_EQ(geometry.Mirror(), nullptr);
    ASSERT_TRUE(document->Undo());
    EXPECT_NE(geometry.Mirror(), nullptr);
}

}  // namespace
}  // namespace trovik::test
