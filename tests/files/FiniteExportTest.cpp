// SPDX-License-Identifier: Apache-2.0

/// \file Tests that export to every format rejects non-finite numbers, whatever their source.
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/layers/LayerStack.h"
#include "framework/mesh/MeshSource.h"
#include "framework/multires/LevelSource.h"
#include "tests/files/AttributeSamples.h"
#include "tests/files/SampleMeshes.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>

namespace trovik {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr float Nan = std::numeric_limits<float>::quiet_NaN();
constexpr float Infinity = std::numeric_limits<float>::infinity();
constexpr float Largest = std::numeric_limits<float>::max();
constexpr const char* Names[] = {"m.obj", "m.ply", "m.stl", "m.gltf", "m.glb", "m.usda"};

/// Expects an error that names the file, and that no file is written.
template <class Write>
std::string Refusal(const TemporaryFolder& folder, const std::string& name, const Write& write) {
    const std::size_t files = folder.FileCount();
    std::string message = MessageOf<HostError>([&] { write(folder.Path(name)); });
    EXPECT_THAT(message, StartsWith(folder.Path(name) + ": "));
    EXPECT_EQ(folder.FileCount(), files);
    return message;
}

TEST(FiniteExport, EveryFormatRefusesEveryKindOfNonFiniteNumber) {
    const TemporaryFolder folder;
    for (const char* name : Names) {
        SCOPED_TRACE(name);
        const auto refusal = [&](const PolygonMesh& mesh) {
            return Refusal(
                folder, name, [&mesh](const std::string& path) { WriteMeshFile(path, mesh); });
        };
        PolygonMesh mesh = AttributedMesh();
        mesh.positions[7][1] = Nan;
        EXPECT_THAT(refusal(mesh),
                    HasSubstr("the position of vertex 7 (counted from 0) is (0.5, nan, 0); only "
                              "finite numbers can be exported"));
        mesh.positions[7][1] = -Infinity;
        EXPECT_THAT(refusal(mesh), HasSubstr("(0.5, -inf, 0)"));
        mesh = AttributedMesh();
        AddNormals(mesh);
        mesh.normals[3] = {0, 0, Infinity};
        EXPECT_THAT(refusal(mesh), HasSubstr("the normal of vertex 3 (counted from 0)"));
        mesh = AttributedMesh();
        mesh.attributes.uvs[2][0] = Nan;
        EXPECT_THAT(refusal(mesh), HasSubstr("texture coordinate 2 (counted from 0)"));
        mesh = AttributedMesh();
        mesh.attributes.colors[9][3] = Nan;
        EXPECT_THAT(refusal(mesh), HasSubstr("the colour of vertex 9 (counted from 0)"));
    }
    PolygonMesh mesh = AttributedMesh();
    mesh.positions[0][0] = Nan;
    EXPECT_THROW(WriteObj(folder.Path("a.obj"), mesh), HostError);
    EXPECT_THROW(WritePly(folder.Path("a.ply"), mesh, PlyEncoding::Text), HostError);
    EXPECT_THROW(WriteStl(folder.Path("a.stl"), mesh, StlEncoding::Text), HostError);
    EXPECT_EQ(folder.FileCount(), 0u);
}

TEST(FiniteExport, RefinementNearTheFloatLimitStaysFiniteAndConversionBeyondItIsRefused) {
    const TemporaryFolder folder;
    PolygonMesh mesh = TwoQuads();
    mesh.positions[1] = mesh.positions[4] = {Largest, 0, 0};
    LevelGeometry geometry(mesh);
    geometry.Subdivide();
    const LevelSource source(geometry, {});
    for (const char* name : Names) {
        WriteMeshFile(folder.Path(name), source);
        WriteMeshFile(folder.Path(name), LevelSource(geometry, {false, {}, 0}));
    }
    // The coordinate is finite in metres, but too large in millimetres.
    mesh = TwoQuads();
    mesh.attributes.space.metersPerUnit = 1.0;
    mesh.positions[2][0] = 1e36f;
    const PolygonSource converted(mesh, {0.001, UpAxis::Unknown});
    EXPECT_THAT(
        Refusal(folder, "b.obj", [&](const std::string& path) { WriteMeshFile(path, converted); }),
        HasSubstr("the position of vertex 2 (counted from 0) is (inf, "));
}

TEST(FiniteExport, LayerOffsetsAreChecked) {
    const TemporaryFolder folder;
    LevelGeometry geometry(TwoQuads());
    LevelMesh& level = *geometry.Bound();
    geometry.Layers().Insert(std::make_shared<SculptLayer>(&level, "wrinkles"));
    SculptLayer& layer = *geometry.Layers().OfLevel(level).front();
    layer.SetStrength(0.0f);
    const Vector offset(Infinity, 0, 0);
    Vector out;
    layer.set(&out, layer.SlotOf(2), 2, &offset, true);
    level.SetPosition(2, Vector(1, 0, 0));
    const LevelSource source(geometry, {});
    EXPECT_THAT(
        Refusal(folder, "m.glb", [&](const std::string& path) { WriteMeshFile(path, source); }),
        HasSubstr("the offset of a layer at vertex 2 (counted from 0)"));
}

}  // namespace
}  // namespace trovik
