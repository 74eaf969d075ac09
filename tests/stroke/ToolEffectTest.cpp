// SPDX-License-Identifier: Apache-2.0

/// \file Tests the effect of each tool on a bumpy surface by the sign of the displacements.
#include "framework/mesh/LevelPositions.h"
#include "tests/fixture/StrokeFixture.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <cmath>

namespace trovik::test {
namespace {

/// A bumpy square of 33 x 33 vertices around (4, 4), with one dab at its centre.
class ToolEffect : public ::testing::Test {
protected:
    ToolEffect() {
        LevelMesh& mesh = bench.Mesh();
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
            Vector p = mesh.Position(v);
            p.z = 1.0f + 0.1f * std::sin(5.0f * p.x) * std::cos(4.0f * p.y) +
                  (v % 3 == 0 ? 0.02f : 0.0f);
            mesh.SetPosition(v, p);
            if ((p - Vector(4.0f, 4.0f, 1.0f)).Length() < 0.1f) middle = v;
        }
        mesh.ComputeNormals();
        before = Positions();
    }

    std::vector<Vector> Positions() { return PositionsOf(bench.Mesh()); }
    /// Applies one dab with the tool at the centre; `direction` is a direction mode.
    void Dab(Tool tool,
             float strength,
             int direction = 0,
             BrushOperation::Modifier modifier = BrushOperation::ModifierNone) {
        bench.Activate(tool);
        bench.brush->directionAttribute.SetValue(direction, true);
        hit = bench.HitVertex(middle);
        hit.normal = Vector(0.0f, 0.0f, 1.0f);
        bench.Begin(modifier);
        bench.brush->SetPreviousPatchPosition(hit.position - Vector(0.5f, 0.0f, 0.0f));
        bench.Dab(hit, radius, strength);
        normal = bench.brush->directions[0];
        distance = bench.brush->planeDistances[0];
        bench.End();
        after = Positions();
    }
    /// The minimum and maximum displacement along a direction among the vertices that the brush
    /// reached, and the number of vertices that moved.
    struct Moves {
        float least = 1e9f, most = -1e9f;
        int reached = 0, moved = 0, movedBeyond = 0;
    };
    Moves Along(const Vector& direction) const {
        Moves moves;
        for (std::size_t v = 0; v < before.size(); ++v) {
            const Vector step = after[v] - before[v];
            const bool reached = (before[v] - hit.position).Length() <= radius * 0.9999f;
            const bool outside = (before[v] - hit.position).Length() > radius * 1.0001f;
            moves.movedBeyond += outside && step != Vector();
            if (!reached) continue;
            ++moves.reached;
            moves.moved += step != Vector();
            moves.least = std::min(moves.least, step | direction);
            moves.most = std::max(moves.most, step | direction);
        }
        EXPECT_GT(moves.reached, 50);
        EXPECT_EQ(moves.movedBeyond, 0);
        return moves;
    }
    /// The sum of squared distances from the vertices in reach to the dab's plane.
    float Deviation(const std::vector<Vector>& positions) const {
        float sum = 0.0f;
        for (std::size_t v = 0; v < before.size(); ++v) {
            if ((before[v] - hit.position).Length() > radius) continue;
            const float d = (positions[v] | normal) - distance;
            sum += d * d;
        }
        return sum;
    }
    /// The sum of squared differences along the edges in reach.
    float Roughness(const std::vector<Vector>& positions) {
        float sum = 0.0f;
        const LevelMesh& mesh = bench.Mesh();
        for (uint32_t f = 0; f < mesh.faceCount; ++f) {
            for (uint32_t k = 0; k < 4; ++k) {
                const uint32_t a = mesh.faceVertexIndices[f * 4 + k];
                const uint32_t b = mesh.faceVertexIndices[f * 4 + (k + 1) % 4];
                if ((before[a] - hit.position).Length() > 0.8f * radius) continue;
                const float d = positions[a].z - positions[b].z;
                sum += d * d;
            }
        }
        return sum;
    }
    float MeanDistance(const std::vector<Vector>& positions) const {
        float sum = 0.0f;
        for (std::size_t v = 0; v < before.size(); ++v)
            if ((before[v] - hit.position).Length() <= radius)
                sum += (positions[v] - hit.position).Length();
        return sum;
    }

