// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/LevelGeometry.h"
#include "framework/strokes/TopologicalHit.h"
#include "tests/meshes/ExpectNear.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

/// A point on a face, off its centre, and `height` above it.
SurfacePoint PointOn(LevelMesh& mesh, uint32_t face, float height) {
    SurfacePoint hit(&mesh, 0, face);
    const uint32_t* at = mesh.faceVertexIndices.array + face * mesh.CornersPerFace();
    hit.position = (mesh.Position(at[0]) * 0.5f + mesh.Position(at[1]) * 0.3f) +
                   mesh.Position(at[2]) * 0.2f + hit.normal * height;
    return hit;
}

TEST(TopologicalHit, EqualsThePlaneReflectionOnASymmetricMesh) {
    LevelGeometry geometry(SphereQuads(2));
    ASSERT_TRUE(geometry.FindMirror());
    LevelMesh& mesh = *geometry.Bound();
    for (uint32_t face = 0; face < mesh.faceCount; ++face) {
        SCOPED_TRACE(face);
        const SurfacePoint hit = PointOn(mesh, face, 0.05f);
        const auto across = AcrossTopologicalMirror(hit);
        ASSERT_TRUE(across);
        EXPECT_TRUE(across->hit.mirror);
        EXPECT_EQ(&mesh, across->hit.mesh);
        ExpectNear({-hit.position.x, hit.position.y, hit.position.z}, across->hit.position, 1e-5f);
        ExpectNear({-hit.normal.x, hit.normal.y, hit.normal.z}, across->hit.normal, 1e-5f);
        // The mirrored face contains the reflected point.
        Vector normal;
        mesh.FaceNormal(&normal, across->hit.face);
        ExpectNear(across->hit.normal, normal.Normalized(), 1e-4f);
        const auto back = AcrossTopologicalMirror(across->hit);
        ASSERT_TRUE(back);
        EXPECT_EQ(face, back->hit.face);
    }
}

TEST(TopologicalHit, MapIsExactlyTheReflectionForReflectedFaces) {
    PolygonMesh grid = GridMesh(4, 2);
    for (auto& p : grid.positions) p[0] -= 2.0f;
    LevelGeometry geometry(grid);
    ASSERT_TRUE(geometry.FindMirror());
    const SurfacePoint hit = PointOn(*geometry.Bound(), 0, 0.0f);
    const auto across = AcrossTopologicalMirror(hit);
    ASSERT_TRUE(across);
    Matrix reflection;
    reflection.m[0][0] = -1.0f;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) EXPECT_EQ(reflection.m[r][c], across->pointMap.m[r][c]);
    EXPECT_EQ(Vector(-hit.position.x, hit.position.y, hit.position.z), across->hit.position);
    EXPECT_EQ(hit.normal, across->hit.normal);
}

TEST(TopologicalHit, FollowsAFaceMovedAndRotatedByAPose) {
    // Four faces in a row, the last of which is folded upright.
    PolygonMesh grid = GridMesh(4, 1);
    for (auto& p : grid.positions) {
        p[0] -= 2.0f;
        if (p[0] > 1.5f) p = {1.0f, p[1], 1.0f};
    }
    LevelGeometry geometry(grid);
    ASSERT_TRUE(geometry.FindMirror());
    LevelMesh& mesh = *geometry.Bound();
    SurfacePoint hit(&mesh, 0, 0);
    hit.position = {-1.75f, 0.5f, 0.125f};
    hit.normal = {0.0f, 0.0f, 1.0f};
    const auto across = AcrossTopologicalMirror(hit);
    ASSERT_TRUE(across);
    EXPECT_EQ(3u, across->hit.face);
    // The mirrored face is in the plane x = 1 and faces left, so a distance of 0.75 to the side
    // becomes a height of 0.75.
    ExpectNear({1.0f - 0.125f, 0.5f, 0.75f}, across->hit.position, 1e-6f);
    ExpectNear({-1.0f, 0.0f, 0.0f}, across->hit.normal, 1e-6f);
    // Points farther out on one side map to points farther up on the other.
    ExpectNear(
        {1.0f, 0.5f, 1.0f}, across->pointMap.AffineTransform({-2.0f, 0.5f, 0.0f}, 1.0f), 1e-6f);
}

TEST(TopologicalHit, IsEmptyOnAMeshWithoutAMirror) {
    LevelGeometry geometry(SphereQuads(1));
    EXPECT_FALSE(AcrossTopologicalMirror(PointOn(*geometry.Bound(), 3, 0.0f)));
}

}  // namespace
}  // namespace trovik::test
