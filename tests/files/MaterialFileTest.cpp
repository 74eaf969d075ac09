// SPDX-License-Identifier: Apache-2.0

/// \file
/// Tests the material files and smoothing groups of OBJ files.
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/files/ObjStatement.h"
#include "framework/mesh/MeshSource.h"
#include "framework/multires/LevelSource.h"
#include "tests/files/AttributeSamples.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace trovik {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Indices = std::vector<std::uint32_t>;

constexpr const char* Materials =
    "newmtl red\r\nKd 1 0 0\r\nmap_Kd -s 1 1 1 -clamp on textures/my red.png\r\n"
    "newmtl blue\nbump -bm 0.5 ..\\shared\\bump.png\nmap_d /data/mask.png\nrefl C:\\sky.hdr\n";

/// A test with a folder `in` that contains a mesh and its materials, and an empty folder `out`.
class MaterialFiles : public ::testing::Test {
protected:
    MaterialFiles() {
        fs::create_directories(folder.Path("in/lib"));
        fs::create_directories(folder.Path("out"));
        folder.Fill("in/mesh.obj",
                    "mtllib lib/all.mtl\no mesh\nv 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n"
                    "usemtl red\ns 3\nf 1 2 3\nusemtl blue\ns off\nf 1 3 4\n");
        folder.Fill("in/lib/all.mtl", Materials);
    }

    PolygonMesh Mesh() const { return ReadMeshFile(folder.Path("in/mesh.obj")); }
    std::string Content(const std::string& name) const {
        return TemporaryFolder::Content(folder.Path(name));
    }
    std::vector<std::string> Write(const std::string& name) const {
        const PolygonMesh mesh = Mesh();
        return WriteMeshFile(folder.Path(name), PolygonSource(mesh));
    }

    TemporaryFolder folder;
};

TEST(ObjStatement, MaterialFileNamesMayContainBlanks) {
    EXPECT_THAT(MaterialFileNames("a.mtl"), ElementsAre("a.mtl"));
    EXPECT_THAT(MaterialFileNames("  my red.MTL b.mtl\tthe rest "),
                ElementsAre("my red.MTL", "b.mtl", "the rest"));
    EXPECT_THAT(MaterialFileNames("lib\\all.mtl"), ElementsAre("lib/all.mtl"));
    EXPECT_THAT(MaterialFileNames(" \t "), IsEmpty());
}

TEST(ObjStatement, SmoothingGroupsAreNumbersOnAndOff) {
    constexpr std::uint32_t none = SurfaceAttributes::none;
    EXPECT_EQ(SmoothingGroupOf("7", none), 7u);
    EXPECT_EQ(SmoothingGroupOf("off", none), 0u);
    EXPECT_EQ(SmoothingGroupOf("on", none), 1u);
    EXPECT_EQ(SmoothingGroupOf("4294967294", none), 4294967294u);
    for (const char* text : {"", "-1", "1.5", "x", "4294967295", "99999999999"}) {
        EXPECT_EQ(SmoothingGroupOf(text, 5), 5u) << text;
    }
}

TEST_F(MaterialFiles, AreReadAsPathsWithTheSmoothingGroups) {
    const PolygonMesh mesh = Mesh();
    EXPECT_THAT(mesh.attributes.materialFiles, ElementsAre(folder.Path("in/lib/all.mtl")));
    EXPECT_EQ(mesh.attributes.faceSmoothing, (Indices{3, 0}));
    // Without materials, the material file is not needed.
    folder.Fill("in/plain.obj", "mtllib lib/all.mtl\nv 0 0 0\nv 1 0 0\nv 1 1 0\nf 1 2 3\n");
    EXPECT_THAT(ReadMeshFile(folder.Path("in/plain.obj")).attributes.materialFiles, IsEmpty());
}

