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

constexpr PlyEncoding Encodings[] = {
    PlyEncoding::Text, PlyEncoding::BinaryLittleEndian, PlyEncoding::BinaryBigEndian};

PolygonMesh ReadContent(std::string_view content) {
    const TemporaryFolder folder;
    return ReadPly(folder.Fill("mesh.ply", content));
}

std::string Refusal(std::string_view content) {
    return FileRefusal("mesh.ply", content, [](const std::string& path) { ReadPly(path); });
}

/// Returns a text file with the vertices of a quad and a face element with this count and these
/// rows.
std::string QuadText(std::string_view faceCount, std::string_view faces) {
    return "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\n"
           "property float z\nelement face " +
           std::string(faceCount) +
           "\nproperty list uchar int vertex_indices\nend_header\n"
           "0 0 0\n1 0 0\n1 1 0\n0 1 0\n" +
           std::string(faces);
}

/// Returns the header of a binary file with three vertices and one face, followed by this body.
std::string Binary(std::string_view body,
                   std::string_view vertexCount = "3",
                   std::string_view faceCount = "1",
                   std::string_view list = "list int int") {
    return "ply\nformat binary_little_endian 1.0\nelement vertex " + std::string(vertexCount) +
           "\nproperty char x\nproperty char y\nproperty char z\nelement face " +
           std::string(faceCount) + "\nproperty " + std::string(list) +
           " vertex_index\nend_header\n" + std::string(body);
}

TEST(PlyFile, RoundTripKeepsEveryBitAndTheOrderInAllEncodings) {
    const TemporaryFolder folder;
    for (const PlyEncoding encoding : Encodings) {
        SCOPED_TRACE(static_cast<int>(encoding));
        PolygonMesh mesh = MixedMesh();
        WritePly(folder.Path("mesh.ply"), mesh, encoding);
        ExpectSame(ReadPly(folder.Path("mesh.ply")), mesh);
        AddNormals(mesh);
        WritePly(folder.Path("mesh.ply"), mesh, encoding);
        ExpectSame(ReadPly(folder.Path("mesh.ply")), mesh);
    }
}

TEST(PlyFile, BinaryBytesAreThoseOfTheFormat) {
    const TemporaryFolder folder;
    PolygonMesh mesh;
    mesh.positions = {{1, 0, 0}, {0, 1, 0}, {0, 0, -2}};
    mesh.faceSizes = {3};
    mesh.faceVertices = {0, 1, 2};
    const std::string header =
        "element vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
        "element face 1\nproperty list uchar int vertex_indices\nend_header\n";
    const std::string_view little(
        "\0\0\x80\x3f\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x80\x3f\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\xc0"
        "\3\0\0\0\0\1\0\0\0\2\0\0\0",
        49);
    const std::string_view big(
        "\x3f\x80\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x3f\x80\0\0\0\0\0\0\0\0\0\0\0\0\0\0\xc0\0\0\0"
        "\3\0\0\0\0\0\0\0\1\0\0\0\2",
        49);
    WritePly(folder.Path("l.ply"), mesh, PlyEncoding::BinaryLittleEndian);
    EXPECT_EQ(TemporaryFolder::Content(folder.Path("l.ply")),
              ("ply\nformat binary_little_endian 1.0\n" + header).append(little));
    WritePly(folder.Path("b.ply"), mesh, PlyEncoding::BinaryBigEndian);
    EXPECT_EQ(TemporaryFolder::Content(folder.Path("b.ply")),
              ("ply\nformat binary_big_endian 1.0\n" + header).append(big));
    WritePly(folder.Path("t.ply"), mesh, PlyEncoding::Text);
    EXPECT_EQ(TemporaryFolder::Content(folder.Path("t.ply")),
              "ply\nformat ascii 1.0\n" + header + "1 0 0\n0 1 0\n0 0 -2\n3 0 1 2\n");
}

TEST(PlyFile, OtherElementsPropertiesOrdersAndTypesAreRead) {
    const PolygonMesh mesh = ReadContent(
        "ply\r\nformat ascii 1.0\r\ncomment made by hand\r\nelement odd 2\r\n"
        "property list short double many\r\nelement face 2\r\nproperty uchar red\r\n"
        "property list uint8 uint32 vertex_index\r\nproperty list uint float texcoord\r\n"
        "element nothing 4000000000\r\nelement vertex 4\r\nproperty double z\r\n"
        "property int nz\r\nproperty uchar x\r\nproperty short y\r\n"
        "property list char char tags\r\nelement edge 1\r\nproperty int a\r\nend_header\r\n"
        "2 0.5 0.5\r\n0\r\n255 3 0 1 2 0\r\n1 4 3 2 1 0 2 0.5 0.5\r\n"
        "0.1 7 1 -2 0\r\n1 8 2 -3 1 5\r\n2 9 3 -4 2 6 7\r\n3e0 9 250 5\n0 12");
    EXPECT_EQ(
        mesh.positions,
        (std::vector<std::array<float, 3>>{{1, -2, 0.1f}, {2, -3, 1}, {3, -4, 2}, {250, 5, 3}}));
    EXPECT_EQ(mesh.faceSizes, (Indices{3, 4}));
    EXPECT_EQ(mesh.faceVertices, (Indices{0, 1, 2, 3, 2, 1, 0}));
    EXPECT_TRUE(mesh.normals.empty());
}

