// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/remesh/FaceTable.h"
#include "framework/remesh/MaskExtraction.h"
#include "tests/remesh/ReplacedSurface.h"

namespace trovik::test {
namespace {

constexpr uint32_t none = SurfaceAttributes::none;
using Side = MaskExtraction::Side;

Vector At(const PolygonMesh& mesh, std::size_t vertex) {
    const auto& p = mesh.positions[vertex];
    return {p[0], p[1], p[2]};
}

/// Masks the vertices that satisfy a condition.
template <typename Condition>
void Mask(Document& document, const Condition& isMasked) {
    std::vector<uint8_t> amounts;
    for (const Vector& p : PositionsOf(*document.Geometry().Bound()))
        amounts.push_back(isMasked(p) ? 127 : 0);
    document.Freeze(amounts, FreezeMode::Replace);
}

ReplacementReport Extract(Document& document, const MaskExtraction& settings) {
    ReplacementReport report = document.ReplaceSurface(ExtractMasked(settings));
    ExpectManifold(MeshOf(document));
    return report;
}

float DistanceToAxis(const Vector& p) { return std::sqrt(p.x * p.x + p.y * p.y); }

TEST(MaskExtraction, ThePartIsClosedAndHasTheThickness) {
    const PolygonMesh sphere = SphereQuads(4);
    for (const Side side : {Side::Outside, Side::Inside, Side::Both}) {
        Document document("sphere", sphere);
        Mask(document, [](const Vector& p) { return p.z > 0.3f; });
        const std::vector<Vector> before = PositionsOf(*document.Geometry().Bound());
        Extract(document, {0.1f, side});
        const LevelMesh& level = *document.Geometry().Bound();
        const auto count = static_cast<uint32_t>(before.size());
        for (uint32_t v = 0; v < count; ++v) {
            EXPECT_EQ(level.Position(v), before[v]);
            EXPECT_EQ(level.Freeze(v), before[v].z > 0.3f ? 127 : 0);
        }
        const PolygonMesh result = MeshOf(document);
        EXPECT_EQ(ComponentsOf(result).second, 2u);
        EXPECT_EQ(BorderEdgesOf(level), 0u);
        const float outer = side == Side::Outside ? 1.1f : side == Side::Both ? 1.05f : 1.0f;
        const uint32_t half = (level.VertexCount() - count) / 2;
        ASSERT_GT(half, 20u);
        for (uint32_t v = 0; v < half; ++v) {
            EXPECT_NEAR(level.Position(count + v).Length(), outer, 0.01f);
            EXPECT_NEAR(level.Position(count + half + v).Length(), outer - 0.1f, 0.01f);
            EXPECT_EQ(level.Freeze(count + v), 0);
        }
        // Volume of a spherical cap between two radii; the normals point outwards.
        const double volume = VolumeOf(level) - 4.0 / 3.0 * 3.14159265;
        EXPECT_GT(volume, 0.0) << static_cast<int>(side);
    }
}

TEST(MaskExtraction, KeepsTheDataOfTheOuterSide) {
    PolygonMesh grid = GridMesh(4, 4);
    for (const auto& p : grid.positions) {
        grid.attributes.uvs.push_back({p[0] * 0.25f, p[1] * 0.25f});
        grid.attributes.colors.push_back({p[0] * 0.25f, 0.5f, 0.25f, 1.0f});
    }
    grid.attributes.cornerUvs = grid.faceVertices;
    grid.attributes.groupNames = {"Extracted", "rest"};
    grid.attributes.faceGroups.assign(16, 1);
    grid.attributes.materialNames = {"cloth"};
    grid.attributes.faceMaterials.assign(16, 0);
    Document document("grid", grid);
    Mask(document, [](const Vector& p) { return p.x <= 2.0f && p.y <= 2.0f; });
    const ReplacementReport report = Extract(document, {0.5f});
    EXPECT_THAT(report.notes,
                testing::ElementsAre(testing::HasSubstr("\"Extracted 2\" has 16 new")));
    EXPECT_THAT(report.warnings, testing::IsEmpty());
    const PolygonMesh result = MeshOf(document);
    const SurfaceAttributes& made = document.Geometry().Attributes();
    // Four faces on each side, and eight on the strip.
    ASSERT_EQ(result.faceSizes.size(), 32u);
    EXPECT_THAT(made.groupNames, testing::ElementsAre("Extracted", "rest", "Extracted 2"));
    for (std::size_t face = 0; face < 32; ++face) {
        EXPECT_EQ(made.faceGroups[face], face < 16 ? 1u : 2u);
        EXPECT_EQ(made.faceMaterials[face], 0u);
    }
    for (std::size_t corner = 0; corner < result.faceVertices.size(); ++corner) {
        const uint32_t uv = made.cornerUvs[corner];
        const Vector p = At(result, result.faceVertices[corner]);
        if (corner < 20 * 4) {
            ASSERT_NE(uv, none);
            EXPECT_EQ(made.uvs[uv], (std::array<float, 2>{p.x * 0.25f, p.y * 0.25f}));
            EXPECT_EQ(p.z, corner < 64 ? 0.0f : 0.5f);
        } else {
            EXPECT_EQ(uv, none);
        }
    }
    EXPECT_EQ(made.uvs.size(), 25u + 9u);
    for (std::size_t v = 0; v < result.positions.size(); ++v)
        EXPECT_EQ(made.colors[v][0], result.positions[v][0] * 0.25f);
}

TEST(MaskExtraction, ReplacesTheSurfaceAndItsTriangles) {
    Document document("icosahedron", Icosahedron());
    document.Freeze(std::vector<uint8_t>(12, 127), FreezeMode::Replace);
    const double before = VolumeOf(*document.Geometry().Bound());
    MaskExtraction settings{0.1f, Side::Inside};
    settings.replaces = true;
    settings.group = "Hull";
    Extract(document, settings);
    const LevelMesh& level = *document.Geometry().Bound();
    EXPECT_EQ(level.CornersPerFace(), 3u);
    // A closed surface has no strip.
    EXPECT_EQ(level.faceCount, 40u);
    EXPECT_EQ(level.VertexCount(), 24u);
    EXPECT_EQ(level.FrozenVertexCount(), 0u);
    EXPECT_THAT(document.Geometry().Attributes().groupNames, testing::ElementsAre("Hull"));
    const double volume = VolumeOf(level);
    EXPECT_GT(volume, 0.0);
    EXPECT_LT(volume, before * 0.5);
}

TEST(MaskExtraction, TheThresholdSelectsFaces) {
    Document document("grid", GridMesh(10, 1));
    std::vector<uint8_t> amounts;
    for (const Vector& p : PositionsOf(*document.Geometry().Bound()))
        amounts.push_back(static_cast<uint8_t>(p.x * 12.7f));
    document.Freeze(amounts, FreezeMode::Replace);
    for (const auto& [threshold, faces] : {std::pair(0.45f, 5u), {0.85f, 1u}, {0.01f, 9u}}) {
        MaskExtraction settings{0.1f};
        settings.threshold = threshold;
        settings.replaces = true;
        Extract(document, settings);
        EXPECT_EQ(document.Geometry().Bound()->faceCount, 2 * faces + 2 * faces + 2);
        document.Undo();
    }
}

TEST(MaskExtraction, TheBorderIsSmoothedAlongTheSurface) {
    const auto radii = [](uint32_t iterations) {
        Document document("grid", GridMesh(30, 30));
        Mask(document, [](const Vector& p) {
            return DistanceToAxis(p - Vector(15.0f, 15.0f, 0.0f)) < 10.2f;
        });
        MaskExtraction settings{0.5f, Side::Inside};
        settings.smoothIterations = iterations;
        settings.replaces = true;
        Extract(document, settings);
        const PolygonMesh mesh = MeshOf(document);
        const std::size_t half = mesh.positions.size() / 2;
        float least = 100.0f;
        float most = 0.0f;
        std::size_t strip = 0;
        for (std::size_t corner = 0; corner < mesh.faceVertices.size(); corner += 4) {
            // Faces of the strip begin on the outer side and continue on the inner side.
            if (mesh.faceVertices[corner] >= half || mesh.faceVertices[corner + 2] < half) continue;
            ++strip;
            const Vector p = At(mesh, mesh.faceVertices[corner]);
            EXPECT_EQ(p.z, 0.0f);
            const float radius = DistanceToAxis(p - Vector(15.0f, 15.0f, 0.0f));
            least = std::min(least, radius);
            most = std::max(most, radius);
        }
        EXPECT_EQ(strip, 80u);
        return most - least;
    };
    EXPECT_LT(radii(8), 0.6f * radii(0));
}

TEST(MaskExtraction, TheBorderOfTheSurfaceIsNotMoved) {
    Document document("grid", GridMesh(6, 6));
    Mask(document, [](const Vector& p) { return p.x <= 3.0f; });
    MaskExtraction settings{0.5f};
    settings.smoothIterations = 20;
    settings.replaces = true;
    Extract(document, settings);
    const LevelMesh& level = *document.Geometry().Bound();
    std::size_t corners = 0;
    for (const Vector& p : PositionsOf(level))
        if ((p.x == 0.0f || p.x == 3.0f) && (p.y == 0.0f || p.y == 6.0f)) ++corners;
    EXPECT_EQ(corners, 8u);
}

TEST(MaskExtraction, PartsThatTouchAtAVertexAreSeparated) {
    Document document("grid", GridMesh(4, 4));
    Mask(document, [](const Vector& p) {
        return (p.x <= 2.0f && p.y <= 2.0f) || (p.x >= 2.0f && p.y >= 2.0f);
    });
    MaskExtraction settings{0.5f};
    settings.replaces = true;
    Extract(document, settings);
    EXPECT_EQ(ComponentsOf(MeshOf(document)).second, 2u);
    EXPECT_EQ(BorderEdgesOf(*document.Geometry().Bound()), 0u);
}

TEST(MaskExtraction, TheThicknessIsInWorldUnits) {
    Document document("grid", GridMesh(2, 2));
    document.Freeze(std::vector<uint8_t>(9, 127), FreezeMode::Replace);
    MatrixTransform transform;
    transform.Set({10.0f, 10.0f, 10.0f}, {}, {});
    document.SetTransform(transform);
    Extract(document, {0.5f});
    EXPECT_EQ(document.Geometry().Bound()->Position(9).z, 0.05f);
}

TEST(MaskExtraction, NeedsAMask) {
    Document document("grid", GridMesh(2, 2));
    std::vector<uint8_t> amounts(9);
    amounts[4] = 127;
    document.Freeze(amounts, FreezeMode::Replace);
    const std::string before = SceneOf(document);
    try {
        document.ReplaceSurface(ExtractMasked({0.5f}));
        ADD_FAILURE() << "not refused";
    } catch (const HostError& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("at least 50 % at all corners"));
    }
    EXPECT_EQ(SceneOf(document), before);
}

}  // namespace
}  // namespace trovik::test
