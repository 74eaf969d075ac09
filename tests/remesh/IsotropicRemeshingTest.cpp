// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/remesh/IsotropicRemeshing.h"
#include "tests/remesh/ReplacedSurface.h"

#include <random>
#include <set>

namespace trovik::test {
namespace {

/// Statistics of a triangle mesh.
struct Shape {
    std::vector<float> lengths;
    float minAngle = 180.0f;
    float meanMinAngle = 0.0f;
    std::size_t degenerateFaces = 0;

    /// The fraction of edges whose length is between these multiples of `target`.
    double FractionBetween(float min, float max, float target) const {
        std::size_t count = 0;
        for (const float length : lengths)
            if (length >= min * target && length <= max * target) ++count;
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
        shape.minAngle = std::min(shape.minAngle, least);
        shape.meanMinAngle += least;
    }
    shape.meanMinAngle /= static_cast<float>(counted);
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

using Point = std::array<float, 3>;
std::set<Point> PointsOf(const LevelMesh& level) {
    std::set<Point> points;
    for (const Vector& p : PositionsOf(level)) points.insert({p.x, p.y, p.z});
    return points;
}

PolygonMesh Plain(PolygonMesh mesh) {
    mesh.attributes = {};
    return mesh;
}

std::size_t ToTriangleCount(const LevelMesh& level) { return TrianglesOf(level).size() / 3; }

TEST(IsotropicRemeshing, EdgesHaveTheTargetLength) {
    struct Case {
        ZooMesh zoo;
        std::vector<float> lengths;
    };
    const Case cases[] = {{{"sphere", SphereQuads(4)}, {0.05f, 0.1f, 0.2f}},
                          {{"torus", Torus(40, 20)}, {0.1f, 0.2f}},
                          {{"icosahedron", Icosahedron()}, {0.2f}},
                          {{"bust", Plain(ExampleMesh("bust.obj"))}, {0.05f}},
                          {{"spot", Plain(ExampleMesh("spot_triangles.obj"))}, {0.05f}}};
    for (const Case& each : cases) {
        for (const float length : each.lengths) {
            SCOPED_TRACE(each.zoo.name + " " + std::to_string(length));
            Document document("mesh", each.zoo.mesh);
            const double volume = VolumeOf(*document.Geometry().Bound());
            SourceSurface source(document.Geometry());
            const double predicted = static_cast<double>(EstimateRemesh(source).FacesFor(length));
            const LevelMesh& level = Remeshed(
                document, {.edgeLength = length, .kept = {.borders = false, .creaseAngle = 180}});
            const Shape shape = ShapeOf(level);
            EXPECT_GE(shape.FractionBetween(0.6f, 1.5f, length), 0.99);
            EXPECT_EQ(shape.degenerateFaces, 0u);
            EXPECT_GT(shape.minAngle, 25.0f);
            EXPECT_GT(shape.meanMinAngle, 50.0f);
            EXPECT_LT(HausdorffDistance(document, each.zoo.mesh), length);
            EXPECT_NEAR(VolumeOf(level) / volume, 1.0, 0.02);
            EXPECT_NEAR(level.faceCount / predicted, 1.0, 0.1);
        }
    }
}

TEST(IsotropicRemeshing, ReachesTheNumberOfFaces) {
    for (const PolygonMesh& mesh : {SphereQuads(4), Plain(ExampleMesh("bust.obj"))}) {
        for (const uint32_t faces : {500u, 2000u, 12000u}) {
            for (const RemeshMode mode :
                 {RemeshMode::Both, RemeshMode::Coarsen, RemeshMode::Refine}) {
                const auto old = static_cast<uint32_t>(mesh.faceSizes.size() * 2);
                if (mode == RemeshMode::Coarsen ? faces >= old
                                                : mode == RemeshMode::Refine && faces <= old)
                    continue;
                Document document("mesh", mesh);
                const LevelMesh& level = Remeshed(document, {.faces = faces, .mode = mode});
                EXPECT_NEAR(level.faceCount, faces, faces * 0.05);
                EXPECT_EQ(ShapeOf(level).degenerateFaces, 0u);
            }
        }
    }
}

TEST(IsotropicRemeshing, WarnsIfTheNumberOfFacesCannotBeReached) {
    Document document("mesh", SphereQuads(3));
    EXPECT_THAT(
        document.ReplaceSurface(Remesh({.faces = 200, .mode = RemeshMode::Refine})).warnings,
        testing::ElementsAre(testing::HasSubstr("768 triangles; 200 cannot be reached")));
}

TEST(IsotropicRemeshing, RefiningKeepsAllOldVertices) {
    Document document("mesh", Torus(20, 10));
    const std::set<Point> before = PointsOf(*document.Geometry().Bound());
    const LevelMesh& level = Remeshed(document, {.edgeLength = 0.1f, .mode = RemeshMode::Refine});
    const std::set<Point> after = PointsOf(level);
    EXPECT_TRUE(std::includes(after.begin(), after.end(), before.begin(), before.end()));
    const Shape shape = ShapeOf(level);
    EXPECT_GT(level.faceCount, 400u);
    EXPECT_GE(shape.FractionBetween(0.0f, 1.5f, 0.1f), 0.95);
    EXPECT_EQ(shape.degenerateFaces, 0u);
}

TEST(IsotropicRemeshing, CoarseningAddsNoVertices) {
    Document document("mesh", SphereQuads(4));
    const uint32_t vertices = document.Geometry().Bound()->VertexCount();
    // The edges are between 0.05 and 0.14 long.
    EXPECT_LT(Remeshed(document, {.edgeLength = 0.12f, .mode = RemeshMode::Coarsen}).VertexCount(),
              vertices);
    const Shape shape = ShapeOf(*document.Geometry().Bound());
    EXPECT_GE(shape.FractionBetween(0.6f, 10.0f, 0.12f), 0.95);
    const uint32_t coarse = document.Geometry().Bound()->VertexCount();
    EXPECT_EQ(Remeshed(document, {.edgeLength = 0.01f, .mode = RemeshMode::Coarsen}).VertexCount(),
              coarse);
}

TEST(IsotropicRemeshing, LengthsAreInWorldUnits) {
    Document document("mesh", SphereQuads(4));
    MatrixTransform transform;
    transform.Set({4.0f, 4.0f, 4.0f}, {10.0f, 20.0f, 30.0f}, {1.0f, 2.0f, 3.0f});
    document.SetTransform(transform);
    SourceSurface source(document.Geometry());
    const uint64_t predicted = EstimateRemesh(source).FacesFor(0.8f);
    const LevelMesh& level = Remeshed(document, {.edgeLength = 0.8f});
    EXPECT_GE(ShapeOf(level).FractionBetween(0.6f, 1.5f, 0.2f), 0.99);
    EXPECT_NEAR(level.faceCount, static_cast<double>(predicted), level.faceCount * 0.1);
}

TEST(IsotropicRemeshing, KeepsTheVerticesOfBorders) {
    Document document("mesh", GridMesh(12, 12));
    const std::set<Point> before = PointsOf(*document.Geometry().Bound());
    const LevelMesh& level = Remeshed(document, {.edgeLength = 3.0f});
    EXPECT_LT(level.faceCount, 144u);
    EXPECT_EQ(BorderEdgesOf(level), 48u);
    const std::set<Point> after = PointsOf(level);
    for (const Point& p : before) {
        if (p[0] == 0.0f || p[0] == 12.0f || p[1] == 0.0f || p[1] == 12.0f) {
            EXPECT_TRUE(after.contains(p)) << p[0] << " " << p[1];
        }
    }
}

TEST(IsotropicRemeshing, KeepsTheShapeOfBordersIfTheirVerticesAreFree) {
    Document document("mesh", GridMesh(12, 12));
    const LevelMesh& level = Remeshed(document, {.edgeLength = 3.0f, .kept = {.borders = false}});
    EXPECT_LE(BorderEdgesOf(level), 20u);
    EXPECT_LT(HausdorffDistance(document, GridMesh(12, 12)), 1e-5f);
    EXPECT_GE(ShapeOf(level).FractionBetween(0.6f, 1.5f, 3.0f), 0.95);
    document.Undo();
    const LevelMesh& fine = Remeshed(document, {.edgeLength = 0.4f, .kept = {.borders = false}});
    EXPECT_LT(HausdorffDistance(document, GridMesh(12, 12)), 1e-5f);
    EXPECT_GE(ShapeOf(fine).FractionBetween(0.6f, 1.5f, 0.4f), 0.95);
}

TEST(IsotropicRemeshing, KeepsTheCreasesOfACube) {
    Document document("mesh", Cube());
    const double volume = VolumeOf(*document.Geometry().Bound());
    const LevelMesh& level =
        Remeshed(document, {.edgeLength = 0.13f, .kept = {.creaseAngle = 60.0f}});
    EXPECT_GT(level.faceCount, 500u);
    EXPECT_LT(HausdorffDistance(document, Cube()), 1e-6f);
    EXPECT_NEAR(VolumeOf(level) / volume, 1.0, 1e-5);
    const Shape shape = ShapeOf(level);
    EXPECT_GE(shape.FractionBetween(0.6f, 1.5f, 0.13f), 0.95);
    EXPECT_EQ(shape.degenerateFaces, 0u);
    // Coarsening keeps the creases, too.
    Remeshed(document, {.edgeLength = 0.5f, .kept = {.creaseAngle = 60.0f}});
    EXPECT_LT(HausdorffDistance(document, Cube()), 1e-6f);
    document.Undo();
    document.Undo();
    Remeshed(document, {.edgeLength = 0.13f, .kept = {.creaseAngle = 180.0f}});
    EXPECT_GT(HausdorffDistance(document, Cube()), 0.01f)
        << "without the option, edges get rounded";
}

TEST(IsotropicRemeshing, CreasesKeepFeaturesThatAreSmallerThanTheLength) {
    const PolygonMesh bust = Plain(ExampleMesh("bust.obj"));
    float distances[2];
    for (const bool keeps : {false, true}) {
        Document document("mesh", bust);
        const LevelMesh& level = Remeshed(
            document, {.edgeLength = 0.08f, .kept = {.creaseAngle = keeps ? 60.0f : 180.0f}});
        EXPECT_GE(ShapeOf(level).FractionBetween(0.6f, 1.5f, 0.08f), 0.95);
        EXPECT_EQ(ShapeOf(level).degenerateFaces, 0u);
        distances[keeps ? 1 : 0] = HausdorffDistance(document, bust);
    }
    // The lips and the eyelids are creases.
    EXPECT_LT(distances[1], distances[0]);
    EXPECT_LT(distances[1], 0.08f);
}

TEST(IsotropicRemeshing, KeepsMaskedTrianglesBitForBit) {
    Document document("mesh", SphereQuads(4));
    const LevelMesh& old = *document.Geometry().Bound();
    std::vector<uint8_t> amounts;
    std::set<std::array<Point, 3>> kept;
    for (const Vector& p : PositionsOf(old))
        amounts.push_back(p.x < 0.0f ? 127 : p.x < 0.1f ? 70 : 0);
    document.Freeze(amounts, FreezeMode::Replace);
    const auto triangles = [](const LevelMesh& level) {
        std::set<std::array<Point, 3>> result;
        const std::vector<uint32_t> v = TrianglesOf(level);
        for (std::size_t i = 0; i < v.size(); i += 3) {
            std::array<Point, 3> corners;
            bool isKept = true;
            for (std::size_t k = 0; k < 3; ++k) {
                const Vector p = level.Position(v[i + k]);
                corners[k] = {p.x, p.y, p.z};
                isKept = isKept && level.Freeze(v[i + k]) >= 64;
            }
            std::rotate(
                corners.begin(), std::min_element(corners.begin(), corners.end()), corners.end());
            if (isKept) result.insert(corners);
        }
        return result;
    };
    const auto before = triangles(old);
    ASSERT_GT(before.size(), 1000u);
    for (const float length : {0.05f, 0.25f}) {
        const LevelMesh& level = Remeshed(document, {.edgeLength = length});
        const auto after = triangles(level);
        EXPECT_TRUE(std::includes(after.begin(), after.end(), before.begin(), before.end()));
        for (uint32_t v = 0; v < level.VertexCount(); ++v) {
            if (level.Position(v).x < -0.05f) {
                EXPECT_EQ(level.Freeze(v), 127);
            }
        }
        const Shape shape = ShapeOf(level, [&](const Vector* p) {
            return p[0].x > 0.1f + length && p[1].x > 0.1f + length && p[2].x > 0.1f + length;
        });
        EXPECT_GE(shape.FractionBetween(0.6f, 1.5f, length), 0.95);
        EXPECT_EQ(shape.degenerateFaces, 0u);
        document.Undo();
    }
}

TEST(IsotropicRemeshing, KeepsTheBordersOfGroups) {
    PolygonMesh sphere = SphereQuads(4);
    sphere.attributes.groupNames = {"left", "right"};
    for (std::size_t face = 0; face < sphere.faceSizes.size(); ++face) {
        float x = 0.0f;
        for (std::size_t k = 0; k < 4; ++k)
            x += sphere.positions[sphere.faceVertices[face * 4 + k]][0];
        sphere.attributes.faceGroups.push_back(x < 0.0f ? 0 : 1);
    }
    for (const bool keeps : {true, false}) {
        Document document("mesh", sphere);
        const LevelMesh& level =
            Remeshed(document, {.edgeLength = 0.15f, .kept = {.groups = keeps}});
        const auto& groups = document.Geometry().Attributes().faceGroups;
        bool isSharp = true;
        for (uint32_t face = 0; face < level.faceCount; ++face)
            for (uint32_t k = 0; k < 3; ++k) {
                const float x = level.Position(level.faceVertexIndices.array[face * 3 + k]).x;
                if (groups[face] == 0 ? x > 1e-5f : x < -1e-5f) isSharp = false;
            }
        EXPECT_EQ(isSharp, keeps);
    }
}

TEST(IsotropicRemeshing, KeepsTextureSeams) {
    for (const float length : {0.1f, 0.6f}) {
        Document document("mesh", UnwrappedCylinder(48, 24));
        const LevelMesh& level =
            Remeshed(document, {.edgeLength = length, .kept = {.borders = false}});
        const SurfaceAttributes& after = document.Geometry().Attributes();
        ASSERT_EQ(after.cornerUvs.size(), level.faceCount * 3u);
        for (uint32_t face = 0; face < level.faceCount; ++face) {
            float low = 10.0f;
            float high = -10.0f;
            for (uint32_t k = 0; k < 3; ++k) {
                const std::array<float, 2> uv = after.uvs[after.cornerUvs[face * 3 + k]];
                const Vector p = level.Position(level.faceVertexIndices.array[face * 3 + k]);
                const float u = std::atan2(p.y, p.x) / 6.2831853f + 0.5f;
                EXPECT_NEAR(std::remainder(uv[0] - u, 1.0f), 0.0f, 0.002f);
                EXPECT_NEAR(uv[1], p.z, 1e-4f);
                low = std::min(low, uv[0]);
                high = std::max(high, uv[0]);
            }
            EXPECT_LT(high - low, 0.5f) << "face " << face << " crosses the seam";
        }
    }
}

TEST(IsotropicRemeshing, DropsTextureCoordinatesIfAsked) {
    Document document("mesh", UnwrappedCylinder(24, 12));
    EXPECT_THAT(document.ReplaceSurface(Remesh({.edgeLength = 0.3f, .keepsUvs = false})).warnings,
                testing::ElementsAre("the texture coordinates are not kept"));
    EXPECT_THAT(document.Geometry().Attributes().cornerUvs, testing::IsEmpty());
}

TEST(IsotropicRemeshing, GivesTheSameBitsEachTime) {
    const PolygonMesh bust = ExampleMesh("bust.obj");
    std::string first;
    for (int i = 0; i < 2; ++i) {
        Document document("mesh", bust);
        Remeshed(document, {.faces = 6000, .kept = {.creaseAngle = 70.0f}});
        const std::string scene = SceneOf(document);
        if (i == 0) first = scene;
        EXPECT_EQ(scene, first);
    }
}

TEST(IsotropicRemeshing, GivesValidMeshesForTheWholeZoo) {
    for (const ZooMesh& zoo : AllMeshes()) {
        for (const RemeshMode mode : {RemeshMode::Both, RemeshMode::Coarsen, RemeshMode::Refine}) {
            for (const float angle : {30.0f, 180.0f}) {
                SCOPED_TRACE(zoo.name + " " + std::to_string(static_cast<int>(mode)));
                PolygonMesh mesh = zoo.mesh;
                MakeOrientedManifold(mesh);
                Document document("mesh", mesh);
                const LevelMesh& level = *document.Geometry().Bound();
                const std::size_t before = ToTriangleCount(level);
                const LevelMesh& after =
                    Remeshed(document,
                             {.edgeLength = 0.3f,
                              .mode = mode,
                              .kept = {.borders = false, .creaseAngle = angle}});
                if (mode == RemeshMode::Coarsen) {
                    EXPECT_LE(after.faceCount, before);
                }
                if (mode == RemeshMode::Refine) {
                    EXPECT_GE(after.faceCount, before);
                }
            }
        }
    }
}

TEST(IsotropicRemeshing, RandomSettingsGiveValidMeshes) {
    std::vector<ZooMesh> zoo = AllMeshes();
    zoo.push_back({"sphere", SphereQuads(3)});
    zoo.push_back({"cylinder", UnwrappedCylinder(16, 8)});
    for (uint32_t seed = 0; seed < 150; ++seed) {
        std::mt19937 random(seed);
        const auto fraction = [&] { return std::uniform_real_distribution<float>()(random); };
        const ZooMesh& chosen = zoo[random() % zoo.size()];
        SCOPED_TRACE(chosen.name + ", seed " + std::to_string(seed));
        PolygonMesh mesh = chosen.mesh;
        MakeOrientedManifold(mesh);
        const float noise = seed % 3 == 0 ? 0.0f : 0.1f;
        for (auto& p : mesh.positions)
            for (float& c : p) c += (fraction() - 0.5f) * noise;
        if (seed % 4 == 0)
            for (std::size_t face = 0; face < mesh.faceSizes.size(); ++face)
                mesh.attributes.faceGroups.push_back(fraction() < 0.2f ? 0 : 1);
        if (!mesh.attributes.faceGroups.empty()) mesh.attributes.groupNames = {"a", "b"};
        Document document("mesh", mesh);
        if (seed % 5 == 0) {
            std::vector<uint8_t> amounts(document.Geometry().Bound()->VertexCount());
            for (uint8_t& amount : amounts) amount = fraction() < 0.3f ? 127 : 0;
            // A free triangle is left.
            std::fill_n(amounts.begin(), 3, uint8_t{0});
            document.Freeze(amounts, FreezeMode::Replace);
        }
        IsotropicRemeshing settings;
        settings.mode = static_cast<RemeshMode>(random() % 3);
        settings.kept.borders = fraction() < 0.5f;
        settings.kept.groups = fraction() < 0.5f;
        settings.keepsUvs = fraction() < 0.7f;
        settings.kept.creaseAngle = fraction() * 180.0f;
        if (fraction() < 0.3f)
            settings.faces = 4 + static_cast<uint32_t>(fraction() * 3000.0f);
        else
            settings.edgeLength = 0.05f + fraction() * fraction() * 3.0f;
        document.ReplaceSurface(Remesh(settings));
        ExpectManifold(MeshOf(document));
        EXPECT_EQ(ShapeOf(*document.Geometry().Bound()).degenerateFaces, 0u);
        for (const Vector& p : PositionsOf(*document.Geometry().Bound()))
            ASSERT_TRUE(std::isfinite(p.x + p.y + p.z));
    }
}

std::string RefusalOf(Document& document, const IsotropicRemeshing& settings) {
    try {
        document.ReplaceSurface(Remesh(settings));
    } catch (const HostError& error) {
        return error.what();
    }
    return "accepted";
}

PolygonMesh Scaled(PolygonMesh mesh, float x, float y, float z) {
    for (auto& p : mesh.positions) p = {p[0] * x, p[1] * y, p[2] * z};
    return mesh;
}

TEST(IsotropicRemeshing, PredictsTheFacesOfThinTriangles) {
    // With RemeshMode::Refine, no edges are removed, so the result is as large as it ever gets.
    for (const float height : {1.0f, 4.0f}) {
        for (const unsigned sides : {12u, 100u}) {
            SCOPED_TRACE(std::to_string(height) + " " + std::to_string(sides));
            Document document("mesh", Scaled(OpenCylinder(sides, 1), 1.0f, 1.0f, height));
            SourceSurface source(document.Geometry());
            const auto predicted = static_cast<double>(FacesWhileSplitting(source, 0.1f));
            const LevelMesh& level =
                Remeshed(document, {.edgeLength = 0.1f, .mode = RemeshMode::Refine});
            EXPECT_LE(level.faceCount, predicted * 1.4);
            EXPECT_GE(level.faceCount, predicted * 0.6);
        }
    }
}

TEST(IsotropicRemeshing, RefusesThinTrianglesThatWouldNeedTooMuchMemory) {
    Document document("mesh", Scaled(OpenCylinder(1000, 1), 1.0f, 1.0f, 100.0f));
    SourceSurface source(document.Geometry());
    EXPECT_LT(EstimateRemesh(source).FacesFor(0.1f), 200'000u);
    EXPECT_GT(FacesWhileSplitting(source, 0.1f), 50'000'000u);
    EXPECT_LT(EstimateRemesh(source).FacesFor(0.01f), 20'000'000u);
    for (const RemeshMode mode : {RemeshMode::Both, RemeshMode::Refine})
        EXPECT_THAT(RefusalOf(document, {.edgeLength = 0.01f, .mode = mode}),
                    testing::HasSubstr("0.01 would give more than 1073741824 triangles while the "
                                       "long, thin triangles of the mesh are split"));
}

TEST(IsotropicRemeshing, CoarsensRegardlessOfTheFacesThatSplittingWouldGive) {
    Document document("mesh", SphereQuads(3));
    const LevelMesh& level = Remeshed(document, {.edgeLength = 1e-6f, .mode = RemeshMode::Coarsen});
    EXPECT_EQ(level.faceCount, 768u);
}

TEST(IsotropicRemeshing, RemeshesVeryLargeAndVerySmallMeshes) {
    for (const float scale : {4e8f, 1e-7f}) {
        Document document("mesh", Scaled(SphereQuads(4), scale, scale, scale));
        SourceSurface source(document.Geometry());
        const auto predicted = static_cast<double>(EstimateRemesh(source).FacesFor(0.1f * scale));
        const LevelMesh& level = Remeshed(document, {.edgeLength = 0.1f * scale});
        EXPECT_NEAR(level.faceCount / predicted, 1.0, 0.1);
        EXPECT_GE(ShapeOf(level).FractionBetween(0.6f, 1.5f, 0.1f * scale), 0.99);
    }
    Document large("mesh", Scaled(SphereQuads(3), 1e15f, 1e15f, 1e15f));
    SourceSurface source(large.Geometry());
    EXPECT_NEAR(EstimateRemesh(source).freeArea / 12.4e30, 1.0, 0.05);
    EXPECT_THAT(RefusalOf(large, {.faces = 1000}),
                testing::HasSubstr("only coordinates up to 1e+09 can be remeshed"));
    Document small("mesh", Scaled(SphereQuads(3), 1e-12f, 1e-12f, 1e-12f));
    EXPECT_THAT(RefusalOf(small, {.faces = 1000}),
                testing::HasSubstr("is below 1e-09 in the units of the mesh"));
    EXPECT_EQ((RemeshEstimate{.freeArea = NAN}).FacesFor(1.0f),
              uint64_t{1'000'000'000'000'000'000});
}

TEST(IsotropicRemeshing, RefusesImpossibleSettings) {
    Document document("mesh", SphereQuads(3));
    const std::string before = SceneOf(document);
    const auto refusal = [&](const IsotropicRemeshing& settings) {
        return RefusalOf(document, settings);
    };
    EXPECT_THAT(refusal({}), testing::HasSubstr("either an edge length or a number of faces"));
    EXPECT_THAT(refusal({.edgeLength = 1.0f, .faces = 4}), testing::HasSubstr("either"));
    EXPECT_THAT(refusal({.edgeLength = -1.0f}), testing::HasSubstr("above 0 and finite, not -1"));
    EXPECT_THAT(refusal({.edgeLength = INFINITY}), testing::HasSubstr("finite, not inf"));
    EXPECT_THAT(refusal({.faces = 0}), testing::HasSubstr("between 1 and 1073741824, not 0"));
    EXPECT_THAT(refusal({.faces = 2'000'000'000}),
                testing::HasSubstr("between 1 and 1073741824, not 2000000000"));
    for (const float angle : {-1.0f, 181.0f, NAN})
        EXPECT_THAT(refusal({.edgeLength = 1.0f, .kept = {.creaseAngle = angle}}),
                    testing::HasSubstr("the crease angle must be between 0 and 180 degrees"));
    EXPECT_THAT(refusal({.edgeLength = 1e-6f}),
                testing::HasSubstr("1e-06 would give more than 1073741824 triangles"));
    document.Freeze(std::vector<uint8_t>(document.Geometry().Bound()->VertexCount(), 127),
                    FreezeMode::Replace);
    EXPECT_EQ(refusal({.edgeLength = 0.1f}), "all faces are masked");
    document.Undo();
    EXPECT_EQ(SceneOf(document), before);
}

}  // namespace
}  // namespace trovik::test