TEST_F(MaterialFiles, InOrBelowTheFolderAreReferencedInPlace) {
    EXPECT_THAT(Write("in/again.obj"), IsEmpty());
    EXPECT_THAT(Content("in/again.obj"), HasSubstr("mtllib lib/all.mtl\no mesh\n"));
    EXPECT_THAT(Content("in/again.obj"),
                HasSubstr("usemtl red\ns 3\nf 1 2 3\nusemtl blue\ns off\nf 1 3 4\n"));
    EXPECT_EQ(Content("in/lib/all.mtl"), Materials);
    const PolygonMesh again = ReadMeshFile(folder.Path("in/again.obj"));
    EXPECT_EQ(again.attributes.materialFiles, Mesh().attributes.materialFiles);
    EXPECT_EQ(again.attributes.faceSmoothing, Mesh().attributes.faceSmoothing);
}

TEST_F(MaterialFiles, FromElsewhereAreCopiedWithAdjustedTexturePaths) {
    EXPECT_THAT(Write("out/mesh.obj"), ElementsAre(folder.Path("out/all.mtl")));
    EXPECT_THAT(Content("out/mesh.obj"), HasSubstr("mtllib all.mtl\n"));
    EXPECT_EQ(Content("out/all.mtl"),
              "# Copied by trovik from ../in/lib/all.mtl\nnewmtl red\nKd 1 0 0\n"
              "map_Kd -s 1 1 1 -clamp on ../in/lib/textures/my red.png\n"
              "newmtl blue\nbump -bm 0.5 ../in/shared/bump.png\nmap_d /data/mask.png\n"
              "refl C:\\sky.hdr\n");
    EXPECT_EQ(Content("in/lib/all.mtl"), Materials);
    // A second export does not write the copy again, but a changed file replaces its copy.
    EXPECT_THAT(Write("out/other.obj"), IsEmpty());
    folder.Fill("in/lib/all.mtl", "newmtl red\nKd 0.5 0 0\n");
    EXPECT_THAT(Write("out/mesh.obj"), ElementsAre(folder.Path("out/all.mtl")));
    EXPECT_THAT(Content("out/all.mtl"), HasSubstr("Kd 0.5 0 0\n"));
}

TEST_F(MaterialFiles, ForeignFilesAreNotOverwritten) {
    folder.Fill("out/all.mtl", "newmtl mine\n");
    EXPECT_THAT(Write("out/mesh.obj"), ElementsAre(folder.Path("out/all-2.mtl")));
    EXPECT_EQ(Content("out/all.mtl"), "newmtl mine\n");
    EXPECT_THAT(Content("out/mesh.obj"), HasSubstr("mtllib all-2.mtl\n"));
}

TEST_F(MaterialFiles, EqualNamesFromTwoFoldersGetOneCopyEach) {
    fs::create_directories(folder.Path("in2/lib"));
    folder.Fill("in2/mesh.obj", Content("in/mesh.obj"));
    folder.Fill("in2/lib/all.mtl", "newmtl red\nKd 0 1 0\n");
    const auto writeSecond = [&] {
        const PolygonMesh mesh = ReadMeshFile(folder.Path("in2/mesh.obj"));
        return WriteMeshFile(folder.Path("out/second.obj"), PolygonSource(mesh));
    };
    EXPECT_THAT(Write("out/mesh.obj"), ElementsAre(folder.Path("out/all.mtl")));
    const std::string first = Content("out/all.mtl");
    EXPECT_THAT(writeSecond(), ElementsAre(folder.Path("out/all-2.mtl")));
    EXPECT_EQ(Content("out/all.mtl"), first);
    EXPECT_THAT(Content("out/second.obj"), HasSubstr("mtllib all-2.mtl\n"));
    EXPECT_EQ(Content("out/all-2.mtl"),
              "# Copied by trovik from ../in2/lib/all.mtl\nnewmtl red\nKd 0 1 0\n");
    // Each later export finds its own copy.
    EXPECT_THAT(Write("out/mesh.obj"), IsEmpty());
    EXPECT_THAT(writeSecond(), IsEmpty());
    folder.Fill("in2/lib/all.mtl", "newmtl red\nKd 0 0 1\n");
    EXPECT_THAT(writeSecond(), ElementsAre(folder.Path("out/all-2.mtl")));
    EXPECT_EQ(Content("out/all.mtl"), first);
}

