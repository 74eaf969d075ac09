// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/BrushSettings.h"
#include "framework/errors/HostError.h"
#include "framework/nodes/HostKernel.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/scene/SampleScene.h"

#include <QLocale>
#include <gmock/gmock.h>

#include <clocale>
#include <cstring>
#include <limits>
#include <locale>

namespace trovik::test {
namespace {

template <typename T>
bool SameBytes(const T* a, const T* b, std::size_t count) {
    return std::memcmp(a, b, count * sizeof(T)) == 0;
}

class DecimalComma : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

/// A document that is saved and opened again.
class SceneRoundTrip : public ::testing::Test {
protected:
    std::unique_ptr<Document> Reopen(Document& document) {
        path = folder.Path("scene.trovik");
        document.Save(path);
        return Document::OpenScene(path);
    }
    TemporaryFolder folder;
    std::string path;
};

TEST_F(SceneRoundTrip, RestoresEveryBitOfEveryLevel) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        auto document = RefinedDocument(folder, zoo.mesh);
        StrokeOver(*document, {0, 5}, 0.7f);
        auto read = Reopen(*document);
        LevelGeometry& before = document->Geometry();
        LevelGeometry& after = read->Geometry();
        ASSERT_EQ(after.LevelCount(), 3u);
        EXPECT_EQ(after.BoundIndex(), 2u);
        for (uint32_t i = 0; i < 3; ++i) {
            const LevelMesh& a = *before.Level(i);
            const LevelMesh& b = *after.Level(i);
            ASSERT_EQ(b.VertexCount(), a.VertexCount());
            ASSERT_EQ(b.faceCount, a.faceCount);
            EXPECT_EQ(b.meshType, a.meshType);
            EXPECT_EQ(b.Name(), a.Name());
            EXPECT_TRUE(SameBytes(
                a.faceVertexIndices.array, b.faceVertexIndices.array, a.faceVertexIndices.fill));
            EXPECT_TRUE(SameBytes(a.vertexNormals.array, b.vertexNormals.array, a.VertexCount()));
            for (uint32_t v = 0; v < a.VertexCount(); ++v)
                EXPECT_TRUE(SameBytes(&a.vertices.array[v].x, &b.vertices.array[v].x, 3)) << v;
        }
    }
}

TEST_F(SceneRoundTrip, KeepsApplicationData) {
    auto document = DocumentOn(folder, Cube());
    const ApplicationData data = {
        {"studio/bookmarks", {0, 255, 7}}, {"studio/empty", {}}, {"other", {1}}};
    document->Settings().applicationData = data;
    auto read = Reopen(*document);
    EXPECT_EQ(read->Settings().applicationData, data);
    EXPECT_TRUE(read->Notes().empty());
    EXPECT_EQ(Reopen(*read)->Settings().applicationData, data)
        << "saved again by a program that does not know the data";
}

TEST_F(SceneRoundTrip, RefusesUnreadableApplicationData) {
    auto document = DocumentOn(folder, Cube());
    const std::string file = folder.Path("scene.trovik");
    document->Save(file);
    for (const ApplicationData& data :
         {ApplicationData{{"", {1}}},
          ApplicationData{{std::string(257, 'a'), {1}}},
          ApplicationData{{"large", std::vector<uint8_t>((std::size_t{64} << 20) + 1)}}}) {
        document->Settings().applicationData = data;
        EXPECT_THROW(document->Save(file), HostError);
        EXPECT_TRUE(Document::OpenScene(file)->Settings().applicationData.empty());
    }
}

TEST_F(SceneRoundTrip, KeepsTheSignOfZeroAndTheSmallestNumbers) {
    auto document = DocumentOn(folder, Cube());
    LevelMesh& level = *document->Geometry().Bound();
    const float least = std::numeric_limits<float>::denorm_min();
    level.SetPosition(2, {-0.0f, least, -std::numeric_limits<float>::max()});
    auto read = Reopen(*document);
    const Vector found = read->Geometry().Bound()->Position(2);
    EXPECT_TRUE(std::signbit(found.x));
    EXPECT_EQ(found.y, least);
    EXPECT_EQ(found.z, -std::numeric_limits<float>::max());
}

