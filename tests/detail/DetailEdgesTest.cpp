// SPDX-License-Identifier: Apache-2.0
#include "tests/detail/DetailDocument.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace trovik::test {
namespace {

const Vector top(0.0f, 0.0f, 1.0f);

/// The fraction of edges whose length is 0.6 to 1.5 times the target.
double FractionNear(const std::vector<float>& lengths, float target) {
    const auto near = std::count_if(lengths.begin(), lengths.end(), [&](float length) {
        return length >= 0.6f * target && length <= 1.5f * target;
    });
    return static_cast<double>(near) / static_cast<double>(lengths.size());
}

float LongestOf(const std::vector<float>& lengths) {
    return *std::max_element(lengths.begin(), lengths.end());
}
float ShortestOf(const std::vector<float>& lengths) {
    return *std::min_element(lengths.begin(), lengths.end());
}

TEST(DetailEdges, EdgesUnderTheBrushApproachTheTarget) {
    const auto document = DetailDocument(Triangles(SphereQuads(3)), 0.1f);
    const uint32_t facesBefore = document->Geometry().Bound()->faceCount;
    Stroke(*document, {top, top, top});
    EXPECT_EQ(FaultOf(*document), "");
    EXPECT_GT(document->Geometry().Bound()->faceCount, facesBefore + 200);
    const Vector centre = document->Tree().Nearest(Vector(0.0f, 0.0f, 2.0f))->position;
    const std::vector<float> lengths = EdgeLengthsAround(*document, centre, 0.38f);
    ASSERT_GT(lengths.size(), 300u);
    EXPECT_GE(FractionNear(lengths, 0.04f), 0.95);
}

TEST(DetailEdges, FacesOutsideOfTheBrushStayAsTheyWere) {
    const auto document = DetailDocument(Triangles(SphereQuads(3)), 0.1f);
    const auto below = [&] { return EdgeLengthsAround(*document, Vector(0, 0, -1), 0.9f); };
    const std::vector<float> before = below();
    Stroke(*document, {top, top});
    EXPECT_EQ(below(), before);
}

TEST(DetailEdges, ASecondStrokeAtTheSameDetailChangesFewEdges) {
    const auto document = DetailDocument(Triangles(SphereQuads(3)), 0.1f);
    Stroke(*document, {top, top, top, top, top}, 0.0f);
    const uint32_t faces = document->Geometry().Bound()->faceCount;
    Stroke(*document, {top}, 0.0f);
    const auto difference = std::abs(static_cast<int>(document->Geometry().Bound()->faceCount) -
                                     static_cast<int>(faces));
    EXPECT_LT(difference, 20);
    EXPECT_EQ(FaultOf(*document), "");
}

TEST(DetailEdges, OneLargeTriangleIsRefinedAtTheHit) {
    PolygonMesh triangle;
    triangle.positions = {{-5, -5, 0}, {5, -5, 0}, {0, 8, 0}};
    triangle.faceSizes = {3};
    triangle.faceVertices = {0, 1, 2};
    const auto document = DetailDocument(triangle, 0.2f);
    const Vector point(0.3f, 0.2f, 0.0f);
    // The first dab moves nothing, because its direction is that of the vertices under the brush,
    // and there are none before it refines the triangle.
    Stroke(*document, {point}, 0.1f);
    Stroke(*document, {point}, 0.1f);
    EXPECT_EQ(FaultOf(*document), "");
    const std::vector<float> lengths =
        EdgeLengthsAround(*document, Vector(0.3f, 0.2f, 0.0f), 0.45f);
    ASSERT_GT(lengths.size(), 60u);
    EXPECT_LE(LongestOf(lengths), 0.08f * 1.6f);
    float highest = 0.0f;
    for (uint32_t v = 0; v < document->Geometry().Bound()->VertexCount(); ++v)
        highest = std::max(highest, document->Geometry().Bound()->Position(v).z);
    // The build-up rate of 0.5 weakens a single dab to an eighth.
    EXPECT_NEAR(highest, 0.0125f, 0.001f);
}

TEST(DetailEdges, RefineOnlySplitsAndCoarsenOnlyCollapses) {
    const auto fine = DetailDocument(Triangles(SphereQuads(5)), 0.3f);
    const uint32_t before = fine->Geometry().Bound()->faceCount;
    fine->Settings().detail.collapses = false;
    Stroke(*fine, {top, top});
    EXPECT_EQ(fine->Geometry().Bound()->faceCount, before);
    fine->Settings().detail.collapses = true;
    fine->Settings().detail.splits = false;
    Stroke(*fine, {top, top});
    EXPECT_LT(fine->Geometry().Bound()->faceCount, before - 100);
    EXPECT_EQ(FaultOf(*fine), "");

    const auto coarse = DetailDocument(Triangles(SphereQuads(2)), 0.1f);
    coarse->Settings().detail.splits = false;
    Stroke(*coarse, {top, top});
    EXPECT_EQ(coarse->Geometry().Bound()->faceCount, Triangles(SphereQuads(2)).faceSizes.size());
}

TEST(DetailEdges, ALengthInWorldUnitsDoesNotDependOnTheRadius) {
    for (const float radius : {0.2f, 0.6f}) {
        const auto document = DetailDocument(Triangles(SphereQuads(3)), 0.05f);
        document->Settings().detail.measure = DetailSettings::Measure::World;
        document->Settings().radius = radius;
        Stroke(*document, {top, top, top}, 0.0f);
        const std::vector<float> lengths = EdgeLengthsAround(*document, top, 0.18f);
        EXPECT_GE(FractionNear(lengths, 0.05f), 0.9) << radius;
        EXPECT_GT(ShortestOf(lengths), 0.02f);
    }
}

TEST(DetailEdges, ALengthInPixelsFollowsTheView) {
    const auto facesAt = [](float distance) {
        const auto document = DetailDocument(Triangles(SphereQuads(3)), 6.0f);
        document->Settings().detail.measure = DetailSettings::Measure::Pixels;
        document->View().eye = {0.0f, 0.0f, distance};
        document->UpdateCamera();
        Stroke(*document, {top, top}, 0.0f);
        return document->Geometry().Bound()->faceCount;
    };
    EXPECT_GT(facesAt(3.0f), facesAt(8.0f) + 100);
}

TEST(DetailEdges, TheScaleOfTheMeshDoesNotChangeTheTriangles) {
    const auto facesAtScale = [](float scale) {
        const auto document = DetailDocument(Triangles(SphereQuads(3)), 0.1f);
        MatrixTransform transform;
        transform.Set({scale, scale, scale}, Vector(), Vector());
        document->SetTransform(transform);
        document->Settings().radius = 0.4f * scale;
        Stroke(*document, {top, top}, 0.0f);
        return document->Geometry().Bound()->faceCount;
    };
    EXPECT_EQ(facesAtScale(4.0f), facesAtScale(1.0f));
}

TEST(DetailEdges, BordersStayOnTheirCurve) {
    const auto document = DetailDocument(Triangles(GridMesh(6, 6)), 0.2f);
    const Vector corner(0.0f, 0.0f, 0.0f);
    Stroke(*document, {corner, Vector(1, 0, 0), Vector(2, 0, 0)}, 0.0f);
    EXPECT_EQ(FaultOf(*document), "");
    LevelMesh& level = *document->Geometry().Bound();
    double area = 0.0;
    for (uint32_t face = 0; face < level.faceCount; ++face) {
        Vector normal;
        level.FaceNormal(&normal, face);
        EXPECT_GT(normal.z, 0.0f);
        area += 0.5 * static_cast<double>(normal.z);
    }
    EXPECT_NEAR(area, 36.0, 1e-4);
    EXPECT_GT(level.faceCount, 300u);
}

TEST(DetailEdges, CreasesAreKept) {
    const auto document = DetailDocument(Triangles(Cube()), 0.15f);
    document->Settings().detail.creaseAngle = 30.0f;
    const PolygonMesh cube = Cube();
    Stroke(*document, {Vector(5, 5, 5), Vector(5, 0, 0)}, 0.0f);
    EXPECT_EQ(FaultOf(*document), "");
    LevelMesh& level = *document->Geometry().Bound();
    const AxisAlignedBoundingBox box = document->Tree().Bounds();
    double area = 0.0;
    for (uint32_t face = 0; face < level.faceCount; ++face) {
        Vector normal;
        level.FaceNormal(&normal, face);
        area += 0.5 * static_cast<double>(normal.Length());
    }
    const double side = static_cast<double>(box.maxX - box.minX);
    EXPECT_NEAR(area, 6.0 * side * side, 1e-4);
    EXPECT_GT(level.faceCount, 100u);
}

}  // namespace
}  // namespace trovik::test
