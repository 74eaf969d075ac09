// SPDX-License-Identifier: Apache-2.0

/// \file Tests all stages between a stamp's image and the surface: image, placement, stroke loop
/// and kernels. On a flat grid, Sculpt with a flat falloff reproduces the image: each vertex rises
/// by the value of its pixel.
#include "framework/strokes/DabStrength.h"
#include "tests/brushes/LoopFixture.h"
#include "tests/meshes/MirrorAtX.h"

#include <gtest/gtest.h>

#include <cmath>

namespace trovik::test {
namespace {

class StampedSurface : public testing::Test {
protected:
    StampedSurface() : bench(FlatGrid(16)), loop(*bench.brush, *bench.geometry) {
        SetStampImage(*bench.brush, NumberedImage(8, 8));
    }

    void Dabs(const std::vector<StrokeDab>& dabs) {
        loop.loop.Begin(BrushOperation::ModifierNone);
        for (const StrokeDab& dab : dabs) loop.loop.Dab(dab);
        loop.loop.End();
    }
    float HeightAt(uint32_t column, uint32_t row) {
        return bench.Mesh().Position(row * 17 + column).z;
    }
    /// Returns the value of the pixel nearest to these coordinates in the image with numbered
    /// pixels. The brush rounds coordinates in the same way.
    static float Pixel(float u, float v) {
        const long column = std::lrint(u);
        const long row = std::lrint(v);
        if (column < 0 || row < 0 || column > 7 || row > 7) return 0.0f;
        return static_cast<float>(1 + row * 8 + column) / 64.0f;
    }