TEST_F(SceneRoundTrip, RestoresMasksFaceFlagsAndLocksOfEachLevel) {
    auto document = RichDocument(folder);
    LevelMesh& fine = *document->Geometry().Level(2);
    fine.faceFlags[7] = 0;
    fine.SetLockable(false);
    document->Geometry().Level(1)->vertices.array[3].freeze |= 0x80;
    auto read = Reopen(*document);
    for (uint32_t i = 0; i < 3; ++i) {
        const LevelMesh& a = *document->Geometry().Level(i);
        const LevelMesh& b = *read->Geometry().Level(i);
        EXPECT_EQ(b.FrozenVertexCount(), a.FrozenVertexCount()) << i;
        for (uint32_t v = 0; v < a.VertexCount(); ++v)
            EXPECT_EQ(b.vertices.array[v].freeze, a.vertices.array[v].freeze) << i << " " << v;
        EXPECT_TRUE(SameBytes(a.faceFlags, b.faceFlags, a.faceCount)) << i;
        EXPECT_EQ(b.IsLockable(), a.IsLockable()) << i;
    }
    EXPECT_EQ(read->Geometry().Level(1)->FrozenVertexCount(), 25u);
    EXPECT_EQ(read->Geometry().Level(1)->vertices.array[3].freeze, 0x80 | 15);
    EXPECT_EQ(read->Geometry().Level(2)->faceFlags[7], 0);
    EXPECT_FALSE(read->Geometry().Level(2)->IsLockable());
}

TEST_F(SceneRoundTrip, RestoresTheBoundLevelAndPendingChanges) {
    auto document = RichDocument(folder);
    auto read = Reopen(*document);
    EXPECT_EQ(read->Geometry().BoundIndex(), 1u);
    const SeenDifferences seen = document->Geometry().Seen(1).fromAbove;
    const SeenDifferences seenOfRead = read->Geometry().Seen(1).fromAbove;
    ASSERT_TRUE(seen.kept);
    ASSERT_FALSE(seen.vertices.empty()) << "no changes are pending";
    EXPECT_TRUE(seenOfRead.kept);
    ASSERT_EQ(seenOfRead.vertices, seen.vertices);
    EXPECT_TRUE(
        SameBytes(seen.positions.data(), seenOfRead.positions.data(), seen.positions.size()));
    EXPECT_FALSE(read->Geometry().Seen(2).fromAbove.kept);
}

TEST_F(SceneRoundTrip, RestoresTheTransform) {
    auto document = RichDocument(folder);
    auto read = Reopen(*document);
    const MatrixTransform& a = document->Geometry().Transform();
    const MatrixTransform& b = read->Geometry().Transform();
    EXPECT_EQ(b.ToWorld(), a.ToWorld());
    EXPECT_EQ(b.ToLocal(), a.ToLocal());
    Vector scale;
    b.Scale(&scale);
    EXPECT_EQ(scale, Vector(2.0f, 1.5f, 1.0f));
    // If an axis is scaled to zero, the inverse cannot be computed from the matrix alone.
    document->Geometry().Transform().Set({1.0f, 0.0f, 1.0f}, {}, {});
    read = Reopen(*document);
    EXPECT_EQ(read->Geometry().Transform().ToLocal(), a.ToLocal());
}

