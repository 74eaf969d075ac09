// SPDX-License-Identifier: Apache-2.0

/// \file Tests that shading has no noise or visible lines: sample points, filter, and both sides of
/// open surfaces.
#include "framework/render/ImageRenderer.h"
#include "framework/render/SoftLight.h"
#include "tests/pictures/SphereRender.h"

#include <tbb/global_control.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>

namespace trovik::test {
namespace {

constexpr uint32_t stream = 5;

/// Returns whether the sample points of several adjacent pixels, `count` per pixel, are stratified:
/// every grid of 2^a x 2^b cells that has as many cells as there are points has one point in each
/// cell.
bool AreStratified(const std::vector<std::pair<int, int>>& pixels, int count) {
    const auto points = static_cast<int>(pixels.size()) * count;
    for (int columns = 1; columns <= points; columns *= 2) {
        std::set<int> cells;
        const int rows = points / columns;
        for (const auto& [x, y] : pixels) {
            const PixelSamples samples(x, y, count);
            for (int i = 0; i < count; ++i) {
                const SamplePoint p = samples.At(stream, i);
                EXPECT_TRUE(p.x >= 0.0f && p.x < 1.0f && p.y >= 0.0f && p.y < 1.0f);
                cells.insert(static_cast<int>(p.x * static_cast<float>(columns)) * rows +
                             static_cast<int>(p.y * static_cast<float>(rows)));
            }
        }
        if (static_cast<int>(cells.size()) != points) return false;
    }
    return true;
}

TEST(PixelSamples, FillEveryElementaryInterval) {
    EXPECT_TRUE(AreStratified({{17, 5}}, 16));
    EXPECT_TRUE(AreStratified({{300, 700}}, 64));
}

TEST(PixelSamples, NeighbouringPixelsComplementEachOther) {
    EXPECT_TRUE(AreStratified({{10, 6}, {11, 6}}, 16));
    EXPECT_TRUE(AreStratified({{10, 6}, {11, 6}, {10, 7}, {11, 7}}, 16));
}

TEST(PixelSamples, DifferByPixelAndStream) {
    std::set<float> values;
    for (int x = 0; x < 600; x += 3) values.insert(PixelSamples(x, 9, 16).At(0, 0).x);
    EXPECT_GT(values.size(), 195u);
    const PixelSamples samples(3, 4, 16);
    EXPECT_NE(samples.At(0, 0).x, samples.At(1, 0).x);
}

TEST(SoftFacing, IsSmooth) {
    for (const float softness : {0.2f, 0.6f, 1.0f}) {
        EXPECT_EQ(SoftFacing(-1.0f, softness), 0.0f);
        EXPECT_FLOAT_EQ(SoftFacing(1.0f, softness), 1.0f);
        const float step = 1e-2f;
        float slope = 0.0f;
        for (int i = 0; i < 199; ++i) {
            const float c = step * static_cast<float>(i) - 1.0f;
            const float next = (SoftFacing(c + step, softness) - SoftFacing(c, softness)) / step;
            EXPECT_LT(std::fabs(next - slope), step / softness + 1e-3f) << c;
            slope = next;
        }
    }
}

/// A plane that faces the eye, with an ambient visibility of 0.5 that is estimated from only a few
/// rays per pixel.
class FilteredPlane : public ::testing::Test {
protected:
    static constexpr int side = 48;
    FilteredPlane() {
        for (int i = 0; i < side * side; ++i) {
            const int row = i / side;
            guides.push_back(
                {{0, 0, 1}, {static_cast<float>(i % side), static_cast<float>(row), 0}, 1.0f});
            values.push_back({});
            values.back().opennessCount = values.back().keyCount = 16.0f;
        }
    }
    void Sample(int pixel, float openness) {
        float free = 0.0f;
        for (int i = 0; i < 16; ++i)
            if (std::uniform_real_distribution<float>()(random) < openness) free += 1.0f;
        values[static_cast<std::size_t>(pixel)].openness = free / 16.0f;
    }
    float Openness(int x, int y) const {
        const int pixel = y * side + x;
        return values[static_cast<std::size_t>(pixel)].openness;
    }
    void Filter() { FilterVisibility(side, side, guides, values); }
    /// Returns the root mean square difference from `wanted` in columns [from, to).
    float Error(int from, int to, float wanted) const {
        float sum = 0.0f;
        for (int y = 0; y < side; ++y)
            for (int x = from; x < to; ++x)
                sum += (Openness(x, y) - wanted) * (Openness(x, y) - wanted);
        return std::sqrt(sum / static_cast<float>(side * (to - from)));
    }

