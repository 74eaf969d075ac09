// SPDX-License-Identifier: Apache-2.0

/// \file Tests the path from a vertex position to a pixel, and from the pixel to the vertex's
/// displacement. A pushing tool with strength 1 and a constant falloff raises a flat mesh by
/// exactly the stamp's value. All tests run on patches of one face, on larger patches, and on a
/// triangle mesh.
#include "framework/mesh/LevelPositions.h"
#include "tests/fixture/Triangles.h"
#include "tests/stamps/StampFixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>

namespace trovik::test {
namespace {

enum class Kind { SmallPatches, LargePatches, Triangles };

/// Nine by nine vertices in the plane z = 0, one unit apart, from (0, 0) to (8, 8).
PolygonMesh FlatMesh(Kind kind) {
    if (kind == Kind::SmallPatches) return FlatGrid(8);
    if (kind == Kind::LargePatches) {
        PolygonMesh mesh = FlatGrid(2);
        for (auto& p : mesh.positions)
            for (float& c : p) c *= 4.0f;
        return mesh;
    }
    return FlatTriangles(8);
}

/// Computes the stamp's value at exact coordinates, in double precision. There is no value outside
/// the stamp.
struct Reference {
    uint32_t width;
    uint32_t height;
    std::vector<float> pixels;
    bool tiled = false;
    bool bilinear = false;

    double At(int64_t column, int64_t row, int64_t right, int64_t below) const {
        int64_t x = column + right;
        int64_t y = row + below;
        if (!tiled && (x >= width || y >= height)) return 0.0;
        x %= width;
        y %= height;
        return static_cast<double>(pixels[static_cast<std::size_t>(y * width + x)]);
    }
    static int64_t Nearest(double x) { return static_cast<int64_t>(std::nearbyint(x)); }
    std::optional<double> Value(double u, double v) const {
        int64_t column = Nearest(u);
        int64_t row = Nearest(v);
        if (tiled) {
            column = (column % width + width) % width;
            row = (row % height + height) % height;
        } else if (column < 0 || row < 0 || column >= width || row >= height) {
            return std::nullopt;
        }
        if (!bilinear) return At(column, row, 0, 0);
        const double fu = (u - 0.5) - std::floor(u - 0.5);
        const double fv = (v - 0.5) - std::floor(v - 0.5);
        return At(column, row, 0, 0) * (1 - fu) * (1 - fv) + At(column, row, 1, 0) * fu * (1 - fv) +
               At(column, row, 0, 1) * (1 - fu) * fv + At(column, row, 1, 1) * fu * fv;
    }
};

class Stamped : public ::testing::TestWithParam<Kind> {
protected:
    void Give(uint32_t width, uint32_t height, const std::vector<float>& pixels) {
        SetTestStamp(brush, QStringLiteral("plain"), width, height, pixels);
        reference = {width, height, pixels};
    }
    /// Sets the stamp matrix to u = x * stepU + startU, and v likewise.
    void PlaceStamp(float stepU, float startU, float stepV, float startV) {
        Matrix& m = brush.Settings().stampMatrix;
        m = Matrix();
        m.m[0][0] = stepU;
        m.m[3][0] = startU;
        m.m[1][1] = stepV;
        m.m[3][1] = startV;
    }
    void Tile() { brush.Settings().stampTiled = reference.tiled = true; }
    void Interpolate() {
        brush.bilinearSample.SetValue(true, true);
        reference.bilinear = true;
    }
    uint32_t VertexAt(float x, float y) {
        for (uint32_t v = 0; v < Mesh().VertexCount(); ++v)
            if (Mesh().Position(v).x == x && Mesh().Position(v).y == y) return v;
        ADD_FAILURE() << "no vertex at " << x << ", " << y;
        return 0;
    }
    LevelMesh& Mesh() { return bench.Mesh(); }
    /// Applies one dab around (x, y) that reaches everything. \return the height at (x, y).
    float HeightAt(float x, float y) {
        const uint32_t v = VertexAt(x, y);
        bench.Stroke(bench.HitVertex(v), 100.0f, 1.0f);
        const float height = Mesh().Position(v).z;
        EXPECT_TRUE(bench.geometry->History().Position() == 0 ||
                    bench.geometry->History().Undo(*bench.geometry));
        return height;
    }
    /// Applies a dab that reaches everything, and expects each vertex to move by the reference
    /// value.
    void ExpectReference(const SurfacePoint& hit) {
        const std::vector<Vector> before = PositionsOf(Mesh());
        const Matrix& m = brush.Settings().stampMatrix;
        bench.Stroke(hit, 100.0f, 1.0f);
        int inside = 0;
        for (uint32_t v = 0; v < before.size(); ++v) {
            double s[4];
            for (int k = 0; k < 4; ++k) {
                s[k] = static_cast<double>(before[v].x) * static_cast<double>(m.m[0][k]) +
                       static_cast<double>(before[v].y) * static_cast<double>(m.m[1][k]) +
                       static_cast<double>(before[v].z) * static_cast<double>(m.m[2][k]) +
                       static_cast<double>(m.m[3][k]);
            }
            const std::optional<double> value = reference.Value(s[0] / s[3], s[1] / s[3]);
            const double factor = static_cast<double>(brush.Settings().stampFactor);
            EXPECT_NEAR(static_cast<double>(Mesh().Position(v).z),
                        value.value_or(0.0) * factor,
                        1e-5 * factor)
                << before[v].x << ", " << before[v].y;
            inside += value.has_value();
        }
        EXPECT_GT(inside, 8);
    }