TEST_F(SceneRoundTrip, RestoresLayersWithNameStrengthLockAndOffsets) {
    auto document = RichDocument(folder);
    auto read = Reopen(*document);
    EXPECT_EQ(read->ActiveLayer()->Name(), "coarse");
    read->BindLevel(2);
    document->BindLevel(2);
    ASSERT_NE(read->ActiveLayer(), nullptr);
    EXPECT_EQ(read->ActiveLayer()->Name(), "fine");
    EXPECT_EQ(read->ActiveLayer()->Strength(), 0.5f);
    EXPECT_TRUE(read->ActiveLayer()->Writable());
    const SculptLayer& a = *document->ActiveLayer();
    const SculptLayer& b = *read->ActiveLayer();
    ASSERT_GT(a.SlotCount(), 10u);
    ASSERT_EQ(b.SlotCount(), a.SlotCount());
    for (uint32_t slot = 0; slot < a.SlotCount(); ++slot) {
        EXPECT_EQ(b.VertexOfSlot(slot), a.VertexOfSlot(slot));
        EXPECT_EQ(b.FindSlot(b.VertexOfSlot(slot)), slot);
        EXPECT_TRUE(SameBytes(&a.StateOfSlot(slot), &b.StateOfSlot(slot), 1)) << slot;
    }
    ASSERT_TRUE(read->SelectLayer("second"));
    EXPECT_FALSE(read->ActiveLayer()->Writable());
    EXPECT_EQ(read->ActiveLayer()->SlotCount(), 0u);
    EXPECT_EQ(read->ActiveLayer()->Strength(), 1.0f);
}

TEST_F(SceneRoundTrip, RestoresALevelWithoutAnActiveLayer) {
    auto document = RichDocument(folder);
    document->SelectLayer("");
    auto read = Reopen(*document);
    EXPECT_EQ(read->ActiveLayer(), nullptr);
    EXPECT_TRUE(read->SelectLayer("coarse"));
}

TEST_F(SceneRoundTrip, RestoresTheSettingsOfAllTools) {
    auto document = RichDocument(folder);
    BrushOperation& a = document->Brush();
    auto read = Reopen(*document);
    BrushOperation& b = read->Brush();
    ASSERT_NE(b.ActiveConfiguration(), nullptr);
    EXPECT_EQ(b.ActiveConfiguration()->Name(), QStringLiteral("Bulge"));
    for (const char* tool : {"Bulge", "Sculpt", "Flatten", "Wax", "Smooth"}) {
        SCOPED_TRACE(tool);
        ASSERT_TRUE(document->SelectTool(tool));
        ASSERT_TRUE(read->SelectTool(tool));
        EXPECT_EQ(b.BrushSize(), 33.0f);
        EXPECT_EQ(b.BrushStrength(), a.BrushStrength());
        EXPECT_EQ(b.BrushStrengthBias(), a.BrushStrengthBias());
        EXPECT_EQ(b.FalloffIndex(), a.FalloffIndex());
        ASSERT_EQ(b.FalloffData().fill, a.FalloffData().fill);
        EXPECT_TRUE(SameBytes(a.FalloffData().array, b.FalloffData().array, a.FalloffData().fill));
        for (const Attribute* attribute : a.Attributes()) {
            const Attribute* same = b.AttributeByName(attribute->Name());
            ASSERT_NE(same, nullptr);
            EXPECT_EQ(same->AsString(), attribute->AsString()) << attribute->Name().toStdString();
        }
    }
    EXPECT_EQ(a.BrushStrength(), 100.0f) << "Smooth must have its own defaults in both";
}

TEST_F(SceneRoundTrip, SavingDoesNotChangeTheBrush) {
    auto document = RichDocument(folder);
    BrushOperation& brush = document->Brush();
    const auto stored = brush.Settings().stored;
    document->Save(folder.Path("one.trovik"));
    EXPECT_EQ(brush.ActiveConfiguration()->Name(), QStringLiteral("Bulge"));
    EXPECT_EQ(brush.FalloffIndex(), 4);
    EXPECT_EQ(brush.Settings().stored, stored);
    document->Save(folder.Path("two.trovik"));
    EXPECT_EQ(TemporaryFolder::Content(folder.Path("one.trovik")),
              TemporaryFolder::Content(folder.Path("two.trovik")));
}