TEST(PlyFile, ListLengthsAndIndicesMayHaveAnyIntegerType) {
    struct Case {
        std::string_view list;
        std::string_view face;
    };
    const Case cases[] = {
        {"list char char", {"\3\0\1\2", 4}},
        {"list uchar uchar", {"\3\0\1\2", 4}},
        {"list short ushort", {"\3\0\0\0\1\0\2\0", 8}},
        {"list ushort short", {"\3\0\0\0\1\0\2\0", 8}},
        {"list uint int", {"\3\0\0\0\0\0\0\0\1\0\0\0\2\0\0\0", 16}},
        {"list int32 uint32", {"\3\0\0\0\0\0\0\0\1\0\0\0\2\0\0\0", 16}},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.list);
        std::string body("\1\2\3\4\5\6\7\x08\xff", 9);
        const PolygonMesh mesh = ReadContent(Binary(body.append(each.face), "3", "1", each.list));
        EXPECT_EQ(mesh.positions,
                  (std::vector<std::array<float, 3>>{{1, 2, 3}, {4, 5, 6}, {7, 8, -1}}));
        EXPECT_EQ(mesh.faceVertices, (Indices{0, 1, 2}));
    }
}

TEST(PlyFile, EveryTruncationOfBinaryFilesIsRefused) {
    const TemporaryFolder folder;
    PolygonMesh mesh = MixedMesh();
    AddNormals(mesh);
    for (const PlyEncoding encoding :
         {PlyEncoding::BinaryLittleEndian, PlyEncoding::BinaryBigEndian}) {
        WritePly(folder.Path("whole.ply"), mesh, encoding);
        const std::string whole = TemporaryFolder::Content(folder.Path("whole.ply"));
        ASSERT_GT(whole.size(), 8000u);
        std::vector<std::size_t> lengths = {whole.size() - 1};
        for (std::size_t length = 0; length < whole.size(); length += 97) {
            lengths.push_back(length);
        }
        for (const std::size_t length : lengths) {
            SCOPED_TRACE(length);
            const std::string path = folder.Fill("cut.ply", whole.substr(0, length));
            EXPECT_THAT(MessageOf<HostError>([&] { ReadPly(path); }), HasSubstr(path));
        }
    }
}

TEST(PlyFile, EveryTruncationOfATextFileIsRefused) {
    const TemporaryFolder folder;
    WritePly(folder.Path("whole.ply"), MixedMesh(), PlyEncoding::Text);
    const std::string whole = TemporaryFolder::Content(folder.Path("whole.ply"));
    // Truncates only before the last number, because a truncated number is still a number.
    for (std::size_t length = 0; length < whole.size() - 2; length += 97) {
        SCOPED_TRACE(length);
        const std::string path = folder.Fill("cut.ply", whole.substr(0, length));
        EXPECT_THROW(ReadPly(path), HostError);
    }
}

TEST(PlyFile, HostileLengthsAreRefusedBeforeAllocation) {
    const std::string vertices(9, '\1');
    EXPECT_THAT(Refusal(Binary(vertices, "4000000000")),
                HasSubstr("4000000000 rows of element 'vertex' are declared"));
    EXPECT_THAT(Refusal(Binary(vertices, "18446744073709551615")),
                HasSubstr("rows of element 'vertex'"));
    EXPECT_THAT(Refusal(Binary(vertices, "18446744073709551616")),
                HasSubstr("line 3: the element count"));
    EXPECT_THAT(Refusal(Binary(vertices, "-3")),
                HasSubstr("line 3: the element count '-3' is not"));
    EXPECT_THAT(Refusal(QuadText("4000000000", "3 0 1 2\n")), HasSubstr("rows of element 'face'"));
    const std::string face = vertices + std::string("\xff\xff\xff\xff\0\0\0\0", 8);
    EXPECT_THAT(
        Refusal(Binary(face)),
        HasSubstr("element 'face', row 0 of 1 (counted from 0): a list cannot have -1 entries"));
    EXPECT_THAT(Refusal(Binary(face, "3", "1", "list uint int")),
                HasSubstr("row 0 of 1 (counted from 0): the file ends too early"));
    // The file contains the whole list, but the list is longer than any valid face.
    EXPECT_THAT(
        Refusal(Binary(vertices + std::string("\x41\x42\x0f\0", 4) + std::string(1'000'001, '\0'),
                       "3",
                       "1",
                       "list uint char")),
        HasSubstr("a face has 1000001 corners; it must have 3 to 1000000"));
}

