// SPDX-License-Identifier: Apache-2.0
#include "commands/Primitives.h"
#include "framework/files/MeshFiles.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <cmath>
#include <map>

namespace trovik::studio {

namespace {

using Point = std::array<double, 3>;

Point At(const PolygonMesh& mesh, std::size_t corner) {
    const auto& position = mesh.positions[mesh.faceVertices[corner]];
    return {static_cast<double>(position[0]),
            static_cast<double>(position[1]),
            static_cast<double>(position[2])};
}

/// How often each directed edge occurs.
std::map<std::pair<std::uint32_t, std::uint32_t>, int> DirectedEdges(const PolygonMesh& mesh) {
    std::map<std::pair<std::uint32_t, std::uint32_t>, int> edges;
    for (std::size_t face = 0; face < mesh.faceSizes.size(); ++face)
        for (std::size_t i = 0; i < 4; ++i)
            ++edges[{mesh.faceVertices[4 * face + i], mesh.faceVertices[4 * face + (i + 1) % 4]}];
    return edges;
}

/// Dot product of a face's normal and the direction from the origin to the face's centre.
double Outwardness(const PolygonMesh& mesh, std::size_t face) {
    Point normal{}, middle{};
    for (std::size_t i = 0; i < 4; ++i) {
        const Point a = At(mesh, 4 * face + i), b = At(mesh, 4 * face + (i + 1) % 4);
        for (std::size_t k = 0; k < 3; ++k) {
            normal[k] += a[(k + 1) % 3] * b[(k + 2) % 3] - a[(k + 2) % 3] * b[(k + 1) % 3];
            middle[k] += a[k] / 4;
        }
    }
    return normal[0] * middle[0] + normal[1] * middle[1] + normal[2] * middle[2];
}

class Closed : public testing::TestWithParam<Primitive> {};

}  // namespace

TEST_P(Closed, HasThePromisedCountsOfQuads) {
    for (const std::uint32_t n : {1u, 2u, 7u, 16u}) {
        const PolygonMesh mesh = MakePrimitive(GetParam(), n);
        EXPECT_EQ(mesh.faceSizes.size(), 6u * n * n);
        EXPECT_EQ(mesh.positions.size(), 6u * n * n + 2);
        EXPECT_EQ(mesh.faceSizes.size(), FacesOf(GetParam(), n));
        for (const std::uint32_t size : mesh.faceSizes) EXPECT_EQ(size, 4u);
        EXPECT_EQ(SegmentsFor(GetParam(), FacesOf(GetParam(), n)), n);
    }
}

TEST_P(Closed, IsClosedAndOriented) {
    const PolygonMesh mesh = MakePrimitive(GetParam(), 8);
    const auto edges = DirectedEdges(mesh);
    for (const auto& [edge, count] : edges) {
        EXPECT_EQ(count, 1);
        EXPECT_EQ(edges.count({edge.second, edge.first}), 1u);
    }
}

TEST_P(Closed, FacesOutward) {
    const PolygonMesh mesh = MakePrimitive(GetParam(), 8);
    for (std::size_t face = 0; face < mesh.faceSizes.size(); ++face)
        ASSERT_GT(Outwardness(mesh, face), 0.0) << "face " << face;
}

TEST_P(Closed, HasNoDegenerateFaceAndIsOfSizeTwo) {
    const PolygonMesh mesh = MakePrimitive(GetParam(), 12);
    double most = 0.0;
    for (std::size_t corner = 0; corner < mesh.faceVertices.size(); ++corner) {
        const Point a = At(mesh, corner);
        const Point b = At(mesh, corner / 4 * 4 + (corner + 1) % 4);
        EXPECT_GT(std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]), 0.02);
        for (const double value : a) most = std::max(most, std::abs(value));
    }
    EXPECT_NEAR(most, 1.0, 1e-6);
}

INSTANTIATE_TEST_SUITE_P(
    Primitives,
    Closed,
    testing::Values(Primitive::Sphere, Primitive::Cube, Primitive::Cylinder, Primitive::Cone),
    [](const auto& tested) { return NameOf(tested.param); });

TEST(Primitives, SpherePointsAreOnTheSphereAndFacesOfSimilarSize) {
    const PolygonMesh mesh = MakePrimitive(Primitive::Sphere, 16);
    for (const auto& position : mesh.positions)
        EXPECT_NEAR(std::hypot(position[0], position[1], position[2]), 1.0, 1e-6);
    double shortest = 1e9, longest = 0.0;
    for (std::size_t corner = 0; corner < mesh.faceVertices.size(); ++corner) {
        const Point a = At(mesh, corner), b = At(mesh, corner / 4 * 4 + (corner + 1) % 4);
        const double length = std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
        shortest = std::min(shortest, length);
        longest = std::max(longest, length);
    }
    EXPECT_LT(longest / shortest, 2.0);
}

