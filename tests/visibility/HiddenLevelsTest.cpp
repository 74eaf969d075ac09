// SPDX-License-Identifier: Apache-2.0

/// \file Tests that the hidden faces of all levels are consistent and are updated when levels are
/// added or removed, and that every step is undone bit-exactly.
#include "framework/errors/HostError.h"
#include "framework/freeze/FreezeBlend.h"
#include "tests/levels/GeometryState.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/visibility/VisibilityState.h"

namespace trovik::test {
namespace {

FaceChoice Only(const LevelMesh& level, std::initializer_list<uint32_t> faces) {
    FaceChoice chosen(level.faceCount);
    for (const uint32_t face : faces) chosen[face] = 1;
    return chosen;
}

TEST(HiddenLevels, CoarseFacesAreHiddenWhenAllTheirChildrenAre) {
    for (const PolygonMesh& mesh : {GridMesh(2, 2), Icosahedron()}) {
        LevelGeometry geometry(mesh);
        geometry.Subdivide();
        geometry.Subdivide();
        const uint32_t children = geometry.Level(0)->CornersPerFace();
        // Hides all but one descendant of face 0 of level 0.
        FaceChoice chosen(geometry.Bound()->faceCount);
        std::fill_n(chosen.begin(), children * 4 - 1, uint8_t{1});
        ASSERT_TRUE(Change(geometry, VisibilityChange::Hide, chosen));
        ExpectConsistent(geometry);
        EXPECT_EQ(geometry.Level(2)->HiddenFaceCount(), children * 4 - 1);
        EXPECT_EQ(geometry.Level(1)->HiddenFaceCount(), children - 1);
        EXPECT_EQ(geometry.Level(0)->HiddenFaceCount(), 0u);

        ASSERT_TRUE(
            Change(geometry, VisibilityChange::Hide, Only(*geometry.Bound(), {children * 4 - 1})));
        EXPECT_EQ(geometry.Level(0)->HiddenFaceCount(), 1u);
        EXPECT_TRUE(geometry.Level(0)->IsFaceHidden(0));
        ExpectConsistent(geometry);
    }
}

TEST(HiddenLevels, HidingACoarseFaceHidesItsDescendantsOnly) {
    LevelGeometry geometry(Torus(6, 4));
    geometry.Subdivide();
    geometry.Subdivide();
    // Hides only some descendants, so that the coarse face remains visible.
    Change(geometry, VisibilityChange::Hide, Only(*geometry.Bound(), {0, 1, 37}));
    geometry.BindLevel(0);
    EXPECT_EQ(geometry.Bound()->HiddenFaceCount(), 0u);
    Change(geometry, VisibilityChange::Hide, Only(*geometry.Bound(), {0, 5}));
    ExpectConsistent(geometry);
    std::vector<bool> expected(geometry.Level(2)->faceCount);
    std::fill_n(expected.begin(), 16, true);
    std::fill_n(expected.begin() + 80, 16, true);
    expected[37] = true;
    EXPECT_EQ(HiddenFlags(*geometry.Level(2)), expected);
    // Showing a visible face shows its hidden descendants.
    Change(geometry, VisibilityChange::Show, Only(*geometry.Bound(), {2}));
    expected[37] = false;
    EXPECT_EQ(HiddenFlags(*geometry.Level(2)), expected);
    ASSERT_TRUE(geometry.History().Undo(geometry));
    ASSERT_TRUE(geometry.History().Undo(geometry));
    EXPECT_EQ(geometry.Level(2)->HiddenFaceCount(), 3u)
        << "the finer level has its own flags again";
    ExpectConsistent(geometry);
}

TEST(HiddenLevels, OtherLevelsAreBoundWithoutChange) {
    LevelGeometry geometry(Cube());
    geometry.Subdivide();
    geometry.Subdivide();
    std::mt19937 random(3);
    Change(geometry, VisibilityChange::Hide, RandomChoice(*geometry.Bound(), random, 40));
    const std::string before = StateOfAll(geometry);
    for (const uint32_t level : {1u, 0u, 2u}) geometry.BindLevel(level);
    EXPECT_EQ(StateOfAll(geometry), before);
}

TEST(HiddenLevels, IsolateInvertAndShowAll) {
    LevelGeometry geometry(GridMesh(4, 4));
    geometry.Subdivide();
    const LevelMesh& level = *geometry.Bound();
    Change(geometry, VisibilityChange::Hide, Only(level, {0, 1, 2}));
    ASSERT_TRUE(Change(geometry, VisibilityChange::Isolate, Only(level, {2, 9})));
    std::vector<bool> expected(level.faceCount, true);
    expected[2] = expected[9] = false;
    EXPECT_EQ(HiddenFlags(level), expected);
    ASSERT_TRUE(Change(geometry, VisibilityChange::Invert));
    expected.flip();
    EXPECT_EQ(HiddenFlags(level), expected);
    ExpectConsistent(geometry);
    ASSERT_TRUE(Change(geometry, VisibilityChange::ShowAll));
    EXPECT_EQ(level.HiddenFaceCount(), 0u);
    EXPECT_EQ(level.HiddenVertexCount(), 0u);
    EXPECT_FALSE(Change(geometry, VisibilityChange::ShowAll)) << "no step without a change";
    EXPECT_EQ(geometry.History().Label(geometry.History().Position() - 1), "Show All");
}

TEST(HiddenLevels, SingleFacesAndWholePassesMarkTheSameVertices) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        LevelGeometry geometry(zoo.mesh);
        for (int i = 0; i < 3; ++i) geometry.Subdivide();
        std::mt19937 random(8);
        for (int i = 0; i < 60; ++i) {
            FaceChoice chosen(geometry.Bound()->faceCount);
            for (int k = 0; k < 3; ++k) chosen[random() % chosen.size()] = 1;
            Change(geometry,
                   random() % 3 == 0 ? VisibilityChange::Show : VisibilityChange::Hide,
                   GrownChoice(*geometry.Bound(), chosen, random() % 2));
            ExpectConsistent(geometry);
            if (testing::Test::HasFatalFailure()) return;
        }
    }
}

