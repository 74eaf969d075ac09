// SPDX-License-Identifier: Apache-2.0

/// \file Tests deleting levels at either end, applying shapes to lower levels, and undoing all of
/// these operations.
#include "framework/layers/SculptLayer.h"
#include "tests/edits/EditStroke.h"
#include "tests/levels/GeometryState.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

TEST(LevelHierarchy, DeletingLowerLevelsMakesTheBoundOneTheBase) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        LevelGeometry geometry(zoo.mesh);
        for (int i = 0; i < 3; ++i) geometry.Subdivide();
        geometry.BindLevel(1);
        const PolygonMesh shape = geometry.ToPolygons(false);
        const std::vector<Vector> top = PositionsOf(*geometry.Level(3));
        LevelMesh* bound = geometry.Bound();
        geometry.History().Push(DeleteLevelsAsStep(geometry, true));
        ASSERT_EQ(geometry.LevelCount(), 3u);
        EXPECT_EQ(geometry.Level(0), bound);
        EXPECT_EQ(geometry.BoundIndex(), 0u);
        EXPECT_EQ(bound->Index(), 0);
        EXPECT_EQ(bound->CoarserVertexCount(), 0u);
        EXPECT_EQ(geometry.ToPolygons(false).positions, shape.positions);
        // The level hierarchy equals that of a geometry made from this mesh.
        LevelGeometry anew(shape);
        anew.Subdivide();
        anew.Subdivide();
        for (uint32_t i = 0; i < 3; ++i) {
            LevelMesh& a = *geometry.Level(i);
            LevelMesh& b = *anew.Level(i);
            ASSERT_EQ(a.faceCount, b.faceCount);
            for (uint32_t slot = 0; slot < a.faceCount * 4; ++slot) {
                ASSERT_EQ(a.faceVertexIndices.array[slot], b.faceVertexIndices.array[slot]);
                ASSERT_EQ(a.QuadEdgeNeighbour(slot / 4, slot % 4),
                          b.QuadEdgeNeighbour(slot / 4, slot % 4));
            }
            for (uint32_t v = 0; v < a.VertexCount(); ++v)
                ASSERT_EQ(a.LowestFaceOf(v), b.LowestFaceOf(v));
        }
        EXPECT_EQ(PositionsOf(*geometry.Level(2)), top);
    }
}

TEST(LevelHierarchy, DeletingNothingMakesNoUndoStep) {
    LevelGeometry geometry(Cube());
    EXPECT_EQ(DeleteLevelsAsStep(geometry, true), nullptr);
    EXPECT_EQ(DeleteLevelsAsStep(geometry, false), nullptr);
    EXPECT_EQ(ApplyToBaseAsStep(geometry), nullptr);
    geometry.Subdivide();
    EXPECT_EQ(DeleteLevelsAsStep(geometry, false), nullptr);
    geometry.BindLevel(0);
    EXPECT_EQ(DeleteLevelsAsStep(geometry, true), nullptr);
    EXPECT_EQ(DeleteLevelsAsStep(geometry, false)->label, "Delete higher levels");
    EXPECT_EQ(geometry.LevelCount(), 1u);
}

TEST(LevelHierarchy, LayersOfADeletedLevelAreRestoredByUndoAndFreedWithItsStep) {
    LevelGeometry geometry(Cube());
    geometry.Subdivide();
    geometry.Subdivide();
    SculptLayer coarse(geometry.Level(0), "coarse");
    SculptLayer fine(geometry.Level(2), "fine");
    geometry.Level(2)->SetActiveLayer(&fine);
    geometry.Level(2)->SetFreeze(5, 20);
    geometry.BindLevel(1);
    geometry.History().Push(DeleteLevelsAsStep(geometry, false));
    EXPECT_FALSE(geometry.Holds(fine.Level()));
    geometry.History().Push(DeleteLevelsAsStep(geometry, true));
    EXPECT_FALSE(geometry.Holds(coarse.Level()));
    geometry.History().Undo(geometry);
    geometry.History().Undo(geometry);
    EXPECT_EQ(coarse.Level(), geometry.Level(0));
    EXPECT_EQ(fine.Level(), geometry.Level(2));
    EXPECT_EQ(geometry.Level(2)->ActiveLayer(), &fine);
    EXPECT_EQ(geometry.Level(2)->Freeze(5), 20);
    geometry.History().Redo(geometry);
    geometry.History().Clear();
    EXPECT_EQ(fine.Level(), nullptr);
    EXPECT_EQ(coarse.Level(), geometry.Level(0));
}

