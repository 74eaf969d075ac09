// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/tessellation/EditableMesh.h"
#include "tests/meshes/MeshZoo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace trovik::test {
namespace {

using Kind = EditableMesh::VertexKind;
constexpr uint32_t none = EditableMesh::none;

/// The Euler characteristic: vertices - edges + faces.
int EulerOf(const EditableMesh& mesh) {
    int edges = 0;
    for (uint32_t h = 0; h < mesh.FaceLimit() * 3; ++h)
        if (mesh.HasFace(EditableMesh::FaceOf(h)) && (mesh.IsBorder(h) || mesh.Twin(h) < h))
            ++edges;
    return static_cast<int>(mesh.VertexCount()) - edges + static_cast<int>(mesh.FaceCount());
}

std::size_t BordersOf(const EditableMesh& mesh) {
    std::size_t count = 0;
    for (uint32_t h = 0; h < mesh.FaceLimit() * 3; ++h)
        if (mesh.HasFace(EditableMesh::FaceOf(h)) && mesh.IsBorder(h)) ++count;
    return count;
}

uint32_t AnyHalfEdge(const EditableMesh& mesh, std::mt19937& random) {
    while (true) {
        const auto h = static_cast<uint32_t>(random() % (mesh.FaceLimit() * 3));
        if (mesh.HasFace(EditableMesh::FaceOf(h))) return h;
    }
}

/// Two triangles: 0 1 2 and 0 2 3.
PolygonMesh TwoTriangles() {
    PolygonMesh mesh;
    mesh.positions = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    mesh.faceSizes = {3, 3};
    mesh.faceVertices = {0, 1, 2, 0, 2, 3};
    return mesh;
}

/// Gives each corner its position in the plane as its UV, shifted by `shift` where x > 0.
void AddUvs(PolygonMesh& mesh, float shift) {
    std::size_t first = 0;
    for (const uint32_t size : mesh.faceSizes) {
        float x = 0.0f;
        for (std::size_t k = 0; k < size; ++k)
            x += mesh.positions[mesh.faceVertices[first + k]][0] / static_cast<float>(size);
        for (std::size_t k = 0; k < size; ++k) {
            const auto& p = mesh.positions[mesh.faceVertices[first + k]];
            mesh.attributes.cornerUvs.push_back(static_cast<uint32_t>(mesh.attributes.uvs.size()));
            mesh.attributes.uvs.push_back({p[0] + (x > 0.0f ? shift : 0.0f), p[1]});
        }
        first += size;
    }
}

TEST(EditableMesh, KeepsAllTrianglesOfTheZoo) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        const EditableMesh mesh(zoo.mesh);
        EXPECT_EQ(mesh.FindFault(), "");
        EXPECT_EQ(mesh.VertexCount(), zoo.mesh.positions.size());
        EXPECT_EQ(mesh.FaceCount(), zoo.mesh.faceVertices.size() - 2 * zoo.mesh.faceSizes.size());
        std::vector<uint32_t> sources;
        std::vector<uint32_t> tags;
        const PolygonMesh back = mesh.ToPolygons(&sources, &tags);
        EXPECT_EQ(back.positions, zoo.mesh.positions);
        EXPECT_NO_THROW(CheckPolygonMesh(back, "mesh"));
        for (uint32_t v = 0; v < sources.size(); ++v) EXPECT_EQ(sources[v], v);
        EXPECT_EQ(tags.back(), zoo.mesh.faceSizes.size() - 1);
    }
}

TEST(EditableMesh, RefusesWhatIsNotAnOrientedManifold) {
    const auto refusal = [](const PolygonMesh& mesh) -> std::string {
        try {
            EditableMesh editable(mesh);
        } catch (const HostError& error) {
            return error.what();
        }
        return "accepted";
    };
    PolygonMesh fin = TwoTriangles();
    fin.positions.push_back({0, 0, 1});
    fin.faceSizes.push_back(3);
    fin.faceVertices.insert(fin.faceVertices.end(), {2, 0, 4});
    EXPECT_THAT(refusal(fin),
                testing::AllOf(testing::HasSubstr("the edge between the vertices 2 and 0 has more"),
                               testing::HasSubstr("{\"repair\": {}}")));
    PolygonMesh flipped = TwoTriangles();
    std::swap(flipped.faceVertices[4], flipped.faceVertices[5]);
    EXPECT_THAT(refusal(flipped), testing::HasSubstr("different orientations"));
    PolygonMesh bowTie = TwoTriangles();
    bowTie.positions.push_back({2, 2, 0});
    bowTie.faceVertices = {0, 1, 2, 2, 4, 3};
    EXPECT_THAT(refusal(bowTie), testing::HasSubstr("vertex 2 connects parts"));
    PolygonMesh repeated = TwoTriangles();
    repeated.faceVertices[2] = 0;
    EXPECT_THAT(refusal(repeated), testing::HasSubstr("face 0 has the vertex 0 twice"));
}

