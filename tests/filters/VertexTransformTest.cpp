// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/Steps.h"
#include "tests/filters/FilteredDocument.h"

#include <algorithm>
#include <cmath>

namespace trovik::test {
namespace {

/// A flat arm along x, 20 quads long and 2 wide.
PolygonMesh Arm() {
    PolygonMesh mesh = GridMesh(20, 2);
    MoveVertices(mesh, [](const Vector& p) { return Vector(p.x, p.y - 1.0f, 0.0f); });
    return mesh;
}

/// Masks the part of the arm left of x = 10.
void MaskShoulder(FilteredDocument& arm) {
    arm.Mask([](const Vector& p) { return p.x < 9.5f ? 127 : 0; });
}

void ExpectNearVector(const Vector& actual, const Vector& expected, std::size_t v) {
    EXPECT_LT((actual - expected).Length(), 1e-5f)
        << v << ": " << actual.x << ' ' << actual.y << ' ' << actual.z;
}

TEST(VertexTransform, RotatesTheUnmaskedPartAboutTheMaskBorder) {
    FilteredDocument arm(Arm());
    MaskShoulder(arm);
    VertexTransform transform;
    transform.axis = {0.0f, 0.0f, 3.0f};
    transform.angle = 90.0f;
    transform.pivot = PivotKind::MaskBorder;
    ExpectNearVector(PivotOf(arm->Geometry(), transform), {9.5f, 0.0f, 0.0f}, 0);
    const std::vector<Vector> before = arm.Positions();
    EXPECT_EQ(arm.Transform(transform), 11u * 3u);
    const std::vector<Vector> after = arm.Positions();
    for (std::size_t v = 0; v < before.size(); ++v) {
        const Vector p = before[v];
        ExpectNearVector(after[v], p.x < 9.5f ? p : Vector(9.5f - p.y, p.x - 9.5f, 0.0f), v);
        if (p.x < 9.5f) {
            EXPECT_EQ(after[v], p) << v;
        }
    }
}

TEST(VertexTransform, APartlyMaskedVertexRotatesByAFractionAndKeepsItsDistance) {
    FilteredDocument arm(Arm());
    arm.Mask([](const Vector& p) { return p.x < 5.0f ? 127 : p.x < 10.0f ? 64 : 0; });
    VertexTransform transform;
    transform.axis = {0.0f, 0.0f, 1.0f};
    transform.angle = 120.0f;
    transform.pivot = Vector(2.0f, 0.0f, 0.0f);
    const std::vector<Vector> before = arm.Positions();
    arm.Transform(transform);
    const std::vector<Vector> after = arm.Positions();
    for (std::size_t v = 0; v < before.size(); ++v) {
        const Vector from = before[v] - Vector(2.0f, 0.0f, 0.0f);
        const Vector to = after[v] - Vector(2.0f, 0.0f, 0.0f);
        EXPECT_NEAR(to.Length(), from.Length(), 1e-5f) << v;
        const double turned =
            std::atan2(static_cast<double>((from & to).z), static_cast<double>(from | to)) * 180.0 /
            3.14159265358979;
        const double fraction = before[v].x < 5.0f ? 0.0 : before[v].x < 10.0f ? 63.0 / 127.0 : 1.0;
        if (from.Length() > 0.5f) {
            EXPECT_NEAR(turned, 120.0 * fraction, 1e-3) << v;
        }
    }
}

TEST(VertexTransform, ScalesRotatesAndTranslatesInThisOrderInWorldSpace) {
    FilteredDocument arm(Arm());
    MatrixTransform mesh;
    mesh.Set({2.0f, 2.0f, 2.0f}, {}, {100.0f, 0.0f, 0.0f});
    arm->SetTransform(mesh);
    VertexTransform transform;
    transform.scale = {3.0f, 1.0f, 1.0f};
    transform.axis = {0.0f, 0.0f, 1.0f};
    transform.angle = 90.0f;
    transform.translation = {0.0f, 0.0f, 7.0f};
    transform.pivot = Vector(100.0f, 0.0f, 0.0f);
    const std::vector<Vector> before = arm.Positions();
    arm.Transform(transform);
    const std::vector<Vector> after = arm.Positions();
    for (std::size_t v = 0; v < before.size(); ++v)
        EXPECT_LT((after[v] - Vector(-before[v].y, 3.0f * before[v].x, 3.5f)).Length(), 1e-4f) << v;
}

TEST(VertexTransform, TheDefaultPivotIsTheCentreOfTheMovingPart) {
    FilteredDocument arm(Arm());
    MaskShoulder(arm);
    VertexTransform transform;
    transform.scale = {0.5f, 0.5f, 0.5f};
    ExpectNearVector(PivotOf(arm->Geometry(), transform), {15.0f, 0.0f, 0.0f}, 0);
    const std::vector<Vector> before = arm.Positions();
    arm.Transform(transform);
    const std::vector<Vector> after = arm.Positions();
    for (std::size_t v = 0; v < before.size(); ++v) {
        if (before[v].x < 9.5f) continue;
        ExpectNearVector(after[v], {7.5f + before[v].x / 2.0f, before[v].y / 2.0f, 0.0f}, v);
    }
}

TEST(VertexTransform, MaskBlurMakesTheTransitionSmoothAndKeepsTheMask) {
    FilteredDocument arm(Arm());
    MaskShoulder(arm);
    const std::vector<uint8_t> mask = FreezeAmounts(arm.Mesh());
    VertexTransform transform;
    transform.translation = {0.0f, 0.0f, 1.0f};
    transform.maskBlur = 6;
    arm.Transform(transform);
    EXPECT_EQ(FreezeAmounts(arm.Mesh()), mask);
    float previous = 0.0f;
    int between = 0;
    for (const Vector& p : arm.Positions()) {
        if (p.y != 0.0f) continue;
        EXPECT_GE(p.z, previous) << p.x;
        EXPECT_LT(p.z - previous, 0.4f) << p.x;
        if (p.z > 0.05f && p.z < 0.95f) ++between;
        previous = p.z;
    }
    EXPECT_EQ(previous, 1.0f);
    EXPECT_GE(between, 4);
}

TEST(VertexTransform, UndoRestoresEveryBit) {
    FilteredDocument arm(Arm());
    MaskShoulder(arm);
    const std::vector<VertexState> before = arm.State();
    VertexTransform transform;
    transform.angle = 33.0f;
    arm.Transform(transform);
    EXPECT_NE(arm.State(), before);
    arm->Undo();
    EXPECT_EQ(arm.State(), before);
}

TEST(VertexTransform, WithoutAMaskBorderIsRefused) {
    FilteredDocument arm(Arm());
    VertexTransform transform;
    transform.angle = 33.0f;
    transform.pivot = PivotKind::MaskBorder;
    EXPECT_THROW(arm.Transform(transform), HostError);
    EXPECT_EQ(arm->HistoryPosition(), 0u);
}

TEST(VertexTransform, HiddenFacesDoNotMoveTheMaskBorder) {
    FilteredDocument arm(Arm());
    FaceChoice tip(arm.Mesh().faceCount, 0);
    tip[19] = tip[39] = 1;
    arm->ChangeVisibility(VisibilityChange::Hide, tip);
    VertexTransform transform;
    transform.pivot = PivotKind::MaskBorder;
    EXPECT_THROW(PivotOf(arm->Geometry(), transform), HostError) << "there is no mask";
    MaskShoulder(arm);
    ExpectNearVector(PivotOf(arm->Geometry(), transform), {9.5f, 0.0f, 0.0f}, 0);
}

TEST(VertexTransform, HiddenVerticesStay) {
    FilteredDocument arm(Arm());
    FaceChoice left(arm.Mesh().faceCount, 0);
    std::fill_n(left.begin(), 20, uint8_t{1});
    arm->ChangeVisibility(VisibilityChange::Hide, left);
    const std::vector<Vector> before = arm.Positions();
    VertexTransform transform;
    transform.translation = {0.0f, 0.0f, 1.0f};
    arm.Transform(transform);
    const std::vector<Vector> after = arm.Positions();
    int hidden = 0;
    for (uint32_t v = 0; v < before.size(); ++v) {
        hidden += arm.Mesh().IsVertexHidden(v) ? 1 : 0;
        EXPECT_EQ(after[v].z, arm.Mesh().IsVertexHidden(v) ? 0.0f : 1.0f) << v;
    }
    EXPECT_GT(hidden, 10);
}

}  // namespace
}  // namespace trovik::test
