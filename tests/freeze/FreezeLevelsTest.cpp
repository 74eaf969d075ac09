// SPDX-License-Identifier: Apache-2.0

/// \file Tests that mask weights are propagated between levels when another level is bound.
#include "tests/freeze/FreezeGrid.h"
#include "tests/levels/GeometryState.h"

#include <gtest/gtest.h>

#include <map>

namespace trovik::test {
namespace {

/// Masks the bound level with the values of `amountAt`, as one undo step.
template <typename AmountAt>
void Paint(LevelGeometry& geometry, AmountAt amountAt) {
    LevelMesh& level = *geometry.Bound();
    const auto before = FreezeAmounts(level);
    for (uint32_t v = 0; v < level.VertexCount(); ++v)
        level.SetFreeze(v, static_cast<uint8_t>(amountAt(v)));
    if (auto step = MakeFreezeStep(level, before)) geometry.History().Push(std::move(step));
}

void Bind(LevelGeometry& geometry, uint32_t level) {
    geometry.History().Push(BindLevelAsStep(geometry, level));
}

std::vector<std::vector<uint8_t>> AllAmounts(const LevelGeometry& geometry) {
    std::vector<std::vector<uint8_t>> all;
    for (uint32_t i = 0; i < geometry.LevelCount(); ++i)
        all.push_back(FreezeAmounts(*geometry.Level(i)));
    return all;
}

TEST(FreezeLevels, UpwardsNewPointsGetRoundedMeans) {
    LevelGeometry geometry(SingleQuad());
    geometry.Subdivide();
    geometry.BindLevel(0);
    const int given[] = {0, 10, 21, 127};
    for (uint32_t v = 0; v < 4; ++v) geometry.Bound()->SetFreeze(v, static_cast<uint8_t>(given[v]));
    EXPECT_EQ(geometry.Level(1)->FrozenVertexCount(), 0u) << "only when a level is bound";
    geometry.BindLevel(1);
    // The face has the vertices 0, 1, 3, 2. The amounts are those of the corners, the edge points
    // in order, and the face point: 158 / 4 = 39.5.
    EXPECT_EQ(FreezeAmounts(*geometry.Level(1)),
              (std::vector<uint8_t>{0, 10, 21, 127, 5, 69, 74, 11, 40}));
}

TEST(FreezeLevels, BindingALevelGivesTheAmountsOfASubdivision) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        LevelGeometry late(zoo.mesh);
        LevelGeometry early(zoo.mesh);
        const auto amountAt = [](uint32_t v) { return v * 41 % 128; };
        Paint(early, amountAt);
        for (int i = 0; i < 2; ++i) {
            late.Subdivide();
            early.Subdivide();
        }
        late.BindLevel(0);
        Paint(late, amountAt);
        late.BindLevel(2);
        EXPECT_EQ(AllAmounts(late), AllAmounts(early));
        EXPECT_EQ(late.Level(2)->FrozenVertexCount(), early.Level(2)->FrozenVertexCount());
        EXPECT_GT(late.Level(2)->FrozenVertexCount(), 0u);
    }
}

TEST(FreezeLevels, DownwardsAmountsAreCopiedAndUpAgainNoBitChanges) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        LevelGeometry geometry(zoo.mesh);
        geometry.Subdivide();
        geometry.Subdivide();
        Paint(geometry, [](uint32_t v) { return v * 53 % 128; });
        const auto fine = FreezeAmounts(*geometry.Level(2));
        geometry.BindLevel(0);
        for (uint32_t level = 0; level < 2; ++level)
            for (uint32_t v = 0; v < geometry.Level(level)->VertexCount(); ++v)
                ASSERT_EQ(geometry.Level(level)->Freeze(v), fine[v]) << level;
        geometry.BindLevel(1);
        geometry.BindLevel(2);
        EXPECT_EQ(FreezeAmounts(*geometry.Level(2)), fine);
        geometry.BindLevel(0);
        geometry.BindLevel(2);
        EXPECT_EQ(FreezeAmounts(*geometry.Level(2)), fine);
    }
}

