// SPDX-License-Identifier: Apache-2.0

/// \file Tests the table of the faces around each face, its lifetime as a node, and renderer
/// notifications.
#include "framework/nodes/SceneStream.h"
#include "tests/fixture/StrokeFixture.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/stroke/FakeMesh.h"
#include "topology/PatchMap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>

namespace trovik::test {
namespace {

/// Links a map under the bound level; the level owns it.
PatchMap& LinkMap(LevelMesh& mesh) {
    auto* map = new PatchMap;
    mesh.AddChild(map);
    return *map;
}

std::vector<uint32_t> Row(const PatchMap& map, uint32_t face) {
    const uint32_t* row = map.neighbourFaces.array + face * 10;
    return {row, row + 10};
}
/// The faces of a row, without the empty entries.
std::vector<uint32_t> Filled(const PatchMap& map, uint32_t face) {
    std::vector<uint32_t> row = Row(map, face);
    std::erase(row, 0xffffffffu);
    return row;
}

/// All faces that have a vertex in common with `face`, itself included, found by comparing every
/// pair of corners.
std::set<uint32_t> FacesTouching(const LevelMesh& mesh, uint32_t face) {
    std::set<uint32_t> faces;
    for (uint32_t i = 0; i < mesh.faceCount * 4; ++i)
        for (uint32_t c = 0; c < 4; ++c)
            if (mesh.faceVertexIndices[i] == mesh.faceVertexIndices[face * 4 + c])
                faces.insert(i / 4);
    return faces;
}

TEST(PatchMapTable, HasTheFacesAroundAllFourCornersOnEveryMesh) {
    for (const ZooMesh& zoo : QuadMeshes()) {
        for (const unsigned subdivisions : {0u, 1u, 2u}) {
            SCOPED_TRACE(zoo.name);
            StrokeFixture bench(zoo.mesh, subdivisions);
            LevelMesh& mesh = bench.Mesh();
            const PatchMap& map = LinkMap(mesh);
            ASSERT_EQ(map.neighbourFaces.fill, mesh.faceCount * 10);
            for (uint32_t f = 0; f < mesh.faceCount; ++f) {
                const std::vector<uint32_t> row = Filled(map, f);
                const std::set<uint32_t> held(row.begin(), row.end());
                const std::set<uint32_t> around = FacesTouching(mesh, f);
                EXPECT_EQ(held.size(), row.size()) << "a duplicate face in row " << f;
                EXPECT_EQ(held.size(), std::min<std::size_t>(around.size(), 10));
                EXPECT_TRUE(std::includes(around.begin(), around.end(), held.begin(), held.end()));
            }
        }
    }
}

TEST(PatchMapTable, EmptyEntriesAreAtTheEndOfARow) {
    StrokeFixture bench(FlatGrid(3));
    const PatchMap& map = LinkMap(bench.Mesh());
    const std::size_t lengths[9] = {4, 6, 4, 6, 9, 6, 4, 6, 4};
    for (uint32_t f = 0; f < 9; ++f) {
        const std::vector<uint32_t> row = Row(map, f);
        for (std::size_t slot = 0; slot < 10; ++slot)
            EXPECT_EQ(row[slot] == PatchMap::emptySlot, slot >= lengths[f]) << f << ", " << slot;
    }
}

TEST(PatchMapTable, HasTheFaceItself) {
    StrokeFixture bench(SingleQuad());
    const PatchMap& map = LinkMap(bench.Mesh());
    EXPECT_EQ(Filled(map, 0), std::vector<uint32_t>{0});
}

TEST(PatchMapTable, EleventhFaceIsDropped) {
    // Twelve faces meet at vertex 0.
    StrokeFixture bench(ValenceFan(12));
    const PatchMap& map = LinkMap(bench.Mesh());
    for (uint32_t f = 0; f < 12; ++f) {
        EXPECT_EQ(FacesTouching(bench.Mesh(), f).size(), 12u);
        EXPECT_EQ(Filled(map, f).size(), 10u);
    }
    // Starting from face 0 at its first corner, vertex 0, the walk reports the faces in one
    // direction.
    std::vector<uint32_t> row = Filled(map, 0);
    EXPECT_EQ(row[0], 0u);
    std::sort(row.begin(), row.end());
    EXPECT_EQ(std::unique(row.begin(), row.end()), row.end());
}

TEST(PatchMapTable, VisitorStoresDistinctFacesInTheCurrentRow) {
    HostKernel::Instance();
    PatchMap map;
    map.neighbourFaces.SetFill(30, false);
    std::fill_n(map.neighbourFaces.array, 30, PatchMap::emptySlot);
    map.currentFace = 1;
    AdjacentVertexEnumerator& visitor = map;
    for (const uint32_t face : {7u, 3u, 7u, 3u, 0u, 7u}) visitor.Operator(99, face);
    EXPECT_EQ(Filled(map, 1), (std::vector<uint32_t>{7, 3, 0}));
    for (uint32_t face = 20; face < 40; ++face) visitor.Operator(face, face);
    EXPECT_EQ(Filled(map, 1), (std::vector<uint32_t>{7, 3, 0, 20, 21, 22, 23, 24, 25, 26}));
    visitor.Operator(0, 25);
    visitor.Operator(0, 99);
    EXPECT_EQ(Filled(map, 1), (std::vector<uint32_t>{7, 3, 0, 20, 21, 22, 23, 24, 25, 26}));
    EXPECT_TRUE(Filled(map, 0).empty());
    EXPECT_TRUE(Filled(map, 2).empty());
}

TEST(PatchMapTable, AllocatesExactlyTheNeededSize) {
    StrokeFixture bench(FlatGrid(2));
    auto* map = new PatchMap;
    for (uint32_t i = 0; i < 5; ++i) map->neighbourFaces.Append(i);
    ASSERT_EQ(map->neighbourFaces.capacity, 7u);
    bench.Mesh().AddChild(map);
    EXPECT_EQ(map->neighbourFaces.fill, 40u);
    EXPECT_EQ(map->neighbourFaces.capacity, 40u);
    EXPECT_EQ(Filled(*map, 0).size(), 4u);
}

TEST(PatchMapTable, LargerTableKeepsItsArrayAndIsRebuilt) {
    StrokeFixture large(FlatGrid(3));
    StrokeFixture small(FlatGrid(2));
    PatchMap& map = LinkMap(large.Mesh());
    const uint32_t* const array = map.neighbourFaces.array;
    EXPECT_EQ(map.neighbourFaces.capacity, 90u);
    small.Mesh().AddChild(&map);
    EXPECT_EQ(map.neighbourFaces.array, array);
    EXPECT_EQ(map.neighbourFaces.capacity, 90u);
    EXPECT_EQ(map.neighbourFaces.fill, 40u);
    for (uint32_t f = 0; f < 4; ++f) EXPECT_EQ(Filled(map, f).size(), 4u);
}

TEST(PatchMapNode, WithoutAParentKeepsItsTable) {
    HostKernel::Instance();
    PatchMap map;
    map.neighbourFaces.Append(17);
    map.OnLinked();
    ASSERT_EQ(map.neighbourFaces.fill, 1u);
    EXPECT_EQ(map.neighbourFaces[0], 17u);
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
}

TEST(PatchMapNode, LeavingItsMeshKeepsTheTable) {
    StrokeFixture bench(FlatGrid(2));
    PatchMap& map = LinkMap(bench.Mesh());
    const std::vector<uint32_t> row = Row(map, 3);
    bench.Mesh().RemoveChild(&map);
    const std::unique_ptr<PatchMap> owned(&map);
    EXPECT_EQ(map.neighbourFaces.fill, 40u);
    EXPECT_EQ(Row(map, 3), row);
}

TEST(PatchMapNode, ParentThatIsNotAMeshIsAnError) {
    HostKernel::Instance();
    TreeNode folder;
    auto* map = new PatchMap;
    try {
        folder.AddChild(map);
        FAIL() << "no error was thrown";
    } catch (Error* error) {
        EXPECT_EQ(error->ErrorCode(), Error::InvalidUse);
        EXPECT_EQ(static_cast<int>(error->ErrorCode()), 4);
        EXPECT_EQ(error->Message(), QStringLiteral("Wrong parrent for PatchMap class"));
        EXPECT_STREQ(error->Function(), "PatchMap::OnLinked");
        Error::Dispose(error);
    }
    EXPECT_EQ(map->neighbourFaces.fill, 0u);
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
}

TEST(PatchMapNode, ClassHasItsNamesAndCreatesOneOrManyNodes) {
    HostKernel::Instance();
    const ClassDesc* description = PatchMap::StaticClass();
    EXPECT_EQ(description->Name(), QStringLiteral("PatchMap"));
    EXPECT_EQ(description->DisplayName(), QStringLiteral("Patchmap"));
    EXPECT_EQ(description->Parent(), TreeNode::StaticClass());
    EXPECT_EQ(description->DisplayParent(), TreeNode::StaticClass());
    EXPECT_EQ(description->Flags(), 0);
    EXPECT_EQ(description->Version(), 0);
    EXPECT_EQ(ClassDesc::ByName(QStringLiteral("PatchMap")), description);
    for (const unsigned count : {0u, 1u}) {
        const std::unique_ptr<Node> one(PatchMap::Create(count));
        EXPECT_EQ(one->RuntimeClass(), description);
        EXPECT_EQ(dynamic_cast<PatchMap&>(*one).neighbourFaces.fill, 0u);
    }
    auto* many = dynamic_cast<PatchMap*>(PatchMap::Create(3));
    ASSERT_NE(many, nullptr);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(many[i].RuntimeClass(), description);
    delete[] many;
}

TEST(PatchMapInAScene, TableIsRestoredAsSaved) {
    StrokeFixture bench(FlatGrid(3));
    PatchMap& map = LinkMap(bench.Mesh());
    map.neighbourFaces[7] = 12345;
    map.currentFace = 6;
    map.SetName(QStringLiteral("around"));
    SceneStream out;
    map.Serialize(out);
    SceneStream in(out.ToBytes());
    PatchMap read;
    read.currentFace = 2;
    read.Serialize(in);
    ASSERT_EQ(read.neighbourFaces.fill, 90u);
    for (uint32_t i = 0; i < 90; ++i) EXPECT_EQ(read.neighbourFaces[i], map.neighbourFaces[i]) << i;
    EXPECT_EQ(read.currentFace, 2u);
    EXPECT_EQ(read.Name(), QStringLiteral("around"));
    EXPECT_EQ(in.Remaining(), 0u);
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
}

TEST(PatchMapInAScene, FormatsBelow328HaveNoTable) {
    StrokeFixture bench(FlatGrid(3));
    PatchMap& map = LinkMap(bench.Mesh());
    for (const uint32_t format : {0u, 327u, 328u, 329u}) {
        SceneStream out(format);
        map.Serialize(out);
        SceneStream in(out.ToBytes());
        PatchMap read;
        read.Serialize(in);
        EXPECT_EQ(read.neighbourFaces.fill, format < 328 ? 0u : 90u) << format;
        EXPECT_EQ(in.Remaining(), 0u);
    }
}

TEST(PatchMapInAScene, NodeOfAnOldSceneIsReplacedByANewOne) {
    StrokeFixture bench(FlatGrid(3), 2);
    LevelMesh& lowest = *bench.geometry->Level(0);
    SceneStream out(327);
    PatchMap saved;
    saved.SetName(QStringLiteral("old"));
    saved.Serialize(out);
    PatchMap& old = LinkMap(lowest);
    // A loader reads the node after linking it.
    SceneStream in(out.ToBytes());
    old.neighbourFaces.Clear();
    old.Serialize(in);
    ASSERT_EQ(old.neighbourFaces.fill, 0u);
    ASSERT_EQ(old.Name(), QStringLiteral("old"));
    bench.Begin();
    ASSERT_NE(bench.brush->patchMap, nullptr);
    EXPECT_NE(bench.brush->patchMap->Name(), QStringLiteral("old"));
    EXPECT_EQ(bench.brush->patchMap->Parent(), &lowest);
    EXPECT_EQ(bench.brush->patchMap->neighbourFaces.fill, 90u);
    EXPECT_EQ(Filled(*bench.brush->patchMap, 4).size(), 9u);
    bench.End();
}

TEST(PatchMapInAScene, TableOfANewSceneIsUsed) {
    StrokeFixture bench(FlatGrid(3), 1);
    PatchMap& map = LinkMap(*bench.geometry->Level(0));
    map.neighbourFaces[11] = 77;
    map.neighbourFaces.fill = 20;
    bench.Begin();
    EXPECT_EQ(bench.brush->patchMap, &map);
    EXPECT_EQ(map.neighbourFaces.fill, 20u);
    EXPECT_EQ(map.neighbourFaces[11], 77u);
    bench.End();
}

TEST(PatchMapInAScene, LevelWithoutFacesKeepsAnEmptyTable) {
    CallLog log;
    FakeGeometry geometry("A", log);
    geometry.level.meshType = 1;
    geometry.level.faceCount = 0;
    StrokeFixture bench(FlatGrid(1));
    SwiftStroke& brush = *bench.brush;
    brush.SetMesh(&geometry.level);
    ASSERT_NE(brush.patchMap, nullptr);
    EXPECT_EQ(brush.patchMap->neighbourFaces.fill, 0u);
    EXPECT_EQ(geometry.level.ChildByClass(PatchMap::StaticClass(), 0u), brush.patchMap);
    EXPECT_EQ(geometry.level.ChildByClass(PatchMap::StaticClass(), 1u), nullptr);
    brush.EndStroke();
}

/// The renderer notifications for one patch.
std::vector<RecordingRenderer::Notice> NoticesOf(StrokeFixture& bench,
                                                 uint32_t patchLevelNumber,
                                                 uint32_t patch) {
    RecordingRenderer& renderer = bench.AddRenderer(1.0f);
    SwiftStroke& brush = *bench.brush;
    bench.Begin();
    brush.patchMesh = bench.geometry->Level(patchLevelNumber);
    const uint32_t side = 1u << (bench.geometry->BoundIndex() - patchLevelNumber);
    brush.facesPerPatch = side * side;
    brush.NotifyRenderersOfPatch(patch, patch * brush.facesPerPatch);
    bench.End();
    return renderer.notices;
}

/// The patch's first face, followed by the first descendant of each face in the map's row.
std::vector<RecordingRenderer::Notice> Expected(const StrokeFixture& bench,
                                                uint32_t firstFace,
                                                uint32_t row,
                                                uint32_t facesPerMapFace) {
    const LevelMesh& mesh = *bench.geometry->Bound();
    std::vector<RecordingRenderer::Notice> notices = {
        {mesh.faceVertexIndices[firstFace * 4], firstFace}};
    for (const uint32_t e : Filled(*bench.brush->patchMap, row))
        notices.push_back({mesh.faceVertexIndices[e * facesPerMapFace * 4], e * facesPerMapFace});
    return notices;
}

TEST(PatchMapNotices, ReportTheFirstFaceUnderEachFaceOfTheRow) {
    // Patch 22 of level 1 is in base face 5; a base face contains 64 faces of level 3.
    StrokeFixture bench(FlatGrid(3), 3);
    const auto notices = NoticesOf(bench, 1, 22);
    EXPECT_EQ(notices, Expected(bench, 22 * 16, 5, 64));
    EXPECT_EQ(notices.size(), 7u);
}

TEST(PatchMapNotices, PatchesOfTheBaseAndOfTheBoundLevelUseTheirRows) {
    StrokeFixture base(FlatGrid(3), 2);
    const auto ofBase = NoticesOf(base, 0, 4);
    EXPECT_EQ(ofBase, Expected(base, 4 * 16, 4, 16));
    StrokeFixture bound(FlatGrid(3), 2);
    const auto ofBound = NoticesOf(bound, 2, 4 * 16 + 13);
    EXPECT_EQ(ofBound, Expected(bound, 4 * 16 + 13, 4, 16));
}

TEST(PatchMapNotices, MapOverTrianglesUsesTheRowOfTheLevelsFaceIndex) {
    // The map is a child of level 1, whose faces each have 16 faces of level 3. The row of a
    // level-2 patch is computed as if level 0 had quads: 37 / 4 / 4.
    StrokeFixture bench(Icosahedron(), 3);
    const auto notices = NoticesOf(bench, 2, 37);
    ASSERT_EQ(bench.brush->patchMapMesh, bench.geometry->Level(1));
    EXPECT_EQ(notices, Expected(bench, 37 * 4, 2, 16));
    EXPECT_GT(notices.size(), 5u);
}

TEST(PatchMapNotices, WithoutAMapThePatchItselfIsStillReported) {
    StrokeFixture bench(FlatGrid(3), 1);
    RecordingRenderer& renderer = bench.AddRenderer(1.0f);
    SwiftStroke& brush = *bench.brush;
    bench.Begin();
    brush.patchMesh = bench.geometry->Level(0);
    brush.facesPerPatch = 4;
    PatchMap* const map = brush.patchMap;
    brush.patchMap = nullptr;
    brush.NotifyRenderersOfPatch(4, 16);
    EXPECT_EQ(renderer.notices,
              (std::vector<RecordingRenderer::Notice>{{bench.Mesh().faceVertexIndices[64], 16}}));
    renderer.notices.clear();
    brush.patchMap = map;
    brush.patchMapMesh = nullptr;
    brush.NotifyRenderersOfPatch(4, 16);
    EXPECT_TRUE(renderer.notices.empty());
    bench.End();
}

TEST(PatchMapNotices, EveryRendererReceivesThemInOrder) {
    StrokeFixture bench(FlatGrid(2), 1);
    RecordingRenderer& first = bench.AddRenderer(1.0f);
    const auto second = NoticesOf(bench, 0, 3);
    EXPECT_EQ(first.notices, second);
    EXPECT_EQ(second, Expected(bench, 12, 3, 4));
}

TEST(PatchMapNotices, NeighboursBeyondTheTenthAreNotReported) {
    StrokeFixture bench(ValenceFan(12));
    const auto notices = NoticesOf(bench, 0, 0);
    EXPECT_EQ(notices.size(), 11u);
    EXPECT_EQ(notices, Expected(bench, 0, 0, 1));
}

}  // namespace
}  // namespace trovik::test
