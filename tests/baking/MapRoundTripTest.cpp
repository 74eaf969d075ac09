// SPDX-License-Identifier: Apache-2.0

/// \file Tests that a baked map reproduces the sculpted shape on the smooth refinement of its base.
///
/// The error bound of the tests: a map is linear within each face, and a vertex reads the mean of
/// texels that are at most one texel away in each direction, half a texel on average. The error is
/// therefore at most (change of the displacement from vertex to vertex) x (texel size / face size),
/// or twice that where the UVs are skewed, as in triangles, or where the frame rotates.
#include "framework/baking/MapDisplacement.h"
#include "framework/baking/MapFile.h"
#include "tests/baking/BakedMeshes.h"
#include "tests/files/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

struct Case {
    const char* name;
    PolygonMesh mesh;
    /// The number of level-0 faces across the texture.
    float facesAcross;
};

std::vector<Case> Cases() {
    return {{"one island", ArchedSheet(4, 1.0f / 16.0f), 4.6f},
            {"islands, mirrored ones too", WithIslands(SteppedBox(), 8, 0.125f), 8.0f / 0.75f},
            {"sphere of islands", WithIslands(SphereQuads(1), 5, 0.125f), 5.0f / 0.75f},
            {"triangles", WithIslands(Icosahedron(), 5, 0.125f), 5.0f / 0.75f}};
}

constexpr unsigned levels = 3;
constexpr std::uint32_t size = 256;

class MapRoundTrip : public ::testing::Test {
protected:
    /// Returns the distance between the displaced smooth surface and the sculpted one.
    float Error(LevelGeometry& sculpted, const PolygonMesh& base, const BakeOptions& options) {
        const std::string path = folder.Path(options.kind == MapKind::Vector ? "v.exr" : "d.exr");
        report = BakeToFile(sculpted, options, {path});
        const auto smooth = Refined(base, levels);
        DisplacementOptions displacement;
        displacement.path = path;
        DisplaceByMap(*smooth, displacement);
        return LargestDistance(PositionsOf(*smooth->Bound()), PositionsOf(*sculpted.Bound()));
    }
    float Bound(const LevelGeometry& sculpted, const Case& one, std::uint32_t texels) const {
        const auto smooth = Refined(one.mesh, levels);
        const float step = LargestStep(
            *sculpted.Bound(), PositionsOf(*sculpted.Bound()), PositionsOf(*smooth->Bound()));
        const float texelsOfFace = static_cast<float>(texels) / (one.facesAcross * 8.0f);
        return 2.0f * step / texelsOfFace;
    }

    TemporaryFolder folder;
    MapReport report;
};

TEST_F(MapRoundTrip, VectorMapReproducesTheSculptedSurface) {
    for (const Case& one : Cases()) {
        for (const MapSpace space : {MapSpace::Tangent, MapSpace::Object}) {
            SCOPED_TRACE(std::string(one.name) + ", " + MapSpaceName(space));
            const auto sculpted = Refined(one.mesh, levels);
            MoveHighest(*sculpted,
                        [](std::uint32_t v, const Vector& p) { return Wave(p, v, 0.1f); });
            BakeOptions options;
            options.kind = MapKind::Vector;
            options.space = space;
            options.samples = 1;
            options.width = options.height = size;
            const float coarse = Error(*sculpted, one.mesh, options);
            EXPECT_GT(report.range, 0.05f);
            EXPECT_GT(coarse, 0.0f);
            EXPECT_LT(coarse, Bound(*sculpted, one, size));
            options.width = options.height = size * 4;
            const float fine = Error(*sculpted, one.mesh, options);
            EXPECT_LT(fine, Bound(*sculpted, one, size * 4));
            EXPECT_LT(fine, coarse * 0.4f);
        }
    }
}

TEST_F(MapRoundTrip, ScalarMapReproducesMovesAlongTheNormals) {
    for (const Case& one : Cases()) {
        SCOPED_TRACE(one.name);
        const auto sculpted = Refined(one.mesh, levels);
        const std::vector<Vector> smooth = PositionsOf(*sculpted->Bound());
        const LevelMesh& level = *sculpted->Bound();
        // Unit normals in single precision, computed like those of ComputeNormals.
        std::vector<Vector> normals(smooth.size());
        for (std::uint32_t face = 0; face < level.faceCount; ++face) {
            const std::uint32_t* v = level.faceVertexIndices.array + face * 4;
            const Vector normal = (smooth[v[2]] - smooth[v[0]]) & (smooth[v[3]] - smooth[v[1]]);
            for (int k = 0; k < 4; ++k) normals[v[k]] += normal;
        }
        MoveHighest(*sculpted, [&normals](std::uint32_t v, const Vector& p) {
            return normals[v].Normalized() * (0.1f * std::sin(3.0f * p.x + 2.0f * p.y));
        });
        BakeOptions options;
        options.samples = 1;
        options.width = options.height = size;
        EXPECT_LT(Error(*sculpted, one.mesh, options), Bound(*sculpted, one, size));
        EXPECT_NEAR(report.range, 0.1f, 0.01f);
    }
}