TEST_F(MaterialFiles, AreNotWrittenThroughLinks) {
    EXPECT_THAT(Write("out/mesh.obj"), ElementsAre(folder.Path("out/all.mtl")));
    // A link is not followed even if it points to an earlier copy.
    fs::create_directories(folder.Path("elsewhere"));
    fs::rename(folder.Path("out/all.mtl"), folder.Path("elsewhere/all.mtl"));
    fs::create_symlink("../elsewhere/all.mtl", folder.Path("out/all.mtl"));
    fs::create_symlink("../elsewhere/new.mtl", folder.Path("out/all-2.mtl"));
    const std::string before = Content("elsewhere/all.mtl");
    folder.Fill("in/lib/all.mtl", "newmtl red\nKd 0.5 0 0\n");
    EXPECT_THAT(Write("out/mesh.obj"), ElementsAre(folder.Path("out/all-3.mtl")));
    EXPECT_THAT(Content("out/mesh.obj"), HasSubstr("mtllib all-3.mtl\n"));
    EXPECT_EQ(Content("elsewhere/all.mtl"), before);
    EXPECT_FALSE(fs::exists(folder.Path("elsewhere/new.mtl")));
    EXPECT_THAT(Write("out/mesh.obj"), IsEmpty());
}

TEST_F(MaterialFiles, UncopiableOnesAreReferencedInPlace) {
    fs::remove(folder.Path("in/lib/all.mtl"));
    EXPECT_THAT(Write("out/mesh.obj"), IsEmpty());
    EXPECT_THAT(Content("out/mesh.obj"), HasSubstr("mtllib ../in/lib/all.mtl\n"));
    // A file that is not a material file is not copied.
    folder.Fill("in/mesh.obj",
                "mtllib secret.txt\nv 0 0 0\nv 1 0 0\nv 1 1 0\nusemtl red\nf 1 2 3\n");
    folder.Fill("in/secret.txt", "newmtl red\n");
    EXPECT_THAT(Write("out/mesh.obj"), IsEmpty());
    EXPECT_FALSE(fs::exists(folder.Path("out/secret.txt")));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path("out")), {}), 1);
}

TEST_F(MaterialFiles, AreInheritedByRefinedFacesWithSmoothingGroups) {
    const PolygonMesh mesh = Mesh();
    LevelGeometry geometry(mesh);
    geometry.Subdivide();
    geometry.Subdivide();
    const PolygonMesh fine = GatherPolygons(LevelSource(geometry, {}));
    ASSERT_EQ(fine.attributes.faceSmoothing.size(), 24u);
    for (std::size_t face = 0; face < 24; ++face) {
        EXPECT_EQ(fine.attributes.faceSmoothing[face], face < 12 ? 3u : 0u);
    }
    EXPECT_EQ(fine.attributes.materialFiles, mesh.attributes.materialFiles);
    // Level 0 consists of faces that were split into quads.
    PolygonMesh mixed = AttributedMesh();
    mixed.attributes.faceSmoothing = {1, 2, 3, 4};
    mixed.attributes.materialFiles = {"a.mtl"};
    const PolygonMesh split = GatherPolygons(LevelSource(LevelGeometry(mixed), {}));
    EXPECT_EQ(split.attributes.faceSmoothing,
              (Indices{1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 4, 4, 4, 4, 4}));
    EXPECT_THAT(split.attributes.materialFiles, ElementsAre("a.mtl"));
}

TEST(SmoothingGroups, CountDifferentFromTheFacesIsRefused) {
    PolygonMesh mesh = AttributedMesh();
    mesh.attributes.faceSmoothing = {1, 2};
    EXPECT_EQ(MessageOf<HostError>([&] { CheckPolygonMesh(mesh, "here"); }),
              "here: the list of face smoothing groups has 2 entries, but 4 are needed");
}

}  // namespace
}  // namespace trovik
