// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "tests/files/FileRefusal.h"
#include "tests/files/SampleMeshes.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace trovik {
namespace {

using testing::HasSubstr;
using Indices = std::vector<std::uint32_t>;

PolygonMesh ReadText(std::string_view text) {
    const TemporaryFolder folder;
    return ReadObj(folder.Fill("mesh.obj", text));
}

std::string Refusal(std::string_view text) {
    return FileRefusal("mesh.obj", text, [](const std::string& path) { ReadObj(path); });
}

constexpr std::string_view FourVertices = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";

std::string WithFace(std::string_view face) { return std::string(FourVertices).append(face); }

TEST(ObjFile, RoundTripKeepsEveryBitAndTheOrder) {
    const TemporaryFolder folder;
    PolygonMesh mesh = MixedMesh();
    WriteObj(folder.Path("a.obj"), mesh);
    ExpectSame(ReadObj(folder.Path("a.obj")), mesh);
    AddNormals(mesh);
    WriteObj(folder.Path("b.obj"), mesh);
    ExpectSame(ReadObj(folder.Path("b.obj")), mesh);
}

TEST(ObjFile, CoordinatesAreTheNearestFloats) {
    // Decimal numbers very close to the midpoint of two floats. Parsing via double, or digit by
    // digit, rounds in the wrong direction.
    const PolygonMesh mesh = ReadText(
        "v 1.00000005960464477539062500000000000001 1.000000059604644775390625 +0.5\n"
        "v 1e-50 -1e-50 1e-400\nv 7.0064923216240853e-46 3.4028235e38 .25\nf 1 2 3\n");
    const std::vector<std::array<float, 3>> expected = {
        {0x1.000002p0f, 1.0f, 0.5f},
        {0.0f, -0.0f, 0.0f},
        {0.0f, std::numeric_limits<float>::max(), 0.25f}};
    EXPECT_EQ(Bits(mesh.positions), Bits(expected));
}

TEST(ObjFile, GroupsAndObjectsKeepTheFaceOrder) {
    const PolygonMesh mesh = ReadText(
        "g left\nv 0 0 0\nv 1 0 0\nv 1 1 0\no zebra\nf 1 2 3\nv 0 1 0\ng right other\n"
        "usemtl red\nf 1 3 4\no ant\ns off\nf 2 3 4\ng left\nf 4 2 1\n");
    EXPECT_EQ(mesh.faceVertices, (Indices{0, 1, 2, 0, 2, 3, 1, 2, 3, 3, 1, 0}));
    EXPECT_EQ(mesh.name, "zebra");
}

TEST(ObjFile, FirstGroupNamesTheMeshWithoutObjects) {
    EXPECT_EQ(ReadText(WithFace("g body skin\ng rest\nf 1 2 3\n")).name, "body");
}

TEST(ObjFile, AllCornerFormsAreRead) {
    const PolygonMesh mesh =
        ReadText(WithFace("vt 0 0\nvn 0 0 1\nf 1 2 3\nf 1/1 2/1 3/1\nf 1//1 2//1 3//1\n"
                          "f 1/1/1 2/1/1 3/1/1 4/1/1\nf -4 -3/-1 -2//-1 -1/-1/-1\nf\t1/ 2/ 4/\n"));
    EXPECT_EQ(mesh.faceSizes, (Indices{3, 3, 3, 4, 4, 3}));
    EXPECT_EQ(mesh.faceVertices,
              (Indices{0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 3}));
    EXPECT_TRUE(mesh.normals.empty());
}

TEST(ObjFile, NegativeIndicesCountFromTheirLine) {
    const PolygonMesh mesh =
        ReadText("v 0 0 0\nv 1 0 0\nv 1 1 0\nf -3 -2 -1\nv 0 1 0\nf -3 -2 -1\n");
    EXPECT_EQ(mesh.faceVertices, (Indices{0, 1, 2, 1, 2, 3}));
}

TEST(ObjFile, FacesMayReferToLaterVertices) {
    const PolygonMesh mesh = ReadText("f 1 2 3\nv 0 0 0\nv 1 0 0\nv 1 1 0\n");
    EXPECT_EQ(mesh.faceVertices, (Indices{0, 1, 2}));
}

TEST(ObjFile, WeightsAndColoursAreSkipped) {
    const PolygonMesh mesh = ReadText("v 1 2 3 0.5\nv 4 5 6 1 0 0\nv 7 8 9 2 2 2 2\nf 1 2 3\n");
    EXPECT_EQ(mesh.positions[0], (std::array<float, 3>{1, 2, 3}));
    EXPECT_EQ(mesh.positions[1], (std::array<float, 3>{4, 5, 6}));
    EXPECT_EQ(mesh.positions[2], (std::array<float, 3>{7, 8, 9}));
}

TEST(ObjFile, LineEndsCommentsBlanksAndContinuationsAreRead) {
    const std::string_view forms[] = {
        "# c\r\nv 0 0 0\r\nv 1 0 0 # c\r\n\r\n  v 1 1 0\r\nf 1 2 3\r\n",
        "v 0 0 0\rv 1 0 0\rv 1 1 0\rf 1 2 3\r",
        "v\t0  0\t0 \nv 1 0 0\nv 1 1 0\nl 1 2\np 1\nmtllib none.mtl\nf  1 2 3  ",
        "v 0 0 0\nv 1 \\\n0 0\nv 1 1 0\nf 1 \\\r\n 2 \\\n 3",
    };
    for (const std::string_view form : forms) {
        SCOPED_TRACE(form);
        const PolygonMesh mesh = ReadText(form);
        EXPECT_EQ(mesh.positions,
                  (std::vector<std::array<float, 3>>{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}));
        EXPECT_EQ(mesh.faceVertices, (Indices{0, 1, 2}));
    }
}

TEST(ObjFile, BadFacesNameTheirLineAndReason) {
    EXPECT_THAT(Refusal(WithFace("f 0 1 2\n")), HasSubstr("line 5: face corner '0'"));
    EXPECT_THAT(Refusal(WithFace("f 1 2\n")), HasSubstr("line 5: face has 2 corners"));
    EXPECT_THAT(Refusal(WithFace("f\n")), HasSubstr("line 5: face has 0 corners"));
    EXPECT_THAT(Refusal(WithFace("f 1 2 3\nf 1 2 9\n")),
                HasSubstr("line 6: face refers to vertex 9, but only 4 vertices are defined"));
    EXPECT_THAT(Refusal(WithFace("f 1 2 -5\n")),
                HasSubstr("line 5: face refers to vertex -5, but only 4 vertices are defined"));
    EXPECT_THAT(Refusal(WithFace("f 1 2 x\n")), HasSubstr("line 5: face corner 'x'"));
    EXPECT_THAT(Refusal(WithFace("f 1 2 3.5\n")), HasSubstr("line 5: face corner '3.5'"));
    EXPECT_THAT(Refusal(WithFace("f 1 2 /3\n")), HasSubstr("line 5: face corner '/3'"));
    EXPECT_THAT(Refusal(WithFace("f 1 2 3/1/1/1\n")), HasSubstr("line 5: face corner '3/1/1/1'"));
    // 2^32 + 1 truncated to 32 bits would refer to vertex 1.
    EXPECT_THAT(Refusal(WithFace("f 2 3 4294967297\n")),
                HasSubstr("line 5: face corner '4294967297'"));
    std::string longFace = "f";
    for (int corner = 1; corner <= 1'000'001; ++corner) {
        longFace += " 1";
    }
    EXPECT_THAT(Refusal(WithFace(longFace)), HasSubstr("line 5: face has 1000001 corners"));
}

TEST(ObjFile, BadCoordinatesNameTheirLineAndReason) {
    EXPECT_THAT(Refusal("v 0 0\n"), HasSubstr("line 1: vertex has fewer than three coordinates"));
    EXPECT_THAT(Refusal("\nv 0 nan 0\n"), HasSubstr("line 2: vertex coordinate 'nan'"));
    EXPECT_THAT(Refusal("v 0 0 -inf\n"), HasSubstr("line 1: vertex coordinate '-inf'"));
    EXPECT_THAT(Refusal("v 0 0 1e39\n"), HasSubstr("'1e39' is not finite"));
    EXPECT_THAT(Refusal("v 0,5 0 0\n"), HasSubstr("'0,5' is not a number"));
    EXPECT_THAT(Refusal("v 1.5abc 0 0\n"), HasSubstr("'1.5abc' is not a number"));
    EXPECT_THAT(Refusal("v 0 0 0\\\n\nvn 0 q 1\n"), HasSubstr("line 3: normal coordinate 'q'"));
}

TEST(ObjFile, FilesWithoutPolygonsAreRefused) {
    EXPECT_THAT(Refusal(""), HasSubstr("no faces"));
    EXPECT_THAT(Refusal(FourVertices), HasSubstr("no faces"));
    EXPECT_THAT(Refusal(std::string_view("\x7f\x45LF\0\0", 6)),
                HasSubstr("line 1: the line contains a zero byte"));
}

TEST(ObjFile, EveryTruncationIsReadOrRefused) {
    const TemporaryFolder folder;
    WriteObj(folder.Path("whole.obj"), MixedMesh());
    const std::string whole = TemporaryFolder::Content(folder.Path("whole.obj"));
    int refused = 0;
    for (std::size_t length = 0; length < whole.size(); length += 97) {
        const std::string path = folder.Fill("cut.obj", whole.substr(0, length));
        try {
            CheckPolygonMesh(ReadObj(path), path);
        } catch (const HostError&) {
            ++refused;
        }
    }
    EXPECT_GT(refused, 100);
}

}  // namespace
}  // namespace trovik
