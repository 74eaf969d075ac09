// SPDX-License-Identifier: Apache-2.0

/// \file Tests the output of each shading mode, and the arrays that individual modes need.
#include "framework/errors/HostError.h"
#include "framework/freeze/FreezeCurvature.h"
#include "framework/render/Matcap.h"
#include "tests/SourceFolder.h"
#include "tests/pictures/SphereRender.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <fstream>
#include <set>

namespace trovik::test {
namespace {

TEST_F(SphereRender, NormalsAreColoursInCameraSpace) {
    options.shading = ShadingMode::Normals;
    camera.eye = Vector(5, 0, 0);
    const RenderImage picture = Make();
    const auto channel = [&](int x, int y, std::size_t k) {
        return static_cast<int>(picture.rgb[PixelAt(picture, x, y) * 3 + k]);
    };
    EXPECT_NEAR(channel(60, 45, 0), 128, 6);
    EXPECT_NEAR(channel(60, 45, 1), 128, 6);
    EXPECT_GT(channel(60, 45, 2), 250);
    EXPECT_GT(channel(83, 45, 0), 205);
    EXPECT_LT(channel(36, 45, 0), 50);
    EXPECT_GT(channel(60, 21, 1), 205);
}

TEST_F(SphereRender, FlatFacesHaveOneBrightness) {
    LevelGeometry box{Cube()};
    shown = VisibleLevel(box);
    camera = FrameMeshes({shown}, {0, 0, -1}, 35.0f, 120.0f / 90.0f);
    const auto range = [&] {
        const RenderImage picture = Make();
        int least = 765;
        int most = 0;
        for (int x = 45; x <= 75; ++x) {
            least = std::min(least, Brightness(picture, x, 45));
            most = std::max(most, Brightness(picture, x, 45));
        }
        return most - least;
    };
    EXPECT_GT(range(), 60);
    options.shading = ShadingMode::Flat;
    EXPECT_LT(range(), 40);
}

TEST_F(SphereRender, CavitiesAreDarkerAndRidgesBrighter) {
    options.shading = ShadingMode::Cavity;
    const int even = Brightness(Make(), 60, 45);
    std::vector<float> curvatures(shown.vertexCount, 1.0f);
    shown.curvatures = curvatures.data();
    const int hollow = Brightness(Make(), 60, 45);
    curvatures.assign(shown.vertexCount, -1.0f);
    const int ridge = Brightness(Make(), 60, 45);
    EXPECT_LT(hollow, even - 60);
    EXPECT_GT(ridge, even + 60);
}

TEST_F(SphereRender, TextureSpaceIsACheckerboard) {
    options.shading = ShadingMode::Uv;
    const RenderImage without = Make();
    const std::size_t middle = PixelAt(without, 60, 45) * 3;
    EXPECT_EQ(without.rgb[middle], without.rgb[middle + 2]);
    // The whole mesh has a single UV, which determines the red and green values.
    std::vector<float> uvs;
    for (uint32_t corner = 0; corner < shown.faceCount * 4; ++corner)
        uvs.insert(uvs.end(), {0.9f, 0.1f});
    shown.cornerUvs = uvs.data();
    const RenderImage right = Make();
    EXPECT_GT(right.rgb[middle], right.rgb[middle + 1] + 60);
    // The neighbouring square of the checkerboard, which has the other brightness.
    for (std::size_t i = 0; i < uvs.size(); i += 2) uvs[i] = 0.9f - 1.0f / 16.0f;
    EXPECT_NE(Brightness(Make(), 60, 45) / 60, Brightness(right, 60, 45) / 60);
}

TEST_F(SphereRender, MatcapsDifferAndLookTheSameFromEverySide) {
    options.shading = ShadingMode::Matcap;
    std::set<std::vector<uint8_t>> pictures;
    for (const std::string& name : Matcap::Names()) {
        options.matcap = name;
        pictures.insert(Make().rgb);
    }
    EXPECT_EQ(pictures.size(), Matcap::Names().size());
    options.matcap = "";
    const RenderImage front = Make();
    options.matcap = Matcap::Names().front();
    EXPECT_EQ(Make().rgb, front.rgb);
    camera.eye = Vector(-5, 0, 0);
    EXPECT_NEAR(Brightness(Make(), 50, 35), Brightness(front, 50, 35), 9);
    options.matcap = "plaid";
    EXPECT_THROW(Make(), HostError);
}

TEST(Matcaps, AreSmoothUpToTheRim) {
    for (const std::string& name : Matcap::Names()) {
        const Matcap matcap(name);
        for (int i = 0; i < 200; ++i) {
            const float angle = static_cast<float>(i) * 0.0314159f;
            const Vector rim = matcap.At(std::cos(angle), std::sin(angle));
            const Vector inside = matcap.At(std::cos(angle) * 0.999f, std::sin(angle) * 0.999f);
            EXPECT_LT((rim - inside).Length(), 0.06f) << name << " " << i;
            EXPECT_TRUE(std::isfinite(rim.Length()));
        }
    }
}

TEST(RenderedLevels, HaveTheCurvatureOfTheSurface) {
    LevelGeometry sphere{SphereQuads(3)};
    const RenderedLevel level(sphere, ShadingMode::Cavity);
    ASSERT_NE(level.Mesh().curvatures, nullptr);
    const std::vector<float> curvatures = ScaledCurvatures(sphere, 1.0f, 1);
    const float size = level.Mesh().curvatures[0] / curvatures[0];
    EXPECT_GT(size, 0.0f);
    for (uint32_t v = 0; v < level.Mesh().vertexCount; ++v)
        EXPECT_NEAR(level.Mesh().curvatures[v], curvatures[v] * size, 1e-5f);
    EXPECT_EQ(RenderedLevel(sphere, ShadingMode::Clay).Mesh().curvatures, nullptr);
}

TEST(RenderedLevels, OtherPositionsHaveTheirOwnCurvature) {
    LevelGeometry sphere{SphereQuads(3)};
    const LevelMesh& mesh = *sphere.Bound();
    std::vector<Vector> flat;
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
        const Vector p = mesh.Position(v);
        flat.push_back(Vector(p.x, p.y, 0.0f));
    }
    PackedNormal towardsZ{};
    towardsZ.z = 32767;
    const std::vector<PackedNormal> normals(mesh.VertexCount(), towardsZ);
    const RenderedLevel level(sphere, ShadingMode::Cavity, flat, normals);
    EXPECT_EQ(level.Mesh().positions, &flat[0].x);
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) EXPECT_EQ(level.Mesh().curvatures[v], 0.0f);
}