    StrokeFixture bench{FlatGrid(8), 2};
    const float radius = 1.5f;
    uint32_t middle = 0;
    SurfacePoint hit;
    Vector normal;
    float distance = 0.0f;
    std::vector<Vector> before, after;
    const Vector up{0.0f, 0.0f, 1.0f};
};

TEST_F(ToolEffect, PushingToolsRaiseEveryVertexInReachByItsWeight) {
    for (const Tool tool :
         {Tool::Sculpt, Tool::Spray, Tool::Repeat, Tool::Knife, Tool::Foamy, Tool::Imprint}) {
        before = Positions();
        Dab(tool, 0.25f);
        const Moves moves = Along(up);
        EXPECT_EQ(moves.moved, moves.reached);
        EXPECT_NEAR(moves.least, 0.25f, 1e-6f);
        EXPECT_NEAR(moves.most, 0.25f, 1e-6f);
        Dab(tool, 0.25f, 0, BrushOperation::ModifierInvert);
    }
}

TEST_F(ToolEffect, InvertedSculptLowers) {
    Dab(Tool::Sculpt, 0.25f, 0, BrushOperation::ModifierInvert);
    const Moves moves = Along(up);
    EXPECT_NEAR(moves.least, -0.25f, 1e-6f);
    EXPECT_NEAR(moves.most, -0.25f, 1e-6f);
}

TEST_F(ToolEffect, BuildUpRateWeakensThePush) {
    bench.Activate(Tool::Sculpt);
    bench.brush->setBuildUpRate(0.5f);
    hit = bench.HitVertex(middle);
    hit.normal = up;
    bench.Begin();
    bench.Dab(hit, radius, 0.25f);
    after = Positions();
    EXPECT_NEAR(Along(up).most, 0.25f * 0.125f, 1e-6f);
    // The first dab's build-up of 1/8 reduces the effect of the second dab.
    bench.Dab(hit, radius, 0.25f);
    after = Positions();
    EXPECT_NEAR(Along(up).most, 0.25f * 0.125f * (1.0f + 0.875f), 1e-6f);
    bench.End();
}

TEST_F(ToolEffect, FullBuildUpMovesOncePerStroke) {
    bench.Activate(Tool::Sculpt);
    hit = bench.HitVertex(middle);
    hit.normal = up;
    bench.Begin();
    for (int i = 0; i < 3; ++i) bench.Dab(hit, radius, 0.25f);
    bench.End();
    after = Positions();
    EXPECT_NEAR(Along(up).most, 0.25f, 1e-6f);
    EXPECT_NEAR(Along(up).least, 0.25f, 1e-6f);
}

TEST_F(ToolEffect, FalloffFadesTowardsTheRim) {
    bench.Activate(Tool::Sculpt, 1);
    hit = bench.HitVertex(middle);
    hit.normal = up;
    bench.Stroke(hit, radius, 0.25f);
    after = Positions();
    Along(up);
    for (std::size_t v = 0; v < before.size(); ++v) {
        const float reach = (before[v] - hit.position).Length() / radius;
        if (reach > 1.0f) continue;
        EXPECT_NEAR(after[v].z - before[v].z, 0.25f * (1.0f - reach), 0.25f / 250.0f);
    }
}

TEST_F(ToolEffect, SmearMovesAlongTheStroke) {
    Dab(Tool::Smear, 0.25f);
    const Moves moves = Along({1.0f, 0.0f, 0.0f});
    EXPECT_EQ(moves.moved, moves.reached);
    EXPECT_NEAR(moves.least, 0.25f, 1e-6f);
    EXPECT_NEAR(moves.most, 0.25f, 1e-6f);
    EXPECT_EQ(Along(up).most, 0.0f);
}

TEST_F(ToolEffect, PinchMovesTowardsTheCentre) {
    Dab(Tool::Pinch, 50.0f);
    EXPECT_GT(Along(up).moved, 50);
    // Strength 50 x 0.01 x 0.1.
    EXPECT_NEAR(MeanDistance(after), MeanDistance(before) * 0.95f, 1e-3f);
    EXPECT_EQ(after[middle], before[middle]);
}

TEST_F(ToolEffect, InvertedPinchMovesAwayFromTheCentre) {
    Dab(Tool::Pinch, 50.0f, 0, BrushOperation::ModifierInvert);
    EXPECT_NEAR(MeanDistance(after), MeanDistance(before) * 1.05f, 1e-3f);
}

TEST_F(ToolEffect, SmoothReducesRoughness) {
    Dab(Tool::Smooth, 100.0f);
    EXPECT_GT(Along(up).moved, 50);
    EXPECT_LT(Roughness(after), 0.5f * Roughness(before));
    const auto once = after;
    Dab(Tool::Smooth, 100.0f);
    EXPECT_LT(Roughness(after), Roughness(once));
}

TEST_F(ToolEffect, SmoothCannotBeInverted) {
    Dab(Tool::Smooth, 100.0f, 0, BrushOperation::ModifierInvert);
    EXPECT_LT(Roughness(after), 0.5f * Roughness(before));
}

TEST_F(ToolEffect, FlattenMovesTowardsThePlane) {
    Dab(Tool::Flatten, 50.0f, 1);
    EXPECT_GT(Along(up).moved, 50);
    EXPECT_GT(normal.z, 0.9f);
    EXPECT_NEAR(distance, 1.0f, 0.1f);
    EXPECT_NEAR(Deviation(after), 0.25f * Deviation(before), 0.01f * Deviation(before));
}

TEST_F(ToolEffect, FlattenOfFullStrengthEndsInThePlane) {
    Dab(Tool::Flatten, 100.0f, 1);
    EXPECT_GT(Deviation(before), 0.1f);
    EXPECT_NEAR(Deviation(after), 0.0f, 1e-6f);
}

TEST_F(ToolEffect, ScrapeOnlyLowersVerticesAboveThePlane) {
    Dab(Tool::Scrape, 50.0f, 1);
    const Moves moves = Along(normal);
    EXPECT_LT(moves.least, -0.01f);
    EXPECT_LE(moves.most, 0.0f);
    for (std::size_t v = 0; v < before.size(); ++v)
        if ((before[v] | normal) < distance) {
            EXPECT_EQ(after[v], before[v]);
        }
}

TEST_F(ToolEffect, FillOnlyRaisesVerticesBelowThePlane) {
    Dab(Tool::Fill, 50.0f, 1);
    const Moves moves = Along(normal);
    EXPECT_GT(moves.most, 0.01f);
    EXPECT_GE(moves.least, 0.0f);
    for (std::size_t v = 0; v < before.size(); ++v)
        if ((before[v] | normal) > distance) {
            EXPECT_EQ(after[v], before[v]);
        }
}

TEST_F(ToolEffect, AmplifyMovesAwayFromThePlane) {
    Dab(Tool::Amplify, 100.0f, 1);
    EXPECT_GT(Along(up).moved, 50);
    // Each distance grows by a fifth: 100 x 0.2 x 0.01.
    EXPECT_NEAR(Deviation(after), 1.44f * Deviation(before), 0.01f * Deviation(before));
}

TEST_F(ToolEffect, WaxBuildsUpToAPlaneAboveTheSurface) {
    Dab(Tool::Wax, 10.0f, 1);
    // At full strength, vertices move to a height of 10 x 0.5 x 0.1 above the sampled plane.
    for (std::size_t v = 0; v < before.size(); ++v)
        if ((before[v] - hit.position).Length() < 0.9999f * radius) {
            EXPECT_NEAR((after[v] | normal) - distance, 0.5f, 1e-5f);
        }
    EXPECT_GT(Along(normal).least, 0.0f);
}

TEST_F(ToolEffect, InvertedWaxLowers) {
    Dab(Tool::Wax, 10.0f, 1, BrushOperation::ModifierInvert);
    for (std::size_t v = 0; v < before.size(); ++v)
        if ((before[v] - hit.position).Length() < 0.9999f * radius) {
            EXPECT_NEAR((after[v] | normal) - distance, -0.5f, 1e-5f);
        }
    EXPECT_LT(Along(normal).most, 0.0f);
}

TEST_F(ToolEffect, InvertedFlattenStillFlattens) {
    Dab(Tool::Flatten, 50.0f, 1, BrushOperation::ModifierInvert);
    EXPECT_NEAR(Deviation(after), 0.25f * Deviation(before), 0.01f * Deviation(before));
}

TEST_F(ToolEffect, DirectionModesMoveAlongTheirVectors) {
    const float d = 0.70710677f;
    for (const auto& [mode, axis] : {std::pair{5, Vector(1, 0, 0)},
                                     {6, Vector(0, 1, 0)},
                                     {7, Vector(0, 0, 1)},
                                     {10, Vector(d, d, 0)},
                                     {11, Vector(d, 0, d)},
                                     {12, Vector(0, d, d)},
                                     {3, Vector(1, 0, 0)},
                                     {4, Vector(0, -1, 0)}}) {
        before = Positions();
        Dab(Tool::Sculpt, 0.125f, mode);
        const Moves moves = Along(axis);
        EXPECT_NEAR(moves.least, 0.125f, 1e-5f) << mode;
        EXPECT_NEAR(moves.most, 0.125f, 1e-5f) << mode;
        ASSERT_TRUE(bench.geometry->History().Undo(*bench.geometry));
    }
}

TEST_F(ToolEffect, VertexNormalModeMovesEachVertexAlongItsNormal) {
    std::vector<Vector> normals;
    for (uint32_t v = 0; v < bench.Mesh().VertexCount(); ++v) {
        const PackedNormal& n = bench.Mesh().vertexNormals.array[v];
        normals.push_back(Vector(n.x, n.y, n.z) * packedNormalToFloat);
    }
    Dab(Tool::Sculpt, 0.125f, 2);
    int moved = 0;
    for (std::size_t v = 0; v < before.size(); ++v) {
        const Vector step = after[v] - before[v];
        if (step == Vector()) continue;
        ++moved;
        EXPECT_NEAR((step - normals[v] * 0.125f).Length(), 0.0f, 1e-6f);
    }
    EXPECT_GT(moved, 50);
}

TEST_F(ToolEffect, BulgeInflatesASphere) {
    for (const auto& [modifier, sign] :
         {std::pair{BrushOperation::ModifierNone, 1.0f}, {BrushOperation::ModifierInvert, -1.0f}}) {
        StrokeFixture sphere(SphereQuads(3));
        sphere.Activate(Tool::Bulge);
        const SurfacePoint point = sphere.HitFace(17);
        std::vector<float> radii;
        for (uint32_t v = 0; v < sphere.Mesh().VertexCount(); ++v)
            radii.push_back(sphere.Mesh().Position(v).Length());
        sphere.Stroke(point, 0.6f, 0.1f, modifier);
        int moved = 0;
        for (uint32_t v = 0; v < sphere.Mesh().VertexCount(); ++v) {
            const float growth = sphere.Mesh().Position(v).Length() - radii[v];
            if (std::abs(growth) < 1e-6f) continue;
            ++moved;
            EXPECT_NEAR(growth, sign * 0.1f, 0.005f);
        }
        EXPECT_GT(moved, 10);
    }
}

TEST_F(ToolEffect, SmoothModifierEqualsSmooth) {
    bench.Activate(Tool::Flatten);
    hit = bench.HitVertex(middle);
    bench.Stroke(hit, radius, 80.0f, BrushOperation::ModifierSmooth);
    const auto withModifier = BitsOf(bench.Mesh());
    EXPECT_EQ(bench.brush->ActiveConfiguration()->ID(), static_cast<uint32_t>(Tool::Flatten));
    ASSERT_TRUE(bench.geometry->History().Undo(*bench.geometry));
    bench.brush->SetActiveConfiguration(smoothConfiguration);
    bench.Stroke(hit, radius, 80.0f);
    EXPECT_EQ(BitsOf(bench.Mesh()), withModifier);
    after = Positions();
    EXPECT_LT(Roughness(after), Roughness(before));
}

}  // namespace
}  // namespace trovik::test