    std::vector<PixelGuide> guides;
    std::vector<PixelVisibility> values;
    std::mt19937 random{7};
};

TEST_F(FilteredPlane, HasNoNoise) {
    for (int i = 0; i < side * side; ++i) Sample(i, 0.5f);
    const float before = Error(0, side, 0.5f);
    Filter();
    EXPECT_GT(before, 0.1f);
    EXPECT_LT(Error(0, side, 0.5f), before / 4.0f);
}

TEST_F(FilteredPlane, KeepsTheEdgesOfSurfaces) {
    for (int i = 0; i < side * side; ++i) {
        const bool isRight = i % side >= side / 2;
        Sample(i, isRight ? 0.6f : 0.4f);
        // A depth discontinuity in the upper half, a crease in the lower half.
        PixelGuide& guide = guides[static_cast<std::size_t>(i)];
        if (isRight && i < side * side / 2) guide.position.z = 100.0f;
        if (isRight && i >= side * side / 2) guide.normal = Vector(1, 0, 0);
    }
    Filter();
    EXPECT_LT(Error(side / 2 - 1, side / 2, 0.4f), 0.06f);
    EXPECT_LT(Error(side / 2, side / 2 + 1, 0.6f), 0.06f);
}

TEST_F(FilteredPlane, KeepsTheEdgesOfShadows) {
    for (int i = 0; i < side * side; ++i)
        values[static_cast<std::size_t>(i)].openness = i % side < side / 2 ? 0.0f : 1.0f;
    Filter();
    EXPECT_LT(Openness(side / 2 - 2, 20), 0.05f);
    EXPECT_GT(Openness(side / 2 + 1, 20), 0.95f);
}

TEST_F(FilteredPlane, PixelsWithoutASurfaceStayUnchanged) {
    values[100].openness = 0.25f;
    guides[100].footprint = 0.0f;
    Filter();
    EXPECT_EQ(values[100].openness, 0.25f);
    EXPECT_EQ(values[101].openness, 1.0f);
}

/// A hollow hemisphere seen from above.
class BowlRender : public SphereRender {
protected:
    BowlRender() {
        PolygonMesh half = SphereQuads(4);
        std::vector<uint32_t> corners;
        std::vector<uint32_t> sizes;
        for (std::size_t face = 0; face < half.faceSizes.size(); ++face) {
            float height = 0.0f;
            for (std::size_t k = 0; k < 4; ++k)
                height += half.positions[half.faceVertices[face * 4 + k]][1];
            if (height > 0.0f) continue;
            sizes.push_back(4);
            for (std::size_t k = 0; k < 4; ++k) corners.push_back(half.faceVertices[face * 4 + k]);
        }
        half.faceSizes = sizes;
        half.faceVertices = corners;
        bowl = std::make_unique<LevelGeometry>(half);
        shown = VisibleLevel(*bowl);
        options.width = 200;
        options.height = 150;
        camera = FrameMeshes({shown}, {-0.3f, -0.9f, -0.8f}, 35.0f, 4.0f / 3.0f);
    }
    std::unique_ptr<LevelGeometry> bowl;
};

/// Returns the root mean square difference between two renders, in byte units.
double Difference(const RenderImage& a, const RenderImage& b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < a.rgb.size(); ++i) sum += std::pow(a.rgb[i] - b.rgb[i], 2.0);
    return std::sqrt(sum / static_cast<double>(a.rgb.size()));
}

TEST_F(BowlRender, IsBrightInside) {
    options.samples = 16;
    const RenderImage picture = Make();
    for (int y = 40; y < 80; ++y)
        for (int x = 60; x < 140; ++x) EXPECT_GT(Brightness(picture, x, y), 240) << x << " " << y;
}

TEST_F(BowlRender, HasNoNoiseInItsShadows) {
    options.samples = 16;
    const RenderImage few = Make();
    options.samples = 256;
    EXPECT_LT(Difference(few, Make()), 1.2);
}

TEST_F(BowlRender, LooksTheSameWithReversedNormals) {
    const RenderImage outward = Make();
    LevelMesh& mesh = *bowl->Bound();
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
        PackedNormal& n = mesh.vertexNormals.array[v];
        n = {static_cast<int16_t>(-n.x), static_cast<int16_t>(-n.y), static_cast<int16_t>(-n.z), 0};
    }
    EXPECT_EQ(Make().rgb, outward.rgb);
}

TEST_F(BowlRender, DoesNotDependOnBandsOrThreads) {
    options.width = 160;
    options.height = 200;
    const std::vector<RenderMesh> meshes = {shown};
    const EmbreeScene scene(meshes);
    const ImageRenderer renderer(scene, camera, options);
    const RenderImage whole = renderer.Render();
    EXPECT_EQ(renderer.Render(160 * 64).rgb, whole.rgb);
    EXPECT_EQ(renderer.Render(160 * 101).rgb, whole.rgb);
    const tbb::global_control one(tbb::global_control::max_allowed_parallelism, 1);
    EXPECT_EQ(renderer.Render().rgb, whole.rgb);
}

// A sudden change of slope in the brightness is visible as a line; a sphere must not have one.
TEST_F(SphereRender, HasNoLineWhereLightEnds) {
    LevelGeometry smooth{SphereQuads(6)};
    shown = VisibleLevel(smooth);
    options.width = 400;
    options.height = 300;
    options.samples = 32;
    camera = FrameMeshes({shown}, {0, 0, -1}, 35.0f, 4.0f / 3.0f);
    const RenderImage picture = Make();
    constexpr int reach = 6;
    // The brightness is tested along diagonals from the lit side to the dark side.
    for (int offset = -30; offset <= 30; offset += 10) {
        for (int i = -64; i <= 64; ++i) {
            const auto mean = [&](int along) {
                int sum = 0;
                for (int k = -2; k <= 2; ++k)
                    sum += Brightness(
                        picture, 200 + offset / 2 + along + k, 150 - offset / 2 + along + k);
                return static_cast<double>(sum) / 15.0;
            };
            const double bend = mean(i + reach) - 2.0 * mean(i) + mean(i - reach);
            EXPECT_LT(std::fabs(bend), 3.2) << offset << " " << i;
        }
    }
}

}  // namespace
}  // namespace trovik::test