TEST(LevelHierarchy, LowerLevelsGetTheShapeVertexByVertex) {
    LevelGeometry geometry(SteppedBox());
    for (int i = 0; i < 3; ++i) geometry.Subdivide();
    geometry.BindLevel(2);
    Roughen(*geometry.Bound(), 0.2f, 1);
    const std::vector<Vector> shape = PositionsOf(*geometry.Bound());
    geometry.History().Push(ApplyToBaseAsStep(geometry));
    for (uint32_t level = 0; level < 3; ++level) {
        const LevelMesh& mesh = *geometry.Level(level);
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v)
            EXPECT_TRUE(SameBits(mesh.Position(v), shape[v])) << level << ' ' << v;
    }
    // The lower levels now agree with level 2, so switching down propagates nothing. Level 3 has
    // not received the roughening yet.
    EXPECT_TRUE(geometry.BindLevel(0).empty());
    EXPECT_EQ(geometry.BindLevel(3).size(), 1u);
    geometry.BindLevel(2);
    EXPECT_EQ(PositionsOf(*geometry.Bound()), shape);
    geometry.History().Undo(geometry);
    EXPECT_EQ(PositionsOf(*geometry.Bound()), shape);
}

TEST(LevelHierarchy, ApplyingIsUndoneBitExactly) {
    LevelGeometry geometry(Icosahedron());
    geometry.Subdivide();
    geometry.Subdivide();
    Roughen(*geometry.Bound(), 0.1f, 2);
    const std::string before = StateOfAll(geometry);
    geometry.History().Push(ApplyToBaseAsStep(geometry));
    const std::string after = StateOfAll(geometry);
    geometry.History().Undo(geometry);
    EXPECT_TRUE(StateOfAll(geometry) == before);
    geometry.History().Redo(geometry);
    EXPECT_TRUE(StateOfAll(geometry) == after);
}

TEST(LevelHierarchy, MirrorUsesTheRemainingFaces) {
    for (const PolygonMesh& mesh : {Cube(), GridMesh(4, 2), Icosahedron()}) {
        SCOPED_TRACE(mesh.name);
        LevelGeometry geometry(mesh);
        geometry.Subdivide();
        geometry.Subdivide();
        ASSERT_TRUE(geometry.FindMirror());
        const auto answers = [&geometry] {
            std::vector<uint32_t> list;
            LevelMesh& level = *geometry.Level(geometry.LevelCount() - 1);
            for (uint32_t face = 0; face < level.faceCount; ++face) {
                for (uint32_t k = 0; k < 4; ++k) {
                    uint32_t otherFace = openBorder;
                    uint32_t otherCorner = openBorder;
                    list.push_back(static_cast<uint32_t>(
                        level.MirrorVertex(face, k, &otherFace, &otherCorner)));
                    list.push_back(otherFace * 4 + otherCorner);
                }
            }
            return list;
        };
        const auto before = answers();
        geometry.BindLevel(1);
        geometry.History().Push(DeleteLevelsAsStep(geometry, true));
        ASSERT_NE(geometry.Mirror(), nullptr);
        EXPECT_EQ(answers(), before);
        geometry.History().Push(UnsubdivideAsStep(geometry));
        ASSERT_NE(geometry.Mirror(), nullptr);
        EXPECT_EQ(answers(), before) << "the numbering of a refinement is kept";
        geometry.History().Undo(geometry);
        geometry.History().Undo(geometry);
        EXPECT_EQ(answers(), before);
    }
}

/// Whether the mirror of the geometry maps the faces of its level 0 onto each other.
bool HasMirrorOfBase(const LevelGeometry& geometry) {
    return geometry.Mirror() != nullptr &&
           TopologicalMirror::FromImages(*geometry.Level(0), geometry.Mirror()->Images()) !=
               nullptr;
}