TEST(PlyFile, BadBodiesNameElementRowAndReason) {
    EXPECT_THAT(
        Refusal(QuadText("2", "3 0 1 2\n2 0 1\n")),
        HasSubstr("line 15: element 'face', row 1 of 2 (counted from 0): a face has 2 corners"));
    EXPECT_THAT(Refusal(QuadText("1", "3 0 1 -2\n")), HasSubstr("the vertex number -2"));
    EXPECT_THAT(Refusal(QuadText("1", "3 0 1 1.5\n")), HasSubstr("'1.5' is not a whole number"));
    EXPECT_THAT(Refusal(QuadText("1", "-1 0 1 2\n")), HasSubstr("a list cannot have -1 entries"));
    EXPECT_THAT(
        Refusal(QuadText("1", "3 0 1 4\n")),
        HasSubstr("face 0 (counted from 0) refers to vertex 4, but there are only 4 vertices"));
    EXPECT_THAT(Refusal(QuadText("1", "4 0 1 2\n")), HasSubstr("line 14: element 'face'"));
    EXPECT_THAT(Refusal(QuadText("0", "")), HasSubstr("no faces"));
    std::string text = QuadText("1", "3 0 1 2\n");
    text.replace(text.find("1 1 0"), 5, "1 q 0");
    EXPECT_THAT(Refusal(text), HasSubstr("line 12: element 'vertex', row 2 of 4"));
    text.replace(text.find("1 q 0"), 5, "1 nan 0");
    EXPECT_THAT(Refusal(text),
                HasSubstr("the position of vertex 2 (counted from 0) is not finite"));
}

TEST(PlyFile, BadHeadersNameLineAndReason) {
    const auto changed = [](std::string_view from, std::string_view to) {
        std::string text = QuadText("1", "3 0 1 2\n");
        const std::size_t place = text.find(from);
        EXPECT_NE(place, std::string::npos);
        return text.replace(place, from.size(), to);
    };
    EXPECT_THAT(Refusal(""), HasSubstr("line 1: not a PLY file"));
    EXPECT_THAT(Refusal("v 0 0 0\n"), HasSubstr("line 1: not a PLY file"));
    EXPECT_THAT(Refusal("ply\n"), HasSubstr("the file ends inside its header"));
    EXPECT_THAT(Refusal(changed("ascii", "ebcdic")), HasSubstr("line 2: the format 'ebcdic'"));
    EXPECT_THAT(Refusal(changed("1.0", "2.0")), HasSubstr("line 2: the format version '2.0'"));
    EXPECT_THAT(Refusal(changed("format ascii 1.0\n", "")), HasSubstr("does not specify a format"));
    EXPECT_THAT(Refusal(changed("float y", "quad y")), HasSubstr("line 5: the number type 'quad'"));
    EXPECT_THAT(Refusal(changed("float y", "float x")), HasSubstr("property 'x' is defined twice"));
    EXPECT_THAT(Refusal(changed("element face", "element vertex")),
                HasSubstr("line 7: the element 'vertex' is defined twice"));
    EXPECT_THAT(Refusal(changed("float y", "float b")), HasSubstr("has no scalar property 'y'"));
    EXPECT_THAT(Refusal(changed("vertex_indices", "loop")), HasSubstr("has no list"));
    EXPECT_THAT(Refusal(changed("uchar int", "uchar float")), HasSubstr("not a list of whole"));
    EXPECT_THAT(Refusal(changed("uchar int", "float int")),
                HasSubstr("line 8: the length of a list must have an integer type"));
    EXPECT_THAT(Refusal(changed("element face", "element strips")), HasSubstr("no element 'face'"));
    EXPECT_THAT(Refusal(changed("element vertex 4\n", "")),
                HasSubstr("line 3: a property comes before any element"));
    EXPECT_THAT(Refusal(changed("element vertex 4", "element vertex")),
                HasSubstr("line 3: an element needs a name and a count"));
    EXPECT_THAT(Refusal(changed("end_header", "end")), HasSubstr("'end' is not a keyword"));
    EXPECT_THAT(Refusal(std::string("ply\ncomment ") + std::string(100'000, 'x')),
                HasSubstr("a line of more than 65536 bytes"));
}

}  // namespace
}  // namespace trovik
