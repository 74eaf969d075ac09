// SPDX-License-Identifier: Apache-2.0
#include "framework/baking/MapDisplacement.h"
#include "framework/baking/MapFile.h"
#include "framework/edits/LayerSteps.h"
#include "framework/errors/HostError.h"
#include "framework/layers/LayerStack.h"
#include "tests/baking/BakedMeshes.h"
#include "tests/edits/ReportedCopy.h"
#include "tests/files/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstring>

namespace trovik::test {
namespace {

/// A plane of 4 x 4 quads, subdivided twice. Its UVs cover the unit square and its normals point
/// along z or -z.
class MapDisplacementTest : public ::testing::Test {
protected:
    MapDisplacementTest() {
        PolygonMesh mesh = GridMesh(4, 4);
        for (const std::array<float, 3>& p : mesh.positions)
            mesh.attributes.uvs.push_back({p[0] * 0.25f, p[1] * 0.25f});
        mesh.attributes.cornerUvs = mesh.faceVertices;
        geometry = Refined(mesh, 2);
        geometry->History().Clear();
        Vector normal;
        Level().FaceNormal(&normal, 0);
        facing = normal.z > 0.0f ? 1.0f : -1.0f;
    }
    LevelMesh& Level() { return *geometry->Bound(); }

    /// Writes a map of 2 x 2 texels, in the order upper left, upper right, lower left, lower right.
    std::string Map(const char* name, const std::array<float, 4>& values) {
        FloatImage image;
        image.width = image.height = 2;
        image.channels = 1;
        image.pixels.assign(values.begin(), values.end());
        WriteFloatImageFile(folder.Path(name), image);
        return folder.Path(name);
    }
    std::uint64_t Displace(const std::string& path, float strength = 1.0f) {
        DisplacementOptions options;
        options.path = path;
        options.strength = strength;
        return DisplaceByMap(*geometry, options);
    }
    float HeightAt(float x, float y) {
        for (std::uint32_t v = 0; v < Level().VertexCount(); ++v) {
            const Vector p = Level().Position(v);
            if (p.x == x && p.y == y) return facing * p.z;
        }
        ADD_FAILURE() << "no vertex at " << x << ", " << y;
        return 0.0f;
    }
    std::vector<char> Bits() {
        const auto* vertices = reinterpret_cast<const char*>(Level().vertices.array);
        const auto* normals = reinterpret_cast<const char*>(Level().vertexNormals.array);
        std::vector<char> bits(vertices, vertices + Level().VertexCount() * sizeof(Vertex));
        bits.insert(bits.end(), normals, normals + Level().VertexCount() * sizeof(PackedNormal));
        return bits;
    }

