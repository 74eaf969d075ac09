// SPDX-License-Identifier: Apache-2.0
#include "framework/baking/MapFile.h"
#include "framework/errors/HostError.h"
#include "tests/baking/BakedMeshes.h"
#include "tests/files/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

BakeOptions Options(MapKind kind, MapSpace space, std::uint32_t width, std::uint32_t height) {
    BakeOptions options;
    options.kind = kind;
    options.space = space;
    options.width = width;
    options.height = height;
    return options;
}

/// Returns two squares of 2 x 2 quads, offset by 3 in x. Each uses one half of the texture; with
/// `mirrored`, the UVs of the right square run from right to left.
PolygonMesh TwoSheets(bool mirrored) {
    PolygonMesh mesh;
    for (std::uint32_t sheet = 0; sheet < 2; ++sheet) {
        const PolygonMesh grid = GridMesh(2, 2);
        const auto first = static_cast<std::uint32_t>(mesh.positions.size());
        for (const std::array<float, 3>& p : grid.positions) {
            mesh.positions.push_back({p[0] + 3.0f * static_cast<float>(sheet), p[1], p[2]});
            const float across = sheet == 1 && mirrored ? 2.0f - p[0] : p[0];
            mesh.attributes.uvs.push_back(
                {0.5f * static_cast<float>(sheet) + 0.25f * across, 0.5f * p[1]});
        }
        for (const std::uint32_t v : grid.faceVertices) mesh.faceVertices.push_back(first + v);
        mesh.faceSizes.insert(mesh.faceSizes.end(), grid.faceSizes.begin(), grid.faceSizes.end());
    }
    mesh.attributes.cornerUvs = mesh.faceVertices;
    return mesh;
}

TEST(MapBakerTest, NormalsWithoutDetailPointStraightOut) {
    const TemporaryFolder folder;
    for (const PolygonMesh& mesh : {WithIslands(SteppedBox(), 8, 0.125f),
                                    WithIslands(Icosahedron(), 5, 0.125f),
                                    ArchedSheet(4, 0.0f)}) {
        const auto geometry = Refined(mesh, 2);
        const std::string path = folder.Path("normal.png");
        const MapReport report =
            BakeToFile(*geometry, Options(MapKind::Normal, MapSpace::Tangent, 128, 128), {path});
        EXPECT_GT(report.coveredTexels, 1000u);
        const FloatImage image = ReadImageFile(path);
        ASSERT_EQ(image.channels, 3u);
        for (std::size_t texel = 0; texel < 128u * 128u; ++texel) {
            ASSERT_NEAR(image.pixels[texel * 3], 0.5f, 1.01f / 65535.0f) << texel;
            ASSERT_NEAR(image.pixels[texel * 3 + 1], 0.5f, 1.01f / 65535.0f) << texel;
            ASSERT_EQ(image.pixels[texel * 3 + 2], 1.0f) << texel;
        }
    }
}

// The base is the plane z = 0 and the fine level is the slope z = 0.5 x + 0.25 y, so the expected
// values are known.
TEST(MapBakerTest, SlopeOverAPlaneHasTheAnalyticValues) {
    PolygonMesh mesh = GridMesh(2, 2);
    for (const std::array<float, 3>& p : mesh.positions)
        mesh.attributes.uvs.push_back({p[0] * 0.5f, p[1] * 0.5f});
    mesh.attributes.cornerUvs = mesh.faceVertices;
    const auto geometry = Refined(mesh, 2);
    MoveHighest(*geometry, [](std::uint32_t, const Vector& p) {
        return Vector(0.0f, 0.0f, 0.5f * p.x + 0.25f * p.y);
    });
    const BakedMap heights =
        BakeMap(*geometry, Options(MapKind::Displacement, MapSpace::Tangent, 8, 4), "d.exr");
    EXPECT_EQ(heights.from, 2u);
    EXPECT_EQ(heights.to, 0u);
    EXPECT_FLOAT_EQ(heights.range, 1.5f);
    EXPECT_EQ(heights.coveredTexels, 32u);
    EXPECT_EQ(heights.paddedTexels, 0u);
    EXPECT_EQ(heights.overlappingTexels, 0u);
    ASSERT_EQ(heights.tiles.size(), 1u);
    const FloatImage& image = heights.tiles[0].image;
    ASSERT_EQ(image.channels, 1u);
    const float facing = image.pixels[0] > 0.0f ? 1.0f : -1.0f;
    for (std::uint32_t y = 0; y < 4; ++y) {
        for (std::uint32_t x = 0; x < 8; ++x) {
            // In the top row, v is near 1 and y is near 2.
            const float px = (static_cast<float>(x) + 0.5f) * 0.25f;
            const float py = (3.5f - static_cast<float>(y)) * 0.5f;
            EXPECT_NEAR(image.pixels[y * 8 + x], facing * (0.5f * px + 0.25f * py), 1e-5f);
        }
    }
    const BakedMap normals =
        BakeMap(*geometry, Options(MapKind::Normal, MapSpace::Tangent, 4, 4), "n.exr");
    const float length = std::sqrt(0.25f + 0.0625f + 1.0f);
    for (std::size_t texel = 0; texel < 16; ++texel) {
        const float* n = normals.tiles[0].image.pixels.data() + texel * 3;
        EXPECT_NEAR(n[0], -0.5f / length, 1e-5f);
        EXPECT_NEAR(n[1], -0.25f / length, 1e-5f);
        EXPECT_NEAR(n[2], 1.0f / length, 1e-5f);
    }
    const BakedMap object =
        BakeMap(*geometry, Options(MapKind::Normal, MapSpace::Object, 4, 4), "n.exr");
    const float* n = object.tiles[0].image.pixels.data();
    EXPECT_NEAR(n[0], facing * -0.5f / length, 1e-5f);
    EXPECT_NEAR(n[1], facing * -0.25f / length, 1e-5f);
    EXPECT_NEAR(n[2], facing / length, 1e-5f);
}