TEST_F(MapRoundTrip, SixteenBitsAddOnlyTheirRoundingError) {
    const PolygonMesh base = ArchedSheet(4, 1.0f / 16.0f);
    const auto sculpted = Refined(base, levels);
    MoveHighest(*sculpted, [](std::uint32_t v, const Vector& p) { return Wave(p, v, 0.1f); });
    BakeOptions options;
    options.kind = MapKind::Vector;
    options.width = options.height = 256;
    const auto applied = [&](const char* name) {
        const MapReport written = BakeToFile(*sculpted, options, {folder.Path(name)});
        EXPECT_EQ(written.text.mid, written.bits == MapBits::Float ? 0.0f : 0.5f);
        EXPECT_EQ(written.text.scale, written.bits == MapBits::Float ? 1.0f : 2.0f * written.range);
        report = written;
        const auto smooth = Refined(base, levels);
        DisplacementOptions displacement;
        displacement.path = folder.Path(name);
        DisplaceByMap(*smooth, displacement);
        return PositionsOf(*smooth->Bound());
    };
    const std::vector<Vector> exact = applied("map.exr");
    for (const char* name : {"map.png", "map.tif"}) {
        SCOPED_TRACE(name);
        const std::vector<Vector> rounded = applied(name);
        EXPECT_EQ(report.bits, MapBits::Sixteen);
        // Each of the three components has an error of up to half a quantisation step.
        EXPECT_LT(LargestDistance(exact, rounded), 1.8f * report.text.scale / 131070.0f + 1e-6f);
        EXPECT_GT(LargestDistance(exact, rounded), 0.0f);
    }
}

TEST_F(MapRoundTrip, MapRefersToTheBaseThatFollowsTheSculpting) {
    const PolygonMesh mesh = ArchedSheet(4, 1.0f / 16.0f);
    const auto sculpted = Refined(mesh, levels);
    LevelMesh& level = *sculpted->Bound();
    // Unlike in the tests above, binding level 0 propagates this bulge to it.
    for (std::uint32_t v = 0; v < level.VertexCount(); ++v)
        level.SetPosition(v, level.Position(v) + Wave(level.Position(v), v, 0.3f));
    level.ComputeNormals();
    const std::vector<Vector> shape = PositionsOf(level);
    const std::vector<Vector> baseBefore = PositionsOf(*sculpted->Level(0));
    BakeOptions options;
    options.kind = MapKind::Vector;
    options.samples = 1;
    options.width = options.height = size;
    BakeToFile(*sculpted, options, {folder.Path("v.exr")});
    EXPECT_EQ(sculpted->BoundIndex(), levels);
    EXPECT_EQ(PositionsOf(level), shape);
    EXPECT_EQ(PositionsOf(*sculpted->Level(0)), baseBefore);

    sculpted->BindLevel(0);
    EXPECT_NE(PositionsOf(*sculpted->Level(0)), baseBefore);
    sculpted->RemoveLevels(false, 0);
    for (unsigned i = 0; i < levels; ++i) sculpted->Subdivide();
    const float away = LargestDistance(PositionsOf(*sculpted->Bound()), shape);
    DisplacementOptions displacement;
    displacement.path = folder.Path("v.exr");
    EXPECT_EQ(DisplaceByMap(*sculpted, displacement), sculpted->Bound()->VertexCount());
    EXPECT_LT(LargestDistance(PositionsOf(*sculpted->Bound()), shape), 0.1f * away);
}

TEST_F(MapRoundTrip, EachTextureTileIsASeparateFile) {
    PolygonMesh base = WithIslands(SteppedBox(), 8, 0.125f);
    // Moves the odd faces, each with its own four UVs, to tile 1012.
    for (std::size_t uv = 0; uv < base.attributes.uvs.size(); ++uv) {
        if (uv / 4 % 2 == 0) continue;
        base.attributes.uvs[uv][0] += 1.0f;
        base.attributes.uvs[uv][1] += 1.0f;
    }
    const auto sculpted = Refined(base, levels);
    MoveHighest(*sculpted, [](std::uint32_t v, const Vector& p) { return Wave(p, v, 0.1f); });
    BakeOptions options;
    options.kind = MapKind::Vector;
    options.samples = 1;
    options.width = options.height = size;
    const std::string path = folder.Path("tiles.<UDIM>.exr");
    const MapReport written = BakeToFile(*sculpted, options, {path});
    EXPECT_EQ(
        written.files,
        (std::vector<std::string>{folder.Path("tiles.1001.exr"), folder.Path("tiles.1012.exr")}));
    const auto smooth = Refined(base, levels);
    DisplacementOptions displacement;
    displacement.path = path;
    DisplaceByMap(*smooth, displacement);
    const Case one = {"tiles", base, 8.0f / 0.75f};
    EXPECT_LT(LargestDistance(PositionsOf(*smooth->Bound()), PositionsOf(*sculpted->Bound())),
              Bound(*sculpted, one, size));
}

}  // namespace
}  // namespace trovik::test
