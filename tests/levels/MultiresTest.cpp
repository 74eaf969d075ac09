// SPDX-License-Identifier: Apache-2.0

/// \file Tests that detail rotates with the surface, and that fine changes are propagated to the
/// coarser levels.
#include "tests/levels/GeometryState.h"
#include "tests/levels/RotatedPoints.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

/// Folds the part beyond x = 0.3 up by 90 degrees.
Vector Folded(const Vector& p) {
    const float crease = 0.3f;
    if (p.x <= crease) return p;
    return {crease - p.z, p.y, p.x - crease};
}

/// The unit vertex normals of a level whose vertices are at `positions`.
std::vector<Vector> NormalsOf(const LevelMesh& level, const std::vector<Vector>& positions) {
    std::vector<Vector> normals(level.VertexCount());
    for (uint32_t face = 0; face < level.faceCount; ++face) {
        const uint32_t* v = level.faceVertexIndices.array + face * 4;
        const Vector normal =
            (positions[v[2]] - positions[v[0]]) & (positions[v[3]] - positions[v[1]]);
        for (int k = 0; k < 4; ++k) normals[v[k]] += normal;
    }
    for (Vector& normal : normals) normal.Normalize();
    return normals;
}

struct Details {
    std::vector<Vector> details;
    std::vector<Vector> normals;
};

Details DetailsOf(const LevelGeometry& geometry) {
    const uint32_t top = geometry.LevelCount() - 1;
    const std::vector<Vector> smooth = geometry.RefinedPositions(top - 1);
    Details result;
    result.normals = NormalsOf(*geometry.Level(top), smooth);
    for (uint32_t v = 0; v < smooth.size(); ++v)
        result.details.push_back(geometry.Level(top)->Position(v) - smooth[v]);
    return result;
}

TEST(Multires, WithoutDetailAFineLevelIsExactlyTheRefinement) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        LevelGeometry geometry(zoo.mesh);
        geometry.Subdivide();
        geometry.Subdivide();
        geometry.BindLevel(0);
        Roughen(*geometry.Level(0), 0.3f, 1);
        EXPECT_EQ(geometry.BindLevel(2).size(), 2u);
        for (uint32_t level = 0; level < 2; ++level) {
            const std::vector<Vector> refined = geometry.RefinedPositions(level);
            for (uint32_t v = 0; v < refined.size(); ++v)
                EXPECT_TRUE(SameBits(refined[v], geometry.Level(level + 1)->Position(v))) << v;
        }
    }
}

TEST(Multires, DetailRotatesRigidlyWithTheSurface) {
    for (const ZooMesh& zoo : AllMeshes()) {
        for (const float angle : {0.4f, quarter, 3.1f, 3.14159265f}) {
            SCOPED_TRACE(zoo.name + " by " + std::to_string(angle));
            LevelGeometry geometry(zoo.mesh);
            geometry.Subdivide();
            geometry.Subdivide();
            Roughen(*geometry.Bound(), 0.05f, 2);
            const std::vector<Vector> before = PositionsOf(*geometry.Bound());
            geometry.BindLevel(0);
            Deform(*geometry.Bound(), [angle](const Vector& p) {
                const Vector turned = RotatedAboutZ(p, angle);
                // The mesh is also rotated about x, so that flat meshes leave their plane, and
                // translated.
                const Vector q = RotatedAboutZ({turned.y, turned.z, turned.x}, angle);
                return q + Vector(1.0f, -2.0f, 0.5f);
            });
            geometry.BindLevel(2);
            for (uint32_t v = 0; v < before.size(); ++v) {
                const Vector turned = RotatedAboutZ(before[v], angle);
                const Vector expected = RotatedAboutZ({turned.y, turned.z, turned.x}, angle) +
                                        Vector(1.0f, -2.0f, 0.5f);
                EXPECT_LT((geometry.Bound()->Position(v) - expected).Length(), 1e-5f) << v;
            }
        }
    }
}

