// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "tests/SourceFolder.h"
#include "tests/edits/FullDisk.h"
#include "tests/files/SampleMeshes.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <map>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace trovik {
namespace {

using testing::HasSubstr;

std::string ExampleMesh(const std::string& name) {
    const char* data = std::getenv("TROVIK_DATA");
    return (data != nullptr ? std::string(data) : test::SourceFolder() + "/examples") + "/meshes/" +
           name;
}

std::map<std::uint32_t, std::size_t> CountSizes(const PolygonMesh& mesh) {
    std::map<std::uint32_t, std::size_t> counts;
    for (const std::uint32_t size : mesh.faceSizes) {
        ++counts[size];
    }
    return counts;
}

TEST(MeshFile, ExampleMeshesHaveTheirKnownCounts) {
    struct Example {
        const char* name;
        std::size_t vertices;
        std::size_t faces;
        std::map<std::uint32_t, std::size_t> sizes;
    };
    const Example examples[] = {{"fish.obj", 112, 112, {{3, 8}, {4, 100}, {5, 4}}},
                                {"goathead.obj", 2763, 5522, {{3, 5522}}},
                                {"human.obj", 13380, 13378, {{4, 13378}}},
                                {"spot.obj", 188, 180, {{3, 4}, {4, 160}, {5, 16}}},
                                {"spot_triangles.obj", 829, 1654, {{3, 1654}}}};
    for (const Example& example : examples) {
        SCOPED_TRACE(example.name);
        PolygonMesh mesh = ReadMeshFile(ExampleMesh(example.name));
        EXPECT_EQ(mesh.positions.size(), example.vertices);
        EXPECT_EQ(mesh.faceSizes.size(), example.faces);
        EXPECT_EQ(CountSizes(mesh), example.sizes);
        const PolygonMesh before = mesh;
        EXPECT_TRUE(MakeOrientedManifold(mesh).Untouched());
        ExpectSame(mesh, before);
    }
}

TEST(MeshFile, ExtensionChoosesTheFormatInAnyCase) {
    const TemporaryFolder folder;
    const PolygonMesh mesh = MixedMesh();
    WriteMeshFile(folder.Path("a.OBJ"), mesh);
    WriteMeshFile(folder.Path("b.Ply"), mesh);
    EXPECT_EQ(TemporaryFolder::Content(folder.Path("a.OBJ")).substr(0, 2), "o ");
    EXPECT_EQ(TemporaryFolder::Content(folder.Path("b.Ply")).substr(0, 31),
              "ply\nformat binary_little_endian");
    ExpectSame(ReadMeshFile(folder.Path("a.OBJ")), mesh);
    ExpectSame(ReadMeshFile(folder.Path("b.Ply")), mesh);
    for (const char* name : {"mesh.off", "obj", "mesh.", "folder.obj/mesh"}) {
        SCOPED_TRACE(name);
        EXPECT_THAT(MessageOf<HostError>([&] { ReadMeshFile(name); }),
                    HasSubstr("must be .glb, .gltf, .obj, .ply"));
        EXPECT_THAT(MessageOf<HostError>([&] { WriteMeshFile(name, mesh); }),
                    HasSubstr("must be .glb, .gltf, .obj, .ply"));
    }
}

TEST(MeshFile, UnreadablePathsNameTheSystemsReason) {
    const TemporaryFolder folder;
    for (const char* name : {"mesh.obj", "mesh.ply"}) {
        const std::string path = folder.Path(name);
        EXPECT_EQ(MessageOf<HostError>([&] { ReadMeshFile(path); }),
                  "cannot read " + path + ": No such file or directory");
        std::filesystem::create_directory(path);
        EXPECT_EQ(MessageOf<HostError>([&] { ReadMeshFile(path); }),
                  "cannot read " + path + ": Is a directory");
        EXPECT_EQ(MessageOf<HostError>([&] { WriteMeshFile(path, MixedMesh()); }),
                  "cannot write " + path + ": Is a directory");
    }
    const std::string pipe = folder.Path("pipe.obj");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_THAT(MessageOf<HostError>([&] { ReadMeshFile(pipe); }), HasSubstr("not a regular file"));
    EXPECT_THAT(MessageOf<HostError>([&] { WriteMeshFile(pipe, MixedMesh()); }),
                HasSubstr("not a regular file"));
    const std::string lost = folder.Path("missing/mesh.obj");
    EXPECT_EQ(MessageOf<HostError>([&] { WriteMeshFile(lost, MixedMesh()); }),
              "cannot write " + lost + ": No such file or directory");
}

TEST(MeshFile, FailedWriteLeavesTheOldFileAndNothingElse) {
    const TemporaryFolder folder;
    for (const char* name : {"mesh.obj", "mesh.ply"}) {
        const std::string path = folder.Fill(name, "the old content");
        {
            const test::FullDisk fullDisk(1000);
            EXPECT_EQ(MessageOf<HostError>([&] { WriteMeshFile(path, MixedMesh()); }),
                      "cannot write " + path + ": File too large");
        }
        EXPECT_EQ(TemporaryFolder::Content(path), "the old content");
    }
    EXPECT_EQ(folder.FileCount(), 2u);
}

TEST(MeshFile, WritingKeepsAccessRightsAndLinks) {
    const TemporaryFolder folder;
    const std::string path = folder.Fill("mesh.obj", "old");
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    const std::string link = folder.Path("link.obj");
    std::filesystem::create_symlink("mesh.obj", link);
    WriteMeshFile(link, MixedMesh());
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    ExpectSame(ReadMeshFile(path), MixedMesh());
    struct stat status = {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
    EXPECT_EQ(folder.FileCount(), 2u);
}

TEST(MeshFile, LongestFileNamesCanBeWritten) {
    const TemporaryFolder folder;
    const std::string path = folder.Path(std::string(251, 'n') + ".obj");
    WriteMeshFile(path, MixedMesh());
    ExpectSame(ReadMeshFile(path), MixedMesh());
    EXPECT_EQ(folder.FileCount(), 1u);
}

TEST(MeshFile, NamesCannotForgeLines) {
    const TemporaryFolder folder;
    PolygonMesh mesh = MixedMesh();
    mesh.name = "a\nf 1 2 3\r\\";
    WriteObj(folder.Path("a.obj"), mesh);
    WritePly(folder.Path("a.ply"), mesh, PlyEncoding::Text);
    EXPECT_EQ(ReadObj(folder.Path("a.obj")).name, "a_f 1 2 3__");
    EXPECT_EQ(ReadPly(folder.Path("a.ply")).name, "a_f 1 2 3_\\");
    EXPECT_EQ(ReadObj(folder.Path("a.obj")).faceSizes, mesh.faceSizes);
}

TEST(MeshFile, DecimalCommasOfTheLocaleChangeNothing) {
    const char* names[] = {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "nl_NL.UTF-8", "de_DE"};
    const std::string previous = std::setlocale(LC_ALL, nullptr);
    bool found = false;
    for (const char* name : names) {
        found = found || std::setlocale(LC_ALL, name) != nullptr;
    }
    if (!found || std::string(std::localeconv()->decimal_point) != ",") {
        std::setlocale(LC_ALL, previous.c_str());
        GTEST_SKIP() << "no locale with decimal commas is installed";
    }
    const TemporaryFolder folder;
    WriteObj(folder.Path("a.obj"), MixedMesh());
    WritePly(folder.Path("a.ply"), MixedMesh(), PlyEncoding::Text);
    const PolygonMesh obj = ReadObj(folder.Path("a.obj"));
    const PolygonMesh ply = ReadPly(folder.Path("a.ply"));
    std::setlocale(LC_ALL, previous.c_str());
    WriteObj(folder.Path("b.obj"), MixedMesh());
    EXPECT_EQ(TemporaryFolder::Content(folder.Path("a.obj")),
              TemporaryFolder::Content(folder.Path("b.obj")));
    ExpectSame(obj, MixedMesh());
    ExpectSame(ply, MixedMesh());
}

TEST(MeshFile, FilesLargerThanTheBuffersRoundTrip) {
    constexpr std::uint32_t side = 300;
    PolygonMesh mesh;
    for (std::uint32_t row = 0; row <= side; ++row) {
        for (std::uint32_t column = 0; column <= side; ++column) {
            mesh.positions.push_back(
                {static_cast<float>(column) / 7.0f, static_cast<float>(row) / 3.0f, 0.1f});
        }
    }
    for (std::uint32_t row = 0; row < side; ++row) {
        for (std::uint32_t column = 0; column < side; ++column) {
            const std::uint32_t corner = row * (side + 1) + column;
            mesh.faceSizes.push_back(4);
            mesh.faceVertices.insert(mesh.faceVertices.end(),
                                     {corner, corner + 1, corner + side + 2, corner + side + 1});
        }
    }
    const TemporaryFolder folder;
    const std::string path = folder.Path("mesh.obj");
    WriteObj(path, mesh);
    EXPECT_GT(std::filesystem::file_size(path), std::size_t{3} << 20);
    ExpectSame(ReadObj(path), mesh);
    for (const PlyEncoding encoding : {PlyEncoding::Text, PlyEncoding::BinaryBigEndian}) {
        WritePly(folder.Path("mesh.ply"), mesh, encoding);
        ExpectSame(ReadPly(folder.Path("mesh.ply")), mesh);
    }
}

TEST(CheckPolygonMesh, NamesTheFirstFault) {
    PolygonMesh good;
    good.positions = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    good.faceSizes = {3, 4};
    good.faceVertices = {0, 1, 2, 0, 1, 2, 3};
    EXPECT_NO_THROW(CheckPolygonMesh(good, "here"));
    const auto refusal = [&good](auto change) {
        PolygonMesh mesh = good;
        change(mesh);
        return MessageOf<HostError>([&mesh] { CheckPolygonMesh(mesh, "here"); });
    };
    EXPECT_EQ(refusal([](PolygonMesh& mesh) {
                  mesh.faceSizes.clear();
                  mesh.faceVertices.clear();
              }),
              "here: the mesh has no faces");
    EXPECT_EQ(refusal([](PolygonMesh& mesh) {
                  mesh.faceSizes = {2, 5};
              }),
              "here: face 0 (counted from 0) has 2 corners, but at least 3 are needed");
    EXPECT_EQ(refusal([](PolygonMesh& mesh) { mesh.faceVertices[4] = 4; }),
              "here: face 1 (counted from 0) refers to vertex 4, but there are only 4 vertices");
    EXPECT_EQ(refusal([](PolygonMesh& mesh) { mesh.faceVertices[6] = 1; }),
              "here: face 1 (counted from 0) refers to vertex 1 twice");
    EXPECT_EQ(refusal([](PolygonMesh& mesh) {
                  mesh.faceSizes = {3, 5};
              }),
              "here: face 1 (counted from 0) has more corners than the list of corners contains");
    EXPECT_EQ(refusal([](PolygonMesh& mesh) {
                  mesh.faceSizes = {3, 3};
              }),
              "here: the list of corners is longer than the sum of the face sizes");
    EXPECT_EQ(refusal([](PolygonMesh& mesh) { mesh.normals.resize(3); }),
              "here: 3 normals for 4 vertices");
    for (const float bad :
         {std::numeric_limits<float>::quiet_NaN(), -std::numeric_limits<float>::infinity()}) {
        EXPECT_EQ(refusal([bad](PolygonMesh& mesh) { mesh.positions[2][1] = bad; }),
                  "here: the position of vertex 2 (counted from 0) is not finite");
    }
}

TEST(CheckPolygonMesh, FindsRepeatsInLongFaces) {
    PolygonMesh mesh = MixedMesh();
    EXPECT_NO_THROW(CheckPolygonMesh(mesh, "here"));
    mesh.faceVertices[7 + 250] = mesh.faceVertices[7 + 3];
    EXPECT_EQ(MessageOf<HostError>([&mesh] { CheckPolygonMesh(mesh, "here"); }),
              "here: face 2 (counted from 0) refers to vertex 306 twice");
}

}  // namespace
}  // namespace trovik