TEST(LevelHierarchy, MirrorFoundAfterAStepFitsTheBaseThatUndoRestores) {
    for (const PolygonMesh& mesh : {Cube(), GridMesh(4, 2), Icosahedron()}) {
        SCOPED_TRACE(mesh.name);
        LevelGeometry geometry(mesh);
        UndoHistory& history = geometry.History();
        geometry.Subdivide();
        geometry.Subdivide();
        geometry.BindLevel(1);
        const auto findUndoAndRedo = [&] {
            ASSERT_TRUE(geometry.FindMirror());
            for (int i = 0; i < 2; ++i) {
                ASSERT_TRUE(history.Undo(geometry));
                EXPECT_TRUE(HasMirrorOfBase(geometry));
                ASSERT_TRUE(history.Redo(geometry));
                EXPECT_TRUE(HasMirrorOfBase(geometry));
            }
        };
        history.Push(DeleteLevelsAsStep(geometry, true));
        findUndoAndRedo();
        geometry.ClearMirror();
        history.Push(UnsubdivideAsStep(geometry));
        findUndoAndRedo();
    }
}

/// Runs one random operation.
void DoSomething(LevelGeometry& geometry, std::mt19937& random) {
    UndoHistory& history = geometry.History();
    const auto push = [&history](std::unique_ptr<UndoStep> step) {
        if (step != nullptr) history.Push(std::move(step));
    };
    switch (random() % 9) {
        case 0:
            if (geometry.Bound()->faceCount < 2000 && geometry.LevelCount() < 5)
                push(SubdivideAsStep(geometry));
            break;
        case 1:
            if (random() % 3 == 0) push(DeleteLevelsAsStep(geometry, random() % 2 == 0));
            break;
        case 2:
            try {
                push(UnsubdivideAsStep(geometry));
            } catch (const std::exception&) {
                return;
            }
            break;
        case 3:
            if (random() % 2 == 0) push(ApplyToBaseAsStep(geometry));
            break;
        case 4:
        case 5: {
            const auto level = static_cast<uint32_t>(random() % geometry.LevelCount());
            if (level != geometry.BoundIndex()) push(BindLevelAsStep(geometry, level));
            break;
        }
        case 6:
            // Changing the mirror is not an undo step, so the mirror may differ between a step and
            // its undo.
            if (geometry.Mirror() == nullptr)
                geometry.FindMirror();
            else
                geometry.ClearMirror();
            break;
        default:
            RandomStroke(*geometry.Bound(), random, 6);
    }
}

TEST(LevelHierarchy, AnySequenceOfStepsIsUndoneAndRedoneBitExactlyOnEveryLevel) {
    for (const ZooMesh& zoo : AllMeshes()) {
        for (unsigned seed = 0; seed < 6; ++seed) {
            SCOPED_TRACE(zoo.name + " " + std::to_string(seed));
            std::mt19937 random(seed);
            LevelGeometry geometry(zoo.mesh);
            UndoHistory& history = geometry.History();
            geometry.Subdivide();
            std::vector<std::string> states = {StateOfAll(geometry)};
            while (history.StepCount() < 16) {
                const std::size_t steps = history.StepCount();
                DoSomething(geometry, random);
                if (history.StepCount() > steps) states.push_back(StateOfAll(geometry));
            }
            for (const std::size_t depth : {std::size_t{1}, std::size_t{5}, states.size() - 1}) {
                for (std::size_t i = 1; i <= depth; ++i) {
                    ASSERT_TRUE(history.Undo(geometry));
                    ASSERT_TRUE(StateOfAll(geometry) == states[states.size() - 1 - i])
                        << depth << ' ' << i << ' ' << history.Label(history.Position());
                    ASSERT_TRUE(geometry.Mirror() == nullptr || HasMirrorOfBase(geometry));
                }
                for (std::size_t i = depth; i-- > 0;) {
                    ASSERT_TRUE(history.Redo(geometry));
                    ASSERT_TRUE(StateOfAll(geometry) == states[states.size() - 1 - i])
                        << depth << ' ' << i << ' ' << history.Label(history.Position() - 1);
                    ASSERT_TRUE(geometry.Mirror() == nullptr || HasMirrorOfBase(geometry));
                }
            }
        }
    }
}

}  // namespace
}  // namespace trovik::test