// The length of the detail is preserved to within 1e-5 of the mesh's size, and its component along
// the normal to within 1e-4.
TEST(Multires, DetailKeepsLengthAndHeightOnFoldedOrCrumpledSurfaces) {
    for (const ZooMesh& zoo : AllMeshes()) {
        for (const bool fold : {true, false}) {
            SCOPED_TRACE(zoo.name + (fold ? " folded" : " crumpled"));
            LevelGeometry geometry(zoo.mesh);
            for (int i = 0; i < 3; ++i) geometry.Subdivide();
            Roughen(*geometry.Bound(), 0.04f, 3);
            geometry.BindLevel(0);
            geometry.BindLevel(3);
            const Details before = DetailsOf(geometry);
            geometry.BindLevel(0);
            if (fold)
                Deform(*geometry.Bound(), Folded);
            else
                Roughen(*geometry.Bound(), 0.4f, 4);
            geometry.BindLevel(3);
            const Details after = DetailsOf(geometry);
            std::size_t compared = 0;
            for (std::size_t v = 0; v < before.details.size(); ++v) {
                ASSERT_NEAR(after.details[v].Length(), before.details[v].Length(), 1e-5f) << v;
                if (before.normals[v] == Vector() || after.normals[v] == Vector()) continue;
                ++compared;
                EXPECT_NEAR(after.details[v] | after.normals[v],
                            before.details[v] | before.normals[v],
                            1e-4f)
                    << v;
            }
            EXPECT_GT(compared, before.details.size() / 2);
        }
    }
}

TEST(Multires, GoingDownAndUpWithoutAnEditChangesNoBit) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        LevelGeometry geometry(zoo.mesh);
        for (int i = 0; i < 3; ++i) geometry.Subdivide();
        Roughen(*geometry.Bound(), 0.05f, 5);
        const std::vector<Vector> fine = PositionsOf(*geometry.Bound());
        EXPECT_EQ(geometry.BindLevel(0).size(), 3u);
        std::vector<std::vector<Vector>> all;
        for (uint32_t i = 0; i < 4; ++i) all.push_back(PositionsOf(*geometry.Level(i)));
        for (const uint32_t level : {3u, 1u, 2u, 0u, 3u})
            EXPECT_TRUE(geometry.BindLevel(level).empty());
        for (uint32_t i = 0; i < 4; ++i)
            for (uint32_t v = 0; v < all[i].size(); ++v)
                EXPECT_TRUE(SameBits(geometry.Level(i)->Position(v), all[i][v])) << i << ' ' << v;
        for (uint32_t v = 0; v < fine.size(); ++v) EXPECT_TRUE(SameBits(all[3][v], fine[v])) << v;
    }
}

TEST(Multires, FineTranslationMovesTheCoarserLevelsAsAWhole) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        LevelGeometry geometry(zoo.mesh);
        geometry.Subdivide();
        geometry.Subdivide();
        const std::vector<Vector> before = PositionsOf(*geometry.Level(0));
        const Vector move(0.5f, -0.25f, 1.0f);
        Deform(*geometry.Bound(), [&move](const Vector& p) { return p + move; });
        geometry.BindLevel(0);
        for (uint32_t v = 0; v < before.size(); ++v)
            EXPECT_LT((geometry.Bound()->Position(v) - before[v] - move).Length(), 2e-6f) << v;
    }
}

TEST(Multires, NoCoarseVertexMovesFartherThanTheFineOnes) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        LevelGeometry geometry(zoo.mesh);
        geometry.Subdivide();
        const std::vector<Vector> coarse = PositionsOf(*geometry.Level(0));
        const std::vector<Vector> fine = PositionsOf(*geometry.Bound());
        Roughen(*geometry.Bound(), 0.5f, 6);
        float farthest = 0.0f;
        for (uint32_t v = 0; v < fine.size(); ++v)
            farthest = std::max(farthest, (geometry.Bound()->Position(v) - fine[v]).Length());
        geometry.BindLevel(0);
        float moved = 0.0f;
        for (uint32_t v = 0; v < coarse.size(); ++v)
            moved = std::max(moved, (geometry.Bound()->Position(v) - coarse[v]).Length());
        EXPECT_LE(moved, farthest * 1.0001f);
        EXPECT_GT(moved, 0.0f);
    }
}

