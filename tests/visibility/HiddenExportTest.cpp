// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/layers/LayerStack.h"
#include "framework/multires/VisibleSource.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/visibility/VisibilityState.h"

#include <gmock/gmock.h>

#include <map>
#include <set>
#include <tuple>

namespace trovik::test {
namespace {

/// A grid with UVs (two islands), colours, two groups and two materials.
PolygonMesh DecoratedGrid() {
    PolygonMesh mesh = GridMesh(4, 4);
    SurfaceAttributes& attributes = mesh.attributes;
    for (std::size_t corner = 0; corner < mesh.faceVertices.size(); ++corner) {
        const auto& p = mesh.positions[mesh.faceVertices[corner]];
        const bool isRight = corner / 4 % 4 >= 2;
        attributes.cornerUvs.push_back(static_cast<uint32_t>(attributes.uvs.size()));
        attributes.uvs.push_back({p[0] * 0.25f + (isRight ? 2.0f : 0.0f), p[1] * 0.25f});
    }
    for (const auto& p : mesh.positions)
        attributes.colors.push_back({p[0] * 0.25f, p[1] * 0.25f, 0.5f, 1.0f});
    attributes.groupNames = {"left", "right"};
    attributes.materialNames = {"skin", "cloth"};
    for (uint32_t face = 0; face < 16; ++face) {
        attributes.faceGroups.push_back(face % 4 / 2);
        attributes.faceMaterials.push_back(face / 8);
    }
    return mesh;
}

/// A face with its attributes by value, without any indices.
using FaceContent = std::vector<float>;

std::vector<FaceContent> Contents(const PolygonMesh& mesh) {
    std::vector<FaceContent> faces;
    const SurfaceAttributes& attributes = mesh.attributes;
    std::size_t corner = 0;
    for (std::size_t face = 0; face < mesh.faceSizes.size(); ++face) {
        FaceContent content;
        for (const std::size_t end = corner + mesh.faceSizes[face]; corner < end; ++corner) {
            const uint32_t v = mesh.faceVertices[corner];
            content.insert(content.end(), mesh.positions[v].begin(), mesh.positions[v].end());
            content.insert(content.end(), mesh.normals[v].begin(), mesh.normals[v].end());
            if (!attributes.colors.empty())
                content.insert(
                    content.end(), attributes.colors[v].begin(), attributes.colors[v].end());
            if (attributes.cornerUvs.empty()) continue;
            const auto& uv = attributes.uvs[attributes.cornerUvs[corner]];
            content.insert(content.end(), uv.begin(), uv.end());
        }
        if (!attributes.faceGroups.empty())
            content.push_back(static_cast<float>(attributes.faceGroups[face]));
        if (!attributes.faceMaterials.empty())
            content.push_back(static_cast<float>(attributes.faceMaterials[face]));
        faces.push_back(std::move(content));
    }
    return faces;
}

TEST(HiddenExport, HasOnlyVisibleFacesAndTheirData) {
    std::vector<ZooMesh> meshes = AllMeshes();
    meshes.push_back({"decorated", DecoratedGrid()});
    meshes.push_back({"large", GridMesh(90, 60)});
    for (const ZooMesh& zoo : meshes) {
        SCOPED_TRACE(zoo.name);
        LevelGeometry geometry(zoo.mesh);
        for (uint32_t index = 0; index < 3; ++index) {
            if (index > 0) geometry.Subdivide();
            if (geometry.Bound()->faceCount > 30000) break;
            std::mt19937 random(index);
            Change(geometry, VisibilityChange::ShowAll);
            FaceChoice chosen = RandomChoice(*geometry.Bound(), random, 40);
            chosen.back() = 0;
            Change(geometry, VisibilityChange::Hide, chosen);
            const LevelMesh& level = *geometry.Bound();
            const PolygonMesh all = GatherPolygons(LevelSource(geometry, {}));
            ASSERT_EQ(all.faceSizes.size(), level.faceCount)
                << "everything, unless a part is requested";
            const VisibleSource source(geometry, {});
            const PolygonMesh part = GatherPolygons(source);
            EXPECT_EQ(source.FaceCount(), part.faceSizes.size());
            EXPECT_EQ(source.CornerCount(), part.faceVertices.size());
            EXPECT_EQ(source.VertexCount(), part.positions.size());
            EXPECT_EQ(source.UvCount(), part.attributes.uvs.size());

            std::vector<FaceContent> expected;
            const std::vector<FaceContent> contents = Contents(all);
            std::set<uint32_t> vertices;
            std::set<uint32_t> uvs;
            for (uint32_t face = 0; face < level.faceCount; ++face) {
                if (level.IsFaceHidden(face)) continue;
                expected.push_back(contents[face]);
                const uint32_t corners = level.CornersPerFace();
                for (uint32_t k = face * corners; k < (face + 1) * corners; ++k) {
                    vertices.insert(all.faceVertices[k]);
                    if (!all.attributes.cornerUvs.empty()) uvs.insert(all.attributes.cornerUvs[k]);
                }
            }
            ASSERT_TRUE(Contents(part) == expected);
            // Every vertex of the test meshes has faces.
            EXPECT_EQ(part.positions.size(), vertices.size());
            EXPECT_EQ(part.attributes.uvs.size(), uvs.size());
            for (uint32_t v = 0; v < part.positions.size(); ++v)
                ASSERT_EQ(source.Position(v), part.positions[v]);
        }
    }
}

TEST(HiddenExport, WithoutHiddenFacesNothingChanges) {
    LevelGeometry geometry(DecoratedGrid());
    geometry.Subdivide();
    const PolygonMesh all = GatherPolygons(LevelSource(geometry, {}));
    const PolygonMesh part = GatherPolygons(VisibleSource(geometry, {}));
    EXPECT_EQ(part.positions, all.positions);
    EXPECT_EQ(part.faceVertices, all.faceVertices);
    EXPECT_EQ(part.attributes.cornerUvs, all.attributes.cornerUvs);
    EXPECT_EQ(part.attributes.uvs, all.attributes.uvs);
}

TEST(HiddenExport, LayersKeepTheOffsetsOfVisibleVertices) {
    LevelGeometry geometry(GridMesh(4, 4));
    LevelMesh& level = *geometry.Bound();
    auto layer = std::make_shared<SculptLayer>(&level, "one");
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        const Vector offset(0.0f, 0.0f, static_cast<float>(v));
        layer->set(nullptr, layer->SlotOf(v), v, &offset, true);
    }
    geometry.Layers().Insert(layer);
    FaceChoice chosen(level.faceCount);
    std::fill_n(chosen.begin(), 8, uint8_t{1});
    Change(geometry, VisibilityChange::Hide, chosen);
    const VisibleSource source(geometry, {});
    ASSERT_EQ(source.MorphTargets().size(), 1u);
    const MorphTarget& target = source.MorphTargets()[0];
    EXPECT_EQ(target.vertices.size(), source.VertexCount());
    for (const uint32_t v : target.vertices) {
        EXPECT_EQ(target.offset(v)[2], source.Position(v)[2]);
        EXPECT_EQ(source.BasePosition(v)[2], 0.0f);
    }
}

TEST(HiddenExport, MeshWithoutVisibleFacesIsRefused) {
    LevelGeometry geometry(Cube());
    Change(geometry, VisibilityChange::Invert);
    EXPECT_THAT([&] { VisibleSource(geometry, {}); },
                testing::ThrowsMessage<HostError>(testing::HasSubstr("every face is hidden")));
}

}  // namespace
}  // namespace trovik::test