TEST(MapBakerTest, MirroredIslandHoldsTheMirrorImage) {
    for (const MapKind kind : {MapKind::Vector, MapKind::Normal, MapKind::Displacement}) {
        SCOPED_TRACE(MapKindName(kind));
        const auto move = [](std::uint32_t, const Vector& p) {
            const float x = p.x > 2.5f ? p.x - 3.0f : p.x;
            return Vector(0.1f * x * x, 0.07f * x * p.y, 0.2f * std::sin(2.0f * x + p.y));
        };
        const auto mirrored = Refined(TwoSheets(true), 3);
        MoveHighest(*mirrored, move);
        const BakedMap map = BakeMap(*mirrored, Options(kind, MapSpace::Tangent, 32, 16), "m.exr");
        const FloatImage& image = map.tiles[0].image;
        EXPECT_EQ(map.coveredTexels, 512u);
        EXPECT_EQ(map.overlappingTexels, 0u);
        float largest = 0.0f;
        for (std::uint32_t y = 0; y < 16; ++y) {
            for (std::uint32_t x = 0; x < 16; ++x) {
                for (std::uint32_t part = 0; part < image.channels; ++part) {
                    const float left = image.pixels[(y * 32 + x) * image.channels + part];
                    const float right = image.pixels[(y * 32 + 31 - x) * image.channels + part];
                    // The tangent of the right piece has the opposite direction.
                    const float turned = image.channels == 3 && part == 0 ? -right : right;
                    EXPECT_NEAR(left, turned, 2e-5f) << x << ", " << y << ", " << part;
                    if (part == 0) largest = std::max(largest, std::fabs(left));
                }
            }
        }
        EXPECT_GT(largest, 0.05f);
    }
}

TEST(MapBakerTest, PaddingContinuesTheIslandAndLeavesOtherTexelsNeutral) {
    const auto geometry = Refined(WithIslands(GridMesh(2, 1), 2, 0.25f), 1);
    MoveHighest(*geometry, [](std::uint32_t, const Vector& p) {
        return Vector(0.0f, 0.0f, p.x < 1.0f ? 1.0f : p.x > 1.0f ? 3.0f : 2.0f);
    });
    // The islands cover columns 2 to 6 and 10 to 14 of 16, and rows 2 to 6 of the lower 8 rows.
    BakeOptions options = Options(MapKind::Displacement, MapSpace::Tangent, 16, 16);
    options.padding = 2;
    const BakedMap map = BakeMap(*geometry, options, "d.exr");
    EXPECT_EQ(map.coveredTexels, 32u);
    const FloatImage& image = map.tiles[0].image;
    std::uint64_t padded = 0;
    for (std::uint32_t y = 0; y < 16; ++y) {
        for (std::uint32_t x = 0; x < 16; ++x) {
            const bool right = x >= 8;
            const double cx = x + 0.5 - (right ? 12.0 : 4.0);
            const double cy = y + 0.5 - 12.0;
            const double dx = std::max(0.0, std::fabs(cx) - 2.0);
            const double dy = std::max(0.0, std::fabs(cy) - 2.0);
            const double away = dx * dx + dy * dy;
            const float value = std::fabs(image.pixels[y * 16 + x]);
            if (away > 4.0) {
                EXPECT_EQ(value, 0.0f) << x << ", " << y;
                continue;
            }
            padded += away > 0.0 ? 1u : 0u;
            // The values run from 1 to 2 on the left island and from 2 to 3 on the mirrored right
            // one.
            EXPECT_GE(value, right ? 2.0f : 1.0f) << x << ", " << y;
            EXPECT_LE(value, right ? 3.0f : 2.0f) << x << ", " << y;
            if (dx > 0.0) {
                const float edge = cx > 0.0 ? 2.0f : right ? 3.0f : 1.0f;
                EXPECT_NEAR(value, edge, 1e-5f) << x << ", " << y;
            }
        }
    }
    EXPECT_EQ(map.paddedTexels, padded);
    EXPECT_GT(padded, 40u);
}