TEST(Multires, InnerVertexMovesByItsWeightOfASingleFineMove) {
    LevelGeometry geometry(GridMesh(4, 4));
    geometry.Subdivide();
    LevelMesh& fine = *geometry.Bound();
    fine.SetPosition(12, fine.Position(12) + Vector(0, 0, 1));
    geometry.BindLevel(0);
    EXPECT_EQ(geometry.Bound()->Position(12), Vector(2, 2, 0.25f))
        << "the copy of the moved vertex";
    EXPECT_EQ(geometry.Bound()->Position(13), Vector(3, 2, 0));
    geometry.BindLevel(1);
    // A border corner moves as far as its fine vertex; any other border vertex moves half as far.
    fine.SetPosition(0, {0, 0, 1});
    fine.SetPosition(2, fine.Position(2) + Vector(0, 0, 1));
    geometry.BindLevel(0);
    EXPECT_EQ(geometry.Bound()->Position(0), Vector(0, 0, 1));
    EXPECT_EQ(geometry.Bound()->Position(2), Vector(2, 0, 0.5f));
    EXPECT_EQ(geometry.Bound()->Position(1), Vector(1, 0, 0));
}

struct Work {
    CarryCounts counts;
    std::size_t moved;
};

/// Edits a corner on a rough grid of n x n quads; all vertices out of reach must stay
/// bit-identical.
Work EditOneVertex(unsigned n, bool fine) {
    LevelGeometry geometry(GridMesh(n, n));
    geometry.Subdivide();
    geometry.Subdivide();
    Roughen(*geometry.Bound(), 0.1f, 7);
    geometry.BindLevel(0);
    geometry.BindLevel(fine ? 2 : 0);
    const CarryCounts before = geometry.CarryWork();
    const uint32_t from = geometry.BoundIndex();
    const std::vector<Vector> fineBefore = PositionsOf(*geometry.Level(2));
    const std::vector<Vector> coarseBefore = PositionsOf(*geometry.Level(0));
    LevelMesh& level = *geometry.Bound();
    level.SetPosition(0, level.Position(0) + Vector(0.1f, 0.2f, 0.5f));
    geometry.BindLevel(from == 0 ? 2 : 0);
    std::size_t moved = 0;
    const LevelMesh& other = *geometry.Bound();
    const std::vector<Vector>& otherBefore = fine ? coarseBefore : fineBefore;
    for (uint32_t v = 0; v < other.VertexCount(); ++v) {
        if (SameBits(other.Position(v), otherBefore[v])) continue;
        ++moved;
        EXPECT_LT(std::max(otherBefore[v].x, otherBefore[v].y), 4.0f) << v;
    }
    const CarryCounts now = geometry.CarryWork();
    return {{now.refined - before.refined, now.turned - before.turned, now.fitted - before.fitted},
            moved};
}

TEST(Multires, CostFollowsTheTouchedVertices) {
    for (const bool fine : {false, true}) {
        const Work small = EditOneVertex(8, fine);
        const Work large = EditOneVertex(32, fine);
        EXPECT_NEAR(static_cast<double>(small.moved), static_cast<double>(large.moved), 3.0);
        EXPECT_EQ(small.counts.refined, large.counts.refined);
        EXPECT_EQ(small.counts.turned, large.counts.turned);
        EXPECT_EQ(small.counts.fitted, large.counts.fitted);
        EXPECT_GT(large.moved, 0u);
        EXPECT_LT(large.counts.refined, 300u);
        EXPECT_EQ(large.counts.fitted > 0, fine);
        EXPECT_LT(large.counts.fitted, 20u);
    }
}

/// On a rough grid of 200 x 200 quads, moves the base vertices whose x and y are at most `side`,
/// and carries the change to level 1.
std::vector<CarriedLevel> CarrySquare(LevelGeometry& geometry, float side) {
    geometry.Subdivide();
    Roughen(*geometry.Bound(), 0.1f, 8);
    geometry.Bound()->ComputeNormals();
    geometry.BindLevel(0);
    LevelMesh& base = *geometry.Bound();
    for (uint32_t v = 0; v < base.VertexCount(); ++v) {
        const Vector p = base.Position(v);
        if (std::max(p.x, p.y) > side) continue;
        base.SetPosition(v, p + Vector(0, 0, std::sin(p.x * 0.5f) * std::cos(p.y * 0.3f)));
    }
    return geometry.BindLevel(1);
}

