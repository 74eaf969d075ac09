// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/LevelGeometry.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>

namespace trovik::test {
namespace {

class FaceVisitor final : public FaceEnumerator {
public:
    explicit FaceVisitor(std::function<bool(uint32_t)> test) : answer(std::move(test)) {}
    void Operator(Mesh*, uint32_t face) override { entered.push_back(face); }
    bool Tester(Mesh*, uint32_t face) override {
        tested.push_back(face);
        return answer(face);
    }
    std::function<bool(uint32_t)> answer;
    std::vector<uint32_t> tested;
    std::vector<uint32_t> entered;
};

class VertexVisitor final : public VertexEnumerator {
public:
    void Operator(Mesh*, uint32_t, uint32_t) override {}
    bool Tester(Mesh* mesh, uint32_t vertex, uint32_t face) override {
        tested.push_back(vertex);
        holds = holds && dynamic_cast<LevelMesh*>(mesh)->CornerOf(face, vertex) >= 0;
        return tested.size() < limit;
    }
    std::size_t limit = 1000000;
    bool holds = true;
    std::vector<uint32_t> tested;
};

class Adjacent final : public AdjacentVertexEnumerator {
public:
    void Operator(uint32_t vertex, uint32_t face) override { met.push_back({vertex, face}); }
    std::vector<std::pair<uint32_t, uint32_t>> met;
};

TEST(FaceWalk, IsBreadthFirstFromSideZeroToThree) {
    LevelGeometry geometry(GridMesh(3, 3));
    FaceVisitor visitor([](uint32_t) { return true; });
    geometry.Bound()->EnumerateFaces(4, &visitor, 0);
    // After the middle face come the faces above, right, below and left, then their neighbours.
    EXPECT_EQ(visitor.tested, (std::vector<uint32_t>{4, 1, 5, 7, 3, 2, 0, 8, 6}));
    EXPECT_EQ(visitor.entered, visitor.tested);
}

TEST(FaceWalk, StopsWhereTheTesterReturnsFalse) {
    LevelGeometry geometry(GridMesh(3, 3));
    FaceVisitor visitor([](uint32_t face) { return face == 4; });
    geometry.Bound()->EnumerateFaces(4, &visitor, 0);
    EXPECT_EQ(visitor.tested, (std::vector<uint32_t>{4, 1, 5, 7, 3}));
    EXPECT_EQ(visitor.entered, std::vector<uint32_t>{4});
    ASSERT_EQ(geometry.Bound()->LastFaceWalk().size(), 5u);
    EXPECT_TRUE(geometry.Bound()->LastFaceWalk()[0].answer);
    EXPECT_FALSE(geometry.Bound()->LastFaceWalk()[4].answer);
}

TEST(FaceWalk, ReachesEachFaceOfAComponentOnceAndKeepsTheVisitStamp) {
    for (const ZooMesh& entry : AllMeshes()) {
        SCOPED_TRACE(entry.name);
        LevelGeometry geometry(entry.mesh);
        geometry.Subdivide();
        LevelMesh& mesh = *geometry.Bound();
        const uint32_t stamp = mesh.visitStamp;
        for (int time = 0; time < 2; ++time) {
            FaceVisitor visitor([](uint32_t) { return true; });
            mesh.EnumerateFaces(0, &visitor, 0);
            EXPECT_EQ(visitor.tested.size(), mesh.faceCount);
            EXPECT_EQ(std::set<uint32_t>(visitor.tested.begin(), visitor.tested.end()).size(),
                      mesh.faceCount);
        }
        EXPECT_EQ(mesh.visitStamp, stamp);
    }
}

TEST(VertexWalk, ReachesEachVertexWithAnIncidentFaceAndAdvancesTheVisitStamp) {
    for (const ZooMesh& entry : AllMeshes()) {
        SCOPED_TRACE(entry.name);
        LevelGeometry geometry(entry.mesh);
        LevelMesh& mesh = *geometry.Bound();
        const uint32_t stamp = mesh.visitStamp;
        VertexVisitor visitor;
        mesh.EnumerateVertices(0, &visitor);
        EXPECT_EQ(visitor.tested.size(), mesh.VertexCount());
        EXPECT_TRUE(visitor.holds);
        EXPECT_EQ(mesh.visitStamp, stamp + 1);
        for (uint32_t k = 0; k < mesh.CornersPerFace(); ++k)
            EXPECT_EQ(visitor.tested[k], mesh.faceVertexIndices[k]);
    }
}

TEST(AdjacencyWalk, StartsAtTheGivenFaceAndReportsNextCorners) {
    LevelGeometry geometry(GridMesh(2, 2));
    Adjacent around;
    // Vertex 4 is in the middle. It is corner 0 of face 3, whose next corner is 5; face 2 is across
    // the edge to the previous corner 7, and so on.
    EXPECT_EQ(geometry.Bound()->EnumerateAdjacentVertices(&around, 4, 3), 4u);
    const std::vector<std::pair<uint32_t, uint32_t>> expected = {{5, 3}, {7, 2}, {3, 0}, {1, 1}};
    EXPECT_EQ(around.met, expected);
}

TEST(AdjacencyWalk, AtAnOpenEdgeAlsoReportsThePreviousCornerAndReverses) {
    LevelGeometry geometry(GridMesh(2, 2));
    Adjacent border;
    // Vertex 1 on the upper border, from face 0: the next corner is 4; the edge to the previous
    // corner, 0, is open.
    EXPECT_EQ(geometry.Bound()->EnumerateAdjacentVertices(&border, 1, 0), 3u);
    const std::vector<std::pair<uint32_t, uint32_t>> expected = {{4, 0}, {0, 0}, {2, 1}};
    EXPECT_EQ(border.met, expected);
}

TEST(AdjacencyWalk, FaceWithoutTheVertexIsReplacedByTheLowestIncidentFace) {
    LevelGeometry geometry(GridMesh(2, 2));
    Adjacent fromNowhere, fromLowest;
    geometry.Bound()->EnumerateAdjacentVertices(&fromNowhere, 5, 0);
    geometry.Bound()->EnumerateAdjacentVertices(&fromLowest, 5, 1);
    EXPECT_EQ(fromNowhere.met, fromLowest.met);
}

TEST(AdjacencyWalk, ReportsEachEdgeOnceOnEveryMesh) {
    for (const ZooMesh& entry : AllMeshes()) {
        SCOPED_TRACE(entry.name);
        LevelGeometry geometry(entry.mesh);
        geometry.Subdivide();
        for (uint32_t level = 0; level < 2; ++level) {
            LevelMesh& mesh = *geometry.Level(level);
            const uint32_t n = mesh.CornersPerFace();
            std::vector<std::set<uint32_t>> edges(mesh.VertexCount());
            for (uint32_t face = 0; face < mesh.faceCount; ++face) {
                for (uint32_t k = 0; k < n; ++k) {
                    const uint32_t a = mesh.faceVertexIndices[face * n + k];
                    const uint32_t b = mesh.faceVertexIndices[face * n + (k + 1) % n];
                    edges[a].insert(b);
                    edges[b].insert(a);
                }
            }
            for (uint32_t face = 0; face < mesh.faceCount; ++face) {
                for (uint32_t k = 0; k < n; ++k) {
                    const uint32_t vertex = mesh.faceVertexIndices[face * n + k];
                    Adjacent around;
                    mesh.EnumerateAdjacentVertices(&around, vertex, face);
                    std::set<uint32_t> met;
                    for (const auto& [other, inFace] : around.met) {
                        met.insert(other);
                        EXPECT_GE(mesh.CornerOf(inFace, other), 0);
                        EXPECT_GE(mesh.CornerOf(inFace, vertex), 0);
                    }
                    EXPECT_EQ(met.size(), around.met.size()) << "vertex " << vertex;
                    EXPECT_EQ(met, edges[vertex]) << "vertex " << vertex;
                }
            }
        }
    }
}

}  // namespace
}  // namespace trovik::test
