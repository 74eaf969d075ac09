// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/layers/LayerStack.h"
#include "framework/remesh/FaceTable.h"
#include "framework/remesh/MeshAppending.h"
#include "tests/remesh/ReplacedSurface.h"

#include <limits>

namespace trovik::test {
namespace {

constexpr uint32_t none = SurfaceAttributes::none;

class Appending : public testing::Test {
protected:
    ReplacementReport Append(Document& document, const MeshAppending& settings) {
        ReplacementReport report = document.ReplaceSurface(AppendMesh(settings));
        ExpectManifold(MeshOf(document));
        return report;
    }
    std::string Write(const std::string& name, const PolygonMesh& mesh) const {
        WriteMeshFile(folder.Path(name), mesh);
        return folder.Path(name);
    }
    static MatrixTransform Transform(const Vector& scale,
                                     const Vector& rotate,
                                     const Vector& move) {
        MatrixTransform transform;
        transform.Set(scale, rotate, move);
        return transform;
    }
    static Vector At(const PolygonMesh& mesh, std::size_t vertex) {
        const auto& p = mesh.positions[vertex];
        return {p[0], p[1], p[2]};
    }

    TemporaryFolder folder;
};

TEST_F(Appending, KeepsTheDataOfBothParts) {
    PolygonMesh old = SphereQuads(3);
    old.attributes.groupNames = {"head", "neck"};
    for (std::size_t face = 0; face < old.faceSizes.size(); ++face)
        old.attributes.faceGroups.push_back(face % 3 == 0 ? none : face % 2);
    PolygonMesh cube = Cube();
    cube.attributes.groupNames = {"horn", "head"};
    cube.attributes.faceGroups = {0, 0, 0, 1, 1, none};
    cube.attributes.materialNames = {"bone"};
    cube.attributes.faceMaterials.assign(6, 0);
    cube.attributes.faceSmoothing.assign(6, 3);
    for (std::size_t v = 0; v < cube.positions.size(); ++v) {
        cube.attributes.colors.push_back({0.2f * static_cast<float>(v % 5), 0.4f, 0.6f, 1.0f});
        cube.attributes.uvs.push_back({0.1f * static_cast<float>(v), 0.5f});
    }
    cube.attributes.cornerUvs = cube.faceVertices;
    const std::string path = Write("cube.obj", cube);

    Document document("sphere", old);
    document.SelectTool("Sculpt");
    document.Settings().radius = 0.4f;
    document.UpdateCamera();
    document.AddLayer("Bumps");
    Stroke(document, {0.0f, 0.0f, 1.0f});
    const auto count = static_cast<uint32_t>(old.positions.size());
    std::vector<uint8_t> amounts(count);
    for (uint32_t v = 0; v < count; ++v) amounts[v] = static_cast<uint8_t>(v % 128);
    document.Freeze(amounts, FreezeMode::Replace);
    const std::vector<Vector> before = PositionsOf(*document.Geometry().Bound());
    const std::size_t layered = document.ActiveLayer()->SlotCount();
    ASSERT_GT(layered, 0u);

    const ReplacementReport report =
        Append(document, {path, {}, Transform({2.0f, 2.0f, 2.0f}, {}, {5.0f, 0.0f, 0.0f})});
    EXPECT_THAT(report.warnings, testing::IsEmpty());
    const LevelMesh& level = *document.Geometry().Bound();
    const PolygonMesh result = MeshOf(document);
    ASSERT_EQ(result.positions.size(), count + 8u);
    ASSERT_EQ(result.faceSizes.size(), old.faceSizes.size() + 6);
    EXPECT_EQ(ComponentsOf(result).second, 2u);
    for (uint32_t v = 0; v < count; ++v) {
        EXPECT_EQ(level.Position(v), before[v]);
        EXPECT_EQ(level.Freeze(v), v % 128);
    }
    const SurfaceAttributes& made = document.Geometry().Attributes();
    for (uint32_t v = 0; v < 8; ++v) {
        EXPECT_EQ(level.Position(count + v), At(cube, v) * 2.0f + Vector(5.0f, 0.0f, 0.0f));
        EXPECT_EQ(level.Freeze(count + v), 0);
        for (std::size_t channel = 0; channel < 4; ++channel)
            EXPECT_NEAR(made.colors[count + v][channel], cube.attributes.colors[v][channel], 1e-6f);
    }
    for (uint32_t v = 0; v < count; ++v)
        EXPECT_EQ(made.colors[v], (std::array<float, 4>{1.0f, 1.0f, 1.0f, 1.0f}));
    EXPECT_THAT(made.groupNames, testing::ElementsAre("head", "neck", "horn"));
    const auto oldFaces = static_cast<std::ptrdiff_t>(old.faceSizes.size());
    EXPECT_TRUE(std::equal(old.attributes.faceGroups.begin(),
                           old.attributes.faceGroups.end(),
                           made.faceGroups.begin()));
    EXPECT_EQ(std::vector<uint32_t>(made.faceGroups.begin() + oldFaces, made.faceGroups.end()),
              (std::vector<uint32_t>{2, 2, 2, 0, 0, none}));
    EXPECT_EQ(made.faceMaterials.front(), none);
    EXPECT_EQ(made.materialNames.at(made.faceMaterials.back()), "bone");
    EXPECT_EQ(made.faceSmoothing.back(), 3u);
    ASSERT_EQ(made.cornerUvs.size(), result.faceVertices.size());
    EXPECT_EQ(made.cornerUvs.front(), none);
    for (std::size_t corner = 0; corner < 24; ++corner) {
        const uint32_t uv = made.cornerUvs[static_cast<std::size_t>(oldFaces) * 4 + corner];
        EXPECT_EQ(made.uvs.at(uv), cube.attributes.uvs[cube.faceVertices[corner]]);
    }
    ASSERT_NE(document.ActiveLayer(), nullptr);
    EXPECT_EQ(document.ActiveLayer()->SlotCount(), layered);
    document.SetLayerStrength(0.0f);
    EXPECT_EQ(level.Position(count), At(cube, 0) * 2.0f + Vector(5.0f, 0.0f, 0.0f));
}

TEST_F(Appending, SplitsTheFacesOfTheFileOnly) {
    const std::string triangles = Write("triangles.obj", Icosahedron());
    Document quads("cube", Cube());
    const ReplacementReport split =
        Append(quads, {triangles, {}, Transform({1, 1, 1}, {}, {9, 0, 0})});
    EXPECT_THAT(split.warnings, testing::ElementsAre(testing::HasSubstr("into 60 quads")));
    EXPECT_EQ(MeshOf(quads).faceSizes.size(), 66u);
    for (uint32_t v = 0; v < 8; ++v)
        EXPECT_EQ(quads.Geometry().Bound()->Position(v), At(Cube(), v));
    // The split does not change the shape.
    EXPECT_EQ(quads.Geometry().Bound()->VertexCount(), 8u + 12u + 30u + 20u);
    EXPECT_EQ(quads.Geometry().Bound()->Position(8), At(Icosahedron(), 0) + Vector(9, 0, 0));

    Document single("icosahedron", Icosahedron());
    const ReplacementReport fans =
        Append(single, {Write("cube.obj", Cube()), {}, Transform({1, 1, 1}, {}, {9, 0, 0})});
    EXPECT_THAT(fans.warnings, testing::ElementsAre(testing::HasSubstr("into 12 triangles")));
    EXPECT_EQ(MeshOf(single).faceSizes, std::vector<uint32_t>(20 + 12, 3));
    EXPECT_EQ(single.Geometry().Bound()->VertexCount(), 12u + 8u);
}

TEST_F(Appending, SplitFacesKeepTheirDataAndAreNotMasked) {
    PolygonMesh mixed = NgonMix();
    mixed.attributes.groupNames = {"mix"};
    mixed.attributes.faceGroups.assign(mixed.faceSizes.size(), 0);
    mixed.attributes.colors.assign(mixed.positions.size(), {0.0f, 1.0f, 0.0f, 1.0f});
    const std::string path = Write("mixed.ply", mixed);
    Document document("cube", Cube());
    document.Freeze(std::vector<uint8_t>(8, 127), FreezeMode::Replace);
    Append(document, {path, {}, Transform({1, 1, 1}, {}, {0.1f, 0, 0})});
    const LevelMesh& level = *document.Geometry().Bound();
    const SurfaceAttributes& made = document.Geometry().Attributes();
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        EXPECT_EQ(level.Freeze(v), v < 8 ? 127 : 0) << v;
        EXPECT_EQ(made.colors[v][0], v < 8 ? 1.0f : 0.0f) << v;
    }
}

TEST_F(Appending, MirroredPartsFaceOutwards) {
    const std::string path = Write("cube.obj", Cube());
    Document document("cube", Cube());
    const double volume = VolumeOf(*document.Geometry().Bound());
    Append(document, {path, {}, Transform({-2, 1, 1}, {30, 40, 50}, {9, 0, 0})});
    EXPECT_NEAR(VolumeOf(*document.Geometry().Bound()), 3.0 * volume, 1e-4 * volume);
}

TEST_F(Appending, ConvertsUnitsAndUpAxis) {
    PolygonMesh cube = Cube();
    cube.attributes.space = {0.001, UpAxis::Z};
    const std::string path = Write("cube.obj", cube);
    PolygonMesh sphere = SphereQuads(2);
    sphere.attributes.space = {0.01, UpAxis::Y};
    const auto last = [&](const MeshAppending& settings) {
        Document document("sphere", sphere);
        Append(document, settings);
        return At(MeshOf(document), MeshOf(document).positions.size() - 1);
    };
    const Vector p = At(cube, 7);
    const auto expectNear = [](const Vector& a, const Vector& b) {
        EXPECT_LT((a - b).Length(), 1e-6f) << a.x << " " << a.y << " " << a.z;
    };
    expectNear(last({path}), Vector(p.x, p.z, -p.y) * 0.1f);
    expectNear(last({path, {0.01, UpAxis::Unknown}}), Vector(p.x, p.z, -p.y));
    expectNear(last({path, {0.1, UpAxis::Y}}), p * 10.0f);
}

TEST_F(Appending, PlacesInWorldOrMeshSpace) {
    const std::string path = Write("cube.obj", Cube());
    Document document("cube", Cube());
    document.SetTransform(Transform({2, 2, 2}, {0, 0, 90}, {1, 2, 3}));
    const MatrixTransform move = Transform({1, 1, 1}, {}, {9, 0, 0});
    Append(document, {path, {}, move, true});
    Vector world;
    const Vector local = document.Geometry().Bound()->Position(8);
    document.Geometry().Transform().LocalToWorld(&world, &local, 1.0f);
    EXPECT_LT((world - At(Cube(), 0) - Vector(9, 0, 0)).Length(), 1e-5f);
    Append(document, {path, {}, move, false});
    EXPECT_EQ(document.Geometry().Bound()->Position(16), At(Cube(), 0) + Vector(9, 0, 0));
}

TEST_F(Appending, SplitsTheFileWhereItIsNotManifold) {
    PolygonMesh fan = Cube();
    // Two cubes that touch at an edge.
    for (std::size_t v = 0; v < 8; ++v) {
        auto p = fan.positions[v];
        p[0] += fan.positions[6][0] - fan.positions[0][0];
        p[1] += fan.positions[6][1] - fan.positions[0][1];
        fan.positions.push_back(p);
    }
    for (std::size_t corner = 0; corner < 24; ++corner)
        fan.faceVertices.push_back(fan.faceVertices[corner] + 8);
    fan.faceSizes.assign(12, 4);
    for (uint32_t& vertex : fan.faceVertices)
        for (uint32_t first = 0; first < vertex; ++first)
            if (fan.positions[first] == fan.positions[vertex]) vertex = first;
    PolygonMesh copy = fan;
    const std::size_t split = MakeOrientedManifold(copy).splitVertices;
    ASSERT_GT(split, 0u);
    const std::string path = Write("fan.obj", fan);
    Document document("cube", Cube());
    document.Freeze(std::vector<uint8_t>(8, 127), FreezeMode::Replace);
    const ReplacementReport report = Append(document, {path});
    EXPECT_THAT(report.warnings,
                testing::ElementsAre(testing::HasSubstr("split at " + std::to_string(split))));
    const LevelMesh& level = *document.Geometry().Bound();
    for (uint32_t v = 8; v < level.VertexCount(); ++v) EXPECT_EQ(level.Freeze(v), 0) << v;
}

TEST_F(Appending, RefusesWhatCannotBeRead) {
    const std::string path = Write("cube.obj", Cube());
    Document document("cube", Cube());
    const std::string before = SceneOf(document);
    const auto message = [&](const MeshAppending& settings) -> std::string {
        try {
            document.ReplaceSurface(AppendMesh(settings));
        } catch (const HostError& error) {
            return error.what();
        }
        return "not refused";
    };
    EXPECT_THAT(message({folder.Path("missing.obj")}), testing::HasSubstr("missing.obj"));
    EXPECT_THAT(message({folder.Path("cube.png")}), testing::HasSubstr("extension"));
    const float huge = std::numeric_limits<float>::max();
    EXPECT_THAT(message({path, {}, Transform({huge, huge, huge}, {}, {huge, huge, huge})}),
                testing::HasSubstr("no finite position"));
    EXPECT_EQ(SceneOf(document), before);
    EXPECT_EQ(document.HistoryPosition(), 0u);
}

}  // namespace
}  // namespace trovik::test
