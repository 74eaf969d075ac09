// SPDX-License-Identifier: Apache-2.0

/// \file Tests that a refinement does not depend on the order in which faces and corners are
/// visited: an exactly mirror-symmetric mesh stays exactly symmetric, and renumbering a mesh does
/// not change its surface.
#include "framework/math/ExactSum.h"
#include "framework/math/SameBits.h"
#include "framework/mesh/LocalRefiner.h"
#include "framework/multires/LevelGeometry.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <set>

namespace trovik::test {
namespace {

using Point = std::array<float, 3>;

/// The positions as a set, with zeros of both signs treated as equal.
std::multiset<Point> PointSet(const std::vector<Point>& positions) {
    std::multiset<Point> points;
    for (Point p : positions) {
        for (float& c : p) c += 0.0f;
        points.insert(p);
    }
    return points;
}

std::vector<Point> Mirrored(std::vector<Point> positions, std::size_t axis) {
    for (Point& p : positions) p[axis] = -p[axis];
    return positions;
}

bool IsSymmetric(const PolygonMesh& mesh, std::size_t axis) {
    return PointSet(mesh.positions) == PointSet(Mirrored(mesh.positions, axis));
}

PolygonMesh RefinedMesh(const PolygonMesh& mesh, unsigned levels) {
    LevelGeometry geometry(mesh);
    for (unsigned i = 0; i < levels; ++i) geometry.Subdivide();
    return geometry.ToPolygons(false);
}

/// The mesh together with its mirror image, as two components. Each face has its mirror image in
/// the other component, with corners in the opposite order and a different first corner.
PolygonMesh WithMirrorImage(const PolygonMesh& mesh, std::size_t axis) {
    PolygonMesh both;
    both.name = mesh.name;
    both.positions = mesh.positions;
    both.faceSizes = mesh.faceSizes;
    both.faceVertices = mesh.faceVertices;
    const auto count = static_cast<uint32_t>(mesh.positions.size());
    for (const Point& p : Mirrored(mesh.positions, axis)) both.positions.push_back(p);
    std::size_t first = 0;
    for (std::size_t face = 0; face < mesh.faceSizes.size(); ++face) {
        const uint32_t n = mesh.faceSizes[face];
        both.faceSizes.push_back(n);
        for (uint32_t k = 0; k < n; ++k)
            both.faceVertices.push_back(
                count + mesh.faceVertices[first + (n - k + static_cast<uint32_t>(face)) % n]);
        first += n;
    }
    return both;
}

/// The same surface with its faces in another order, each starting at another corner.
PolygonMesh Reordered(const PolygonMesh& mesh, unsigned seed) {
    std::vector<std::vector<uint32_t>> faces;
    std::size_t first = 0;
    for (const uint32_t n : mesh.faceSizes) {
        const auto begin = mesh.faceVertices.begin() + static_cast<std::ptrdiff_t>(first);
        faces.emplace_back(begin, begin + n);
        first += n;
    }
    std::mt19937 random(seed);
    std::shuffle(faces.begin(), faces.end(), random);
    PolygonMesh result;
    result.name = mesh.name;
    result.positions = mesh.positions;
    for (std::vector<uint32_t>& face : faces) {
        std::rotate(face.begin(),
                    face.begin() + static_cast<std::ptrdiff_t>(random() % face.size()),
                    face.end());
        result.faceSizes.push_back(static_cast<uint32_t>(face.size()));
        result.faceVertices.insert(result.faceVertices.end(), face.begin(), face.end());
    }
    return result;
}

/// Moves every vertex by a random amount, so that sums are rounded.
PolygonMesh Roughened(PolygonMesh mesh, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> offset(-0.2f, 0.2f);
    std::uniform_int_distribution<int> scale(0, 40);
    for (Point& p : mesh.positions) {
        for (float& c : p) {
            c += offset(random);
            // Coordinates of very different magnitude, so that sums in double precision are also
            // rounded.
            if (random() % 8 == 0) c = std::ldexp(c, -2 * scale(random));
        }
    }
    return mesh;
}

TEST(RefinedSymmetry, SymmetricMeshesOfTheZooStayExactlySymmetric) {
    unsigned checked = 0;
    for (const ZooMesh& entry : AllMeshes()) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            SCOPED_TRACE(entry.name + ", axis " + std::to_string(axis));
            if (!IsSymmetric(entry.mesh, axis)) continue;
            ++checked;
            for (unsigned levels = 1; levels <= 4; ++levels)
                ASSERT_TRUE(IsSymmetric(RefinedMesh(entry.mesh, levels), axis)) << levels;
        }
    }
    EXPECT_GE(checked, 10u);
}

TEST(RefinedSymmetry, EveryMeshOfTheZooRefinesLikeItsMirrorImage) {
    for (const ZooMesh& entry : AllMeshes()) {
        for (unsigned seed = 0; seed < 4; ++seed) {
            const std::size_t axis = seed % 3;
            SCOPED_TRACE(entry.name + ", seed " + std::to_string(seed));
            const PolygonMesh both = WithMirrorImage(Roughened(entry.mesh, seed), axis);
            ASSERT_TRUE(IsSymmetric(RefinedMesh(both, 3), axis));
        }
    }
}