TEST(MapBakerTest, OverlappingUvsAreReported) {
    PolygonMesh mesh = WithIslands(GridMesh(3, 1), 2, 0.25f);
    // Moves the UVs of face 2 onto those of face 0.
    for (std::size_t corner = 0; corner < 4; ++corner)
        mesh.attributes.uvs[8 + corner] = mesh.attributes.uvs[corner];
    const auto geometry = Refined(mesh, 1);
    const BakedMap map =
        BakeMap(*geometry, Options(MapKind::Displacement, MapSpace::Tangent, 16, 16), "d.exr");
    EXPECT_EQ(map.overlappingTexels, 16u);
    EXPECT_EQ(map.overlappingFace, 2u);
    const TemporaryFolder folder;
    const MapReport report = BakeToFile(*geometry,
                                        Options(MapKind::Displacement, MapSpace::Tangent, 16, 16),
                                        {folder.Path("d.exr")});
    EXPECT_EQ(report.warning,
              "on 16 texels the UVs of several faces overlap, for example those of face 2 of level "
              "0; the map "
              "contains the face with the lowest number there");
}

TEST(MapBakerTest, InputThatCannotBeBakedIsAOneLineError) {
    const auto geometry = Refined(WithIslands(GridMesh(2, 1), 2, 0.25f), 2);
    const auto message = [&geometry](const BakeOptions& options, const std::string& path) {
        return MessageOf<HostError>([&] { BakeToFile(*geometry, options, {path}); });
    };
    BakeOptions options = Options(MapKind::Displacement, MapSpace::Tangent, 16, 16);
    options.from = 3;
    EXPECT_EQ(message(options, "d.exr"), "there is no level 3; the highest is 2");
    options.from = 1;
    options.to = 1;
    EXPECT_EQ(message(options, "d.exr"),
              "a map stores the difference between a finer and a coarser level, but level 1 is not "
              "finer than "
              "level 1");
    options.to = 0;
    EXPECT_EQ(message(options, "d.jpg"),
              "d.jpg: the file name of a map must end in .exr, .png, .tif or .tiff");
    options.width = 0;
    EXPECT_EQ(message(options, "d.exr"),
              "cannot bake a map of 0 x 16 texels; width and height must be 1 to 16384");

    const auto bare = Refined(GridMesh(2, 1), 1);
    options = Options(MapKind::Normal, MapSpace::Tangent, 16, 16);
    EXPECT_EQ(MessageOf<HostError>([&] { BakeMap(*bare, options, "n.png"); }),
              "the mesh has no texture coordinates (UVs), which a map requires");

    PolygonMesh outside = WithIslands(GridMesh(2, 1), 2, 0.25f);
    for (std::array<float, 2>& uv : outside.attributes.uvs) uv[0] += 0.25f;
    const auto crossing = Refined(outside, 1);
    EXPECT_EQ(MessageOf<HostError>([&] { BakeMap(*crossing, options, "n.png"); }),
              "the UVs of face 1 of level 0, (0.875, 0.125) to (1.125, 0.375), are outside 0 to 1; "
              "use <UDIM> in the file name for one map per tile of the texture, or "
              "\"repeat\" for a texture that repeats");
    EXPECT_EQ(MessageOf<HostError>([&] { BakeMap(*crossing, options, "n.<UDIM>.png"); }),
              "the UVs of face 1 of level 0, (0.875, 0.125) to (1.125, 0.375), are not within "
              "one tile of the texture");
}

