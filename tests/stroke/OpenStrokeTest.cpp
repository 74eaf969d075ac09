// SPDX-License-Identifier: Apache-2.0

/// \file Tests strokes whose brush or mesh is destroyed before they end, and operations that the
/// host rejects until then.
#include "framework/errors/HostError.h"
#include "framework/multires/LevelChange.h"
#include "framework/multires/Steps.h"
#include "tests/fixture/StrokeFixture.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

/// The dab strength: much less than the radius, so that the surface stays within reach of the next
/// dab.
constexpr float step = 0.05f;

/// The error message of `action`; empty if the action succeeds.
template <class Action>
std::string RefusalOf(Action action) {
    try {
        action();
    } catch (const HostError& error) {
        return error.what();
    }
    return {};
}

/// A mesh with two strokes by its own brush. The third stroke ends on another mesh that refuses the
/// lock, so the stroke's change stays open.
class StrokeOverARefusal : public testing::Test {
protected:
    StrokeOverARefusal() {
        other.Mesh().SetLockable(false);
        states.push_back(BitsOf(a->Mesh()));
        a->Stroke(a->HitFace(0), 0.8f, step);
        states.push_back(BitsOf(a->Mesh()));
        a->Stroke(a->HitFace(8), 0.8f, step);
        states.push_back(BitsOf(a->Mesh()));
        SwiftStroke& brush = *a->brush;
        a->Begin();
        a->Dab(a->HitFace(4), 0.8f, step);
        a->Dab(other.HitFace(4), 0.8f, step);
        EXPECT_EQ(brush.mesh, nullptr);
        brush.EndStroke();
        EXPECT_EQ(brush.meshChanges.fill, 1u);
        states.push_back(BitsOf(a->Mesh()));
    }
    UndoHistory& History() { return a->geometry->History(); }
    bool Undo() { return History().Undo(*a->geometry); }
    bool Redo() { return History().Redo(*a->geometry); }

    StrokeFixture other{FlatGrid(3)};
    std::unique_ptr<StrokeFixture> a = std::make_unique<StrokeFixture>(FlatGrid(3));
    /// The states before the first stroke and after each stroke.
    std::vector<std::vector<VertexBits>> states;
};

TEST_F(StrokeOverARefusal, RefusesUndoUntilItsChangeIsClosed) {
    a->Mesh().SetName(QStringLiteral("hull"));
    EXPECT_EQ(RefusalOf([&] { Undo(); }),
              "hull: undo is refused: a stroke on level 0 has not ended");
    EXPECT_EQ(RefusalOf([&] { Redo(); }),
              "hull: redo is refused: a stroke on level 0 has not ended");
    EXPECT_EQ(BitsOf(a->Mesh()), states[3]);
    EXPECT_EQ(History().StepCount(), 2u);
    EXPECT_EQ(History().Position(), 2u);

    // The next stroke closes the change. Each stroke is undone separately, or together with the
    // stroke that closed it.
    a->Stroke(a->HitFace(2), 0.8f, step);
    const auto last = BitsOf(a->Mesh());
    EXPECT_TRUE(Undo());
    EXPECT_EQ(BitsOf(a->Mesh()), states[2]);
    EXPECT_TRUE(Undo());
    EXPECT_EQ(BitsOf(a->Mesh()), states[1]);
    EXPECT_TRUE(Redo());
    EXPECT_TRUE(Redo());
    EXPECT_EQ(BitsOf(a->Mesh()), last);
}

TEST_F(StrokeOverARefusal, RefusesToDeleteLevels) {
    a->geometry->Subdivide();
    const auto fine = BitsOf(a->Mesh());
    for (const bool lower : {false, true}) {
        a->geometry->BindLevel(lower ? 1 : 0);
        EXPECT_EQ(RefusalOf([&] { DeleteLevelsAsStep(*a->geometry, lower); }),
                  "grid: removing levels is refused: a stroke on level 0 has not ended");
        EXPECT_EQ(a->geometry->LevelCount(), 2u);
    }
    EXPECT_EQ(BitsOf(a->Mesh()), fine);
}

