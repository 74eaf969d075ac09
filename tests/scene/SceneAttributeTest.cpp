// SPDX-License-Identifier: Apache-2.0
#include "framework/edits/ColorStep.h"
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/multires/LevelSource.h"
#include "framework/scene/SceneFile.h"
#include "tests/files/AttributeSamples.h"
#include "tests/scene/SampleScene.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace trovik::test {
namespace {

PolygonMesh Shown(Document& document) {
    return GatherPolygons(LevelSource(document.Geometry(), {}));
}

TEST(SceneAttributes, AreRestoredWithTheScene) {
    const TemporaryFolder folder;
    PolygonMesh mesh = AttributedMesh();
    mesh.attributes.hasAlpha = true;
    mesh.attributes.space = {0.01, UpAxis::Z};
    WriteMeshFile(folder.Path("mesh.obj"), mesh);
    Document document(folder.Path("mesh.obj"), {0.001, UpAxis::Unknown});
    document.Subdivide();
    document.Save(folder.Path("a.trovik"));
    const PolygonMesh before = Shown(document);
    EXPECT_EQ(before.attributes.space, (MeshSpace{0.001, UpAxis::Z}));

    const auto opened = Document::OpenScene(folder.Path("a.trovik"));
    EXPECT_TRUE(opened->Notes().empty());
    PolygonMesh after = Shown(*opened);
    EXPECT_EQ(after.attributes.uvs, before.attributes.uvs);
    EXPECT_EQ(after.attributes.cornerUvs, before.attributes.cornerUvs);
    EXPECT_EQ(after.attributes.colors, before.attributes.colors);
    EXPECT_TRUE(after.attributes.hasAlpha);
    EXPECT_EQ(after.attributes.space, before.attributes.space);
    ExpectSameGroups(after, before);
    // A reset also keeps the attributes.
    opened->Reset();
    opened->Subdivide();
    after = Shown(*opened);
    EXPECT_EQ(CornerUvValues(after), CornerUvValues(before));
    EXPECT_EQ(after.attributes.colors, before.attributes.colors);
}

TEST(SceneAttributes, AResetRestoresTheImportedColoursAfterOpening) {
    const TemporaryFolder folder;
    Document document("mesh", AttributedMesh());
    const SurfaceAttributes imported = document.Geometry().Attributes();
    ASSERT_FALSE(imported.colors.empty());
    const std::vector<std::array<float, 4>> others(imported.colors.size(),
                                                   {0.125f, 0.25f, 0.5f, 0.75f});
    auto step = MakeColorStep(others, true, "Colours");
    step->Apply(document.Geometry());
    document.Push(std::move(step));
    document.Save(folder.Path("a.trovik"));

    const auto opened = Document::OpenScene(folder.Path("a.trovik"));
    EXPECT_EQ(opened->Geometry().Attributes().colors, others);
    EXPECT_TRUE(opened->Geometry().Attributes().hasAlpha);
    opened->Reset();
    EXPECT_EQ(opened->Geometry().Attributes().colors, imported.colors);
    EXPECT_EQ(opened->Geometry().Attributes().hasAlpha, imported.hasAlpha);
    EXPECT_EQ(opened->Geometry().Attributes().cornerUvs, imported.cornerUvs);
    // Older formats cannot store the imported colours, but the scene can be written.
    document.WriteScene(folder.Path("old.trovik"), SceneStream(330));
    EXPECT_EQ(Document::OpenScene(folder.Path("old.trovik"))->Geometry().Level(0)->faceCount,
              opened->Geometry().Level(0)->faceCount);
}

TEST(SceneAttributes, MaterialFilesAndSmoothingGroupsAreRestoredAndMoveWithTheScene) {
    const TemporaryFolder folder;
    PolygonMesh mesh = TwoQuads();
    mesh.attributes.faceSmoothing = {4, 0};
    mesh.attributes.faceMaterials = {1, 0};
    std::filesystem::create_directories(folder.Path("work/lib"));
    folder.Fill("work/lib/all.mtl", "newmtl skin\n");
    mesh.attributes.materialFiles = {folder.Path("work/lib/all.mtl")};
    WriteMeshFile(folder.Path("work/mesh.obj"), mesh);
    Document document(folder.Path("work/mesh.obj"));
    EXPECT_EQ(document.Geometry().Attributes().materialFiles, mesh.attributes.materialFiles);
    document.Subdivide();
    document.Save(folder.Path("work/a.trovik"));
    // Level 0 is no longer the imported mesh: each has its own attributes.
    document.DeleteLevels(true);
    document.Save(folder.Path("work/b.trovik"));
    document.WriteScene(folder.Path("work/old.trovik"), SceneStream(332));
    std::filesystem::rename(folder.Path("work"), folder.Path("moved"));

    const std::vector<std::string> moved = {folder.Path("moved/lib/all.mtl")};
    for (const char* name : {"moved/a.trovik", "moved/b.trovik"}) {
        SCOPED_TRACE(name);
        const auto opened = Document::OpenScene(folder.Path(name));
        const PolygonMesh fine = Shown(*opened);
        EXPECT_EQ(fine.attributes.materialFiles, moved);
        EXPECT_EQ(fine.attributes.faceSmoothing,
                  (std::vector<std::uint32_t>{4, 4, 4, 4, 0, 0, 0, 0}));
        ExpectSameGroups(fine, Shown(document));
        opened->Reset();
        EXPECT_EQ(opened->Geometry().Attributes().materialFiles, moved);
    }
    const auto old = Document::OpenScene(folder.Path("moved/old.trovik"));
    EXPECT_TRUE(old->Geometry().Attributes().faceSmoothing.empty());
    ExpectSameGroups(Shown(*old), Shown(document));
}

TEST(SceneAttributes, ListsThatDoNotMatchLevel0AreRefused) {
    const TemporaryFolder folder;
    WriteMeshFile(folder.Path("mesh.obj"), AttributedMesh());
    Document document(folder.Path("mesh.obj"));
    SurfaceAttributes attributes = document.Geometry().Attributes();
    attributes.cornerUvs.pop_back();
    document.Geometry().RestoreAttributes(attributes);
    document.Save(folder.Path("a.trovik"));
    EXPECT_THAT(MessageOf<HostError>([&] { Document::OpenScene(folder.Path("a.trovik")); }),
                testing::AllOf(testing::HasSubstr("a.trovik: byte "),
                               testing::HasSubstr("corner texture coordinates has 63 entries")));
}

}  // namespace
}  // namespace trovik::test
