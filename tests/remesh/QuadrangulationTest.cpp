// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/Cancelled.h"
#include "framework/errors/HostError.h"
#include "framework/remesh/FaceTable.h"
#include "framework/remesh/IsotropicRemeshing.h"
#include "framework/remesh/Quadrangulation.h"
#include "tests/jobs/TestJob.h"
#include "tests/remesh/ReplacedSurface.h"

#include <array>
#include <set>

namespace trovik::test {
namespace {

using Split = Quadrangulation::Split;
constexpr Quadrangulation neverSplit{Split::Never};

/// Splits quads into triangles.
PolygonMesh Triangulated(const PolygonMesh& quads) {
    PolygonMesh mesh = quads;
    mesh.faceVertices.clear();
    for (std::size_t face = 0; face < quads.faceSizes.size(); ++face) {
        const uint32_t* v = &quads.faceVertices[face * 4];
        // Alternating diagonals.
        const std::size_t first = face % 2;
        for (const std::size_t k : {0u, 1u, 2u, 0u, 2u, 3u})
            mesh.faceVertices.push_back(v[(k + first) % 4]);
    }
    mesh.faceSizes.assign(quads.faceSizes.size() * 2, 3);
    return mesh;
}

/// Vertices zigzag between two parallel lines.
std::array<float, 3> RowPosition(std::size_t vertex) {
    const std::size_t square = vertex / 2;
    return {static_cast<float>(square), static_cast<float>(vertex % 2), 0.0f};
}

/// A row of triangles with two per unit square; an odd number leaves the last square half.
PolygonMesh Row(std::size_t triangles) {
    PolygonMesh mesh;
    for (std::size_t i = 0; i < triangles + 2; ++i) mesh.positions.push_back(RowPosition(i));
    for (uint32_t i = 0; i < triangles; ++i) {
        const std::array<uint32_t, 3> v = {i, i + 1 + i % 2, i + 2 - i % 2};
        // Alternates, because the vertices zigzag.
        mesh.faceVertices.insert(mesh.faceVertices.end(), {v[0], v[2], v[1]});
    }
    mesh.faceSizes.assign(triangles, 3);
    return mesh;
}

std::set<std::set<uint32_t>> VertexSets(const PolygonMesh& mesh) {
    std::set<std::set<uint32_t>> sets;
    const FaceTable faces(mesh);
    for (std::size_t face = 0; face < mesh.faceSizes.size(); ++face) {
        const auto vertices = faces.Vertices(face);
        sets.insert({vertices.begin(), vertices.end()});
    }
    return sets;
}

std::string MessageOf(Document& document, const Quadrangulation& settings) {
    try {
        document.ReplaceSurface(Quadrangulate(settings));
    } catch (const HostError& error) {
        return error.what();
    }
    return "not refused";
}

TEST(Quadrangulation, RestoresTriangulatedQuads) {
    for (const PolygonMesh& quads : {SphereQuads(4), Torus(24, 12), GridMesh(7, 5), Cube()}) {
        Document document("mesh", Triangulated(quads));
        const ReplacementReport report = document.ReplaceSurface(Quadrangulate(neverSplit));
        const PolygonMesh result = MeshOf(document);
        EXPECT_EQ(result.positions, quads.positions);
        EXPECT_EQ(VertexSets(result), VertexSets(quads));
        ExpectManifold(result);
        EXPECT_THAT(report.warnings, testing::IsEmpty());
        EXPECT_NEAR(VolumeOf(*document.Geometry().Bound()),
                    VolumeOf(*Document("quads", quads).Geometry().Bound()),
                    1e-2);
    }
}

TEST(Quadrangulation, TrianglesWithoutAnyPairAreSplit) {
    // The faces meet at larger angles than the default limit.
    Document document("mesh", Icosahedron());
    document.ReplaceSurface(Quadrangulate({}));
    EXPECT_EQ(MeshOf(document).faceSizes, std::vector<uint32_t>(60, 4));
}

TEST(Quadrangulation, PairsAllTrianglesOfClosedSurfaces) {
    std::ptrdiff_t poor = 0;
    for (const float length : {0.11f, 0.15f, 0.2f, 0.3f}) {
        Document document("sphere", SphereQuads(4));
        IsotropicRemeshing remeshing;
        remeshing.edgeLength = length;
        document.ReplaceSurface(Remesh(remeshing));
        const PolygonMesh triangles = MeshOf(document);
        document.ReplaceSurface(Quadrangulate(neverSplit));
        const PolygonMesh quads = MeshOf(document);
        EXPECT_EQ(quads.positions, triangles.positions);
        EXPECT_EQ(quads.faceSizes, std::vector<uint32_t>(triangles.faceSizes.size() / 2, 4));
        ExpectManifold(quads);
        std::vector<int> counts(quads.positions.size());
        for (const uint32_t vertex : quads.faceVertices) ++counts[vertex];
        EXPECT_GE(*std::ranges::min_element(counts), 2);
        poor += std::ranges::count(counts, 2);
        EXPECT_EQ(BorderEdgesOf(*document.Geometry().Bound()), 0u);
    }
    // Vertices with two faces are exceptions.
    EXPECT_LE(poor, 4);
}

TEST(Quadrangulation, SplitsAllFacesIfTrianglesAreLeft) {
    Document document("row", Row(5));
    const std::string before = SceneOf(document);
    EXPECT_THAT(MessageOf(document, neverSplit), testing::HasSubstr("1 triangle has no partner"));
    EXPECT_EQ(SceneOf(document), before);
    const ReplacementReport report = document.ReplaceSurface(Quadrangulate({}));
    EXPECT_THAT(report.warnings, testing::ElementsAre(testing::HasSubstr("11 faces")));
    EXPECT_EQ(MeshOf(document).faceSizes, std::vector<uint32_t>(11, 4));
    for (uint32_t v = 0; v < 7; ++v) {
        const auto p = RowPosition(v);
        EXPECT_EQ(document.Geometry().Bound()->Position(v), Vector(p[0], p[1], p[2]));
    }
    document.Undo();
    document.ReplaceSurface(Quadrangulate({Split::Always}));
    EXPECT_EQ(MeshOf(document).faceSizes.size(), 11u);

    Document even("row", Row(6));
    even.ReplaceSurface(Quadrangulate({}));
    EXPECT_EQ(MeshOf(even).faceSizes.size(), 3u);
    even.Undo();
    const ReplacementReport always = even.ReplaceSurface(Quadrangulate({Split::Always}));
    EXPECT_EQ(MeshOf(even).faceSizes.size(), 12u);
    EXPECT_THAT(always.warnings, testing::IsEmpty());
}

TEST(Quadrangulation, KeepsBordersOfGroupsAndOfTheMask) {
    PolygonMesh row = Row(6);
    row.attributes.groupNames = {"a", "b"};
    row.attributes.faceGroups = {0, 0, 0, 1, 1, 1};
    Document document("row", row);
    EXPECT_THAT(MessageOf(document, neverSplit), testing::HasSubstr("2 triangles have no partner"));
    Quadrangulation free = neverSplit;
    free.keepsGroups = false;
    document.ReplaceSurface(Quadrangulate(free));
    EXPECT_EQ(document.Geometry().Attributes().faceGroups, (std::vector<uint32_t>{0, 0, 1}));

    Document masked("row", Row(6));
    masked.Freeze({127, 127, 127, 127, 127, 0, 0, 0}, FreezeMode::Replace);
    EXPECT_THAT(MessageOf(masked, neverSplit), testing::HasSubstr("2 triangles have no partner"));
}

TEST(Quadrangulation, KeepsTextureSeams) {
    PolygonMesh row = Row(6);
    for (const auto& p : row.positions) row.attributes.uvs.push_back({p[0], p[1]});
    row.attributes.cornerUvs = row.faceVertices;
    // Behind the third triangle, the texture continues elsewhere.
    for (std::size_t corner = 9; corner < 18; ++corner) {
        const auto& p = row.positions[row.faceVertices[corner]];
        row.attributes.cornerUvs[corner] = static_cast<uint32_t>(row.attributes.uvs.size());
        row.attributes.uvs.push_back({p[0] + 10.0f, p[1]});
    }
    Document document("row", row);
    EXPECT_THAT(MessageOf(document, neverSplit), testing::HasSubstr("2 triangles have no partner"));
    Quadrangulation free = neverSplit;
    free.keepsUvs = false;
    document.ReplaceSurface(Quadrangulate(free));
    const SurfaceAttributes& made = document.Geometry().Attributes();
    const PolygonMesh quads = MeshOf(document);
    for (std::size_t corner = 0; corner < 12; ++corner) {
        const auto& p = quads.positions[quads.faceVertices[corner]];
        const auto& uv = made.uvs.at(made.cornerUvs.at(corner));
        EXPECT_EQ(uv[1], p[1]);
        // Of the second quad, the vertex of the second triangle alone is behind the seam.
        if (corner / 4 == 0) {
            EXPECT_EQ(uv[0], p[0]);
        }
        if (corner / 4 == 2) {
            EXPECT_EQ(uv[0], p[0] + 10.0f);
        }
    }
}

TEST(Quadrangulation, TheAngleLimitsPairs) {
    // A roof: the two triangles at the ridge form an angle of 90 degrees.
    PolygonMesh roof;
    roof.positions = {{0, -1, 0}, {1, 0, 1}, {-1, 0, 1}, {0, 1, 0}};
    roof.faceVertices = {0, 1, 2, 2, 1, 3};
    roof.faceSizes = {3, 3};
    Document document("roof", roof);
    EXPECT_THAT(MessageOf(document, neverSplit), testing::HasSubstr("2 triangles"));
    Quadrangulation wide = neverSplit;
    wide.maxAngle = 95.0f;
    document.ReplaceSurface(Quadrangulate(wide));
    EXPECT_EQ(MeshOf(document).faceSizes.size(), 1u);
}

TEST(Quadrangulation, NeverMakesConcaveQuads) {
    PolygonMesh arrow;
    arrow.positions = {{0, 0, 0}, {2, -2, 0}, {1, 0, 0}, {2, 2, 0}};
    arrow.faceVertices = {0, 1, 2, 0, 2, 3};
    arrow.faceSizes = {3, 3};
    Document document("arrow", arrow);
    EXPECT_THAT(MessageOf(document, neverSplit), testing::HasSubstr("2 triangles"));
}

TEST(Quadrangulation, LeavesQuadsAsTheyAre) {
    Document document("cube", Cube());
    const std::string before = SceneOf(document);
    EXPECT_THAT(document.ReplaceSurface(Quadrangulate({})).warnings,
                testing::ElementsAre(testing::HasSubstr("already consists of quads")));
    EXPECT_EQ(SceneOf(document), before);
    EXPECT_EQ(document.HistoryPosition(), 0u);
}

TEST(Quadrangulation, ReportsProgressAndCanBeCancelledAndUndone) {
    Document document("torus", Triangulated(Torus(12, 6)));
    const std::string before = SceneOf(document);
    TestJob every;
    document.ReplaceSurface(Quadrangulate({Split::Always}), &every);
    every.ExpectFinished();
    const std::string after = SceneOf(document);
    document.Undo();
    EXPECT_EQ(SceneOf(document), before);
    document.Redo();
    EXPECT_EQ(SceneOf(document), after);
    document.Undo();
    TestJob whole(TestJob::never, TestJob::WithoutClock());
    document.ReplaceSurface(Quadrangulate({Split::Always}), &whole);
    document.Undo();
    for (uint64_t at = 1; at <= whole.reports; ++at) {
        TestJob job(at, TestJob::WithoutClock());
        EXPECT_THROW(document.ReplaceSurface(Quadrangulate({Split::Always}), &job), Cancelled);
        EXPECT_EQ(SceneOf(document), before) << at;
    }
}

}  // namespace
}  // namespace trovik::test
