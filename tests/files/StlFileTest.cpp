// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/mesh/MeshSource.h"
#include "tests/files/AttributeSamples.h"
#include "tests/files/FileRefusal.h"
#include "tests/files/SampleMeshes.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace trovik {
namespace {

using testing::HasSubstr;
using Indices = std::vector<std::uint32_t>;

PolygonMesh ReadContent(std::string_view content) {
    const TemporaryFolder folder;
    return ReadStl(folder.Fill("mesh.stl", content));
}

std::string Refusal(std::string_view content) {
    return FileRefusal("mesh.stl", content, [](const std::string& path) { ReadStl(path); });
}

std::string Facet(std::string_view a, std::string_view b, std::string_view c) {
    std::string text = "facet normal nan 0 1\n outer loop\n";
    for (const std::string_view corner : {a, b, c}) {
        text += "  vertex ";
        text += corner;
        text += '\n';
    }
    return text + " endloop\nendfacet\n";
}

TEST(StlFile, FacesBecomeTrianglesAlongTheFirstDiagonal) {
    const TemporaryFolder folder;
    const PolygonMesh mesh = AttributedMesh();
    for (const StlEncoding encoding : {StlEncoding::Text, StlEncoding::Binary}) {
        SCOPED_TRACE(static_cast<int>(encoding));
        WriteStl(folder.Path("mesh.stl"), mesh, encoding);
        const PolygonMesh read = ReadStl(folder.Path("mesh.stl"));
        // The quads 0 1 4 3 and 1 2 5 4, the triangle 0 6 1 and the pentagon 4 5 9 8 7, by
        // position.
        const Indices written = {0, 1, 4, 0, 4, 3, 1, 2, 5, 1, 5, 4,
                                 0, 6, 1, 4, 5, 9, 4, 9, 8, 4, 8, 7};
        ASSERT_EQ(read.faceVertices.size(), written.size());
        for (std::size_t corner = 0; corner < written.size(); ++corner) {
            EXPECT_EQ(read.positions[read.faceVertices[corner]], mesh.positions[written[corner]]);
        }
        // Vertices are welded and numbered in order of first use.
        EXPECT_EQ(Indices(read.faceVertices.begin(), read.faceVertices.begin() + 9),
                  (Indices{0, 1, 2, 0, 2, 3, 1, 4, 5}));
        EXPECT_EQ(read.positions.size(), 10u);
        EXPECT_EQ(read.name, "sheet");
        EXPECT_TRUE(read.attributes.groupNames.empty());
    }
}

TEST(StlFile, PositionsKeepEveryBitInBothEncodings) {
    const TemporaryFolder folder;
    PolygonMesh mesh = MixedMesh();
    mesh.faceSizes = {3};
    mesh.faceVertices = {0, 1, 2};
    mesh.positions.resize(3);
    for (const StlEncoding encoding : {StlEncoding::Text, StlEncoding::Binary}) {
        WriteStl(folder.Path("mesh.stl"), mesh, encoding);
        EXPECT_EQ(Bits(ReadStl(folder.Path("mesh.stl")).positions), Bits(mesh.positions));
    }
}

TEST(StlFile, BinaryBytesAreThoseOfTheFormat) {
    const TemporaryFolder folder;
    PolygonMesh mesh;
    mesh.positions = {{1, 0, 0}, {3, 0, 0}, {1, 4, 0}};
    mesh.faceSizes = {3};
    mesh.faceVertices = {0, 1, 2};
    WriteStl(folder.Path("b.stl"), mesh, StlEncoding::Binary);
    const std::string content = TemporaryFolder::Content(folder.Path("b.stl"));
    ASSERT_EQ(content.size(), 134u);
    EXPECT_NE(content.substr(0, 5), "solid");
    EXPECT_EQ(content.substr(80, 4), std::string("\1\0\0\0", 4));
    // The data of the triangle starts with its normal (0, 0, 1) and its first vertex (1, 0, 0).
    EXPECT_EQ(content.substr(84, 24),
              std::string("\0\0\0\0\0\0\0\0\0\0\x80\x3f\0\0\x80\x3f\0\0\0\0\0\0\0\0", 24));
    EXPECT_EQ(content.substr(132), std::string("\0\0", 2));
    mesh.name = "a\nb";
    WriteStl(folder.Path("t.stl"), mesh, StlEncoding::Text);
    EXPECT_EQ(TemporaryFolder::Content(folder.Path("t.stl")),
              "solid a_b\n facet normal 0 0 1\n  outer loop\n   vertex 1 0 0\n   vertex 3 0 0\n"
              "   vertex 1 4 0\n  endloop\n endfacet\nendsolid a_b\n");
}

TEST(StlFile, BinaryFilesThatBeginWithSolidAreRecognisedByTheirLength) {
    const TemporaryFolder folder;
    WriteStl(folder.Path("b.stl"), AttributedMesh(), StlEncoding::Binary);
    std::string content = TemporaryFolder::Content(folder.Path("b.stl"));
    content.replace(0, 13, "solid of some");
    EXPECT_EQ(ReadContent(content).faceSizes.size(), 8u);
}

TEST(StlFile, CornersWithEqualBitsOrZerosOfEitherSignAreMerged) {
    const PolygonMesh mesh = ReadContent("solid a\n" + Facet("0 0 0", "1 0 0", "0 1 0") +
                                         Facet("-0 0 -0", "0 1 0", "-1 0 0") +
                                         Facet("1e-45 0 0", "0 -1 0", "1 0 0") + "endsolid\n");
    EXPECT_EQ(mesh.faceVertices, (Indices{0, 1, 2, 0, 2, 3, 4, 5, 1}));
}

TEST(StlFile, TrianglesWithEqualCornersAreDropped) {
    const PolygonMesh mesh = ReadContent("solid\n" + Facet("0 0 0", "1 0 0", "0 1 0") +
                                         Facet("5 5 5", "5 5 5", "6 6 6") +
                                         Facet("0 0 0", "1 1 1", "-0 0 0") + "endsolid\n");
    EXPECT_EQ(mesh.faceSizes.size(), 1u);
    EXPECT_EQ(mesh.positions.size(), 3u);
}

TEST(StlFile, SolidsBecomeGroupsAndKeywordsMayHaveAnyCase) {
    const PolygonMesh mesh = ReadContent(
        "SOLID left wing\r\n" + Facet("0 0 0", "1 0 0", "0 1 0") + "EndSolid left wing\r\n" +
        "solid body\nFACET normal 0 0 1 outer loop vertex 0 0 0 vertex 0 1 0 vertex -1 0 0 "
        "endloop endfacet\nendsolid\n");
    EXPECT_EQ(mesh.name, "left wing");
    EXPECT_EQ(mesh.attributes.groupNames, (std::vector<std::string>{"left wing", "body"}));
    EXPECT_EQ(mesh.attributes.faceGroups, (Indices{0, 1}));
}

TEST(StlFile, BadTextsNameLineAndReason) {
    const std::string good = Facet("0 0 0", "1 0 0", "0 1 0");
    EXPECT_THAT(Refusal("solid\n" + good), HasSubstr("line 8: the file ends without 'endsolid'"));
    EXPECT_THAT(Refusal("solid\n" + Facet("0 0 0", "1 x 0", "0 1 0") + "endsolid\n"),
                HasSubstr("line 5: expected a finite number, but found 'x'"));
    EXPECT_THAT(Refusal("solid\n" + Facet("0 0 0", "1 inf 0", "0 1 0") + "endsolid\n"),
                HasSubstr("line 5: expected a finite number"));
    EXPECT_THAT(Refusal("solid\n" + Facet("0 0 0", "1 0", "0 1 0") + "endsolid\n"),
                HasSubstr("line 6: expected a finite number, but found 'vertex'"));
    EXPECT_THAT(Refusal("solid\nfacets\nendsolid"),
                HasSubstr("line 2: expected 'facet' or 'endsolid', but found 'facets'"));
    EXPECT_THAT(Refusal("solid\nfacet normal 0 0"), HasSubstr("but the file ends"));
    EXPECT_THAT(Refusal("solid\nendsolid\n"), HasSubstr("no faces"));
}

TEST(StlFile, BadBinariesNameByteAndReason) {
    const TemporaryFolder folder;
    WriteStl(folder.Path("b.stl"), AttributedMesh(), StlEncoding::Binary);
    const std::string whole = TemporaryFolder::Content(folder.Path("b.stl"));
    EXPECT_THAT(Refusal(""), HasSubstr("byte 0: the file ends inside its header"));
    EXPECT_THAT(Refusal(whole.substr(0, 83)), HasSubstr("byte 83: the file ends inside"));
    for (std::size_t length = 84; length < whole.size(); length += 7) {
        EXPECT_THAT(Refusal(whole.substr(0, length)),
                    HasSubstr("byte 80: 8 triangles are declared, but the file is too short"));
    }
    std::string huge = whole;
    huge.replace(80, 4, "\xff\xff\xff\xff");
    EXPECT_THAT(Refusal(huge), HasSubstr("4294967295 triangles are declared"));
    std::string infinite = whole;
    infinite.replace(84 + 50 + 12, 4, std::string("\0\0\x80\x7f", 4));
    EXPECT_THAT(Refusal(infinite),
                HasSubstr("byte 134: triangle 1 (counted from 0) has a non-finite coordinate"));
    std::string none = whole.substr(0, 84);
    none[80] = 0;
    EXPECT_THAT(Refusal(none), HasSubstr("no faces"));
}

TEST(StlFile, EveryDamagedByteAndTruncationIsReadOrRefused) {
    const TemporaryFolder folder;
    int refused = 0;
    for (const StlEncoding encoding : {StlEncoding::Text, StlEncoding::Binary}) {
        WriteStl(folder.Path("mesh.stl"), AttributedMesh(), encoding);
        const std::string whole = TemporaryFolder::Content(folder.Path("mesh.stl"));
        for (std::size_t place = 0; place < whole.size(); place += 5) {
            std::string damaged = whole;
            damaged[place] = static_cast<char>(damaged[place] ^ 0xFF);
            for (const std::string& content : {whole.substr(0, place), damaged}) {
                const std::string path = folder.Fill("damaged.stl", content);
                try {
                    CheckPolygonMesh(ReadStl(path), path);
                } catch (const HostError& error) {
                    ++refused;
                    EXPECT_THAT(error.what(), HasSubstr(path));
                }
            }
        }
    }
    EXPECT_GT(refused, 300);
}

}  // namespace
}  // namespace trovik
