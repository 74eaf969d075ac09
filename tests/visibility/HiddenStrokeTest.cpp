// SPDX-License-Identifier: Apache-2.0

/// \file Tests strokes over hidden faces: hidden vertices stay bit-identical, and the results at
/// visible vertices are bit-identical to those of a stroke with the hidden vertices masked.
#include "framework/brushes/Falloff.h"
#include "framework/edits/Symmetry.h"
#include "framework/freeze/FreezeBrush.h"
#include "framework/math/SameBits.h"
#include "framework/multires/Steps.h"
#include "framework/strokes/StrokeLoop.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/random/RandomStroke.h"
#include "tests/visibility/VisibilityState.h"

#include <cmath>

namespace trovik::test {
namespace {

FaceChoice RandomFaces(const LevelMesh& level, RandomNumbers& random) {
    FaceChoice chosen(level.faceCount);
    const uint32_t length = random.OneOf({1u, 4u, 16u, 64u});
    for (uint32_t face = 0; face < level.faceCount; face += length)
        if (random.Chance(0.5f))
            std::fill_n(
                chosen.begin() + face, std::min(length, level.faceCount - face), uint8_t{1});
    return chosen;
}

bool SamePosition(const VertexBits& a, const VertexBits& b) {
    return SameBits(a.position, b.position);
}

/// Two fixtures apply the same strokes. In one, faces are hidden; in the other, their vertices are
/// masked explicitly.
TEST(HiddenStroke, HiddenVerticesStayAndOthersMoveAsIfTheyWereMasked) {
    HostSwitches switches;
    const uint32_t wanted = CountFromEnvironment("TROVIK_RANDOM_STROKES", 150);
    uint32_t moved = 0;
    uint32_t hiddenVertices = 0;
    for (uint32_t stroke = 0; stroke < wanted; ++stroke) {
        SCOPED_TRACE("stroke " + std::to_string(stroke));
        std::vector<VertexBits> results[2];
        std::vector<bool> isHidden;
        for (const bool hide : {true, false}) {
            RandomNumbers random(31000 + stroke);
            switches.Draw(random);
            RandomStrokeFixture drawn(random);
            StrokeFixture& bench = drawn.Bench();
            LevelMesh& mesh = bench.Mesh();
            RandomNumbers faces(77 + stroke);
            const FaceChoice chosen = RandomFaces(mesh, faces);
            const auto step =
                ChangeVisibilityAsStep(*bench.geometry, VisibilityChange::Hide, chosen);
            isHidden = ExpectedHiddenVertices(mesh);
            if (!hide) {
                if (step != nullptr) step->Apply(*bench.geometry);
                for (uint32_t v = 0; v < mesh.VertexCount(); ++v)
                    if (isHidden[v]) mesh.SetFreeze(v, 127);
            }
            const std::vector<VertexBits> before = BitsOf(mesh);
            const std::vector<uint8_t> amounts = FreezeAmounts(mesh);
            for (int i = 0; i < 2; ++i) drawn.Stroke();
            const std::vector<VertexBits> after = BitsOf(mesh);
            results[hide ? 0 : 1] = after;
            if (!hide) continue;
            ASSERT_EQ(FreezeAmounts(mesh), amounts);
            for (uint32_t v = 0; v < after.size(); ++v) {
                if (isHidden[v]) {
                    ++hiddenVertices;
                    ASSERT_TRUE(SamePosition(after[v], before[v]))
                        << drawn.CaseDescription() << " " << v;
                }
                moved += SamePosition(after[v], before[v]) ? 0u : 1u;
            }
            while (bench.geometry->History().Undo(*bench.geometry)) {
            }
            ASSERT_TRUE(BitsOf(mesh) == before);
        }
        for (uint32_t v = 0; v < results[0].size(); ++v) {
            // Hidden vertices are skipped: adding 0 turns -0 into +0 at masked vertices, but not at
            // hidden ones.
            if (isHidden[v]) continue;
            ASSERT_TRUE(SamePosition(results[0][v], results[1][v])) << v;
            ASSERT_TRUE(
                std::equal(results[0][v].normal, results[0][v].normal + 3, results[1][v].normal))
                << v;
        }
        for (uint32_t v = 0; v < results[0].size(); ++v)
            ASSERT_TRUE(
                std::equal(results[0][v].normal, results[0][v].normal + 3, results[1][v].normal))
                << v;
    }
    EXPECT_GT(moved, 1000u);
    EXPECT_GT(hiddenVertices, 1000u);
}

TEST(HiddenStroke, NegativeZerosOfHiddenVerticesKeepTheirSign) {
    PolygonMesh mesh = FlatGrid(8);
    for (auto& p : mesh.positions) p[2] = -0.0f;
    StrokeFixture bench(mesh, 2);
    bench.Activate(Tool::Sculpt);
    LevelMesh& level = bench.Mesh();
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        const Vector p = level.Position(v);
        level.SetPosition(v, {p.x, p.y, -0.0f});
    }
    FaceChoice chosen(level.faceCount);
    std::fill_n(chosen.begin(), 500, uint8_t{1});
    ASSERT_NE(ChangeVisibilityAsStep(*bench.geometry, VisibilityChange::Hide, chosen), nullptr);
    bench.Stroke(bench.HitFace(490), 3.0f);
    uint32_t moved = 0;
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        if (level.IsVertexHidden(v))
            ASSERT_TRUE(std::signbit(level.Position(v).z)) << v;
        else
            moved += level.Position(v).z != 0.0f ? 1u : 0u;
    }
    EXPECT_GT(moved, 20u);
}