/// Every vertex keeps its mask amount, whichever faces are hidden.
TEST(HiddenLevels, MasksOfHiddenVerticesAreKept) {
    LevelGeometry geometry(SphereQuads(1));
    geometry.Subdivide();
    LevelMesh& level = *geometry.Bound();
    std::vector<uint8_t> amounts(level.VertexCount());
    for (uint32_t v = 0; v < amounts.size(); ++v) level.SetFreeze(v, amounts[v] = v * 37 % 128);
    std::mt19937 random(4);
    Change(geometry, VisibilityChange::Hide, RandomChoice(level, random, 50));
    ASSERT_GT(level.HiddenVertexCount(), 0u);
    EXPECT_EQ(FreezeAmounts(level), amounts);
    // Mask operations skip hidden vertices.
    auto step =
        BlendFreezeAsStep(level, std::vector<uint8_t>(level.VertexCount(), 9), FreezeMode::Replace);
    for (uint32_t v = 0; v < level.VertexCount(); ++v)
        ASSERT_EQ(level.Freeze(v), level.IsVertexHidden(v) ? amounts[v] : 9) << v;
    geometry.History().Push(std::move(step));
    ExpectConsistent(geometry);
    // Sets the amounts while the vertices are hidden, as level switches and undo do.
    for (uint32_t v = 0; v < amounts.size(); ++v) level.SetFreeze(v, amounts[v] = v * 11 % 128);
    ExpectConsistent(geometry);
    Change(geometry, VisibilityChange::ShowAll);
    EXPECT_EQ(FreezeAmounts(level), amounts);
    for (uint32_t v = 0; v < amounts.size(); ++v)
        ASSERT_EQ(level.vertices.array[v].freeze, amounts[v]);
}

TEST(HiddenLevels, MasksAreCarriedBetweenLevelsAsWithoutHiddenFaces) {
    LevelGeometry shown(Torus(6, 4));
    LevelGeometry hidden(Torus(6, 4));
    for (LevelGeometry* geometry : {&shown, &hidden}) {
        geometry->Subdivide();
        geometry->Subdivide();
        if (geometry == &hidden) {
            std::mt19937 random(6);
            Change(*geometry, VisibilityChange::Hide, RandomChoice(*geometry->Bound(), random, 50));
        }
        for (const uint32_t level : {2u, 0u, 1u, 2u, 1u}) {
            geometry->BindLevel(level);
            for (uint32_t v = 0; v < geometry->Bound()->VertexCount(); v += level + 2)
                geometry->Bound()->SetFreeze(v, static_cast<uint8_t>(v * 29 % 128));
        }
        geometry->Subdivide();
    }
    for (uint32_t level = 0; level < shown.LevelCount(); ++level)
        EXPECT_EQ(FreezeAmounts(*hidden.Level(level)), FreezeAmounts(*shown.Level(level))) << level;
    ExpectConsistent(hidden);
}

TEST(HiddenLevels, UnsubdivideDerivesHiddenFacesOfTheBase) {
    LevelGeometry fine(SphereQuads(2));
    fine.Subdivide();
    LevelMesh& level = *fine.Bound();
    std::mt19937 random(12);
    Change(fine, VisibilityChange::Hide, RandomChoice(level, random, 60));
    // The hidden faces are compared by position, since faces are renumbered.
    const auto middles = [](const LevelMesh& of) {
        std::vector<std::array<float, 3>> list;
        for (uint32_t face = 0; face < of.faceCount; ++face) {
            if (!of.IsFaceHidden(face)) continue;
            std::array<float, 3> low = {9, 9, 9};
            for (uint32_t k = 0; k < 4; ++k) {
                const Vector p = of.Position(of.faceVertexIndices.array[face * 4 + k]);
                low = std::min(low, std::array<float, 3>{p.x, p.y, p.z});
            }
            list.push_back(low);
        }
        std::sort(list.begin(), list.end());
        return list;
    };
    const auto before = middles(level);
    ASSERT_FALSE(before.empty());
    const std::string state = StateOfAll(fine);
    fine.History().Push(UnsubdivideAsStep(fine));
    ExpectConsistent(fine);
    EXPECT_EQ(middles(*fine.Bound()), before);
    EXPECT_GT(fine.Level(0)->HiddenFaceCount(), 0u);
    const std::string after = StateOfAll(fine);
    ASSERT_TRUE(fine.History().Undo(fine));
    EXPECT_EQ(StateOfAll(fine), state);
    ASSERT_TRUE(fine.History().Redo(fine));
    EXPECT_EQ(StateOfAll(fine), after);
}