TEST(EditableMesh, RemovesVerticesWithoutFaces) {
    PolygonMesh extra = TwoTriangles();
    extra.positions.push_back({9, 9, 9});
    const EditableMesh mesh(extra);
    EXPECT_EQ(mesh.VertexCount(), 4u);
    EXPECT_EQ(mesh.FindFault(), "");
    EXPECT_EQ(mesh.ToPolygons().positions.size(), 4u);
}

TEST(EditableMesh, SplitsInnerAndBorderEdges) {
    EditableMesh mesh(TwoTriangles());
    const uint32_t inner = mesh.FindHalfEdge(0, 2);
    const uint32_t middle = mesh.SplitEdge(inner, {0.5f, 0.5f, 1.0f});
    EXPECT_EQ(mesh.FindFault(), "");
    EXPECT_EQ(mesh.FaceCount(), 4u);
    EXPECT_EQ(mesh.To(inner), middle);
    EXPECT_EQ(mesh.Valence(middle), 4u);
    EXPECT_EQ(mesh.Position(middle), Vector(0.5f, 0.5f, 1.0f));
    EXPECT_EQ(mesh.SourceOf(middle), none);
    const uint32_t border = mesh.SplitEdge(mesh.FindHalfEdge(0, 1), {0.5f, 0.0f, 0.0f});
    EXPECT_EQ(mesh.FindFault(), "");
    EXPECT_EQ(mesh.FaceCount(), 5u);
    EXPECT_TRUE(mesh.IsBorderVertex(border));
    EXPECT_EQ(BordersOf(mesh), 5u);
    EXPECT_EQ(EulerOf(mesh), 1);
}

TEST(EditableMesh, FlipsOnlyWhereTheResultIsAManifold) {
    EditableMesh mesh(TwoTriangles());
    const uint32_t h = mesh.FindHalfEdge(0, 2);
    EXPECT_FALSE(mesh.CanFlip(mesh.FindHalfEdge(0, 1))) << "a border";
    ASSERT_TRUE(mesh.CanFlip(h));
    mesh.FlipEdge(h);
    EXPECT_EQ(mesh.FindFault(), "");
    EXPECT_EQ(std::minmax(mesh.From(h), mesh.To(h)), std::minmax(1u, 3u));
    EXPECT_EQ(mesh.FindHalfEdge(0, 2), none);
    // Flipping an edge of a tetrahedron would give a double edge.
    PolygonMesh tetrahedron;
    tetrahedron.positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    tetrahedron.faceSizes = {3, 3, 3, 3};
    tetrahedron.faceVertices = {0, 2, 1, 0, 1, 3, 1, 2, 3, 2, 0, 3};
    EditableMesh closed(tetrahedron);
    for (uint32_t edge = 0; edge < 12; ++edge) {
        EXPECT_FALSE(closed.CanFlip(edge));
        EXPECT_FALSE(closed.CanCollapse(edge, closed.From(edge)));
    }
}

TEST(EditableMesh, FlipsBackToTheSameFaces) {
    EditableMesh mesh(Icosahedron());
    const PolygonMesh before = mesh.ToPolygons();
    mesh.FlipEdge(7);
    EXPECT_NE(mesh.ToPolygons().faceVertices, before.faceVertices);
    // Four quarter turns of the edge.
    for (int i = 0; i < 3; ++i) mesh.FlipEdge(7);
    EXPECT_EQ(mesh.FindFault(), "");
    EXPECT_EQ(mesh.ToPolygons().faceVertices, before.faceVertices);
}

TEST(EditableMesh, CollapsesBorderEdgesTowardsBothEnds) {
    for (const bool removesFrom : {true, false}) {
        EditableMesh mesh(TriangleStrip(6));
        uint32_t h = 0;
        while (!mesh.IsBorder(h) || mesh.Valence(mesh.From(h)) < 4 || mesh.Valence(mesh.To(h)) < 4)
            ++h;
        const uint32_t removed = removesFrom ? mesh.From(h) : mesh.To(h);
        const uint32_t other = removesFrom ? mesh.To(h) : mesh.From(h);
        const Vector p = mesh.Position(other);
        ASSERT_TRUE(mesh.CanCollapse(h, removed));
        mesh.CollapseEdge(h, removed, p);
        EXPECT_EQ(mesh.FindFault(), "");
        EXPECT_FALSE(mesh.HasVertex(removed));
        EXPECT_EQ(mesh.SourceOf(other), other) << "it did not move";
        EXPECT_EQ(mesh.FaceCount(), 11u);
        EXPECT_EQ(EulerOf(mesh), 1);
    }
}