TEST(HiddenStroke, NormalsAtTheBorderFollowTheSurface) {
    StrokeFixture bench(SphereQuads(3), 1);
    // The strength is low, because the brush and the host weight the faces around a vertex
    // differently.
    bench.Activate(Tool::Sculpt, FalloffIndexOf("smooth"));
    LevelMesh& level = bench.Mesh();
    FaceChoice chosen(level.faceCount);
    std::fill_n(chosen.begin(), level.faceCount / 2, uint8_t{1});
    ASSERT_NE(ChangeVisibilityAsStep(*bench.geometry, VisibilityChange::Hide, chosen), nullptr);
    const std::vector<VertexBits> before = BitsOf(level);
    bench.Stroke(bench.HitFace(level.faceCount / 2 + 3), 0.5f, 0.02f);
    const std::vector<VertexBits> after = BitsOf(level);
    // The stroke also updates the normals of hidden vertices next to moved ones.
    uint32_t turned = 0;
    for (uint32_t v = 0; v < after.size(); ++v)
        if (level.IsVertexHidden(v))
            turned += std::equal(after[v].normal, after[v].normal + 3, before[v].normal) ? 0u : 1u;
    EXPECT_GT(turned, 0u);
    std::vector<PackedNormal> made(level.vertexNormals.array,
                                   level.vertexNormals.array + level.VertexCount());
    level.ComputeNormals();
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        const PackedNormal& a = made[v];
        const PackedNormal& b = level.vertexNormals.array[v];
        const double cosine =
            (double{1} * a.x * b.x + double{1} * a.y * b.y + double{1} * a.z * b.z) /
            (std::hypot(a.x, a.y, a.z) * std::hypot(b.x, b.y, b.z));
        ASSERT_GT(cosine, 0.99) << v;
    }
}

TEST(HiddenStroke, StrokesFarFromHiddenFacesAreUnaffected) {
    std::vector<VertexBits> results[2];
    for (const bool hide : {true, false}) {
        StrokeFixture bench(FlatGrid(16), 3);
        bench.Activate(Tool::Smooth);
        LevelMesh& level = bench.Mesh();
        for (uint32_t v = 0; v < level.VertexCount(); ++v)
            level.SetPosition(
                v, level.Position(v) + Vector(0, 0, 0.01f * static_cast<float>(v * 7919 % 13)));
        level.ComputeNormals();
        FaceChoice chosen(level.faceCount);
        std::fill_n(chosen.begin(), 64, uint8_t{1});
        if (hide) {
            ASSERT_NE(ChangeVisibilityAsStep(*bench.geometry, VisibilityChange::Hide, chosen),
                      nullptr);
        }
        const std::vector<VertexBits> before = BitsOf(level);
        bench.Stroke(bench.HitFace(level.faceCount - 500), 2.0f);
        results[hide] = BitsOf(level);
        EXPECT_FALSE(results[hide] == before);
    }
    EXPECT_TRUE(results[0] == results[1]);
}

TEST(HiddenStroke, FreezeBrushSkipsHiddenVertices) {
    HostKernel::Instance();
    LevelGeometry geometry(FlatGrid(8));
    HostKernel::Instance().Scene()->AddGeometry(&geometry);
    LevelMesh& level = *geometry.Bound();
    FaceChoice chosen(level.faceCount);
    std::fill_n(chosen.begin(), 24, uint8_t{1});
    ASSERT_NE(ChangeVisibilityAsStep(geometry, VisibilityChange::Hide, chosen), nullptr);
    PatchTree tree(&level);
    {
        FreezeBrush brush;
        brush.SetFalloff(QStringLiteral("constant"));
        StrokeLoop loop(brush, geometry, tree);
        StrokeDab dab;
        dab.hit = SurfacePoint(&level, 0, 36);
        dab.hit.position = {4.0f, 4.0f, 0.0f};
        dab.position = dab.hit.position;
        dab.size = 3.1f;
        dab.strength = 100.0f;
        loop.Begin(BrushOperation::ModifierNone);
        loop.Dab(dab);
        loop.End();
    }
    uint32_t frozen = 0;
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        ASSERT_TRUE(!level.IsVertexHidden(v) || level.Freeze(v) == 0) << v;
        frozen += level.Freeze(v) != 0 ? 1u : 0u;
    }
    EXPECT_GT(frozen, 10u);
    ExpectConsistent(geometry);
    HostKernel::Instance().Scene()->RemoveGeometry(&geometry);
    CheckableFloatArray::s_bActive = false;
}

TEST(HiddenStroke, MakeSymmetricMovesNoHiddenVertex) {
    LevelGeometry geometry(SphereQuads(2));
    LevelMesh& level = *geometry.Bound();
    for (uint32_t v = 0; v < level.VertexCount(); ++v)
        if (level.Position(v).x > 0.1f) level.SetPosition(v, level.Position(v) * 1.1f);
    FaceChoice chosen(level.faceCount);
    for (uint32_t face = 0; face < level.faceCount; ++face)
        chosen[face] = level.Position(level.faceVertexIndices.array[face * 4]).y > 0.0f ? 1 : 0;
    ASSERT_NE(ChangeVisibilityAsStep(geometry, VisibilityChange::Hide, chosen), nullptr);
    level.ComputeNormals();
    const std::vector<VertexBits> before = BitsOf(level);
    ASSERT_GT(MakeSymmetric(geometry, 0, SymmetrySide::Positive), 0u);
    const std::vector<VertexBits> after = BitsOf(level);
    for (uint32_t v = 0; v < after.size(); ++v)
        ASSERT_TRUE(!level.IsVertexHidden(v) || SamePosition(after[v], before[v])) << v;
    level.ComputeNormals();
    EXPECT_TRUE(BitsOf(level) == after);
}

}  // namespace
}  // namespace trovik::test