TEST(HiddenLevels, RandomSequencesAreUndoneAndRedoneBitExactly) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        LevelGeometry geometry(zoo.mesh);
        geometry.Subdivide();
        geometry.History().Clear();
        std::mt19937 random(40);
        std::vector<std::string> states = {StateOfAll(geometry)};
        const auto push = [&](std::unique_ptr<UndoStep> step) {
            if (step != nullptr) geometry.History().Push(std::move(step));
        };
        for (int i = 0; i < 40; ++i) {
            const std::size_t position = geometry.History().Position();
            const uint32_t bound = geometry.BoundIndex();
            const bool isTop = bound + 1 == geometry.LevelCount();
            LevelMesh& level = *geometry.Bound();
            switch (random() % 9) {
                case 0:
                    if (isTop && level.faceCount < 500)
                        push(SubdivideAsStep(geometry));
                    else
                        push(BindLevelAsStep(geometry, geometry.LevelCount() - 1));
                    break;
                case 1:
                    if (bound > 0) push(BindLevelAsStep(geometry, bound - 1));
                    break;
                case 2:
                    if (random() % 3 == 0) push(DeleteLevelsAsStep(geometry, random() % 2 == 0));
                    break;
                case 3: {
                    std::vector<uint8_t> amounts(level.VertexCount());
                    for (uint8_t& amount : amounts) amount = random() % 128;
                    push(BlendFreezeAsStep(level, amounts, FreezeMode::Replace));
                    break;
                }
                case 4:
                    push(ChangeVisibilityAsStep(geometry, VisibilityChange::Invert));
                    break;
                case 5:
                    push(ChangeVisibilityAsStep(
                        geometry, VisibilityChange::Show, RandomChoice(level, random, 40)));
                    break;
                case 6:
                    try {
                        push(UnsubdivideAsStep(geometry));
                    } catch (const HostError&) {
                        // Not every base is the refinement of another mesh.
                    }
                    break;
                default:
                    push(ChangeVisibilityAsStep(
                        geometry, VisibilityChange::Hide, RandomChoice(level, random, 30)));
            }
            ExpectConsistent(geometry);
            if (testing::Test::HasFatalFailure()) return;
            if (geometry.History().Position() > position) states.push_back(StateOfAll(geometry));
        }
        for (int round = 0; round < 2; ++round) {
            for (std::size_t i = states.size() - 1; i-- > 0;) {
                ASSERT_TRUE(geometry.History().Undo(geometry));
                ASSERT_EQ(StateOfAll(geometry) == states[i], true) << "undo to " << i;
                ExpectConsistent(geometry);
            }
            for (std::size_t i = 1; i < states.size(); ++i) {
                ASSERT_TRUE(geometry.History().Redo(geometry));
                ASSERT_EQ(StateOfAll(geometry) == states[i], true) << "redo to " << i;
            }
        }
    }
}

TEST(HiddenLevels, StepsStoreRunsOfFaces) {
    LevelGeometry geometry(GridMesh(8, 8));
    for (int i = 0; i < 4; ++i) geometry.Subdivide();
    FaceChoice chosen(geometry.Bound()->faceCount);
    std::fill_n(chosen.begin() + 256, 512, uint8_t{1});
    chosen[5] = 1;
    const auto step = ChangeVisibilityAsStep(geometry, VisibilityChange::Hide, chosen);
    EXPECT_EQ(step->Faces(), (std::vector<FaceRun>{{5, 1}, {256, 512}}));
    EXPECT_LT(step->Bytes(), 200u);
    EXPECT_EQ(FacesOnLevel(geometry, step->Faces(), 4, 0), (std::vector<FaceRun>{{0, 3}}));
    EXPECT_EQ(FacesOnLevel(geometry, step->Faces(), 4, 4), step->Faces());
    EXPECT_EQ(FacesOnLevel(geometry, {{3, 1}, {4, 1}, {6, 2}, {9, 1}}, 1, 0),
              (std::vector<FaceRun>{{0, 3}}));
    EXPECT_EQ(FacesOnLevel(geometry, {{1, 1}, {3, 2}}, 0, 2),
              (std::vector<FaceRun>{{16, 16}, {48, 32}}));
}

TEST(HiddenLevels, NoFaceIsHiddenDuringAStroke) {
    LevelGeometry geometry(Cube());
    const std::unique_ptr<MeshChange> change(geometry.Bound()->StartChange());
    EXPECT_THROW(ChangeVisibilityAsStep(geometry, VisibilityChange::Invert), HostError);
    EXPECT_EQ(geometry.Bound()->HiddenFaceCount(), 0u);
}

}  // namespace
}  // namespace trovik::test
