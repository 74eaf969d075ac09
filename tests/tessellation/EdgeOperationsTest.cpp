// SPDX-License-Identifier: Apache-2.0
#include "framework/tessellation/EdgeOperations.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace trovik::test {
namespace {

constexpr uint32_t none = EditableMesh::none;

uint32_t VertexAt(const EditableMesh& mesh, float x, float y) {
    for (uint32_t v = 0; v < mesh.VertexLimit(); ++v)
        if (mesh.HasVertex(v) && mesh.Position(v).x == x && mesh.Position(v).y == y) return v;
    return none;
}

TEST(EdgeOperations, SplitsOnlyLongEdges) {
    EditableMesh mesh(GridMesh(2, 2));
    uint32_t h = mesh.FindHalfEdge(VertexAt(mesh, 0, 0), VertexAt(mesh, 1, 1));
    if (h == none) h = mesh.FindHalfEdge(VertexAt(mesh, 1, 0), VertexAt(mesh, 0, 1));
    EXPECT_EQ(SplitLongEdge(mesh, h, EdgeLengths(1.1f)), none);
    EXPECT_EQ(SplitLongEdge(mesh, EditableMesh::Next(h), EdgeLengths(0.5f)), none)
        << "its face has a longer edge";
    const uint32_t made = SplitLongEdge(mesh, h, EdgeLengths(1.0f));
    ASSERT_NE(made, none);
    EXPECT_EQ(mesh.Position(made), Vector(0.5f, 0.5f, 0.0f));
    h = mesh.FindHalfEdge(VertexAt(mesh, 0, 0), VertexAt(mesh, 1, 0));
    if (h == none) h = mesh.FindHalfEdge(VertexAt(mesh, 1, 0), VertexAt(mesh, 0, 0));
    mesh.SetKept(mesh.From(h));
    mesh.SetKept(mesh.To(h));
    EXPECT_EQ(SplitLongEdge(mesh, h, EdgeLengths(0.1f)), none) << "a kept edge";
}

TEST(EdgeOperations, SplittingNextToLongKeptEdgesEnds) {
    EditableMesh mesh(GridMesh(4, 1));
    for (const float x : {0.0f, 1.0f, 2.0f, 3.0f, 4.0f}) mesh.SetKept(VertexAt(mesh, x, 0.0f));
    for (int sweep = 0; sweep < 20; ++sweep)
        for (uint32_t h = 0; h < mesh.FaceLimit() * 3; ++h) {
            SplitLongEdge(mesh, h, EdgeLengths(0.1f));
            ASSERT_LT(mesh.FaceCount(), 10000u);
        }
    EXPECT_EQ(mesh.FindFault(), "");
    EXPECT_GT(mesh.FaceCount(), 100u);
    EXPECT_NE(mesh.FindHalfEdge(VertexAt(mesh, 0, 0), VertexAt(mesh, 1, 0)), none);
}

TEST(EdgeOperations, CollapsesToTheMidpointOrTheFixedVertex) {
    for (const bool isFixed : {false, true}) {
        EditableMesh mesh(GridMesh(5, 5));
        const uint32_t a = VertexAt(mesh, 2, 2);
        const uint32_t b = VertexAt(mesh, 3, 2);
        if (isFixed) mesh.SetFixed(a);
        const uint32_t h = mesh.FindHalfEdge(a, b);
        EXPECT_FALSE(CollapseShortEdge(mesh, h, EdgeLengths(1.2f))) << "not short";
        EXPECT_FALSE(CollapseShortEdge(mesh, h, EdgeLengths(1.3f)))
            << "an edge would become too long";
        ASSERT_TRUE(CollapseShortEdge(mesh, h, EdgeLengths(3.0f)));
        EXPECT_EQ(mesh.FindFault(), "");
        EXPECT_EQ(mesh.HasVertex(a), isFixed);
        const uint32_t left = mesh.HasVertex(a) ? a : b;
        EXPECT_EQ(mesh.Position(left).x, isFixed ? 2.0f : 2.5f);
        EXPECT_EQ(mesh.SourceOf(left) == none, !isFixed);
    }
}

TEST(EdgeOperations, KeepsTheCornersOfBorders) {
    EditableMesh mesh(GridMesh(3, 3));
    const uint32_t corner = VertexAt(mesh, 0, 0);
    const uint32_t next = VertexAt(mesh, 1, 0);
    uint32_t h = mesh.FindHalfEdge(corner, next);
    if (h == none) h = mesh.FindHalfEdge(next, corner);
    ASSERT_TRUE(CollapseShortEdge(mesh, h, EdgeLengths(4.0f)));
    EXPECT_TRUE(mesh.HasVertex(corner));
    EXPECT_FALSE(mesh.HasVertex(next));
    EXPECT_EQ(mesh.Position(corner), Vector());
}

TEST(EdgeOperations, RefusesCollapsesThatInvertAFace) {
    // A star-shaped hexagon: moving the centre to an outer corner would fold the surface.
    PolygonMesh star;
    star.positions.push_back({0.0f, 0.0f, 0.0f});
    for (int k = 0; k < 12; ++k) {
        const float angle = static_cast<float>(k) * 0.5235988f;
        const float radius = k % 2 == 0 ? 1.0f : 0.3f;
        star.positions.push_back({radius * std::cos(angle), radius * std::sin(angle), 0.0f});
    }
    for (uint32_t k = 0; k < 12; ++k) {
        star.faceSizes.push_back(3);
        star.faceVertices.insert(star.faceVertices.end(), {0, 1 + k, 1 + (k + 1) % 12});
    }
    EditableMesh mesh(star);
    const PolygonMesh before = mesh.ToPolygons();
    EXPECT_FALSE(CollapseShortEdge(mesh, mesh.FindHalfEdge(0, 1), EdgeLengths(5.0f)));
    EXPECT_FALSE(MoveFreeVertex(mesh, 0, {0.9f, 0.0f, 0.0f}));
    EXPECT_EQ(mesh.ToPolygons().positions, before.positions);
    EXPECT_TRUE(MoveFreeVertex(mesh, 0, {0.05f, 0.0f, 0.0f}));
    EXPECT_EQ(mesh.SourceOf(0), none);
}

TEST(EdgeOperations, FlippingImprovesValencesAndThinFaces) {
    EditableMesh mesh(SphereQuads(4));
    std::mt19937 random(8);
    for (int i = 0; i < 800; ++i) {
        const auto h = static_cast<uint32_t>(random() % (mesh.FaceLimit() * 3));
        if (mesh.CanFlip(h)) mesh.FlipEdge(h);
    }
    const auto irregularity = [&] {
        uint64_t sum = 0;
        for (uint32_t v = 0; v < mesh.VertexLimit(); ++v) {
            const auto error = static_cast<int64_t>(mesh.Valence(v)) - 6;
            sum += static_cast<uint64_t>(error * error);
        }
        return sum;
    };
    const uint64_t before = irregularity();
    for (int sweep = 0; sweep < 10; ++sweep)
        for (uint32_t h = 0; h < mesh.FaceLimit() * 3; ++h) FlipToImprove(mesh, h);
    EXPECT_EQ(mesh.FindFault(), "");
    EXPECT_LT(irregularity() * 3, before);
}

TEST(EdgeOperations, RelaxationStaysInTheTangentPlane) {
    PolygonMesh plane = GridMesh(6, 6);
    std::mt19937 random(2);
    std::uniform_real_distribution<float> noise(-0.3f, 0.3f);
    for (auto& p : plane.positions) {
        if (p[0] > 0.0f && p[0] < 6.0f && p[1] > 0.0f && p[1] < 6.0f) {
            p[0] += noise(random);
            p[1] += noise(random);
        }
        p[2] = 3.0f;
    }
    EditableMesh mesh(plane);
    for (int i = 0; i < 50; ++i)
        for (uint32_t v = 0; v < mesh.VertexLimit(); ++v)
            if (mesh.KindOf(v) == EditableMesh::VertexKind::Free)
                MoveFreeVertex(mesh, v, RelaxedPosition(mesh, v));
    for (uint32_t v = 0; v < mesh.VertexLimit(); ++v) {
        EXPECT_EQ(mesh.Position(v).z, 3.0f);
        if (mesh.KindOf(v) != EditableMesh::VertexKind::Free) continue;
        EXPECT_NEAR((RelaxedPosition(mesh, v) - mesh.Position(v)).Length(), 0.0f, 0.01f);
    }
}

TEST(EdgeOperations, MovingAVertexMovesItsUv) {
    PolygonMesh plane = GridMesh(4, 4);
    for (const auto& p : plane.positions)
        plane.attributes.uvs.push_back({p[0] * 2.0f, p[1] - 1.0f});
    plane.attributes.cornerUvs = plane.faceVertices;
    EditableMesh mesh(plane);
    const uint32_t v = VertexAt(mesh, 2, 2);
    for (const Vector& p : {Vector(2.3f, 2.1f, 0.0f), Vector(1.8f, 1.7f, 0.0f)}) {
        ASSERT_TRUE(MoveFreeVertex(mesh, v, p));
        const std::array<float, 2> uv = mesh.Uv(mesh.UvOf(mesh.HalfEdgeOf(v)));
        EXPECT_NEAR(uv[0], p.x * 2.0f, 1e-5f);
        EXPECT_NEAR(uv[1], p.y - 1.0f, 1e-5f);
    }
}

}  // namespace
}  // namespace trovik::test