TEST(EditableMesh, RefusesCollapsesThatChangeTheTopology) {
    // The two borders of a narrow ring must not touch.
    EditableMesh ring(OpenCylinder(8, 1));
    for (uint32_t h = 0; h < ring.FaceLimit() * 3; ++h)
        EXPECT_TRUE(ring.IsBorder(h) || !ring.CanCollapse(h, ring.From(h)));
    // A tube of three edges around must not be pinched.
    EditableMesh tube(Torus(9, 3));
    for (uint32_t h = 0; h < tube.FaceLimit() * 3; ++h) {
        if (!tube.CanCollapse(h, tube.From(h))) continue;
        EditableMesh copy(Torus(9, 3));
        copy.CollapseEdge(h, copy.From(h), copy.Position(copy.To(h)));
        EXPECT_EQ(copy.FindFault(), "");
        EXPECT_EQ(EulerOf(copy), 0);
    }
}

TEST(EditableMesh, KindsFollowFeatures) {
    EditableMesh mesh(GridMesh(4, 4));
    const auto at = [&](float x, float y) {
        for (uint32_t v = 0; v < mesh.VertexLimit(); ++v)
            if (mesh.Position(v).x == x && mesh.Position(v).y == y) return v;
        return none;
    };
    EXPECT_EQ(mesh.KindOf(at(2, 2)), Kind::Free);
    EXPECT_EQ(mesh.KindOf(at(0, 2)), Kind::OnCurve);
    for (const float x : {0.0f, 1.0f, 2.0f})
        mesh.SetFeature(mesh.FindHalfEdge(at(x, 2), at(x + 1, 2)), true);
    EXPECT_EQ(mesh.KindOf(at(0, 2)), Kind::Corner) << "a feature that ends on the border";
    EXPECT_EQ(mesh.KindOf(at(1, 2)), Kind::OnCurve);
    EXPECT_EQ(mesh.KindOf(at(3, 2)), Kind::Corner) << "the end of a feature";
    mesh.SetFixed(at(1, 1));
    EXPECT_EQ(mesh.KindOf(at(1, 1)), Kind::Corner);
    const uint32_t along = mesh.FindHalfEdge(at(1, 2), at(2, 2));
    EXPECT_FALSE(mesh.CanFlip(along));
    EXPECT_TRUE(mesh.CanCollapse(along, at(1, 2)));
    EXPECT_FALSE(mesh.CanCollapse(mesh.FindHalfEdge(at(1, 2), at(1, 3)), at(1, 2)))
        << "across the feature";
    EXPECT_TRUE(mesh.CanCollapse(mesh.FindHalfEdge(at(1, 3), at(1, 2)), at(1, 3)))
        << "a free vertex onto the feature";
}

TEST(EditableMesh, UvsFollowEditsOnBothSidesOfASeam) {
    PolygonMesh grid = GridMesh(4, 4);
    for (auto& p : grid.positions) p[0] -= 2.0f;
    AddUvs(grid, 10.0f);
    EditableMesh mesh(grid);
    EXPECT_EQ(mesh.FindFault(), "");
    std::mt19937 random(3);
    std::uniform_real_distribution<float> fraction(0.2f, 0.8f);
    for (int i = 0; i < 400; ++i) {
        const uint32_t h = AnyHalfEdge(mesh, random);
        const auto kind = random() % 3;
        const Vector a = mesh.Position(mesh.From(h));
        const Vector b = mesh.Position(mesh.To(h));
        const float t = fraction(random);
        if (kind == 0) {
            mesh.SplitEdge(h, a + (b - a) * t, t);
        } else if (kind == 1 && mesh.CanFlip(h)) {
            mesh.FlipEdge(h);
        } else if (kind == 2 && mesh.CanCollapse(h, mesh.From(h))) {
            const bool isFree =
                mesh.KindOf(mesh.From(h)) == Kind::Free && mesh.KindOf(mesh.To(h)) == Kind::Free;
            mesh.CollapseEdge(h, mesh.From(h), isFree ? a + (b - a) * t : b, isFree ? t : 1.0f);
        }
        ASSERT_EQ(mesh.FindFault(), "") << "edit " << i;
    }
    for (uint32_t h = 0; h < mesh.FaceLimit() * 3; ++h) {
        if (!mesh.HasFace(EditableMesh::FaceOf(h))) continue;
        const Vector p = mesh.Position(mesh.From(h));
        const std::array<float, 2> uv = mesh.Uv(mesh.UvOf(h));
        const bool isRight =
            p.x > 1e-4f || (p.x > -1e-4f && (mesh.Position(mesh.To(h)).x > 1e-4f ||
                                             mesh.Position(mesh.Opposite(h)).x > 1e-4f));
        EXPECT_NEAR(uv[0], p.x + (isRight ? 10.0f : 0.0f), 1e-4f);
        EXPECT_NEAR(uv[1], p.y, 1e-4f);
    }
}