    StrokeFixture bench;
    LoopFixture loop;
};

TEST_F(StampedSurface, EachVertexRisesByItsPixel) {
    // A quarter unit away from the vertices, so that no coordinate is a rounding tie.
    Dabs({loop.At({8.25f, 8.25f, 0.0f}, 4.0f, 2.0f)});
    int moved = 0;
    for (uint32_t row = 0; row <= 16; ++row) {
        for (uint32_t column = 0; column <= 16; ++column) {
            const float x = static_cast<float>(column) - 8.25f;
            const float y = static_cast<float>(row) - 8.25f;
            const bool inside = x * x + y * y <= 16.0f;
            const float expected = inside ? 2.0f * Pixel(3.5f + x, 3.5f - y) : 0.0f;
            EXPECT_EQ(HeightAt(column, row), expected) << column << " " << row;
            if (expected != 0.0f) ++moved;
        }
    }
    EXPECT_GT(moved, 40);
}

TEST_F(StampedSurface, ByCameraTheSameSurfaceReadsTheSamePixels) {
    bench.brush->SetOrientedToSurface(false);
    Matrix camera;
    camera.m[3][0] = 8.25f;
    camera.m[3][1] = 8.25f;
    camera.m[3][2] = 16.0f;
    HostKernel::Instance().Scene()->OwnCamera().Transform().SetMatrix(camera);
    Dabs({loop.At({8.25f, 8.25f, 0.0f}, 4.0f, 2.0f)});
    EXPECT_EQ(HeightAt(7, 6), 2.0f * Pixel(3.5f - 1.25f, 3.5f + 2.25f));
    EXPECT_EQ(HeightAt(10, 9), 2.0f * Pixel(3.5f + 1.75f, 3.5f - 0.75f));
}

TEST_F(StampedSurface, PatternRotatesClockwise) {
    bench.brush->separatorOption.SetValue(90, true);
    Dabs({loop.At({8.25f, 8.25f, 0.0f}, 4.0f, 1.0f)});
    // The part that was at the top is now on the right.
    for (uint32_t column = 6; column <= 10; ++column) {
        const float x = static_cast<float>(column) - 8.25f;
        const float y = 9.0f - 8.25f;
        EXPECT_EQ(HeightAt(column, 9), Pixel(3.5f - y, 3.5f - x)) << column;
    }
}

TEST_F(StampedSurface, MirroredDabAppliesTheMirroredPattern) {
    loop.loop.SetMirrors(MirrorConfiguration::PlaneX, {MirrorAtX(8.0f)});
    Dabs({loop.At({3.75f, 8.25f, 0.0f}, 3.0f, 1.0f)});
    int moved = 0;
    for (uint32_t row = 0; row <= 16; ++row) {
        for (uint32_t column = 0; column < 8; ++column) {
            EXPECT_EQ(HeightAt(column, row), HeightAt(16 - column, row)) << column << " " << row;
            if (HeightAt(column, row) != 0.0f) ++moved;
        }
    }
    EXPECT_GT(moved, 20);
    EXPECT_NE(HeightAt(2, 8), HeightAt(5, 8)) << "the stamp itself is asymmetric";
}

TEST_F(StampedSurface, TiledStampAnchoredAtTheStartIsOnePattern) {
    // One pixel per unit: an image of 2 x 2 pixels and a dab of radius 1.
    SetStampImage(*bench.brush, GreyImage(2, 2, {0.25f, 0.5f, 0.75f, 1.0f}));
    bench.brush->Settings().stampTiled = true;
    bench.brush->resetOptionA.SetValue(static_cast<int>(StampPositioning::Start), true);
    StrokeDab first = loop.At({4.5f, 8.5f, 0.0f}, 1.0f, 1.0f);
    StrokeDab second = loop.At({12.0f, 8.0f, 0.0f}, 3.0f, 1.0f);
    Dabs({first, second});
    // Around the first dab: pixel (0, 0) is up and to the left of the centre, at one unit per
    // pixel.
    EXPECT_EQ(HeightAt(4, 9), 0.25f);
    EXPECT_EQ(HeightAt(5, 9), 0.5f);
    EXPECT_EQ(HeightAt(4, 8), 0.75f);
    EXPECT_EQ(HeightAt(5, 8), 1.0f);
    // Under the second dab, the pattern is the same, although its centre and radius differ.
    for (uint32_t row = 6; row <= 10; ++row) {
        for (uint32_t column = 10; column <= 14; ++column) {
            const float left = column % 2 == 0 ? 0.0f : 0.25f;
            const float expected = (row % 2 == 1 ? 0.25f : 0.75f) + left;
            EXPECT_EQ(HeightAt(column, row), expected) << column << " " << row;
        }
    }
}

TEST_F(StampedSurface, WithoutTilesNothingMovesOutsideTheImage) {
    // A narrow image, two pixels wide and eight pixels high, covers a quarter of the dab's width.
    SetStampImage(*bench.brush, GreyImage(2, 8, std::vector<float>(16, 1.0f)));
    Dabs({loop.At({8.25f, 8.25f, 0.0f}, 4.0f, 1.0f)});
    for (uint32_t column = 0; column <= 16; ++column) {
        const bool within = column == 8 || column == 9;
        EXPECT_EQ(HeightAt(column, 8), within ? 1.0f : 0.0f) << column;
    }
}

TEST_F(StampedSurface, InversionAndOffsetAffectTheSurface) {
    SetStampImage(*bench.brush, GreyImage(1, 1, {0.25f}));
    bench.brush->Settings().stampInverted = true;
    bench.brush->Settings().stampOffset = 0.5f;
    bench.brush->Settings().stampFactor = 2.0f;
    Dabs({loop.At({8.0f, 8.0f, 0.0f}, 2.0f, 1.0f)});
    EXPECT_EQ(HeightAt(8, 8), 2.5f);
}

TEST_F(StampedSurface, StampWithoutAnImageMovesNothing) {
    bench.brush->Settings().stampImage.reset();
    ASSERT_NE(bench.brush->MaskImage(-1), nullptr);
    EXPECT_EQ(bench.brush->MaskImage(-1)->Width(), 0u);
    const auto before = BitsOf(bench.Mesh());
    Dabs({loop.At({8.0f, 8.0f, 0.0f}, 4.0f, 1.0f)});
    EXPECT_EQ(BitsOf(bench.Mesh()), before);
}

TEST_F(StampedSurface, StampOnAScaledMeshHasItsSizeInWorldSpace) {
    // The mesh is scaled to twice its width; the stamp is square in world space.
    bench.geometry->Transform().Set({2.0f, 1.0f, 1.0f}, {}, {});
    Dabs({loop.At({16.5f, 8.25f, 0.0f}, 4.0f, 1.0f)});
    const float beside = HeightAt(9, 8);
    const float next = HeightAt(10, 8);
    // The next vertex is two units away in world space, so its pixel is two columns farther.
    EXPECT_NEAR(next / beside, Pixel(7.0f, 4.0f) / Pixel(5.0f, 4.0f), 1e-3f);
    EXPECT_GT(beside, 0.0f);
}

TEST_F(StampedSurface, VectorStampMovesInUnitsOfItsSide) {
    // A single pixel that moves vertices half a side to the right, a quarter of a side outwards
    // from the surface and an eighth of a side downwards.
    FloatImage image;
    image.width = image.height = 1;
    image.channels = 3;
    image.isFloat = true;
    image.pixels = {0.5f, 0.25f, 0.125f};
    bench.brush->SetStamp(true, QStringLiteral("move_vdm.exr"));
    bench.brush->Settings().stampImage = std::make_shared<StampImage>(image, 1);
    bench.brush->SetBrushStrength(100.0f);
    StrokeDab dab = loop.At({8.25f, 8.25f, 0.0f}, 2.0f);
    dab.strength = DabStrength(*bench.brush, 1.0f, 2.0f);
    EXPECT_EQ(dab.strength, 100.0f);
    EXPECT_EQ(StrengthAtRadius(*bench.brush, 100.0f, 2.0f, 5.0f), 100.0f);
    Dabs({dab});
    // The stamp is four units wide.
    const Vector moved = bench.Mesh().Position(8 * 17 + 8);
    EXPECT_NEAR(moved.x, 8.0f + 2.0f, 1e-4f);
    EXPECT_NEAR(moved.y, 8.0f - 0.5f, 1e-4f);
    EXPECT_NEAR(moved.z, 1.0f, 1e-4f);
}

TEST(StampAcrossTheTopology, EachVertexReadsThePixelOfItsMirrorImage) {
    PolygonMesh grid = FlatGrid(16);
    for (auto& p : grid.positions) p[0] -= 8.0f;
    StrokeFixture bench(grid);
    ASSERT_TRUE(bench.geometry->FindMirror());
    // The right half has a different pose, so that no reflection maps one half to the other.
    LevelMesh& mesh = bench.Mesh();
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
        const Vector p = mesh.Position(v);
        if (p.x > 0.0f) mesh.SetPosition(v, p + Vector(3.0f, 2.0f, 0.0f));
    }
    mesh.ComputeNormals();
    SetStampImage(*bench.brush, NumberedImage(8, 8));
    LoopFixture loop(*bench.brush, *bench.geometry);
    loop.loop.SetMirrors(MirrorConfiguration::Topological, {});
    loop.loop.Begin(BrushOperation::ModifierNone);
    EXPECT_TRUE(bench.brush->IsMaskEnabled(1));
    loop.loop.Dab(loop.At({-4.25f, 8.25f, 0.0f}, 3.0f, 1.0f));
    loop.loop.End();
    int moved = 0;
    for (uint32_t row = 0; row <= 16; ++row) {
        for (uint32_t column = 0; column < 8; ++column) {
            const float left = mesh.Position(row * 17 + column).z;
            EXPECT_EQ(left, mesh.Position(row * 17 + 16 - column).z) << column << " " << row;
            if (left != 0.0f) ++moved;
        }
    }
    EXPECT_GT(moved, 20);
}

}  // namespace
}  // namespace trovik::test
