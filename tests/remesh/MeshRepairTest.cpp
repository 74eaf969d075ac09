// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/remesh/MeshRepair.h"
#include "tests/remesh/EditedMeshes.h"
#include "tests/remesh/ReplacedSurface.h"

#include <random>

namespace trovik::test {
namespace {

const LevelMesh& Repaired(Document& document, const MeshRepair& settings) {
    document.ReplaceSurface(RepairMesh(settings));
    ExpectManifold(MeshOf(document));
    return *document.Geometry().Bound();
}

TEST(MeshRepair, WeldsFacesWithSeparateVertices) {
    for (const PolygonMesh& whole : {SphereQuads(3), Icosahedron(), Torus(12, 8)}) {
        PolygonMesh mesh = whole;
        Explode(mesh);
        Document document("mesh", mesh);
        EXPECT_GT(BorderEdgesOf(*document.Geometry().Bound()), 0u);
        const LevelMesh& level = Repaired(document, {});
        EXPECT_EQ(level.VertexCount(), whole.positions.size());
        EXPECT_EQ(level.faceCount, whole.faceSizes.size());
        EXPECT_EQ(BorderEdgesOf(level), 0u);
        EXPECT_LT(HausdorffDistance(document, whole), 1e-6f);
    }
}

TEST(MeshRepair, WeldsWithinADistanceInWorldUnits) {
    PolygonMesh mesh = SphereQuads(3);
    Explode(mesh);
    std::mt19937 random(5);
    std::uniform_real_distribution<float> noise(-1e-4f, 1e-4f);
    for (auto& p : mesh.positions)
        for (float& c : p) c += noise(random);
    Document document("mesh", mesh);
    MatrixTransform transform;
    transform.Set({100.0f, 100.0f, 100.0f}, {}, {});
    document.SetTransform(transform);
    EXPECT_EQ(Repaired(document, {.weld = 0.1f}).VertexCount(), SphereQuads(3).positions.size());
    EXPECT_EQ(BorderEdgesOf(*document.Geometry().Bound()), 0u);
    document.Undo();
    EXPECT_THAT(document.ReplaceSurface(RepairMesh({.weld = 1e-4f})).warnings,
                testing::ElementsAre("there is nothing to repair"));
    EXPECT_EQ(document.HistoryPosition(), 1u) << "only the transform";
}

TEST(MeshRepair, OrientsFacesOutwards) {
    PolygonMesh mesh = SphereQuads(3);
    std::mt19937 random(2);
    for (std::size_t face = 0; face < mesh.faceSizes.size(); ++face)
        if (random() % 3 != 0) Flip(mesh, face);
    Document document("mesh", mesh);
    const LevelMesh& level = Repaired(document, {});
    EXPECT_EQ(level.VertexCount(), SphereQuads(3).positions.size());
    EXPECT_EQ(BorderEdgesOf(level), 0u);
    EXPECT_NEAR(VolumeOf(level), 4.1, 0.1);
}

TEST(MeshRepair, OrientsTheWallOfACavityInwards) {
    PolygonMesh mesh = SphereQuads(3);
    Append(mesh, SphereQuads(3), 0.5f, {});
    Append(mesh, SphereQuads(2), 0.5f, {5.0f, 0.0f, 0.0f});
    for (std::size_t face = 384 * 2; face < mesh.faceSizes.size(); ++face) Flip(mesh, face);
    Document document("mesh", mesh);
    const double one = 4.1;
    EXPECT_NEAR(VolumeOf(Repaired(document, {})), one - one / 8.0 + one / 8.0, 0.1);
}

TEST(MeshRepair, FillsHolesOfEvenAndOddLength) {
    for (const HoleFill fill : {HoleFill::Flat, HoleFill::Smooth}) {
        for (const PolygonMesh& mesh : {OpenCylinder(12, 6), OpenCylinder(7, 5)}) {
            Document document("mesh", mesh);
            ASSERT_GT(BorderEdgesOf(*document.Geometry().Bound()), 0u);
            const LevelMesh& level = Repaired(document, {.holes = fill});
            EXPECT_EQ(level.CornersPerFace(), 4u);
            EXPECT_EQ(BorderEdgesOf(level), 0u);
            // The volume between the two caps: at least that of a prism with five sides.
            EXPECT_GT(std::fabs(VolumeOf(level)), 2.37 * mesh.positions.back()[2]);
        }
    }
}

TEST(MeshRepair, SmoothFillingContinuesTheCurvature) {
    PolygonMesh mesh = SphereQuads(4);
    Cut(mesh, [](const Vector& p) { return p.z > 0.6f; });
    const auto height = [&](HoleFill fill) {
        Document document("mesh", mesh);
        const LevelMesh& level = Repaired(document, {.holes = fill});
        float largest = 0.0f;
        for (uint32_t v = 0; v < level.VertexCount(); ++v)
            largest = std::max(largest, level.Position(v).z);
        return largest;
    };
    EXPECT_LT(height(HoleFill::Flat), 0.7f);
    EXPECT_NEAR(height(HoleFill::Smooth), 1.0f, 0.15f);
}

TEST(MeshRepair, FillsOnlySmallHolesIfAsked) {
    PolygonMesh mesh = GridMesh(10, 10);
    Cut(mesh, [](const Vector& p) {
        return std::fabs(p.x - 4.5f) < 0.4f && std::fabs(p.y - 4.5f) < 0.4f;
    });
    Document document("mesh", mesh);
    ASSERT_EQ(BorderEdgesOf(*document.Geometry().Bound()), 44u);
    const LevelMesh& level = Repaired(document, {.holes = HoleFill::Flat, .maxHoleEdges = 20});
    EXPECT_EQ(BorderEdgesOf(level), 40u);
    EXPECT_EQ(level.faceCount, 100u);
}

TEST(MeshRepair, RemovesDegenerateAndDuplicateFacesAndSmallPieces) {
    PolygonMesh mesh = Icosahedron();
    mesh.faceVertices.insert(mesh.faceVertices.end(), &mesh.faceVertices[3], &mesh.faceVertices[6]);
    mesh.faceSizes.push_back(3);
    const auto first = static_cast<uint32_t>(mesh.positions.size());
    for (const float x : {5.0f, 6.0f, 7.0f}) mesh.positions.push_back({x, 1.0f, 2.0f});
    for (uint32_t k = 0; k < 3; ++k) mesh.faceVertices.push_back(first + k);
    mesh.faceSizes.push_back(3);
    Append(mesh, Icosahedron(), 0.1f, {3.0f, 0.0f, 0.0f});
    Append(mesh, TriangleStrip(1), 0.1f, {-3.0f, 0.0f, 0.0f});
    const MeshDefects defects = FindDefects(mesh);
    EXPECT_EQ(defects.degenerateFaces, 1u);
    EXPECT_EQ(defects.duplicateFaces, 1u);
    EXPECT_EQ(defects.pieces, 4u);
    Document document("mesh", mesh);
    EXPECT_EQ(Repaired(document, {}).faceCount, 42u);
    EXPECT_EQ(Repaired(document, {.minPieceFaces = 3}).faceCount, 40u);
    EXPECT_EQ(Repaired(document, {.minPieceShare = 0.5f}).faceCount, 40u);
    EXPECT_THROW(document.ReplaceSurface(RepairMesh({.minPieceShare = 0.51f})), HostError);
}

TEST(MeshRepair, AdvisesTheStepForEachDefect) {
    EXPECT_THAT(AdviceFor(FindDefects(SphereQuads(2))), testing::IsEmpty());
    PolygonMesh mesh = SphereQuads(3);
    Cut(mesh, [](const Vector& p) { return p.x > 0.9f; });
    Flip(mesh, 5);
    std::string text;
    for (const DefectAdvice& advice : AdviceFor(FindDefects(mesh)))
        text += advice.defect + ": " + advice.step + "\n";
    EXPECT_EQ(text,
              "1 misoriented face: {\"repair\": {}}\n"
              "1 hole, the largest with 16 edges: {\"repair\": {\"fillHoles\": \"flat\"}}\n");
}

}  // namespace
}  // namespace trovik::test
