// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/remesh/IsotropicRemeshing.h"
#include "tests/remesh/ReplacedSurface.h"

#include <set>

namespace trovik::test {
namespace {

/// Statistics of a triangle mesh.
struct Shape {
    std::vector<float> lengths;
    float leastAngle = 180.0f;
    float meanLeastAngle = 0.0f;
    std::size_t degenerateFaces = 0;

    /// The fraction of edges whose length is between these multiples of `target`.
    double FractionBetween(float least, float most, float target) const {
        std::size_t count = 0;
        for (const float length : lengths)
            if (length >= least * target && length <= most * target) ++count;
        return static_cast<double>(count) / static_cast<double>(lengths.size());
    }
};

/// \param counts  whether the face with these corners counts for the edges and angles.
template <typename Counts>
Shape ShapeOf(const LevelMesh& level, const Counts& counts) {
    Shape shape;
    std::set<std::pair<uint32_t, uint32_t>> edges;
    std::size_t counted = 0;
    EXPECT_EQ(level.CornersPerFace(), 3u);
    for (uint32_t face = 0; face < level.faceCount; ++face) {
        const uint32_t* v = level.faceVertexIndices.array + face * 3;
        const Vector p[3] = {level.Position(v[0]), level.Position(v[1]), level.Position(v[2])};
        if (!(((p[1] - p[0]) & (p[2] - p[0])).Length() > 0.0f)) ++shape.degenerateFaces;
        if (!counts(p)) continue;
        ++counted;
        float least = 180.0f;
        for (int k = 0; k < 3; ++k) {
            const Vector a = (p[(k + 1) % 3] - p[k]).Normalized();
            const Vector b = (p[(k + 2) % 3] - p[k]).Normalized();
            least = std::min(least, std::acos(std::clamp(a | b, -1.0f, 1.0f)) * 57.29578f);
            if (edges.insert(std::minmax(v[k], v[(k + 1) % 3])).second)
                shape.lengths.push_back((p[(k + 1) % 3] - p[k]).Length());
        }
        shape.leastAngle = std::min(shape.leastAngle, least);
        shape.meanLeastAngle += least;
    }
    shape.meanLeastAngle /= static_cast<float>(counted);
    return shape;
}
Shape ShapeOf(const LevelMesh& level) {
    return ShapeOf(level, [](const Vector*) { return true; });
}

const LevelMesh& Remeshed(Document& document, const IsotropicRemeshing& settings) {
    EXPECT_THAT(document.ReplaceSurface(Remesh(settings)).warnings, testing::IsEmpty());
    ExpectManifold(MeshOf(document));
    return *document.Geometry().Bound();
}

TEST(IsotropicRemeshing, EdgesHaveTheTargetLength) {
    struct Case {
        ZooMesh zoo;
        std::vector<float> lengths;
    };
    const Case cases[] = {{{"sphere", SphereQuads(4)}, {0.05f, 0.1f, 0.2f}},
                          {{"torus", Torus(40, 20)}, {0.05f, 0.1f, 0.2f}},
                          {{"icosahedron", Icosahedron()}, {0.2f}},
                          {{"bust", ExampleMesh("bust.obj")}, {0.02f, 0.05f}},
                          {{"spot", ExampleMesh("spot_triangles.obj")}, {0.02f, 0.05f}}};
    for (const Case& each : cases) {
        for (const float length : each.lengths) {
            SCOPED_TRACE(each.zoo.name + " " + std::to_string(length));
            PolygonMesh mesh = each.zoo.mesh;
            mesh.attributes = {};
            Document document("mesh", mesh);
            const double volume = VolumeOf(*document.Geometry().Bound());
            const LevelMesh& level =
                Remeshed(document, {.edgeLength = length, .kept = {.borders = false}});
            const Shape shape = ShapeOf(level);
            printf("%s %g: faces %u in %.4f least %.2f mean least %.2f degen %zu hausdorff %.4f L volume %.4f\n",
                   each.zoo.name.c_str(), length, level.faceCount, shape.FractionBetween(0.6f, 1.5f, length), shape.leastAngle,
                   shape.meanLeastAngle, shape.degenerateFaces, HausdorffDistance(document, mesh) / length,
                   VolumeOf(level) / volume);
        }
    }
}

TEST(IsotropicRemeshing, Counts) {
    for (const ZooMesh& zoo : {ZooMesh{"sphere", SphereQuads(4)}, ZooMesh{"torus", Torus(40, 20)},
             ZooMesh{"bust", ExampleMesh("bust.obj")}, ZooMesh{"human", ExampleMesh("human.obj")}}) {
        for (const RemeshMode mode : {RemeshMode::Both, RemeshMode::Coarsen, RemeshMode::Refine})
        for (const uint32_t faces : {500u, 2000u, 6000u, 60000u}) {
            PolygonMesh mesh = zoo.mesh;
            mesh.attributes = {};
            Document document("mesh", mesh);
            const auto report = document.ReplaceSurface(Remesh({.faces = faces, .mode = mode}));
            printf("%s %d %u: %u %s\n", zoo.name.c_str(), int(mode), faces, document.Geometry().Bound()->faceCount, report.warnings.empty() ? "" : report.warnings[0].c_str());
        }
    }
}

}  // namespace
}  // namespace trovik::test