TEST(Primitives, CylinderIsRound) {
    const PolygonMesh mesh = MakePrimitive(Primitive::Cylinder, 8);
    for (const auto& position : mesh.positions) {
        const double around = std::hypot(position[0], position[2]);
        EXPECT_LT(around, 1.0 + 1e-6);
        // Between the caps, only the lateral surface has vertices.
        if (std::abs(position[1]) < 0.99f) {
            EXPECT_NEAR(around, 1.0, 1e-6);
        }
    }
}

TEST(Primitives, ConeIsRoundAndHasAnApex) {
    const PolygonMesh mesh = MakePrimitive(Primitive::Cone, 8);
    int apexes = 0;
    for (const auto& position : mesh.positions) {
        const double around = std::hypot(position[0], position[2]);
        const double height = static_cast<double>(position[1]);
        // The base is flat, and all other vertices are on the slope.
        if (height > -1.0) {
            EXPECT_NEAR(around, (1.0 - height) / 2.0, 1e-6);
        } else {
            EXPECT_LT(around, 1.0 + 1e-6);
        }
        if (height == 1.0) ++apexes;
    }
    EXPECT_EQ(apexes, 1);
    // Without an edge at the centre of the grid, the apex is a flat quad.
    for (const auto& position : MakePrimitive(Primitive::Cone, 7).positions)
        EXPECT_LT(position[1], 1.0f - 0.09f);
}

TEST(Primitives, TorusIsRoundClosedAndFacesOutward) {
    for (const std::uint32_t n : {1u, 2u, 7u, 16u}) {
        const PolygonMesh mesh = MakePrimitive(Primitive::Torus, n);
        EXPECT_EQ(mesh.faceSizes.size(), 4u * n * std::max(2u * n, 3u));
        EXPECT_EQ(mesh.faceSizes.size(), FacesOf(Primitive::Torus, n));
        EXPECT_EQ(mesh.positions.size(), mesh.faceSizes.size());
        EXPECT_EQ(SegmentsFor(Primitive::Torus, FacesOf(Primitive::Torus, n)), n);
        for (const auto& position : mesh.positions) {
            const double fromRing = std::hypot(position[0], position[2]) - 0.7;
            EXPECT_NEAR(std::hypot(fromRing, static_cast<double>(position[1])), 0.3, 1e-6);
        }
        const auto edges = DirectedEdges(mesh);
        for (const auto& [edge, count] : edges) {
            EXPECT_EQ(count, 1);
            EXPECT_EQ(edges.count({edge.second, edge.first}), 1u);
        }
        double volume = 0.0;
        for (std::size_t face = 0; face < mesh.faceSizes.size(); ++face)
            volume += Outwardness(mesh, face);
        EXPECT_GT(volume, 0.0);
    }
}

TEST(Primitives, PlaneFacesUp) {
    const PolygonMesh mesh = MakePrimitive(Primitive::Plane, 5);
    EXPECT_EQ(mesh.faceSizes.size(), 25u);
    EXPECT_EQ(mesh.positions.size(), 36u);
    for (std::size_t face = 0; face < mesh.faceSizes.size(); ++face) {
        const Point a = At(mesh, 4 * face), b = At(mesh, 4 * face + 1), c = At(mesh, 4 * face + 2);
        const double up = (b[2] - a[2]) * (c[0] - a[0]) - (b[0] - a[0]) * (c[2] - a[2]);
        EXPECT_GT(up, 0.0);
    }
}

TEST(Primitives, AreWrittenOnceAndReadBack) {
    const QTemporaryDir folder;
    const std::string path =
        WritePrimitive(Primitive::Cube, 4, folder.filePath("shapes").toStdString());
    const PolygonMesh read = ReadMeshFile(path);
    EXPECT_EQ(read.positions, MakePrimitive(Primitive::Cube, 4).positions);
    EXPECT_EQ(read.faceVertices, MakePrimitive(Primitive::Cube, 4).faceVertices);
    EXPECT_EQ(WritePrimitive(Primitive::Cube, 4, folder.filePath("shapes").toStdString()), path);
}

TEST(Primitives, BustIsFound) { EXPECT_FALSE(FindShippedMesh("bust.obj").empty()); }

}  // namespace trovik::studio