TEST(MapBakerTest, RepeatedTextureWrapsUvsOutsideTheTile) {
    const auto move = [](std::uint32_t, const Vector& p) { return Wave(p, 0, 0.1f); };
    BakeOptions options = Options(MapKind::Vector, MapSpace::Tangent, 32, 32);
    const auto inside = Refined(WithIslands(GridMesh(2, 1), 2, 0.25f), 2);
    MoveHighest(*inside, move);
    const BakedMap plain = BakeMap(*inside, options, "v.exr");

    PolygonMesh shifted = WithIslands(GridMesh(2, 1), 2, 0.25f);
    // The islands are shifted so that the right one crosses the edge of a tile.
    for (std::array<float, 2>& uv : shifted.attributes.uvs) {
        uv[0] += 3.0f + 5.0f / 32.0f;
        uv[1] -= 4.0f / 32.0f;
    }
    const auto outside = Refined(shifted, 2);
    MoveHighest(*outside, move);
    options.repeat = true;
    const BakedMap map = BakeMap(*outside, options, "v.exr");
    EXPECT_EQ(map.coveredTexels, plain.coveredTexels);
    EXPECT_EQ(map.overlappingTexels, 0u);
    options.padding = 2;
    const BakedMap narrow = BakeMap(*outside, options, "v.exr");
    EXPECT_LT(narrow.paddedTexels, map.paddedTexels);
    for (std::uint32_t y = 8; y < 32; ++y) {
        for (std::uint32_t x = 0; x < 32; ++x) {
            for (std::uint32_t part = 0; part < 3; ++part) {
                const float there = plain.tiles[0].image.pixels[(y * 32 + x) * 3 + part];
                const std::uint32_t row = (y + 4) % 32;
                const std::uint32_t column = (x + 5) % 32;
                const bool padding = x < 4 || x >= 28 || (x >= 12 && x < 20) || y < 20 || y >= 28;
                if (padding) continue;
                EXPECT_NEAR(map.tiles[0].image.pixels[(row * 32 + column) * 3 + part], there, 1e-6f)
                    << x << ", " << y;
            }
        }
    }
}

TEST(MapBakerTest, RangesAreAsRequestedOrRefused) {
    const TemporaryFolder folder;
    const auto geometry = Refined(WithIslands(GridMesh(2, 1), 2, 0.25f), 1);
    MoveHighest(*geometry, [](std::uint32_t, const Vector&) { return Vector(0, 0, 0.25f); });
    const BakeOptions options = Options(MapKind::Displacement, MapSpace::Tangent, 16, 16);
    MapFileOptions file = {folder.Path("d.png"), {}, 1.0f};
    EXPECT_EQ(BakeToFile(*geometry, options, file).text.scale, 2.0f);
    const FloatImage image = ReadImageFile(file.path);
    EXPECT_NEAR(std::fabs(image.pixels[12 * 16 + 4] - 0.5f), 0.125f, 0.6f / 65535.0f);
    EXPECT_NEAR(image.pixels[0], 0.5f, 0.6f / 65535.0f);
    file.range = 0.125f;
    EXPECT_EQ(MessageOf<HostError>([&] { BakeToFile(*geometry, options, file); }),
              file.path + ": the displacement reaches 0.250000, more than the range of 0.125000");
}

TEST(MapTextTest, WrittenLineIsReadBackAndOtherTextIsIgnored) {
    MapText text;
    text.kind = MapKind::Vector;
    text.space = MapSpace::Object;
    text.from = 5;
    text.to = 2;
    text.mid = 0.5f;
    text.scale = 0.1f;
    EXPECT_EQ(text.ToLine(), "trovik-map kind=vector space=object from=5 to=2 mid=0.5 scale=0.1");
    const auto back = MapText::FromLine(text.ToLine());
    ASSERT_TRUE(back.has_value());
    EXPECT_EQ(back->ToLine(), text.ToLine());
    for (const char* line :
         {"", "a photograph", "trovik-map kind=colour", "trovik-map scale=inf", "trovik-map scale"})
        EXPECT_FALSE(MapText::FromLine(line).has_value()) << line;
}

TEST(MapTextTest, EveryFormatStoresTheLine) {
    const TemporaryFolder folder;
    const std::vector<std::uint16_t> grey(4, 1000);
    FloatImage image;
    image.width = image.height = 2;
    image.channels = 1;
    image.pixels = {1, 2, 3, 4};
    const std::string line = MapText().ToLine();
    for (const char* name : {"m.png", "m.tif"})
        WriteImageFile(folder.Path(name), grey.data(), 2, 2, 1, line);
    for (const char* name : {"m.exr", "f.tif"}) WriteFloatImageFile(folder.Path(name), image, line);
    for (const char* name : {"m.png", "m.tif", "m.exr", "f.tif"})
        EXPECT_EQ(ReadImageDescription(folder.Path(name)), line) << name;
    WriteFloatImageFile(folder.Path("bare.exr"), image);
    EXPECT_EQ(ReadImageDescription(folder.Path("bare.exr")), "");
}

}  // namespace
}  // namespace trovik::test
