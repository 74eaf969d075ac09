// SPDX-License-Identifier: Apache-2.0
#include "framework/layers/SculptLayer.h"
#include "framework/multires/LevelChange.h"
#include "framework/trace/MeshState.h"
#include "tests/edits/EditStroke.h"
#include "tests/files/TemporaryFolder.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/trace/NpyArray.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace trovik::test {
namespace {

class Holder final : public MeshUnlocker {
public:
    bool IsStrokeFree() override { return free; }
    bool free = false;
};

class MeshStateTest : public ::testing::Test {
protected:
    NpyArray Write(LevelGeometry& geometry, const std::string& file) {
        WriteMeshState(folder.Path("m"), geometry, &brush, mirrorCorners);
        return NpyArray(folder.Path("m/" + file));
    }
    nlohmann::json Meta(LevelGeometry& geometry) {
        WriteMeshState(folder.Path("m"), geometry, &brush, false);
        return nlohmann::json::parse(TemporaryFolder::Content(folder.Path("m/meta.json")));
    }
    bool Has(const std::string& file) const {
        return std::filesystem::exists(folder.Path("m/" + file));
    }

    TemporaryFolder folder;
    Holder brush;
    bool mirrorCorners = false;
};

TEST_F(MeshStateTest, EveryLevelHasFacesPositionsAndFlags) {
    LevelGeometry geometry(Icosahedron());
    geometry.Subdivide();
    LevelMesh& fine = *geometry.Bound();
    fine.SetPosition(4, {1.5f, -2.5f, 0.25f});
    fine.faceFlags[3] = 0;

    const NpyArray faces = Write(geometry, "level-1/face_vertex_indices.npy");
    EXPECT_EQ(faces.Type(), "'<u4'");
    EXPECT_EQ(faces.Shape(), "(60, 4)");
    EXPECT_EQ(
        faces.Values<uint32_t>(),
        std::vector<uint32_t>(fine.faceVertexIndices.array, fine.faceVertexIndices.array + 240));
    const NpyArray positions = Write(geometry, "level-1/positions.npy");
    EXPECT_EQ(positions.Type(), "'<f4'");
    EXPECT_EQ(positions.Shape(), "(62, 3)");
    const std::vector<float> values = positions.Values<float>();
    EXPECT_EQ(std::vector<float>(values.begin() + 12, values.begin() + 15),
              (std::vector<float>{1.5f, -2.5f, 0.25f}));
    const NpyArray flags = Write(geometry, "level-1/face_flags.npy");
    EXPECT_EQ(flags.Type(), "'|u1'");
    EXPECT_EQ(flags.Values<uint8_t>()[2], 2);
    EXPECT_EQ(flags.Values<uint8_t>()[3], 0);
    EXPECT_EQ(Write(geometry, "level-0/face_vertex_indices.npy").Shape(), "(20, 3)");
    EXPECT_EQ(Write(geometry, "level-0/positions.npy").Shape(), "(12, 3)");
}

TEST_F(MeshStateTest, BoundLevelHasNormalsMaskAndLinkWords) {
    LevelGeometry geometry(GridMesh(2, 2));
    LevelMesh& mesh = *geometry.Bound();
    mesh.vertexNormals[1] = {5, -6, 7, 8};
    mesh.SetFreeze(2, 100);
    mesh.vertices[2].freeze |= 0x80;
    mesh.vertices[3].changeLink = 0xfffffff0u;
    const NpyArray normals = Write(geometry, "normals.npy");
    EXPECT_EQ(normals.Type(), "'<i2'");
    EXPECT_EQ(normals.Shape(), "(9, 4)");
    const std::vector<int16_t> words = normals.Values<int16_t>();
    EXPECT_EQ(std::vector<int16_t>(words.begin() + 4, words.begin() + 8),
              (std::vector<int16_t>{5, -6, 7, 8}));
    const NpyArray freeze = Write(geometry, "freeze.npy");
    EXPECT_EQ(freeze.Type(), "'|u1'");
    EXPECT_EQ(freeze.Values<uint8_t>(), (std::vector<uint8_t>{0, 0, 228, 0, 0, 0, 0, 0, 0}));
    const NpyArray links = Write(geometry, "change_link.npy");
    EXPECT_EQ(links.Type(), "'<u4'");
    EXPECT_EQ(links.Values<uint32_t>()[3], 0xfffffff0u);
    EXPECT_FALSE(Has("records.npy"));
    EXPECT_FALSE(Has("layer.npy"));
    EXPECT_FALSE(Has("layer_rest.npy"));
    EXPECT_FALSE(Has("mirror_corners.npy"));
}

TEST_F(MeshStateTest, RecordsAreThoseOfTheOpenChange) {
    LevelGeometry geometry(GridMesh(2, 2));
    LevelMesh& mesh = *geometry.Bound();
    mesh.vertices[5].changeLink = 77;
    const std::unique_ptr<MeshChange> change(mesh.StartChange());
    EXPECT_EQ(Write(geometry, "records.npy").Shape(), "(0,)");
    MoveVertex(*change, 5, {0.0f, 0.0f, 1.0f});
    mesh.changeRecords[0].buildUp = 0.5f;
    const NpyArray records = Write(geometry, "records.npy");
    EXPECT_EQ(records.Shape(), "(1,)");
    const std::vector<StoredVertexInfo> values = records.Values<StoredVertexInfo>();
    ASSERT_EQ(values.size(), 1u);
    EXPECT_EQ(values[0].vertexIndex, 5u);
    EXPECT_EQ(values[0].visitStampWord, 77u);
    EXPECT_EQ(values[0].originalPosition[2], 0.0f);
    EXPECT_EQ(values[0].originalNormal.z, 32767);
    EXPECT_EQ(values[0].buildUp, 0.5f);
    EXPECT_EQ(Write(geometry, "change_link.npy").Values<uint32_t>()[5], 0u);
}

TEST_F(MeshStateTest, LayerIsOffsetAndRestByVertex) {
    LevelGeometry geometry(GridMesh(1, 1));
    LevelMesh& mesh = *geometry.Bound();
    SculptLayer layer(&mesh, "L");
    mesh.SetActiveLayer(&layer);
    const Vector offset(0.0f, 0.0f, 2.0f);
    layer.set(nullptr, layer.SlotOf(3), 3, &offset, true);
    layer.SetStrength(0.5f);
    EXPECT_EQ(mesh.Position(3).z, 1.0f);
    const std::vector<float> offsets = Write(geometry, "layer.npy").Values<float>();
    const std::vector<float> rest = Write(geometry, "layer_rest.npy").Values<float>();
    EXPECT_EQ(offsets, (std::vector<float>{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2}));
    ASSERT_EQ(rest.size(), 12u);
    EXPECT_EQ(rest[11], 0.0f);
    layer.SetWritable(false);
    const nlohmann::json meta = Meta(geometry);
    EXPECT_EQ(meta["hasLayer"], true);
    EXPECT_EQ(meta["layerWritable"], false);
    EXPECT_EQ(meta["layerStrength"], 0.5);
}

TEST_F(MeshStateTest, MirrorCornersAreThoseOfTheMesh) {
    LevelGeometry geometry(GridMesh(2, 1));
    mirrorCorners = true;
    const NpyArray array = Write(geometry, "mirror_corners.npy");
    EXPECT_EQ(array.Type(), "'<i4'");
    EXPECT_EQ(array.Shape(), "(2, 4, 3)");
    std::vector<int32_t> expected;
    for (uint32_t face = 0; face < 2; ++face) {
        for (uint32_t corner = 0; corner < 4; ++corner) {
            uint32_t toFace = 0, toCorner = 0;
            const int32_t vertex = geometry.Bound()->MirrorVertex(face, corner, &toFace, &toCorner);
            expected.push_back(vertex);
            expected.push_back(vertex < 0 ? -1 : static_cast<int32_t>(toFace));
            expected.push_back(vertex < 0 ? -1 : static_cast<int32_t>(toCorner));
        }
    }
    EXPECT_EQ(array.Values<int32_t>(), expected);
}

TEST_F(MeshStateTest, MetaHasAllOtherData) {
    LevelGeometry geometry(Icosahedron());
    geometry.Subdivide();
    geometry.Subdivide();
    geometry.BindLevel(1);
    geometry.Transform().Set({2.0f, 4.0f, 8.0f}, {}, {1.0f, 0.0f, 0.0f});
    geometry.Bound()->visitStamp = 42;
    geometry.Bound()->SetFreeze(7, 1);
    EXPECT_EQ(Meta(geometry), R"({
        "meshType": 1, "level": 1, "lowestLevel": 0, "highestLevel": 2,
        "levelMeshTypes": [0, 1, 1], "visitStamp": 42, "vertexCount": 62, "faceCount": 60,
        "localToWorld": [2.0, 0.0, 0.0, 0.0, 0.0, 4.0, 0.0, 0.0, 0.0, 0.0, 8.0, 0.0, 1.0, 0.0, 0.0, 1.0],
        "worldToLocal": [0.5, 0.0, 0.0, 0.0, 0.0, 0.25, 0.0, 0.0, 0.0, 0.0, 0.125, 0.0, -0.5, 0.0, 0.0, 1.0],
        "scale": [2.0, 4.0, 8.0], "freezeQuery": 1, "hasLayer": false, "layerWritable": false,
        "layerStrength": 1.0, "lockable": true, "isSubdivisionLevel": true})"_json);
}

TEST_F(MeshStateTest, LockableIsTheResultOfLockWithoutLocking) {
    LevelGeometry geometry(SingleQuad());
    LevelMesh& mesh = *geometry.Bound();
    EXPECT_EQ(Meta(geometry)["lockable"], true);
    EXPECT_EQ(mesh.LockHolder(), nullptr);
    Holder other;
    mesh.Lock(&other);
    EXPECT_EQ(Meta(geometry)["lockable"], false) << "the other brush's stroke is running";
    other.free = true;
    EXPECT_EQ(Meta(geometry)["lockable"], true);
    EXPECT_EQ(mesh.LockHolder(), &other);
    mesh.Lock(&brush);
    EXPECT_EQ(Meta(geometry)["lockable"], true) << "its own lock";
    mesh.SetLockable(false);
    EXPECT_EQ(Meta(geometry)["lockable"], false);
}

}  // namespace
}  // namespace trovik::test