TEST(Multires, LargeChangesAreCarriedInRunsToTheSameBits) {
    // The whole grid has many runs of faces, the corner only one.
    const unsigned n = 200;
    LevelGeometry whole(GridMesh(n, n));
    LevelGeometry corner(GridMesh(n, n));
    CarrySquare(whole, n);
    CarrySquare(corner, 40.0f);
    std::size_t compared = 0;
    for (uint32_t v = 0; v < whole.Bound()->VertexCount(); ++v) {
        if (std::max(corner.Bound()->Position(v).x, corner.Bound()->Position(v).y) > 36.0f)
            continue;
        ++compared;
        EXPECT_TRUE(SameBits(whole.Bound()->Position(v), corner.Bound()->Position(v))) << v;
        EXPECT_TRUE(
            SameBits(whole.Bound()->vertexNormals.array[v], corner.Bound()->vertexNormals.array[v]))
            << v;
    }
    EXPECT_GT(compared, 5000u);
}

TEST(Multires, RunsUpdateEachVertexOnceAndAllNormals) {
    const unsigned n = 200;
    for (const float side : {40.0f, 150.0f, 200.0f}) {
        LevelGeometry geometry(GridMesh(n, n));
        const std::vector<CarriedLevel> carried = CarrySquare(geometry, side);
        ASSERT_EQ(carried.size(), 1u);
        for (std::vector<uint32_t> list : {carried[0].vertices, carried[0].normalVertices}) {
            EXPECT_FALSE(list.empty());
            std::sort(list.begin(), list.end());
            EXPECT_EQ(std::adjacent_find(list.begin(), list.end()), list.end());
        }
        LevelMesh& level = *geometry.Bound();
        const std::vector<PackedNormal> normals(level.vertexNormals.array,
                                                level.vertexNormals.array + level.VertexCount());
        level.ComputeNormals();
        for (uint32_t v = 0; v < level.VertexCount(); ++v)
            EXPECT_TRUE(SameBits(normals[v], level.vertexNormals.array[v])) << v;
    }
}

TEST(Multires, CollapsedAndFlippedSurfacesStayFinite) {
    for (const ZooMesh& zoo : AllMeshes()) {
        for (const float z : {0.0f, -1.0f, 1e-30f, 1e18f}) {
            SCOPED_TRACE(zoo.name + " scaled by " + std::to_string(z));
            LevelGeometry geometry(zoo.mesh);
            geometry.Subdivide();
            geometry.Subdivide();
            Roughen(*geometry.Bound(), 0.05f, 9);
            geometry.BindLevel(0);
            Deform(*geometry.Bound(),
                   [z](const Vector& p) { return z == -1.0f ? Vector(p.x, p.y, -p.z) : p * z; });
            geometry.BindLevel(2);
            const Details after = DetailsOf(geometry);
            for (std::size_t v = 0; v < after.details.size(); ++v) {
                ASSERT_TRUE(std::isfinite(after.details[v].Length())) << v;
                if (z == 1e18f) continue;
                EXPECT_LT(after.details[v].Length(), 1.0f) << v;
            }
        }
    }
}

TEST(Multires, PartialNormalsEqualThoseOfTheWholeLevel) {
    LevelGeometry geometry(SteppedBox());
    geometry.Subdivide();
    geometry.Subdivide();
    LevelMesh& fine = *geometry.Level(2);
    geometry.BindLevel(0);
    geometry.Bound()->SetPosition(3, {2, 2, 0});
    geometry.BindLevel(2);
    const std::vector<PackedNormal> carried(fine.vertexNormals.array,
                                            fine.vertexNormals.array + fine.VertexCount());
    fine.ComputeNormals();
    for (uint32_t v = 0; v < fine.VertexCount(); ++v)
        EXPECT_TRUE(SameBits(carried[v], fine.vertexNormals.array[v])) << v;
}

}  // namespace
}  // namespace trovik::test
