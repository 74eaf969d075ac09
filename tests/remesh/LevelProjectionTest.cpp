// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/LevelProjection.h"
#include "tests/remesh/EditedMeshes.h"
#include "tests/remesh/ReplacedSurface.h"

namespace trovik::test {
namespace {

PolygonMesh Sphere(float radius) {
    PolygonMesh mesh;
    Append(mesh, SphereQuads(5), radius, {});
    return mesh;
}

TEST(LevelProjection, MovesVerticesWithinReachOnly) {
    LevelGeometry unit(SphereQuads(6));
    SourceSurface surface(unit);
    for (const float radius : {0.95f, 1.04f}) {
        LevelGeometry geometry(Sphere(radius));
        ProjectLevel(*geometry.Bound(), surface, 0.02f, nullptr);
        for (const Vector& p : PositionsOf(*geometry.Bound()))
            EXPECT_NEAR(p.Length(), radius, 1e-6f);
        ProjectLevel(*geometry.Bound(), surface, 0.1f, nullptr);
        for (const Vector& p : PositionsOf(*geometry.Bound())) EXPECT_NEAR(p.Length(), 1.0f, 1e-3f);
    }
}

TEST(LevelProjection, IgnoresSurfacesThatFaceAway) {
    PolygonMesh inverted = SphereQuads(6);
    for (std::size_t face = 0; face < inverted.faceSizes.size(); ++face) Flip(inverted, face);
    LevelGeometry unit(inverted);
    SourceSurface surface(unit);
    LevelGeometry geometry(Sphere(0.95f));
    const std::vector<Vector> before = PositionsOf(*geometry.Bound());
    ProjectLevel(*geometry.Bound(), surface, 0.1f, nullptr);
    EXPECT_EQ(PositionsOf(*geometry.Bound()), before);
}

TEST(LevelProjection, DoesNotUsePartsInsideOtherParts) {
    PolygonMesh two = SphereQuads(6);
    Append(two, SphereQuads(6), 1.0f, {1.2f, 0.0f, 0.0f});
    LevelGeometry both(two);
    SourceSurface surface(both);
    LevelGeometry geometry(Sphere(0.94f));
    const std::vector<Vector> before = PositionsOf(*geometry.Bound());
    ProjectLevel(*geometry.Bound(), surface, 0.1f, nullptr);
    const std::vector<Vector> after = PositionsOf(*geometry.Bound());
    std::size_t moved = 0;
    for (std::size_t v = 0; v < after.size(); ++v) {
        if (after[v] == before[v]) continue;
        ++moved;
        EXPECT_GT(after[v].Length(), 0.99f);
    }
    EXPECT_GT(moved, after.size() / 2);
}

}  // namespace
}  // namespace trovik::test