TEST_F(SceneRoundTrip, DrawFromCenterIsNotStored) {
    auto document = DocumentOn(folder, Cube());
    document->SelectTool("Imprint");
    auto* attribute = dynamic_cast<AttributeInstance<bool>*>(
        document->Brush().AttributeByName(QStringLiteral("drawfromcenter")));
    ASSERT_NE(attribute, nullptr);
    attribute->SetValue(false, true);
    auto read = Reopen(*document);
    EXPECT_EQ(read->Brush().AttributeByName(QStringLiteral("drawfromcenter"))->AsString(),
              QStringLiteral("true"));
}

TEST_F(SceneRoundTrip, RestoresSettingsCommonToAllTools) {
    auto document = DocumentOn(folder, Cube());
    document->SelectTool("Sculpt");
    document->Brush().SetFalloffBasedOnFacingAngle(true, 20.0f, 40.0f);
    document->Brush().strokeMeshLocked = 1;
    document->Brush().Settings().screenSpace = true;
    document->Save(folder.Path("scene.trovik"));
    document->Brush().SetFalloffBasedOnFacingAngle(false, 0.0f, 90.0f);
    auto read = Document::OpenScene(folder.Path("scene.trovik"));
    EXPECT_TRUE(CheckableFloatArray::s_bActive);
    EXPECT_EQ(read->Brush().facingAngleStart, 20.0f);
    EXPECT_EQ(read->Brush().facingAngleRange, 40.0f);
    EXPECT_EQ(read->Brush().strokeMeshLocked, 1);
    EXPECT_TRUE(read->Brush().IsScreenSpace());
    CheckableFloatArray::s_bActive = false;
}

TEST_F(SceneRoundTrip, RestoresTheProjectionOfTheView) {
    auto document = RichDocument(folder);
    EXPECT_FALSE(Reopen(*document)->View().isOrthographic);
    document->View().isOrthographic = true;
    document->UpdateCamera();
    EXPECT_TRUE(HostKernel::Instance().Scene()->OwnCamera().IsOrthographic());
    auto read = Reopen(*document);
    EXPECT_TRUE(read->View().isOrthographic);
    EXPECT_EQ(read->View().eye, document->View().eye);
    EXPECT_EQ(read->View().verticalFieldOfView, 50.0f);
    // The brush of each document uses the projection of that document.
    read->View().isOrthographic = false;
    read->UpdateCamera();
    EXPECT_FALSE(HostKernel::Instance().Scene()->OwnCamera().IsOrthographic());
    document->Brush();
    EXPECT_TRUE(HostKernel::Instance().Scene()->OwnCamera().IsOrthographic());
}

