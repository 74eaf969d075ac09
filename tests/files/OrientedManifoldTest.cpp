// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/PolygonMesh.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <utility>
#include <vector>

namespace trovik {
namespace {

using Indices = std::vector<std::uint32_t>;
using Faces = std::vector<Indices>;

PolygonMesh MeshOf(std::size_t vertexCount, const Faces& faces) {
    PolygonMesh mesh;
    for (std::size_t vertex = 0; vertex < vertexCount; ++vertex) {
        mesh.positions.push_back({static_cast<float>(vertex), 0.5f, -1.0f});
    }
    for (const Indices& face : faces) {
        mesh.faceSizes.push_back(static_cast<std::uint32_t>(face.size()));
        mesh.faceVertices.insert(mesh.faceVertices.end(), face.begin(), face.end());
    }
    return mesh;
}

Faces FacesOf(const PolygonMesh& mesh) {
    Faces faces;
    auto corner = mesh.faceVertices.begin();
    for (const std::uint32_t size : mesh.faceSizes) {
        faces.emplace_back(corner, corner + size);
        corner += size;
    }
    return faces;
}

/// Expects each half-edge to occur at most once, and a single fan of faces around each vertex.
void ExpectOrientedManifold(const PolygonMesh& mesh) {
    CheckPolygonMesh(mesh, "result");
    std::set<std::pair<std::uint32_t, std::uint32_t>> halfEdges;
    // For each vertex, maps the next corner to the previous corner in each of the vertex's faces.
    std::map<std::uint32_t, std::map<std::uint32_t, std::uint32_t>> links;
    for (const Indices& face : FacesOf(mesh)) {
        for (std::size_t i = 0; i < face.size(); ++i) {
            const std::uint32_t next = face[(i + 1) % face.size()];
            EXPECT_TRUE(halfEdges.emplace(face[i], next).second)
                << "half-edge " << face[i] << " " << next << " occurs twice";
            links[face[i]][next] = face[(i + face.size() - 1) % face.size()];
        }
    }
    for (const auto& [vertex, link] : links) {
        std::set<std::uint32_t> ends;
        for (const auto& [next, previous] : link) {
            ends.insert(previous);
        }
        const auto start = std::find_if(link.begin(), link.end(), [&ends](const auto& step) {
            return !ends.count(step.first);
        });
        std::uint32_t at = start == link.end() ? link.begin()->first : start->first;
        std::size_t steps = 0;
        for (auto step = link.find(at); step != link.end() && steps < link.size();
             step = link.find(step->second)) {
            ++steps;
        }
        EXPECT_EQ(steps, link.size()) << "vertex " << vertex << " has more than one fan of faces";
    }
}

TEST(OrientedManifold, ValidMeshesStayUnchanged) {
    const Faces strip = {{0, 1, 4, 3}, {1, 2, 5, 4}};
    const Faces tetrahedron = {{0, 1, 2}, {0, 2, 3}, {0, 3, 1}, {1, 3, 2}};
    for (const Faces& faces : {strip, tetrahedron}) {
        PolygonMesh mesh = MeshOf(7, faces);
        const ManifoldReport report = MakeOrientedManifold(mesh);
        EXPECT_TRUE(report.Untouched());
        EXPECT_EQ(report.nonManifoldEdges + report.misorientedEdges + report.splitVertices, 0u);
        EXPECT_EQ(FacesOf(mesh), faces);
        EXPECT_EQ(mesh.positions.size(), 7u);
        ExpectOrientedManifold(mesh);
    }
}

TEST(OrientedManifold, ThreeFacesAtOneEdgeAreAllSeparated) {
    PolygonMesh mesh = MeshOf(5, {{0, 1, 2}, {1, 0, 3}, {0, 1, 4}});
    mesh.normals = {{0, 0, 1}, {0, 1, 0}, {1, 0, 0}, {0, 0, 2}, {0, 0, 3}};
    const ManifoldReport report = MakeOrientedManifold(mesh);
    EXPECT_EQ(report.nonManifoldEdges, 1u);
    EXPECT_EQ(report.misorientedEdges, 0u);
    EXPECT_EQ(report.splitVertices, 2u);
    EXPECT_EQ(report.addedVertices, 4u);
    EXPECT_TRUE(report.closedCuts.empty());
    // Copies are ordered by vertex, then by face: 5 and 6 are copies of vertex 0, 7 and 8 of vertex
    // 1.
    EXPECT_EQ(FacesOf(mesh), (Faces{{0, 1, 2}, {7, 5, 3}, {6, 8, 4}}));
    ASSERT_EQ(mesh.positions.size(), 9u);
    EXPECT_EQ(mesh.positions[6], mesh.positions[0]);
    EXPECT_EQ(mesh.positions[8], mesh.positions[1]);
    EXPECT_EQ(mesh.normals.size(), 9u);
    EXPECT_EQ(mesh.normals[7], mesh.normals[1]);
    ExpectOrientedManifold(mesh);
}

TEST(OrientedManifold, TwoFacesWithTheSameEdgeDirectionAreSeparated) {
    PolygonMesh mesh = MeshOf(4, {{0, 1, 2}, {0, 1, 3}});
    const ManifoldReport report = MakeOrientedManifold(mesh);
    EXPECT_EQ(report.misorientedEdges, 1u);
    EXPECT_EQ(report.nonManifoldEdges, 0u);
    EXPECT_EQ(report.addedVertices, 2u);
    EXPECT_EQ(FacesOf(mesh), (Faces{{0, 1, 2}, {4, 5, 3}}));
    ExpectOrientedManifold(mesh);
}

TEST(OrientedManifold, BowTieIsSplitAtItsVertex) {
    // The fan of face 0 keeps vertex 2, which is a different corner in each of its faces.
    PolygonMesh mesh = MeshOf(7, {{0, 1, 2}, {2, 3, 4}, {2, 4, 5}, {6, 0, 2}});
    const ManifoldReport report = MakeOrientedManifold(mesh);
    EXPECT_EQ(report.nonManifoldEdges + report.misorientedEdges, 0u);
    EXPECT_EQ(report.splitVertices, 1u);
    EXPECT_EQ(report.addedVertices, 1u);
    EXPECT_EQ(FacesOf(mesh), (Faces{{0, 1, 2}, {7, 3, 4}, {7, 4, 5}, {6, 0, 2}}));
    ExpectOrientedManifold(mesh);
}

TEST(OrientedManifold, TwoSolidsMeetingInAVertexAreSeparated) {
    PolygonMesh mesh = MeshOf(
        7,
        {{0, 1, 2}, {0, 2, 3}, {0, 3, 1}, {1, 3, 2}, {4, 5, 0}, {4, 0, 6}, {4, 6, 5}, {5, 6, 0}});
    const ManifoldReport report = MakeOrientedManifold(mesh);
    EXPECT_EQ(report.addedVertices, 1u);
    EXPECT_EQ(FacesOf(mesh)[3], (Indices{1, 3, 2}));
    EXPECT_EQ(FacesOf(mesh)[4], (Indices{4, 5, 7}));
    EXPECT_EQ(FacesOf(mesh)[7], (Indices{5, 6, 7}));
    ExpectOrientedManifold(mesh);
}

TEST(OrientedManifold, TwoSolidsWithACommonEdgeAreSeparated) {
    PolygonMesh mesh = MeshOf(
        6,
        {{0, 1, 2}, {0, 2, 3}, {0, 3, 1}, {1, 3, 2}, {1, 0, 4}, {0, 5, 4}, {5, 0, 1}, {4, 5, 1}});
    const ManifoldReport report = MakeOrientedManifold(mesh);
    EXPECT_EQ(report.nonManifoldEdges, 1u);
    EXPECT_EQ(report.addedVertices, 2u);
    // Each solid is closed, so its two faces at the edge are joined again.
    EXPECT_THAT(report.closedCuts,
                testing::ElementsAre(std::array<std::uint32_t, 2>{0, 1},
                                     std::array<std::uint32_t, 2>{6, 7}));
    ExpectOrientedManifold(mesh);
}

TEST(OrientedManifold, FinOnAnInnerEdgeIsDetached) {
    // A tetrahedron with a fin on the edge 0 1.
    PolygonMesh mesh = MeshOf(5, {{0, 1, 2}, {0, 2, 3}, {0, 3, 1}, {1, 3, 2}, {0, 1, 4}});
    const ManifoldReport report = MakeOrientedManifold(mesh);
    EXPECT_EQ(report.nonManifoldEdges, 1u);
    EXPECT_EQ(FacesOf(mesh), (Faces{{0, 1, 2}, {0, 2, 3}, {0, 3, 1}, {1, 3, 2}, {5, 6, 4}}));
    EXPECT_THAT(report.closedCuts, testing::ElementsAre(std::array<std::uint32_t, 2>{0, 1}));
    EXPECT_FALSE(report.Untouched());
    ExpectOrientedManifold(mesh);
}

TEST(OrientedManifold, FinAlongTwoInnerEdgesLeavesASlit) {
    // A triangular prism with the row of edges 0 1 2, and a fin of two faces on this row.
    PolygonMesh mesh = MeshOf(11,
                              {{0, 1, 4, 3},
                               {1, 2, 5, 4},
                               {6, 7, 1, 0},
                               {7, 8, 2, 1},
                               {0, 1, 10, 9},
                               {3, 4, 7, 6},
                               {4, 5, 8, 7},
                               {0, 3, 6},
                               {2, 8, 5},
                               {1, 2, 10}});
    const ManifoldReport report = MakeOrientedManifold(mesh);
    EXPECT_EQ(report.nonManifoldEdges, 2u);
    EXPECT_TRUE(report.closedCuts.empty());
    // In the middle of the slit, each side has its own vertex; at the ends, only the fin has a
    // copy.
    EXPECT_EQ(report.addedVertices, 4u);
    const Faces faces = FacesOf(mesh);
    EXPECT_EQ(faces[0][1], 1u);
    EXPECT_NE(faces[2][2], 1u);
    EXPECT_EQ(faces[3][3], faces[2][2]);
    EXPECT_EQ(faces[0][0], 0u);
    EXPECT_EQ(faces[2][3], 0u);
    ExpectOrientedManifold(mesh);
}

TEST(OrientedManifold, MoebiusStripIsCutOpen) {
    constexpr std::uint32_t length = 7;
    Faces faces;
    for (std::uint32_t i = 0; i < length; ++i) {
        const bool isLast = i + 1 == length;
        const std::uint32_t lower = isLast ? 1 : 2 * i + 2;
        const std::uint32_t upper = isLast ? 0 : 2 * i + 3;
        faces.push_back({2 * i, lower, upper, 2 * i + 1});
    }
    PolygonMesh mesh = MeshOf(2 * length, faces);
    const ManifoldReport report = MakeOrientedManifold(mesh);
    EXPECT_EQ(report.misorientedEdges, 1u);
    EXPECT_EQ(report.addedVertices, 2u);
    faces.back() = {12, 15, 14, 13};
    EXPECT_EQ(FacesOf(mesh), faces);
    ExpectOrientedManifold(mesh);
}

TEST(OrientedManifold, FlippedFaceIsDetached) {
    PolygonMesh mesh = MeshOf(4, {{0, 1, 2}, {0, 2, 3}, {0, 3, 1}, {1, 2, 3}});
    const ManifoldReport report = MakeOrientedManifold(mesh);
    EXPECT_EQ(report.misorientedEdges, 3u);
    EXPECT_EQ(FacesOf(mesh), (Faces{{0, 1, 2}, {0, 2, 3}, {0, 3, 1}, {4, 5, 6}}));
    ExpectOrientedManifold(mesh);
}

TEST(OrientedManifold, RandomPolygonSoupsBecomeManifolds) {
    std::mt19937 random(7);
    for (int round = 0; round < 500; ++round) {
        SCOPED_TRACE(round);
        const std::uint32_t vertexCount = 4 + static_cast<std::uint32_t>(random() % 9);
        Faces faces;
        for (std::size_t count = 1 + random() % 40; count > 0; --count) {
            Indices all(vertexCount);
            for (std::uint32_t vertex = 0; vertex < vertexCount; ++vertex) {
                all[vertex] = vertex;
            }
            for (std::uint32_t i = vertexCount - 1; i > 0; --i) {
                std::swap(all[i], all[random() % (i + 1)]);
            }
            all.resize(3 + random() % std::min(vertexCount - 2, 3u));
            faces.push_back(all);
        }
        PolygonMesh mesh = MeshOf(vertexCount, faces);
        const PolygonMesh before = mesh;
        MakeOrientedManifold(mesh);
        ExpectOrientedManifold(mesh);
        EXPECT_EQ(mesh.faceSizes, before.faceSizes);
        for (std::size_t corner = 0; corner < mesh.faceVertices.size(); ++corner) {
            EXPECT_EQ(mesh.positions[mesh.faceVertices[corner]],
                      before.positions[before.faceVertices[corner]]);
        }
        PolygonMesh again = mesh;
        EXPECT_TRUE(MakeOrientedManifold(again).Untouched());
    }
}

}  // namespace
}  // namespace trovik
