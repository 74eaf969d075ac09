// SPDX-License-Identifier: Apache-2.0
#include "tests/meshes/MeshZoo.h"
#include "tests/picking/BruteForce.h"
#include "tests/visibility/VisibilityState.h"

namespace trovik::test {
namespace {

void ExpectLikeBruteForce(const LevelMesh& level, const PatchTree& tree, uint32_t seed) {
    AxisAlignedBoundingBox box;
    for (uint32_t v = 0; v < level.VertexCount(); ++v) box.Extend(level.Position(v));
    RandomPoints points(box, seed);
    const BruteForce reference(level);
    int hits = 0;
    for (int i = 0; i < 150; ++i) {
        const Ray ray = points.NextRay();
        const double expected = reference.Pick(ray);
        const auto hit = tree.Pick(ray);
        ASSERT_EQ(hit.has_value(), expected != BruteForce::none) << i;
        if (hit) {
            ++hits;
            ASSERT_FALSE(level.IsFaceHidden(hit->face));
            ASSERT_NEAR(double{hit->t}, expected, 1e-6 * (1.0 + expected)) << i;
        }
        const Vector p = points.Next();
        const auto nearest = tree.Nearest(p);
        ASSERT_EQ(nearest.has_value(), level.HiddenFaceCount() < level.faceCount);
        if (!nearest) continue;
        ASSERT_FALSE(level.IsFaceHidden(nearest->face));
        const double distance = reference.Nearest(p);
        ASSERT_NEAR(double{nearest->t}, distance, 1e-6 * (1.0 + distance)) << i;
    }
    if (level.HiddenFaceCount() * 2 < level.faceCount) {
        EXPECT_GT(hits, 3);
    }
}

TEST(HiddenPick, RaysAndNearestPointsIgnoreHiddenFaces) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        LevelGeometry geometry(zoo.mesh);
        for (uint32_t level = 0; level < 4; ++level) {
            if (level > 0) geometry.Subdivide();
            std::mt19937 random(60 + level);
            Change(geometry, VisibilityChange::ShowAll);
            PatchTree refitted(geometry.Bound());
            for (const VisibilityChange change :
                 {VisibilityChange::Hide, VisibilityChange::Invert, VisibilityChange::Show}) {
                auto step = ChangeVisibilityAsStep(
                    geometry, change, RandomChoice(*geometry.Bound(), random, 40));
                if (step == nullptr) continue;
                ExpectLikeBruteForce(*geometry.Bound(), refitted, 5 + level);
                ExpectLikeBruteForce(*geometry.Bound(), PatchTree(geometry.Bound()), 6 + level);
                if (testing::Test::HasFatalFailure()) return;
            }
        }
    }
}

TEST(HiddenPick, NothingIsHitWhileEverythingIsHidden) {
    LevelGeometry geometry(Torus(12, 8));
    geometry.Subdivide();
    geometry.Subdivide();
    Change(geometry, VisibilityChange::Invert);
    // The tree is built while everything is hidden.
    PatchTree tree(geometry.Bound());
    EXPECT_TRUE(tree.Bounds().IsEmpty());
    ExpectLikeBruteForce(*geometry.Bound(), tree, 1);
    auto step = ChangeVisibilityAsStep(geometry, VisibilityChange::ShowAll);
    EXPECT_FALSE(tree.Bounds().IsEmpty());
    ExpectLikeBruteForce(*geometry.Bound(), tree, 2);
}

TEST(HiddenPick, CostOfARefitFollowsTheHiddenFaces) {
    LevelGeometry geometry(GridMesh(32, 32));
    for (int i = 0; i < 3; ++i) geometry.Subdivide();
    PatchTree tree(geometry.Bound());
    FaceChoice chosen(geometry.Bound()->faceCount);
    std::fill_n(chosen.begin() + 640, 64, uint8_t{1});
    const uint64_t before = tree.BoxesRefitted();
    const auto step = ChangeVisibilityAsStep(geometry, VisibilityChange::Hide, chosen);
    EXPECT_LT(tree.BoxesRefitted() - before, 50u);
    EXPECT_GT(tree.BoxesRefitted(), before);
}

}  // namespace
}  // namespace trovik::test