TEST(EditableMesh, FindsSeamsThatAreNotFeatures) {
    PolygonMesh grid = GridMesh(4, 4);
    for (auto& p : grid.positions) p[0] -= 2.0f;
    AddUvs(grid, 10.0f);
    EditableMesh mesh(grid);
    EXPECT_EQ(mesh.FindFault(), "");
    uint32_t seam = 0;
    while (!mesh.IsFeature(seam)) ++seam;
    mesh.SetFeature(seam, false);
    EXPECT_EQ(mesh.FindFault(),
              "half-edge " + std::to_string(seam) + " is a seam, but not a feature");
}

TEST(EditableMesh, RandomEditsKeepAnOrientedManifold) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        EditableMesh mesh(zoo.mesh);
        std::mt19937 random(11);
        // A few features, so that edits along and across them occur.
        for (int i = 0; i < 6; ++i) mesh.SetFeature(AnyHalfEdge(mesh, random), true);
        const int euler = EulerOf(mesh);
        uint32_t edits[3] = {};
        for (int i = 0; i < 6000; ++i) {
            const uint32_t h = AnyHalfEdge(mesh, random);
            // Grows to some hundred faces, and shrinks again.
            const auto wish = random() % 8;
            const bool grows = (i / 500) % 2 == 0;
            if (wish < 2) {
                if (!mesh.CanFlip(h)) continue;
                mesh.FlipEdge(h);
                ++edits[0];
            } else if (wish < (grows ? 6 : 3)) {
                const Vector p = (mesh.Position(mesh.From(h)) + mesh.Position(mesh.To(h))) * 0.5f;
                mesh.SplitEdge(h, p);
                ++edits[1];
            } else {
                const uint32_t removed = random() % 2 == 0 ? mesh.From(h) : mesh.To(h);
                const uint32_t other = removed == mesh.From(h) ? mesh.To(h) : mesh.From(h);
                if (!mesh.CanCollapse(h, removed)) continue;
                mesh.CollapseEdge(h, removed, mesh.Position(other));
                ++edits[2];
            }
            if (i % 100 != 99) continue;
            ASSERT_EQ(mesh.FindFault(), "") << "edit " << i;
        }
        EXPECT_EQ(EulerOf(mesh), euler) << "the topology has changed";
        EXPECT_GT(edits[1], 1000u);
        EXPECT_GT(edits[2], 300u);
        PolygonMesh result = mesh.ToPolygons();
        EXPECT_NO_THROW(CheckPolygonMesh(result, "mesh"));
        EXPECT_TRUE(MakeOrientedManifold(result).Untouched());
    }
}

TEST(EditableMesh, ReusesRemovedElements) {
    EditableMesh mesh(SphereQuads(3));
    const uint32_t faces = mesh.FaceLimit();
    const uint32_t vertices = mesh.VertexLimit();
    std::mt19937 random(4);
    for (int round = 0; round < 200; ++round) {
        const uint32_t h = AnyHalfEdge(mesh, random);
        if (!mesh.CanCollapse(h, mesh.From(h))) continue;
        mesh.CollapseEdge(h, mesh.From(h), mesh.Position(mesh.To(h)));
        const uint32_t other = AnyHalfEdge(mesh, random);
        mesh.SplitEdge(other, mesh.Position(mesh.From(other)));
    }
    EXPECT_EQ(mesh.FaceLimit(), faces);
    EXPECT_EQ(mesh.VertexLimit(), vertices);
    EXPECT_EQ(mesh.FindFault(), "");
}

}  // namespace
}  // namespace trovik::test