TEST(RefinedSymmetry, OrderOfFacesAndCornersDoesNotChangeRefinedPositions) {
    for (const ZooMesh& entry : AllMeshes()) {
        for (unsigned seed = 0; seed < 4; ++seed) {
            SCOPED_TRACE(entry.name + ", seed " + std::to_string(seed));
            const PolygonMesh mesh = Roughened(entry.mesh, seed);
            ASSERT_EQ(PointSet(RefinedMesh(mesh, 3).positions),
                      PointSet(RefinedMesh(Reordered(mesh, seed), 3).positions));
        }
    }
}

TEST(RefinedSymmetry, PointsAreTheSameAloneAndWithTheWholeLevel) {
    for (const ZooMesh& entry : AllMeshes()) {
        for (unsigned seed = 0; seed < 4; ++seed) {
            SCOPED_TRACE(entry.name + ", seed " + std::to_string(seed));
            LevelGeometry geometry(Roughened(entry.mesh, seed));
            geometry.Subdivide();
            geometry.Subdivide();
            LevelMesh& coarse = *geometry.Level(1);
            const LevelMesh& fine = *geometry.Level(2);
            LocalRefiner points(coarse, nullptr);
            for (uint32_t vertex = 0; vertex < coarse.VertexCount(); ++vertex)
                ASSERT_TRUE(SameBits(points.VertexPoint(vertex), fine.Position(vertex))) << vertex;
            for (uint32_t face = 0; face < coarse.faceCount; ++face) {
                const uint32_t* children = fine.faceVertexIndices.array + face * 16;
                ASSERT_TRUE(SameBits(points.FacePoint(face), fine.Position(children[2]))) << face;
                for (uint32_t side = 0; side < 4; ++side) {
                    const uint32_t edge = children[side * 4 + ((side + 1) & 3u)];
                    ASSERT_TRUE(SameBits(points.EdgePoint(face, side), fine.Position(edge)))
                        << face << " side " << side;
                }
            }
        }
    }
}

TEST(ExactSum, DoesNotDependOnTheOrderOfTerms) {
    std::mt19937 random(7);
    for (unsigned round = 0; round < 3000; ++round) {
        std::vector<Vector> terms(1 + random() % 12);
        const int span = static_cast<int>(random() % 250) + 1;
        for (Vector& term : terms) {
            float* const components[3] = {&term.x, &term.y, &term.z};
            for (float* c : components) {
                const float mantissa = static_cast<float>(random() % 0x1000000u) - 0x800000;
                *c = std::ldexp(mantissa,
                                static_cast<int>(random() % static_cast<unsigned>(span)) - 149);
            }
        }
        // Some terms are cancelled by their negatives, so the sum consists of the other terms.
        const std::size_t half = terms.size();
        for (std::size_t i = 0; i + 1 < half; i += 2) terms.push_back(-terms[i]);
        const DoubleVector sum = ExactSum(terms.data(), terms.size());
        for (unsigned i = 0; i < 5; ++i) {
            std::shuffle(terms.begin(), terms.end(), random);
            const DoubleVector again = ExactSum(terms.data(), terms.size());
            ASSERT_EQ(sum.x, again.x);
            ASSERT_EQ(sum.y, again.y);
            ASSERT_EQ(sum.z, again.z);
        }
        for (Vector& term : terms) term = -term;
        const DoubleVector negated = ExactSum(terms.data(), terms.size());
        ASSERT_EQ(sum.x, -negated.x);
        ASSERT_EQ(sum.y, -negated.y);
        ASSERT_EQ(sum.z, -negated.z);
    }
}

TEST(ExactSum, RoundsOnceToTheNearestDouble) {
    const auto sumOf = [](std::initializer_list<float> values) {
        std::vector<Vector> terms;
        for (const float value : values) terms.push_back({value, 0.0f, 0.0f});
        return ExactSum(terms.data(), terms.size()).x;
    };
    EXPECT_EQ(sumOf({}), 0.0);
    EXPECT_EQ(sumOf({1.0f, 0x1p-60f, -1.0f}), 0x1p-60);
    EXPECT_EQ(sumOf({0x1p-100f, 0x1p100f, 0x1p-140f, -0x1p100f}), 0x1p-100 + 0x1p-140);
    // A tie: half a unit in the last place rounds to even, and anything more rounds up.
    EXPECT_EQ(sumOf({1.0f, 0x1p-53f}), 1.0);
    EXPECT_EQ(sumOf({1.0f, 0x1p-53f, 0x1p-149f}), 1.0 + 0x1p-52);
    EXPECT_EQ(sumOf({-1.0f, -0x1p-53f, -0x1p-149f}), -1.0 - 0x1p-52);
    EXPECT_EQ(sumOf({1.0f, 0x1p-53f, -0x1p-149f}), 1.0);
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_FALSE(std::isfinite(sumOf({1.0f, infinity, 0x1p-60f})));
    EXPECT_TRUE(std::isfinite(sumOf({3e38f, 3e38f, 3e38f, 1e-30f})));
}

}  // namespace
}  // namespace trovik::test
