// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/remesh/Decimation.h"
#include "tests/remesh/EditedMeshes.h"
#include "tests/remesh/ReplacedSurface.h"

#include <set>

namespace trovik::test {
namespace {

TEST(Decimation, ReachesTheNumberOfFacesOnClosedMeshes) {
    for (const ZooMesh& zoo :
         {ZooMesh{"sphere", SphereQuads(4)}, ZooMesh{"torus", Torus(40, 20)}}) {
        SCOPED_TRACE(zoo.name);
        Document document("mesh", zoo.mesh);
        for (const uint32_t faces : {700u, 200u, 50u}) {
            EXPECT_THAT(document.ReplaceSurface(Decimate({.faces = faces})).warnings,
                        testing::IsEmpty());
            const LevelMesh& level = *document.Geometry().Bound();
            EXPECT_EQ(level.CornersPerFace(), 3u);
            EXPECT_LE(level.faceCount, faces);
            EXPECT_GE(level.faceCount, faces - faces / 20);
            ExpectManifold(MeshOf(document));
            EXPECT_EQ(BorderEdgesOf(level), 0u);
        }
    }
}

TEST(Decimation, StaysWithinTheErrorInWorldUnits) {
    const PolygonMesh torus = Torus(64, 32);
    for (const float error : {0.2f, 0.05f, 0.01f}) {
        Document document("mesh", torus);
        MatrixTransform transform;
        transform.Set({4.0f, 4.0f, 4.0f}, {10.0f, 20.0f, 30.0f}, {1.0f, 2.0f, 3.0f});
        document.SetTransform(transform);
        document.ReplaceSurface(Decimate({.error = error}));
        EXPECT_LT(document.Geometry().Bound()->faceCount, 64u * 32u * 2u);
        EXPECT_LE(HausdorffDistance(document, torus) * 4.0f, error * 1.1f);
    }
}

TEST(Decimation, KeepsBordersAndMaskedAreasBitForBit) {
    Document document("mesh", GridMesh(30, 30));
    const std::vector<Vector> before = PositionsOf(*document.Geometry().Bound());
    std::vector<uint8_t> amounts;
    std::set<std::array<float, 2>> masked;
    std::set<std::array<float, 2>> border;
    for (const Vector& p : before) {
        amounts.push_back(p.x <= 8.0f ? 127 : 0);
        if (p.x <= 8.0f) masked.insert({p.x, p.y});
        if (p.x == 0.0f || p.y == 0.0f || p.x == 30.0f || p.y == 30.0f) border.insert({p.x, p.y});
    }
    document.Freeze(amounts, FreezeMode::Replace);
    const ReplacementReport report = document.ReplaceSurface(Decimate({.faces = 100}));
    EXPECT_THAT(report.warnings,
                testing::ElementsAre(testing::HasSubstr("fewer are not possible")));
    const LevelMesh& level = *document.Geometry().Bound();
    EXPECT_LT(level.faceCount, 800u);
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        const Vector p = level.Position(v);
        EXPECT_EQ(level.Freeze(v), p.x <= 8.0f ? 127 : 0);
        masked.erase({p.x, p.y});
        border.erase({p.x, p.y});
    }
    EXPECT_THAT(masked, testing::IsEmpty());
    EXPECT_THAT(border, testing::IsEmpty());
    ExpectManifold(MeshOf(document));
    document.Undo();
    document.Freeze(std::vector<uint8_t>(before.size(), 0), FreezeMode::Replace);
    document.ReplaceSurface(Decimate({.faces = 2, .keepsBorders = false}));
    EXPECT_LT(document.Geometry().Bound()->faceCount, 20u) << "a plane needs few triangles";
}

TEST(Decimation, KeepsTheSidesOfTextureSeams) {
    Document document("mesh", UnwrappedCylinder(24, 12));
    EXPECT_THAT(document.ReplaceSurface(Decimate({.faces = 250})).warnings, testing::IsEmpty());
    const SurfaceAttributes& after = document.Geometry().Attributes();
    const LevelMesh& level = *document.Geometry().Bound();
    ASSERT_EQ(after.cornerUvs.size(), level.faceCount * 3u);
    for (uint32_t face = 0; face < level.faceCount; ++face) {
        float low = 10.0f;
        float high = -10.0f;
        for (uint32_t k = 0; k < 3; ++k) {
            const std::array<float, 2> uv = after.uvs[after.cornerUvs[face * 3 + k]];
            const Vector p = level.Position(level.faceVertexIndices.array[face * 3 + k]);
            const float u = std::atan2(p.y, p.x) / 6.2831853f + 0.5f;
            EXPECT_NEAR(std::remainder(uv[0] - u, 1.0f), 0.0f, 1e-5f);
            EXPECT_EQ(uv[1], p.z);
            low = std::min(low, uv[0]);
            high = std::max(high, uv[0]);
        }
        EXPECT_LT(high - low, 0.5f) << "face " << face << " crosses the seam";
    }
}

TEST(Decimation, SymmetricInputGivesTheSameNumberOfFacesOnBothSides) {
    Document document("mesh", SphereQuads(4));
    document.ReplaceSurface(Decimate({.faces = 600}));
    const LevelMesh& level = *document.Geometry().Bound();
    int difference = 0;
    for (uint32_t face = 0; face < level.faceCount; ++face) {
        float x = 0.0f;
        for (uint32_t k = 0; k < 3; ++k)
            x += level.Position(level.faceVertexIndices.array[face * 3 + k]).x;
        difference += x > 1e-4f ? 1 : x < -1e-4f ? -1 : 0;
    }
    EXPECT_LE(std::abs(difference), 60);
}

TEST(Decimation, RefusesToRemoveEverything) {
    Document document("mesh", Pillow());
    const std::string before = SceneOf(document);
    EXPECT_THROW(document.ReplaceSurface(Decimate({.faces = 1, .keepsBorders = false})), HostError);
    EXPECT_EQ(SceneOf(document), before);
    EXPECT_EQ(document.HistoryPosition(), 0u);
}

TEST(Decimation, ReducesPartsThatLieOnEachOther) {
    PolygonMesh pair = SphereQuads(4);
    Append(pair, SphereQuads(4), 1.0f, {});
    Document document("pair", pair);
    document.ReplaceSurface(Decimate({600u}));
    const PolygonMesh result = MeshOf(document);
    EXPECT_NEAR(static_cast<double>(result.faceSizes.size()), 600.0, 10.0);
    // The vertices are at their exact positions.
    std::set<std::array<float, 3>> old(pair.positions.begin(), pair.positions.end());
    for (const auto& p : result.positions) EXPECT_EQ(old.count(p), 1u);
    ExpectManifold(result);
    EXPECT_EQ(BorderEdgesOf(*document.Geometry().Bound()), 0u);
}

}  // namespace
}  // namespace trovik::test