TEST_F(StrokeOverARefusal, IsClosedWithItsBrush) {
    a->brush.reset();
    EXPECT_TRUE(a->Mesh().Changes().empty());
    EXPECT_EQ(a->Mesh().OpenChange(), nullptr);
    EXPECT_EQ(BitsOf(a->Mesh()), states[3]);
    for (std::size_t i = 3; i-- > 0;) {
        EXPECT_TRUE(Undo());
        EXPECT_EQ(BitsOf(a->Mesh()), states[i]) << i;
    }
    EXPECT_FALSE(Undo());
}

TEST_F(StrokeOverARefusal, MayLoseItsMeshBeforeTheNextStroke) {
    const std::unique_ptr<SwiftStroke> brush = std::move(a->brush);
    a.reset();
    other.Mesh().SetLockable(true);
    const auto before = BitsOf(other.Mesh());
    other.Stroke(other.HitFace(0), 0.8f, step);
    const auto between = BitsOf(other.Mesh());
    brush->BeginStroke(&other.Mesh(), BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
    AxisAlignedBoundingBox box;
    const SurfacePoint hit = other.HitFace(4);
    brush->ApplyDab(hit, hit.position, 0.8f, 1.0f, step, box);
    ASSERT_EQ(brush->meshChanges.fill, 2u);
    EXPECT_EQ(brush->meshChanges[0].change->mesh, nullptr);
    brush->EndStroke();
    EXPECT_EQ(brush->meshChanges.fill, 0u);
    EXPECT_NE(BitsOf(other.Mesh()), between);
    // The undo step is not joined to an earlier stroke, although the destroyed mesh came first.
    EXPECT_TRUE(other.geometry->History().Undo(*other.geometry));
    EXPECT_EQ(BitsOf(other.Mesh()), between);
    EXPECT_TRUE(other.geometry->History().Undo(*other.geometry));
    EXPECT_EQ(BitsOf(other.Mesh()), before);
}

TEST_F(StrokeOverARefusal, IsUndoneAfterALaterStrokeOfAnotherBrush) {
    SwiftStroke second;
    second.SetActiveConfiguration(a->brush->ActiveConfiguration());
    second.BeginStroke(&a->Mesh(), BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
    AxisAlignedBoundingBox box;
    SurfacePoint hit = a->HitFace(4);
    second.ApplyDab(hit, hit.position, 0.8f, 1.0f, step, box);
    second.EndStroke();
    const auto last = BitsOf(a->Mesh());
    ASSERT_NE(last, states[3]);
    EXPECT_NE(RefusalOf([&] { Undo(); }), "");
    // Only now does the first brush close its change, with a stroke that moves no vertices.
    a->Begin();
    a->End();
    for (std::size_t i = 4; i-- > 0;) {
        EXPECT_TRUE(Undo());
        EXPECT_EQ(BitsOf(a->Mesh()), states[i]) << i;
    }
    while (Redo()) {
    }
    EXPECT_EQ(BitsOf(a->Mesh()), last);
}

TEST(OpenStroke, RefusesUndoOfItsMeshOnly) {
    StrokeFixture bench(FlatGrid(3));
    StrokeFixture other(FlatGrid(3));
    const auto before = BitsOf(bench.Mesh());
    bench.Stroke(bench.HitFace(0), 0.8f, step);
    other.Stroke(other.HitFace(0), 0.8f, step);
    bench.Begin();
    EXPECT_NE(RefusalOf([&] { bench.geometry->History().Undo(*bench.geometry); }), "");
    EXPECT_TRUE(other.geometry->History().Undo(*other.geometry));
    bench.End();
    EXPECT_TRUE(bench.geometry->History().Undo(*bench.geometry));
    EXPECT_EQ(BitsOf(bench.Mesh()), before);
}

TEST(OpenStroke, EndsWithItsBrush) {
    StrokeFixture a(FlatGrid(3));
    StrokeFixture b(FlatGrid(3));
    const auto beforeA = BitsOf(a.Mesh());
    const auto beforeB = BitsOf(b.Mesh());
    a.Begin();
    a.Dab(a.HitFace(4), 0.8f, step);
    a.Dab(b.HitFace(4), 0.8f, step);
    a.Dab(a.HitFace(5), 0.8f, step);
    const auto sculpted = BitsOf(a.Mesh());
    ASSERT_NE(a.Mesh().LockHolder(), nullptr);
    const uint32_t version = a.Mesh().Version();
    a.brush.reset();
    EXPECT_EQ(a.Mesh().LockHolder(), nullptr);
    EXPECT_EQ(a.Mesh().LockResources(), nullptr);
    EXPECT_EQ(a.Mesh().Version(), version + 1);
    EXPECT_EQ(a.Mesh().OpenChange(), nullptr);
    EXPECT_EQ(b.Mesh().OpenChange(), nullptr);
    EXPECT_EQ(BitsOf(a.Mesh()), sculpted);

    // Another brush may lock the mesh, and its stroke is independent.
    SwiftStroke next;
    EXPECT_TRUE(a.Mesh().WouldLock(&next));
    next.BeginStroke(&a.Mesh(), BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
    EXPECT_EQ(static_cast<Mesh*>(next.mesh), &a.Mesh());
    next.EndStroke();
    EXPECT_TRUE(a.geometry->History().Undo(*a.geometry));
    EXPECT_EQ(BitsOf(a.Mesh()), beforeA);
    EXPECT_TRUE(b.geometry->History().Undo(*b.geometry));
    EXPECT_EQ(BitsOf(b.Mesh()), beforeB);
}

TEST(OpenStroke, EndsWithTheMeshThatItIsBoundTo) {
    StrokeFixture bench(FlatGrid(3));
    auto other = std::make_unique<StrokeFixture>(FlatGrid(3));
    const auto before = BitsOf(bench.Mesh());
    bench.Begin();
    bench.Dab(other->HitFace(4), 0.8f, step);
    bench.Dab(bench.HitFace(4), 0.8f, step);
    bench.Dab(other->HitFace(4), 0.8f, step);
    ASSERT_EQ(bench.brush->meshChanges.fill, 4u);
    other.reset();
    EXPECT_FALSE(bench.brush->strokeActive);
    EXPECT_EQ(bench.brush->mesh, nullptr);
    EXPECT_EQ(bench.brush->meshChanges.fill, 0u);
    EXPECT_TRUE(bench.Mesh().Changes().empty());
    EXPECT_NE(BitsOf(bench.Mesh()), before);
    // The pending call of EndStroke then has no effect.
    bench.End();
    EXPECT_TRUE(bench.geometry->History().Undo(*bench.geometry));
    EXPECT_EQ(BitsOf(bench.Mesh()), before);
    bench.Stroke(bench.HitFace(4), 0.8f, step);
    EXPECT_NE(BitsOf(bench.Mesh()), before);
}

TEST(OpenStroke, ContinuesWhenAMeshItHasLeftIsDestroyed) {
    StrokeFixture bench(FlatGrid(3));
    auto other = std::make_unique<StrokeFixture>(FlatGrid(3));
    const auto before = BitsOf(bench.Mesh());
    bench.Begin();
    for (int visit = 0; visit < 2; ++visit) {
        bench.Dab(other->HitFace(4), 0.8f, step);
        bench.Dab(bench.HitFace(4), 0.8f, step);
    }
    // Two changes of this mesh, one of them unlinked.
    ASSERT_EQ(other->Mesh().Changes().size(), 2u);
    other.reset();
    EXPECT_TRUE(bench.brush->strokeActive);
    bench.Dab(bench.HitFace(5), 0.8f, step);
    bench.brush.reset();
    EXPECT_TRUE(bench.Mesh().Changes().empty());
    EXPECT_TRUE(bench.geometry->History().Undo(*bench.geometry));
    EXPECT_EQ(BitsOf(bench.Mesh()), before);
}

TEST(OpenStroke, LockIsAvailableToTheNextBrush) {
    StrokeFixture bench(FlatGrid(3));
    SwiftStroke next;
    bench.Begin();
    EXPECT_FALSE(bench.Mesh().Lock(&next)) << "a stroke is running";
    // Simulates a stroke that was abandoned without being ended.
    bench.brush->BeginStroke(
        &bench.Mesh(), BrushOperation::ModifierNone, BrushOperation::TriggerOther);
    bench.brush->strokeActive = false;
    EXPECT_TRUE(bench.Mesh().Lock(&next));
    bench.brush.reset();
    EXPECT_EQ(bench.Mesh().LockHolder(), static_cast<MeshUnlocker*>(&next));
    bench.Mesh().Unlock();
    EXPECT_EQ(bench.Mesh().LockHolder(), nullptr);
}

}  // namespace
}  // namespace trovik::test