TEST(FreezeLevels, OnlyVerticesAtAChangeFollowIt) {
    FreezeGrid grid(4);
    LevelGeometry& geometry = grid.geometry;
    geometry.Subdivide();
    Paint(geometry, [](uint32_t v) { return 1 + v * 17 % 127; });
    std::map<std::pair<float, float>, int> before;
    for (uint32_t v = 0; v < geometry.Level(1)->VertexCount(); ++v) {
        const Vector p = geometry.Level(1)->Position(v);
        before[{p.x, p.y}] = geometry.Level(1)->Freeze(v);
    }
    geometry.BindLevel(0);
    const auto coarse = FreezeAmounts(grid.Level());
    const uint32_t changed = grid.At(2, 2);
    ASSERT_NE(coarse[changed], 127);
    Paint(geometry, [&](uint32_t v) { return v == changed ? 127 : coarse[v]; });
    geometry.BindLevel(1);
    const auto amountOf = [&](int x, int y) {
        return static_cast<int>(grid.Level().Freeze(grid.At(x, y)));
    };
    for (uint32_t v = 0; v < geometry.Level(1)->VertexCount(); ++v) {
        const Vector p = geometry.Level(1)->Position(v);
        const float x = std::abs(p.x - 2.0f);
        const float y = std::abs(p.y - 2.0f);
        // In a flat grid, inner edge points and face points are midpoints.
        const bool isAround = x < 0.6f && y < 0.6f;
        if (!isAround) {
            EXPECT_EQ(geometry.Level(1)->Freeze(v), (before[{p.x, p.y}])) << p.x << ", " << p.y;
        } else if (x == 0.0f && y == 0.0f) {
            EXPECT_EQ(geometry.Level(1)->Freeze(v), 127);
        } else if (p.x == 2.5f && y == 0.0f) {
            EXPECT_EQ(geometry.Level(1)->Freeze(v), (127 + amountOf(3, 2) + 1) / 2);
        } else if (p.x == 1.5f && p.y == 1.5f) {
            const int sum = 127 + amountOf(1, 2) + amountOf(2, 1) + amountOf(1, 1);
            EXPECT_EQ(geometry.Level(1)->Freeze(v), (sum + 2) / 4);
        }
    }
}

TEST(FreezeLevels, ChangeOnAMiddleLevelIsCarriedUpAndDown) {
    LevelGeometry geometry(Cube());
    for (int i = 0; i < 3; ++i) geometry.Subdivide();
    geometry.BindLevel(1);
    Paint(geometry, [](uint32_t v) { return v == 3 ? 90 : v == 20 ? 60 : 0; });
    geometry.BindLevel(3);
    EXPECT_EQ(geometry.Level(3)->Freeze(3), 90);
    EXPECT_EQ(geometry.Level(3)->Freeze(20), 60);
    EXPECT_EQ(geometry.Level(0)->Freeze(3), 0) << "not propagated until the level is bound";
    Paint(geometry, [&](uint32_t v) { return v == 3 ? 70 : geometry.Bound()->Freeze(v); });
    geometry.BindLevel(0);
    EXPECT_EQ(geometry.Level(0)->Freeze(3), 70);
    EXPECT_EQ(geometry.Level(1)->Freeze(20), 60);
}

TEST(FreezeLevels, UndoRestoresEveryBitOfEveryLevel) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        LevelGeometry geometry(zoo.mesh);
        UndoHistory& history = geometry.History();
        std::vector<std::string> states{StateOfAll(geometry)};
        const auto done = [&] { states.push_back(StateOfAll(geometry)); };
        const auto paint = [&](uint32_t factor) {
            Paint(geometry, [factor](uint32_t v) { return v * factor % 128; });
            done();
        };
        const auto bind = [&](uint32_t level) {
            Bind(geometry, level);
            done();
        };
        paint(31);
        for (int i = 0; i < 3; ++i) {
            history.Push(SubdivideAsStep(geometry));
            done();
        }
        paint(7);
        bind(1);
        paint(19);
        bind(2);
        history.Push(DeleteLevelsAsStep(geometry, false));
        done();
        bind(0);
        paint(43);
        bind(1);
        history.Push(DeleteLevelsAsStep(geometry, true));
        done();
        history.Push(UnsubdivideAsStep(geometry));
        done();
        bind(0);
        ASSERT_EQ(history.Position(), states.size() - 1);
        for (std::size_t i = states.size(); i-- > 1;) {
            history.Undo(geometry);
            ASSERT_EQ(StateOfAll(geometry), states[i - 1]) << "back at " << i - 1;
        }
        for (std::size_t i = 1; i < states.size(); ++i) {
            history.Redo(geometry);
            ASSERT_EQ(StateOfAll(geometry), states[i]) << "forth at " << i;
        }
    }
}

TEST(FreezeLevels, RebuiltBaseTakesTheAmountsOfItsVertices) {
    LevelGeometry made(Cube());
    made.Subdivide();
    PolygonMesh fine = made.ToPolygons(false);
    LevelGeometry geometry(fine);
    LevelMesh& old = *geometry.Bound();
    for (uint32_t v = 0; v < old.VertexCount(); ++v)
        old.SetFreeze(v, static_cast<uint8_t>(v * 3 + 1));
    geometry.History().Push(UnsubdivideAsStep(geometry));
    ASSERT_EQ(geometry.Level(0)->VertexCount(), 8u);
    for (uint32_t v = 0; v < 8; ++v) {
        EXPECT_EQ(geometry.Level(0)->Freeze(v), geometry.Level(1)->Freeze(v));
        EXPECT_GT(geometry.Level(0)->Freeze(v), 0);
    }
    const auto amounts = FreezeAmounts(*geometry.Level(1));
    geometry.BindLevel(0);
    geometry.BindLevel(1);
    EXPECT_EQ(FreezeAmounts(*geometry.Level(1)), amounts);
}

}  // namespace
}  // namespace trovik::test
