// SPDX-License-Identifier: Apache-2.0
#include "framework/document/Document.h"
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/mesh/LevelPositions.h"
#include "framework/strokes/DabAtHit.h"
#include "tests/files/TemporaryFolder.h"
#include "tests/meshes/MeshZoo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace trovik::test {
namespace {

/// A plane of 16 x 16 faces, 4 units wide. If `posed`, its right half is lifted and rotated
/// forward.
PolygonMesh Plane(bool posed) {
    PolygonMesh mesh = GridMesh(16, 16);
    for (auto& p : mesh.positions) {
        p = {(p[0] - 8.0f) * 0.25f, (p[1] - 8.0f) * 0.25f, 0.0f};
        if (posed && p[0] > 0.0f) p = {p[0] * 0.8f, p[1] + 0.1f * p[0], 0.6f * p[0]};
    }
    return mesh;
}

/// The displacement of each vertex in a stroke of one dab on the left half.
std::vector<Vector> MovesOfADab(Document& document, float radius) {
    const LevelMesh& mesh = *document.Geometry().Bound();
    const std::vector<Vector> before = PositionsOf(mesh);
    StrokeDab dab =
        DabAt(document.Geometry(), document.Tree().Nearest({-1.1f, 0.3f, 0.0f}).value());
    dab.size = radius;
    dab.strength = 4.0f;
    document.Loop().Begin(BrushOperation::ModifierNone);
    document.Loop().Dab(dab);
    document.Loop().End();
    std::vector<Vector> moves;
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) moves.push_back(mesh.Position(v) - before[v]);
    return moves;
}

/// The length of each vertex's displacement.
std::vector<float> LengthsOfMoves(Document& document) {
    EXPECT_TRUE(document.SelectTool("Sculpt"));
    document.Brush().SetBrushStrength(4.0f);
    std::vector<float> lengths;
    for (const Vector& move : MovesOfADab(document, 0.6f)) lengths.push_back(move.Length());
    return lengths;
}

std::string MeshFile(const TemporaryFolder& folder, const PolygonMesh& mesh) {
    std::string path = folder.Path("mesh.obj");
    WriteMeshFile(path, mesh);
    return path;
}

TEST(TopologicalStroke, EqualsThePlaneMirrorOnASymmetricMesh) {
    const TemporaryFolder folder;
    const std::string path = MeshFile(folder, Plane(false));
    Document byPlane(path);
    byPlane.SetMirrors({{0}, 1, 1});
    Document byFaces(path);
    byFaces.SetTopologicalMirror();
    const std::vector<float> planeMoves = LengthsOfMoves(byPlane);
    const std::vector<float> faceMoves = LengthsOfMoves(byFaces);
    EXPECT_EQ(planeMoves, faceMoves);
    EXPECT_GT(*std::max_element(faceMoves.begin(), faceMoves.end()), 0.01f);
    EXPECT_EQ(2u, byFaces.Totals().dabs);
}

/// Subdivides the plane, sculpts it with a stamp that has these settings, and returns the
/// displacement of each vertex.
std::vector<Vector> StampedMoves(Document& document, const char* stamp) {
    document.Subdivide();
    document.Subdivide();
    EXPECT_TRUE(document.SelectTool("Sculpt"));
    document.Brush().SetStamp(true, QString::fromLatin1(stamp));
    return MovesOfADab(document, 0.7f);
}

class TopologicalStamp : public testing::TestWithParam<const char*> {};

TEST_P(TopologicalStamp, EqualsThePlaneMirroredStampOnASymmetricMesh) {
    const TemporaryFolder folder;
    const std::string path = MeshFile(folder, Plane(false));
    Document byPlane(path);
    byPlane.SetMirrors({{0}, 1, 1});
    Document byFaces(path);
    byFaces.SetTopologicalMirror();
    const std::vector<Vector> planeMoves = StampedMoves(byPlane, GetParam());
    const std::vector<Vector> faceMoves = StampedMoves(byFaces, GetParam());
    float largest = 0.0f;
    for (std::size_t v = 0; v < planeMoves.size(); ++v) {
        ASSERT_NEAR(0.0f, (planeMoves[v] - faceMoves[v]).Length(), 1e-5f) << v;
        largest = std::max(largest, faceMoves[v].Length());
    }
    EXPECT_GT(largest, 1e-3f);
}