    TemporaryFolder folder;
    std::unique_ptr<LevelGeometry> geometry;
    float facing = 1.0f;
};

TEST_F(MapDisplacementTest, InterpolatesBetweenTexelCentresAndClampsBeyondThem) {
    // Of the 17 x 17 vertices, 5 x 5 do not move: those in the corner beyond the centre of the
    // texel with value 0.
    EXPECT_EQ(Displace(Map("d.exr", {0.0f, 4.0f, 8.0f, 16.0f})), 17u * 17u - 5u * 5u);
    // Texel centres are at 1 and 3; the top row is at y = 3.
    EXPECT_FLOAT_EQ(HeightAt(1, 1), 8.0f);
    EXPECT_FLOAT_EQ(HeightAt(3, 1), 16.0f);
    EXPECT_FLOAT_EQ(HeightAt(2, 1), 12.0f);
    EXPECT_FLOAT_EQ(HeightAt(2, 2), 7.0f);
    EXPECT_FLOAT_EQ(HeightAt(3, 3.5f), 4.0f);
    EXPECT_FLOAT_EQ(HeightAt(4, 0), 16.0f);
    EXPECT_FLOAT_EQ(HeightAt(3, 2), 10.0f);
}

TEST_F(MapDisplacementTest, RepeatedMapsMeetAtTheirEdges) {
    DisplacementOptions options;
    options.path = Map("d.exr", {2.0f, 4.0f, 8.0f, 16.0f});
    options.repeat = true;
    options.mid = 1.0f;
    options.scale = 0.5f;
    DisplaceByMap(*geometry, options);
    EXPECT_FLOAT_EQ(HeightAt(0, 1), 0.5f * (12.0f - 1.0f));
    EXPECT_FLOAT_EQ(HeightAt(4, 1), 0.5f * (12.0f - 1.0f));
    EXPECT_FLOAT_EQ(HeightAt(0, 0), 0.5f * (7.5f - 1.0f));
}

TEST_F(MapDisplacementTest, IsOneUndoStepThatRestoresEveryBit) {
    const std::vector<char> before = Bits();
    Displace(Map("d.exr", {0.0f, 4.0f, 0.0f, 1.0f}));
    const std::vector<char> after = Bits();
    EXPECT_NE(before, after);
    ASSERT_EQ(geometry->History().Position(), 1u);
    EXPECT_EQ(geometry->History().Label(0), "Displace");
    ASSERT_TRUE(geometry->History().Undo(*geometry));
    EXPECT_EQ(Bits(), before);
    ASSERT_TRUE(geometry->History().Redo(*geometry));
    EXPECT_EQ(Bits(), after);
    Level().ComputeNormals();
    EXPECT_EQ(Bits(), after) << "normals must match the shape";
}

TEST_F(MapDisplacementTest, ReportsTheChangedPatches) {
    ReportedCopy copy([this]() -> LevelGeometry& { return *geometry; });
    Displace(Map("d.exr", {0.0f, 4.0f, 0.0f, 1.0f}));
    EXPECT_EQ(copy.Difference(), "");
    EXPECT_EQ(copy.reports, 1u);
    EXPECT_EQ(copy.reportsOfAll, 0u);
    geometry->History().Undo(*geometry);
    EXPECT_EQ(copy.Difference(), "");
}

TEST_F(MapDisplacementTest, ZeroMapMakesNoUndoStep) {
    const std::vector<char> before = Bits();
    EXPECT_EQ(Displace(Map("d.exr", {0, 0, 0, 0})), 0u);
    EXPECT_EQ(Bits(), before);
    EXPECT_EQ(geometry->History().Position(), 0u);
}

TEST_F(MapDisplacementTest, MaskWeightsReduceTheDisplacement) {
    for (std::uint32_t v = 0; v < Level().VertexCount(); ++v) {
        const Vector p = Level().Position(v);
        Level().SetFreeze(v, p.x < 2.0f ? 127 : p.x == 2.0f ? 64 : 0);
    }
    Displace(Map("d.exr", {8, 8, 8, 8}));
    EXPECT_EQ(HeightAt(1, 1), 0.0f);
    EXPECT_FLOAT_EQ(HeightAt(2, 1), 8.0f * (63.0f / 127.0f));
    EXPECT_EQ(HeightAt(3, 1), 8.0f);
}

TEST_F(MapDisplacementTest, IsWrittenToTheActiveLayer) {
    geometry->History().Push(AddLayerAsStep(*geometry, "map"));
    SculptLayer& layer = *Level().ActiveLayer();
    const std::vector<char> before = Bits();
    Displace(Map("d.exr", {8, 8, 8, 8}), 0.5f);
    EXPECT_EQ(HeightAt(1, 1), 4.0f);
    EXPECT_EQ(layer.SlotCount(), Level().VertexCount());
    EXPECT_EQ(layer.Offset(0), Vector(0, 0, facing * 4.0f));
    const std::vector<char> after = Bits();
    geometry->History().Undo(*geometry);
    EXPECT_EQ(Bits(), before);
    EXPECT_EQ(layer.Offset(0), Vector());
    geometry->History().Redo(*geometry);
    EXPECT_EQ(Bits(), after);

    SculptLayer::Properties given = layer.UserProperties();
    given.strength = 0.25f;
    geometry->History().Push(SetLayerPropertiesAsStep(*geometry, layer, given));
    EXPECT_EQ(HeightAt(1, 1), 1.0f);
    Displace(Map("e.exr", {8, 8, 8, 8}));
    EXPECT_EQ(HeightAt(1, 1), 3.0f) << "the layer's strength must scale the displacement";
    given.writable = false;
    geometry->History().Push(SetLayerPropertiesAsStep(*geometry, layer, given));
    EXPECT_EQ(MessageOf<HostError>([&] { Displace(folder.Path("e.exr")); }),
              "the active layer \"map\" is hidden or locked");
}

TEST_F(MapDisplacementTest, IntegerTexelsHaveTheirZeroAtOneHalf) {
    const std::vector<std::uint16_t> numbers = {0, 65535, 0, 65535};
    WriteImageFile(folder.Path("d.png"), numbers.data(), 2, 2, 1);
    Displace(folder.Path("d.png"));
    EXPECT_EQ(HeightAt(1, 1), -0.5f);
    EXPECT_EQ(HeightAt(3, 1), 0.5f);
}

TEST_F(MapDisplacementTest, VectorsFollowTheTextureDirections) {
    FloatImage image;
    image.width = image.height = 1;
    image.channels = 3;
    image.pixels = {1.0f, 2.0f, 3.0f};
    WriteFloatImageFile(folder.Path("v.exr"), image);
    DisplacementOptions options;
    options.path = folder.Path("v.exr");
    options.kind = MapKind::Vector;
    for (const MapSpace space : {MapSpace::Tangent, MapSpace::Object}) {
        options.space = space;
        const Vector before = Level().Position(7);
        DisplaceByMap(*geometry, options);
        const Vector move = Level().Position(7) - before;
        const float out = space == MapSpace::Tangent ? facing : 1.0f;
        EXPECT_LT((move - Vector(1.0f, 2.0f, 3.0f * out)).Length(), 1e-5f);
    }
}

TEST_F(MapDisplacementTest, UnsuitableMapIsRefusedAndNothingChanges) {
    const std::vector<char> before = Bits();
    const auto message = [this](const DisplacementOptions& options) {
        return MessageOf<HostError>([&] { DisplaceByMap(*geometry, options); });
    };
    DisplacementOptions options;
    options.path = folder.Path("none.exr");
    EXPECT_NE(message(options).find("none.exr"), std::string::npos);
    options.path = Map("grey.exr", {1, 1, 1, 1});
    options.kind = MapKind::Vector;
    EXPECT_EQ(message(options),
              options.path + ": a vector map must have three channels; this image has 1");
    MapText normal;
    normal.kind = MapKind::Normal;
    FloatImage image;
    image.width = image.height = 1;
    image.channels = 3;
    image.pixels = {0.5f, 0.5f, 1.0f};
    WriteFloatImageFile(folder.Path("n.exr"), image, normal.ToLine());
    options = {};
    options.path = folder.Path("n.exr");
    EXPECT_EQ(message(options), options.path + ": a normal map contains no displacement");
    options.path = Map("huge.exr", {3e38f, 3e38f, 3e38f, 3e38f});
    options.strength = 100.0f;
    EXPECT_NE(message(options).find("would get a non-finite position"), std::string::npos);
    EXPECT_EQ(Bits(), before);
    EXPECT_EQ(geometry->History().Position(), 0u);

    SurfaceAttributes shifted = geometry->Attributes();
    for (std::array<float, 2>& uv : shifted.uvs) uv[1] += 0.5f;
    geometry->RestoreAttributes(shifted);
    options = {};
    options.path = folder.Path("grey.exr");
    EXPECT_NE(message(options).find("are outside 0 to 1"), std::string::npos);
    geometry->RestoreAttributes({});
    EXPECT_EQ(message(options), "the mesh has no texture coordinates (UVs), which a map requires");
}

// The two sides of a seam read different texels of the map but share vertices.
TEST(MapDisplacementSeamTest, SeamVertexMovesByTheMeanOfItsSides) {
    const TemporaryFolder folder;
    // The left quad uses the left half of the texture and the right quad the right half, with a gap
    // in between.
    const auto geometry = Refined(WithIslands(GridMesh(2, 1), 2, 0.25f), 2);
    FloatImage image;
    image.width = 4;
    image.height = 1;
    image.channels = 1;
    image.pixels = {1.0f, 1.0f, 5.0f, 5.0f};
    WriteFloatImageFile(folder.Path("d.exr"), image);
    DisplacementOptions options;
    options.path = folder.Path("d.exr");
    DisplaceByMap(*geometry, options);
    const LevelMesh& level = *geometry->Bound();
    int onSeam = 0;
    for (std::uint32_t v = 0; v < level.VertexCount(); ++v) {
        const Vector p = level.Position(v);
        const float height = std::fabs(p.z);
        if (p.x == 1.0f) {
            // On the left, the seam is at u = 0.375, the centre of texel 1; on the right, which is
            // mirrored, it is at u = 0.625, the centre of texel 2. The mean of 1 and 5 is 3.
            EXPECT_FLOAT_EQ(height, 3.0f);
            ++onSeam;
        } else {
            EXPECT_FLOAT_EQ(height, p.x < 1.0f ? 1.0f : 5.0f);
        }
    }
    EXPECT_EQ(onSeam, 5);
}

}  // namespace
}  // namespace trovik::test