    StrokeFixture bench{FlatMesh(GetParam()), GetParam() == Kind::LargePatches ? 2u : 0u};
    SwiftStroke& brush = *bench.brush;
    Reference reference;
};
INSTANTIATE_TEST_SUITE_P(Kinds,
                         Stamped,
                         ::testing::Values(Kind::SmallPatches, Kind::LargePatches, Kind::Triangles),
                         [](const auto& tested) {
                             return std::string(tested.param == Kind::SmallPatches ? "SmallPatches"
                                                : tested.param == Kind::LargePatches
                                                    ? "LargePatches"
                                                    : "Triangles");
                         });

std::vector<float> Numbers(uint32_t count) {
    std::vector<float> numbers;
    for (uint32_t i = 0; i < count; ++i) numbers.push_back(static_cast<float>(i * i % 17 + 1) / 8);
    return numbers;
}

TEST_P(Stamped, LiftsEachVertexByItsPixelTimesTheFactor) {
    Give(9, 9, Numbers(81));
    brush.Settings().stampFactor = 0.5f;
    bench.Stroke(bench.HitVertex(VertexAt(4, 4)), 100.0f, 1.0f);
    for (uint32_t v = 0; v < Mesh().VertexCount(); ++v) {
        const Vector p = Mesh().Position(v);
        EXPECT_EQ(p.z, reference.pixels[static_cast<std::size_t>(p.y * 9.0f + p.x)] * 0.5f);
    }
}

TEST_P(Stamped, HalfCoordinatesRoundToTheEvenPixel) {
    Give(12, 1, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
    PlaceStamp(1.0f, 0.5f, 0.0f, 0.0f);
    EXPECT_EQ(HeightAt(0, 4), 1.0f);
    EXPECT_EQ(HeightAt(1, 4), 3.0f);
    EXPECT_EQ(HeightAt(2, 4), 3.0f);
    EXPECT_EQ(HeightAt(3, 4), 5.0f);
    EXPECT_EQ(HeightAt(4, 4), 5.0f);
    EXPECT_EQ(HeightAt(8, 4), 9.0f);
}

TEST_P(Stamped, EndsHalfAPixelBeforeTheFirstCentre) {
    Give(4, 1, {1, 2, 3, 4});
    PlaceStamp(0.0f, -0.4f, 0.0f, 0.0f);
    EXPECT_EQ(HeightAt(4, 4), 1.0f);
    PlaceStamp(0.0f, -0.5f, 0.0f, 0.0f);
    EXPECT_EQ(HeightAt(4, 4), 1.0f);
    PlaceStamp(0.0f, -0.6f, 0.0f, 0.0f);
    EXPECT_EQ(HeightAt(4, 4), 0.0f);
    PlaceStamp(0.0f, 1.0f, 0.0f, -0.4f);
    EXPECT_EQ(HeightAt(4, 4), 2.0f);
    PlaceStamp(0.0f, 1.0f, 0.0f, -0.6f);
    EXPECT_EQ(HeightAt(4, 4), 0.0f);
    Tile();
    PlaceStamp(0.0f, -0.6f, 0.0f, 0.0f);
    EXPECT_EQ(HeightAt(4, 4), 4.0f);
}

TEST_P(Stamped, EndsHalfAPixelAfterTheLastCentre) {
    Give(4, 5, Numbers(20));
    const std::vector<float>& p = reference.pixels;
    PlaceStamp(0.0f, 3.4f, 0.0f, 0.0f);
    EXPECT_EQ(HeightAt(4, 4), p[3]);
    // A rounding tie: 3.5 rounds to 4, which is outside; 4.5 also rounds to 4, the last of five
    // pixels.
    PlaceStamp(0.0f, 3.5f, 0.0f, 0.0f);
    EXPECT_EQ(HeightAt(4, 4), 0.0f);
    PlaceStamp(0.0f, 0.0f, 0.0f, 4.5f);
    EXPECT_EQ(HeightAt(4, 4), p[16]);
    PlaceStamp(0.0f, 0.0f, 0.0f, 4.6f);
    EXPECT_EQ(HeightAt(4, 4), 0.0f);
}

TEST_P(Stamped, TilesFromAnyDepth) {
    Give(3, 2, {1, 2, 3, 4, 5, 6});
    Tile();
    for (const auto& [u, v, value] : {std::tuple{3.0f, 0.0f, 1.0f},
                                      {-1.0f, 0.0f, 3.0f},
                                      {-3.0f, -1.0f, 4.0f},
                                      {1.0f, 2.0f, 2.0f},
                                      {-3001.0f, -4001.0f, 6.0f},
                                      {3000002.0f, 4000001.0f, 6.0f},
                                      {-3000000.0f, 0.0f, 1.0f}}) {
        PlaceStamp(0.0f, u, 0.0f, v);
        EXPECT_EQ(HeightAt(4, 4), value) << u << ", " << v;
    }
}

TEST_P(Stamped, UnrepresentableCoordinatesAreOutsideAndTileAsTheMinimumInteger) {
    Give(3, 1, {1, 2, 3});
    for (const float far : {3e9f, -3e9f, 1e30f, -1e30f}) {
        reference.tiled = brush.Settings().stampTiled = false;
        PlaceStamp(0.0f, far, 0.0f, 0.0f);
        EXPECT_EQ(HeightAt(4, 4), 0.0f) << far;
        Tile();
        // -2^31 is one more than a multiple of three.
        EXPECT_EQ(HeightAt(4, 4), 2.0f) << far;
    }
}

TEST_P(Stamped, DivisionByZeroIsOutside) {
    Give(3, 1, {1, 2, 3});
    PlaceStamp(0.0f, 1.0f, 0.0f, 0.0f);
    brush.Settings().stampMatrix.m[3][3] = 0.0f;
    EXPECT_EQ(HeightAt(4, 4), 0.0f);
    brush.Settings().stampMatrix.m[3][0] = 0.0f;
    EXPECT_EQ(HeightAt(4, 4), 0.0f);
}

TEST_P(Stamped, DividesByTheFourthComponentOfAPerspective) {
    Give(8, 8, Numbers(64));
    PlaceStamp(1.0f, 1.0f, 1.0f, 0.0f);
    Matrix& m = brush.Settings().stampMatrix;
    m.m[0][3] = 0.07f;
    m.m[1][3] = 0.03f;
    m.m[3][3] = 1.1f;
    ExpectReference(bench.HitVertex(VertexAt(4, 4)));
}

TEST_P(Stamped, ReadsAtTheFirstTouchPositionInEveryDab) {
    // The stamp is tilted, so that a raised vertex would read another pixel.
    Give(9, 9, Numbers(81));
    brush.Settings().stampMatrix.m[2][0] = 1.0f;
    const SurfacePoint hit = bench.HitVertex(VertexAt(4, 4));
    brush.buildUpRate.SetValue(1.0f, true);
    // Without pressure, there is no build-up that would weaken the second dab.
    bench.Begin();
    bench.Dab(hit, 100.0f, 1.0f, 0.0f);
    bench.Dab(hit, 100.0f, 1.0f, 0.0f);
    bench.End();
    for (uint32_t v = 0; v < Mesh().VertexCount(); ++v) {
        const Vector p = Mesh().Position(v);
        EXPECT_EQ(p.z, reference.pixels[static_cast<std::size_t>(p.y * 9.0f + p.x)] * 2.0f);
    }
}

TEST_P(Stamped, IsInMeshSpaceUnderNonUniformScale) {
    bench.geometry->Transform().Set({1.0f, 2.0f, 1.0f}, {}, {5.0f, 0.0f, 0.0f});
    Give(9, 9, Numbers(81));
    bench.Begin();
    EXPECT_TRUE(brush.nonUniformScale);
    bench.End();
    const float inStep = brush.strokeStrengthScale;
    bench.Stroke(bench.HitVertex(VertexAt(4, 4)), 100.0f, 1.0f);
    for (uint32_t v = 0; v < Mesh().VertexCount(); ++v) {
        const Vector p = Mesh().Position(v);
        EXPECT_FLOAT_EQ(p.z, reference.pixels[static_cast<std::size_t>(p.y * 9.0f + p.x)] * inStep);
    }
}

TEST_P(Stamped, BilinearReadInterpolatesTheRoundedPixelAndTheNext) {
    Give(12, 4, Numbers(48));
    Interpolate();
    const std::vector<float>& p = reference.pixels;
    // At a pixel centre, the fraction is one half; a quarter of a pixel before it, the fraction is
    // one quarter.
    PlaceStamp(0.0f, 5.0f, 0.0f, -0.5f);
    EXPECT_EQ(HeightAt(4, 4), p[5] * 0.5f + p[6] * 0.5f);
    PlaceStamp(0.0f, 4.75f, 0.0f, -0.5f);
    EXPECT_EQ(HeightAt(4, 4), p[5] * 0.75f + p[6] * 0.25f);
    PlaceStamp(0.0f, 5.25f, 0.0f, -0.5f);
    EXPECT_EQ(HeightAt(4, 4), p[5] * 0.25f + p[6] * 0.75f);
    PlaceStamp(0.0f, 5.25f, 0.0f, 1.0f);
    EXPECT_EQ(HeightAt(4, 4),
              ((p[17] * 0.125f + p[18] * 0.375f) + p[29] * 0.125f) + p[30] * 0.375f);
}

TEST_P(Stamped, BilinearReadFadesToBlackBeyondTheLastPixels) {
    Give(4, 3, Numbers(12));
    Interpolate();
    const std::vector<float>& p = reference.pixels;
    PlaceStamp(0.0f, 2.75f, 0.0f, -0.5f);
    EXPECT_EQ(HeightAt(4, 4), p[3] * 0.75f);
    PlaceStamp(0.0f, 3.25f, 0.0f, -0.5f);
    EXPECT_EQ(HeightAt(4, 4), p[3] * 0.25f);
    PlaceStamp(0.0f, 0.0f, 0.0f, 2.25f);
    EXPECT_EQ(HeightAt(4, 4), p[8] * 0.125f + p[9] * 0.125f);
    PlaceStamp(0.0f, 3.0f, 0.0f, 2.0f);
    EXPECT_EQ(HeightAt(4, 4), p[11] * 0.25f);
}

TEST_P(Stamped, BilinearReadWrapsIfTiled) {
    Give(4, 3, Numbers(12));
    Interpolate();
    Tile();
    const std::vector<float>& p = reference.pixels;
    PlaceStamp(0.0f, 3.0f, 0.0f, -0.5f);
    EXPECT_EQ(HeightAt(4, 4), p[3] * 0.5f + p[0] * 0.5f);
    PlaceStamp(0.0f, -5.0f, 0.0f, 2.0f);
    EXPECT_EQ(HeightAt(4, 4), ((p[11] + p[8]) + p[3]) * 0.25f + p[0] * 0.25f);
}

TEST_P(Stamped, BilinearFractionsComeFromUnwrappedCoordinates) {
    Give(3, 2, Numbers(6));
    Interpolate();
    Tile();
    PlaceStamp(0.37f, -41.3f, -0.83f, 77.9f);
    ExpectReference(bench.HitVertex(VertexAt(4, 4)));
}

TEST_P(Stamped, EveryReadModeMatchesTheReference) {
    for (const bool tiled : {false, true}) {
        for (const bool bilinear : {false, true}) {
            for (const auto& [a, b, c, d] : {std::tuple{0.73f, -0.3f, 0.91f, 0.2f},
                                             {-0.61f, 4.1f, 0.45f, 0.13f},
                                             {0.31f, 1.7f, -0.57f, 3.9f}}) {
                SCOPED_TRACE(testing::Message() << tiled << bilinear << " " << a);
                Give(5, 4, Numbers(20));
                if (tiled) Tile();
                brush.bilinearSample.SetValue(bilinear, true);
                reference.bilinear = bilinear;
                brush.Settings().stampFactor = 1.5f;
                PlaceStamp(a, b, c, d);
                ExpectReference(bench.HitVertex(VertexAt(4, 4)));
                ASSERT_TRUE(bench.geometry->History().Undo(*bench.geometry));
            }
        }
    }
}

TEST_P(Stamped, PixelsOfAnyMagnitudeAndSignAreUsed) {
    Give(3, 1, {-2.0f, 1000.0f, 0.0f});
    PlaceStamp(0.0f, 0.0f, 0.0f, 0.0f);
    EXPECT_EQ(HeightAt(4, 4), -2.0f);
    PlaceStamp(0.0f, 1.0f, 0.0f, 0.0f);
    EXPECT_EQ(HeightAt(4, 4), 1000.0f);
    brush.Settings().stampInverted = true;
    EXPECT_EQ(HeightAt(4, 4), -999.0f);
}

/// A vector stamp of four by two pixels on the mesh, at one unit per pixel.
class VectorStamped : public Stamped {
protected:
    VectorStamped() {
        std::vector<float> pixels;
        for (uint32_t i = 0; i < 24; ++i) pixels.push_back(static_cast<float>(i * i % 13) - 4.0f);
        SetTestStamp(brush, QStringLiteral("ear_vdm"), 4, 2, pixels);
        for (std::size_t c = 0; c < 3; ++c) {
            channels[c] = {4, 2, {}};
            for (std::size_t i = c; i < 24; i += 3) channels[c].pixels.push_back(pixels[i]);
        }
        brush.Settings().stampFactor = 100.0f;
    }
    /// The sides are four and two units long. The first channel moves the vertex along u by 1/100
    /// of the first side, the third along v by 1/100 of the second side, and the second upwards by
    /// 1/100 of their geometric mean.
    void ExpectChannels(double u, double v) {
        PlaceStamp(1.0f, static_cast<float>(u) - 4.0f, 1.0f, static_cast<float>(v) - 4.0f);
        const uint32_t vertex = VertexAt(4, 4);
        bench.Stroke(bench.HitVertex(vertex), 0.5f, 1.0f);
        const Vector p = Mesh().Position(vertex);
        EXPECT_NEAR(p.x, 4.0 + channels[0].Value(u, v).value() * 4.0, 2e-4);
        EXPECT_NEAR(p.z, channels[1].Value(u, v).value() * std::sqrt(8.0), 2e-4);
        EXPECT_NEAR(p.y, 4.0 + channels[2].Value(u, v).value() * 2.0, 2e-4);
        ASSERT_TRUE(bench.geometry->History().Undo(*bench.geometry));
    }
    Reference channels[3];
};
INSTANTIATE_TEST_SUITE_P(Kinds,
                         VectorStamped,
                         ::testing::Values(Kind::SmallPatches,
                                           Kind::LargePatches,
                                           Kind::Triangles));

TEST_P(VectorStamped, ChannelsMoveAlongUUpwardsAndAlongV) {
    for (const auto& [u, v] : {std::pair{0.0, 0.0}, {1.0, 0.0}, {3.25, 1.0}, {2.0, 0.75}})
        ExpectChannels(u, v);
}

TEST_P(VectorStamped, BilinearReadInterpolatesEachChannel) {
    brush.bilinearSample.SetValue(true, true);
    for (Reference& channel : channels) channel.bilinear = true;
    for (const auto& [u, v] : {std::pair{0.125, 0.25}, {1.25, 0.5}, {3.0, 1.0}, {2.75, 1.25}})
        ExpectChannels(u, v);
}

TEST_P(VectorStamped, BilinearReadWrapsEachChannelIfTiled) {
    brush.bilinearSample.SetValue(true, true);
    brush.Settings().stampTiled = true;
    for (Reference& channel : channels) channel.bilinear = channel.tiled = true;
    for (const auto& [u, v] : {std::pair{3.0, 1.0}, {-6.25, 1.25}, {11.75, -8.5}})
        ExpectChannels(u, v);
}

}  // namespace
}  // namespace trovik::test