INSTANTIATE_TEST_SUITE_P(Shipped,
                         TopologicalStamp,
                         testing::Values("Stamps/rubble.tif", "Stamps/hook_vdm.exr"),
                         [](const auto& stamp) {
                             return std::string(stamp.index == 0 ? "Heights" : "Vectors");
                         });

TEST(TopologicalStroke, AppliesAHeightStampToBothHalvesOfAPose) {
    const TemporaryFolder folder;
    Document document(MeshFile(folder, Plane(true)));
    document.SetTopologicalMirror();
    const std::vector<Vector> moves = StampedMoves(document, "Stamps/rubble.tif");
    LevelMesh& mesh = *document.Geometry().Bound();
    // The right half has a different shape, so the falloff differs. The parts outside the image are
    // the same on both sides.
    std::size_t moved = 0;
    std::size_t both = 0;
    for (uint32_t face = 0; face < mesh.faceCount; ++face) {
        for (uint32_t k = 0; k < 4; ++k) {
            const uint32_t v = mesh.faceVertexIndices[face * 4 + k];
            uint32_t faceAcross = 0;
            uint32_t corner = 0;
            const auto across =
                static_cast<uint32_t>(mesh.MirrorVertex(face, k, &faceAcross, &corner));
            if (mesh.Position(v).x >= 0.0f) continue;
            if (moves[v] == Vector()) {
                EXPECT_EQ(Vector(), moves[across]) << "vertex " << v;
            } else {
                ++moved;
                if (moves[across] != Vector()) ++both;
            }
        }
    }
    EXPECT_GT(moved, 400u);
    EXPECT_GT(both, moved * 9 / 10);
}

TEST(TopologicalStroke, ReachesTheImageOfAVertexInAPose) {
    const TemporaryFolder folder;
    Document document(MeshFile(folder, Plane(true)));
    document.SetTopologicalMirror();
    const std::vector<float> moves = LengthsOfMoves(document);
    // Rows have 17 vertices; a vertex and its image are in the same row.
    std::size_t movedLeft = 0;
    std::size_t movedRight = 0;
    for (std::size_t row = 0; row < 17; ++row) {
        for (std::size_t column = 0; column < 8; ++column) {
            if (moves[row * 17 + column] > 0.0f) ++movedLeft;
            if (moves[row * 17 + 16 - column] > 0.0f) ++movedRight;
        }
    }
    EXPECT_GT(movedLeft, 10u);
    EXPECT_GT(movedRight, 10u);
    // The centre of the dab and its image move by the same amount, since the faces there have about
    // the same size.
    std::size_t top = 0;
    for (std::size_t v = 0; v < moves.size(); ++v)
        if (v % 17 < 8 && moves[v] > moves[top]) top = v;
    const std::size_t across = top - top % 17 + 16 - top % 17;
    EXPECT_NEAR(moves[top], moves[across], 0.1f * moves[top]);
}

TEST(TopologicalStroke, IsKeptAfterRefinementAndReset) {
    const TemporaryFolder folder;
    Document document(MeshFile(folder, Plane(true)));
    document.SetTopologicalMirror();
    document.Subdivide();
    MovesOfADab(document, 0.6f);
    EXPECT_EQ(2u, document.Totals().dabs);
    document.Reset();
    MovesOfADab(document, 0.6f);
    EXPECT_EQ(4u, document.Totals().dabs);
    document.SetMirrors({});
    MovesOfADab(document, 0.6f);
    EXPECT_EQ(5u, document.Totals().dabs);
}

TEST(TopologicalStroke, IsRefusedOnAMeshWithoutAMirror) {
    PolygonMesh mesh = Plane(false);
    mesh.faceSizes.pop_back();
    mesh.faceVertices.resize(mesh.faceVertices.size() - 4);
    const TemporaryFolder folder;
    Document document(MeshFile(folder, mesh));
    EXPECT_THAT(MessageOf<HostError>([&] { document.SetTopologicalMirror(); }),
                testing::HasSubstr("mesh.obj: the mesh has no topological mirror"));
    MovesOfADab(document, 0.6f);
    EXPECT_EQ(1u, document.Totals().dabs);
}

}  // namespace
}  // namespace trovik::test
