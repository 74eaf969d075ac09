// SPDX-License-Identifier: Apache-2.0
#include "tests/meshes/MeshZoo.h"
#include "tests/visibility/VisibilityState.h"

#include <set>

namespace trovik::test {
namespace {

std::set<uint32_t> Numbers(const FaceChoice& chosen) {
    std::set<uint32_t> numbers;
    for (uint32_t face = 0; face < chosen.size(); ++face)
        if (chosen[face] != 0) numbers.insert(face);
    return numbers;
}

FaceChoice Only(const LevelMesh& level, std::initializer_list<uint32_t> faces) {
    FaceChoice chosen(level.faceCount);
    for (const uint32_t face : faces) chosen[face] = 1;
    return chosen;
}

using Set = std::set<uint32_t>;

TEST(FaceChoiceTest, MasksSelectFacesWhoseCornersAllHaveTheAmount) {
    LevelGeometry geometry(GridMesh(3, 1));
    LevelMesh& level = *geometry.Bound();
    for (uint32_t v = 0; v < level.VertexCount(); ++v)
        level.SetFreeze(v, static_cast<uint8_t>(level.Position(v).x * 30.0f));
    EXPECT_EQ(Numbers(FacesByMask(level, 1)), (Set{1, 2}));
    EXPECT_EQ(Numbers(FacesByMask(level, 60)), (Set{2}));
    EXPECT_EQ(Numbers(FacesByMask(level, 61)), Set{});
    Change(geometry, VisibilityChange::Hide, Only(level, {2}));
    EXPECT_EQ(Numbers(FacesByMask(level, 1)), (Set{1})) << "of the visible ones";
    EXPECT_EQ(Numbers(HiddenFaces(level)), (Set{2}));
}

TEST(FaceChoiceTest, GroupsAndMaterialsAreThoseOfLevelZero) {
    for (const PolygonMesh& shape : {GridMesh(3, 1), Icosahedron()}) {
        PolygonMesh mesh = shape;
        mesh.attributes.groupNames = {"a", "b"};
        mesh.attributes.materialNames = {"skin"};
        mesh.attributes.faceGroups.assign(mesh.faceSizes.size(), SurfaceAttributes::none);
        mesh.attributes.faceGroups[0] = 1;
        mesh.attributes.faceMaterials.assign(mesh.faceSizes.size(), SurfaceAttributes::none);
        mesh.attributes.faceMaterials[1] = 0;
        LevelGeometry geometry(mesh);
        const uint32_t corners = geometry.Level(0)->CornersPerFace();
        const auto faces = static_cast<uint32_t>(mesh.faceSizes.size());
        EXPECT_EQ(Numbers(FacesOfGroup(geometry, 1)), (Set{0}));
        EXPECT_EQ(Numbers(FacesOfGroup(geometry, 0)), Set{});
        EXPECT_EQ(Numbers(FacesOfGroup(geometry, SurfaceAttributes::none)).size(), faces - 1);
        geometry.Subdivide();
        geometry.Subdivide();
        const auto material = Numbers(FacesOfMaterial(geometry, 0));
        EXPECT_EQ(material.size(), corners * 4);
        EXPECT_EQ(*material.begin(), corners * 4);
        EXPECT_EQ(*material.rbegin(), corners * 8 - 1);
    }
}

TEST(FaceChoiceTest, ComponentsAreConnectedFaces) {
    PolygonMesh two = GridMesh(2, 1);
    const PolygonMesh other = GridMesh(3, 1);
    for (const auto& p : other.positions) two.positions.push_back({p[0], p[1], 5.0f});
    for (const uint32_t v : other.faceVertices) two.faceVertices.push_back(v + 6);
    two.faceSizes.insert(two.faceSizes.end(), 3, 4);
    LevelGeometry geometry(two);
    EXPECT_EQ(Numbers(FacesOfComponent(geometry, 1)), (Set{0, 1}));
    EXPECT_EQ(Numbers(FacesOfComponent(geometry, 4)), (Set{2, 3, 4}));
    geometry.Subdivide();
    EXPECT_EQ(Numbers(FacesOfComponent(geometry, 3)), (Set{0, 1, 2, 3, 4, 5, 6, 7}));
    LevelGeometry solid(SteppedBox());
    EXPECT_EQ(Numbers(FacesOfComponent(solid, 0)).size(), solid.Bound()->faceCount);
}

TEST(FaceChoiceTest, RingsOfFacesAreAddedAndRemoved) {
    LevelGeometry geometry(GridMesh(7, 7));
    const LevelMesh& level = *geometry.Bound();
    // Identifies faces by the column and row of their lowest corner.
    const auto at = [&](uint32_t face) {
        Vector low(99, 99, 0);
        for (uint32_t k = 0; k < 4; ++k) {
            const Vector p = level.Position(level.faceVertexIndices.array[face * 4 + k]);
            low = {std::min(low.x, p.x), std::min(low.y, p.y), 0};
        }
        return low;
    };
    uint32_t middle = 0;
    for (uint32_t face = 0; face < level.faceCount; ++face)
        if (at(face) == Vector(3, 3, 0)) middle = face;
    const FaceChoice one = Only(level, {middle});
    for (uint32_t rings = 0; rings < 4; ++rings) {
        const FaceChoice grown = GrownChoice(level, one, rings);
        for (uint32_t face = 0; face < level.faceCount; ++face) {
            const Vector p = at(face);
            const float away = std::max(std::abs(p.x - 3.0f), std::abs(p.y - 3.0f));
            ASSERT_EQ(grown[face] != 0, away <= static_cast<float>(rings)) << face;
        }
        EXPECT_EQ(ShrunkChoice(level, grown, rings), rings < 3 ? one : FaceChoice(49, 1))
            << "an open border does not shrink the set";
    }
}

/// The plane of a grid, seen from above; one unit is 100 pixels.
StrokeView ViewOnGrid() {
    StrokeView view;
    view.eye = {2.0f, 2.0f, 5.0f};
    view.target = {2.0f, 2.0f, 0.0f};
    view.up = {0.0f, 1.0f, 0.0f};
    view.verticalFieldOfView = 43.602818f;
    view.width = 400;
    view.height = 400;
    return view;
}

TEST(FaceChoiceTest, ViewSelectsVisibleFacesWithAllCornersInside) {
    PolygonMesh mesh = GridMesh(4, 4);
    // A second grid behind the first.
    const PolygonMesh front = mesh;
    for (const auto& p : front.positions) mesh.positions.push_back({p[0], p[1], -0.1f});
    for (const uint32_t v : front.faceVertices) mesh.faceVertices.push_back(v + 25);
    mesh.faceSizes.insert(mesh.faceSizes.end(), 16, 4);
    LevelGeometry geometry(mesh);
    const LevelMesh& level = *geometry.Bound();
    PatchTree tree(geometry.Bound());
    const ViewBox box{{90.0f, 90.0f}, {310.0f, 310.0f}};
    const auto choose = [&](ViewReach reach) {
        return Numbers(FacesInView(
            geometry, tree, ViewOnGrid(), reach, [&](const ViewPoint& p) { return box.Holds(p); }));
    };
    const Set inFront = {5, 6, 9, 10};
    Set both = inFront;
    for (const uint32_t face : inFront) both.insert(face + 16);
    EXPECT_EQ(choose(ViewReach::Visible), inFront);
    EXPECT_EQ(choose(ViewReach::Through), both);
    // The occluded faces become visible once the front is hidden; the front itself is no longer
    // selected.
    FaceChoice sheet(level.faceCount);
    std::fill_n(sheet.begin(), 16, uint8_t{1});
    auto step = ChangeVisibilityAsStep(geometry, VisibilityChange::Hide, sheet);
    EXPECT_EQ(choose(ViewReach::Visible), (Set{21, 22, 25, 26}));
    EXPECT_EQ(choose(ViewReach::Through), (Set{21, 22, 25, 26}));
}

}  // namespace
}  // namespace trovik::test