TEST(RenderedLevels, RefineTheTextureCoordinates) {
    PolygonMesh sheet = SingleQuad();
    sheet.attributes.uvs = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    sheet.attributes.cornerUvs = {0, 1, 2, 3};
    LevelGeometry geometry(sheet);
    geometry.Subdivide();
    const RenderedLevel level(geometry, ShadingMode::Uv);
    ASSERT_NE(level.Mesh().cornerUvs, nullptr);
    std::set<std::pair<float, float>> points;
    for (std::size_t corner = 0; corner < level.Mesh().faceCount * std::size_t{4}; ++corner)
        points.insert({level.Mesh().cornerUvs[corner * 2], level.Mesh().cornerUvs[corner * 2 + 1]});
    EXPECT_EQ(points.size(), 9u);
    EXPECT_EQ(points.count({0.5f, 0.5f}), 1u);
}

TEST(RenderedLevels, RefuseAMissingTexture) {
    LevelGeometry sphere{SphereQuads(2)};
    EXPECT_THROW(RenderedLevel(sphere, ShadingMode::Uv), HostError);
}

TEST(ShadingModes, AreThoseOfTheScriptSchema) {
    std::ifstream file(SourceFolder() + "/docs/stroke-script.schema.json");
    const auto render = nlohmann::json::parse(file).at("definitions").at("render");
    EXPECT_EQ(render.at("properties").at("shading").at("enum"), nlohmann::json(ShadingModeNames()));
    EXPECT_EQ(render.at("properties").at("matcap").at("enum"), nlohmann::json(Matcap::Names()));
    for (std::size_t i = 0; i < ShadingModeNames().size(); ++i)
        EXPECT_EQ(static_cast<std::size_t>(ShadingModeOf(ShadingModeNames()[i])), i);
    EXPECT_THROW(ShadingModeOf("plaid"), HostError);
}

}  // namespace
}  // namespace trovik::test