TEST_F(SceneRoundTrip, RestoresViewMirrorsRadiusAndSpacing) {
    auto document = RichDocument(folder);
    auto read = Reopen(*document);
    const SceneSettings& a = document->Settings();
    const SceneSettings& b = read->Settings();
    EXPECT_EQ(b.view.eye, Vector(4.0f, 5.0f, 6.0f));
    EXPECT_EQ(b.view.target, a.view.target);
    EXPECT_EQ(b.view.up, Vector(0.0f, 1.0f, 0.0f));
    EXPECT_EQ(b.view.verticalFieldOfView, 50.0f);
    EXPECT_EQ(b.view.width, 320);
    EXPECT_EQ(b.view.height, 720);
    EXPECT_EQ(b.radius, 0.75f);
    EXPECT_EQ(b.spacing, 0.125f);
    EXPECT_EQ(b.seed, 77u);
    EXPECT_EQ(b.strokesBegun, 5u);
    EXPECT_EQ(b.mirrorMode, a.mirrorMode);
    ASSERT_EQ(b.mirrorMaps.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(b.mirrorMaps[i], a.mirrorMaps[i]);
    EXPECT_EQ(read->Brush().MirrorConfig().MirrorMode(), a.mirrorMode);
}

TEST_F(SceneRoundTrip, RestoresNodesWithTheirData) {
    auto document = RichDocument(folder);
    LevelMesh& base = *document->Geometry().Level(0);
    base.SetVisible(false);
    document->Geometry().SetName(QStringLiteral("Figur"));
    const auto table = PatchTable(base);
    ASSERT_EQ(table.size(), 60u);
    auto read = Reopen(*document);
    EXPECT_EQ(PatchTable(*read->Geometry().Level(0)), table);
    EXPECT_FALSE(read->Geometry().Level(0)->Visible());
    EXPECT_TRUE(read->Geometry().Level(1)->Visible());
    EXPECT_EQ(read->Geometry().Name(), QStringLiteral("Figur"));
    EXPECT_EQ(read->Geometry().Level(0)->Name(), QStringLiteral("Würfel"));
    EXPECT_TRUE(read->Notes().empty());
}

TEST_F(SceneRoundTrip, ResetRestoresTheImportedMesh) {
    for (const ZooMesh& zoo : {ZooMesh{"cube", Cube()}, ZooMesh{"ngons", NgonMix()}}) {
        SCOPED_TRACE(zoo.name);
        auto document = DocumentOn(folder, zoo.mesh);
        document->SelectTool("Sculpt");
        document->Brush().SetBrushStrength(80.0f);
        StrokeOver(*document, {0}, 2.0f);
        auto read = Reopen(*document);
        const Vector moved = read->Geometry().Bound()->Position(0);
        document->Reset();
        read->Reset();
        EXPECT_NE(read->Geometry().Bound()->Position(0), moved);
        EXPECT_EQ(StateOf(*read, folder), StateOf(*document, folder));
    }
}

TEST_F(SceneRoundTrip, UndoHistoryIsNotSaved) {
    auto document = RichDocument(folder);
    ASSERT_TRUE(document->Geometry().History().CanUndo());
    auto read = Reopen(*document);
    EXPECT_FALSE(read->Undo());
    EXPECT_EQ(read->Geometry().History().StepCount(), 0u);
}

TEST_F(SceneRoundTrip, DoesNotDependOnTheLocale) {
    auto document = RichDocument(folder);
    const std::string plain = StateOf(*document, folder);
    const std::locale before = std::locale::global(std::locale(std::locale(), new DecimalComma));
    const QLocale languageBefore;
    QLocale::setDefault(QLocale(QLocale::German));
    // The locale may not be installed.
    std::setlocale(LC_ALL, "de_DE.UTF-8");
    auto read = Reopen(*document);
    const std::string again = StateOf(*read, folder);
    std::setlocale(LC_ALL, "C");
    QLocale::setDefault(languageBefore);
    std::locale::global(before);
    EXPECT_EQ(again, plain);
}

TEST_F(SceneRoundTrip, MeshWithNaNIsRefusedAndTheOldFileStays) {
    auto document = DocumentOn(folder, Cube());
    const std::string file = folder.Path("scene.trovik");
    document->Save(file);
    const std::string before = TemporaryFolder::Content(file);
    const std::size_t files = folder.FileCount();
    document->Geometry().Bound()->SetPosition(5, {0.0f, NAN, 0.0f});
    EXPECT_EQ(
        MessageOf<HostError>([&] { document->Save(file); }),
        file + ": the position of vertex 5 of level 0 is not finite; such a mesh cannot be saved");
    EXPECT_EQ(TemporaryFolder::Content(file), before);
    EXPECT_EQ(folder.FileCount(), files) << "a temporary file is left";
}

TEST_F(SceneRoundTrip, MissingFolderIsAnErrorThatNamesTheFile) {
    auto document = DocumentOn(folder, Cube());
    const std::string file = folder.Path("none/scene.trovik");
    EXPECT_THAT(MessageOf<HostError>([&] { document->Save(file); }), testing::HasSubstr(file));
}

}  // namespace
}  // namespace trovik::test
