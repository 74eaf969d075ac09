// SPDX-License-Identifier: Apache-2.0
#include "DetailBrush.h"
#include "framework/brushes/BrushSettings.h"
#include "framework/mesh/PolygonMesh.h"
#include "framework/multires/LevelGeometry.h"
#include "framework/nodes/HostKernel.h"

#include <gtest/gtest.h>

#include <memory>

namespace trovik {
namespace {

class DetailBrushTest : public testing::Test {
protected:
    DetailBrushTest() {
        HostKernel::Instance();
        PolygonMesh quad;
        quad.positions = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
        quad.faceSizes = {4};
        quad.faceVertices = {0, 1, 2, 3};
        geometry = std::make_unique<LevelGeometry>(quad);
        mesh = geometry->Bound();
    }

    std::unique_ptr<LevelGeometry> geometry;
    LevelMesh* mesh = nullptr;
    DetailBrush brush;
};

TEST_F(DetailBrushTest, WithoutTheTessellatorNothingIsRefined) {
    EXPECT_FALSE(brush.useTessellator);
    EXPECT_FALSE(brush.CurrentMeshEditable());
    EXPECT_FALSE(brush.MeshEditable(mesh));
    EXPECT_FALSE(brush.Tester(mesh, 0));
    EXPECT_EQ(brush.DoRefineReduce(true, true, 3, true), 0);
    EXPECT_EQ(brush.originalData, nullptr);
    EXPECT_TRUE(brush.CheckValidity());
}

TEST_F(DetailBrushTest, SettingOfTheHostSwitchesTheTessellator) {
    brush.Settings().detail.isOn = true;
    EXPECT_TRUE(brush.CheckValidity());
    EXPECT_TRUE(brush.useTessellator);
    brush.Settings().detail.isOn = false;
    EXPECT_TRUE(brush.CheckValidity());
    EXPECT_FALSE(brush.useTessellator);
}

TEST_F(DetailBrushTest, MeshOfQuadsIsReportedOncePerStroke) {
    HostKernel::Instance().ClearHUDMessages();
    brush.useTessellator = true;
    brush.BeginStroke(mesh, BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
    const std::unique_ptr<MeshChange> change(mesh->StartChange());
    const SurfacePoint hit(mesh, 0, 0);
    for (int dab = 0; dab < 2; ++dab) {
        brush.InitializeTessellator(&hit, change.get(), 1.1f, true, false);
        EXPECT_FALSE(brush.CurrentMeshEditable());
        brush.ShowTessellationHUD();
    }
    ASSERT_EQ(HostKernel::Instance().HUDMessages().size(), 1u);
    EXPECT_NE(HostKernel::Instance().HUDMessages()[0].find("consists of quads"), std::string::npos);
    brush.EndStroke();
    change->Finish(true, false);
    HostKernel::Instance().ClearHUDMessages();
}

TEST_F(DetailBrushTest, StrokeIsForwardedToTheBaseBrush) {
    brush.BeginStroke(mesh, BrushOperation::ModifierInvert, BrushOperation::TriggerStroke);
    EXPECT_TRUE(brush.IsInverted());
    brush.EndStroke();
    EXPECT_FALSE(brush.IsInverted());
}

TEST_F(DetailBrushTest, AssignmentAlsoCopiesItsOwnSetting) {
    DetailBrush other;
    other.refineAtIntervals = true;
    other.SetBrushSize(3.0f);
    brush = static_cast<const BrushOperation&>(other);
    EXPECT_TRUE(brush.refineAtIntervals);
    EXPECT_EQ(brush.BrushSize(), 3.0f);
}

TEST_F(DetailBrushTest, OriginalPositionComesFromTheRecord) {
    EXPECT_EQ(brush.VertexOriginalPosition(mesh, 2), Vector(1, 1, 0));
    const std::unique_ptr<MeshChange> change(mesh->StartChange());
    Vertex& vertex = mesh->vertices.array[2];
    change->Add_uncached(2, 0, vertex, false);
    vertex.z = 5.0f;
    EXPECT_EQ(brush.VertexOriginalPosition(mesh, 2), Vector(1, 1, 0));
    // A link to a record that belongs to another vertex is interpreted as a visit stamp.
    mesh->vertices.array[1].changeLink = 0;
    mesh->vertices.array[1].z = 7.0f;
    EXPECT_EQ(brush.VertexOriginalPosition(mesh, 1), Vector(1, 0, 7));
    change->Finish(true, false);
}

TEST_F(DetailBrushTest, SurfacePointIsAtTheFirstCornerOfItsFace) {
    const SurfacePoint point(mesh, 1234, 0);
    EXPECT_EQ(point.mesh, mesh);
    EXPECT_EQ(point.face, 0u);
    EXPECT_EQ(point.position, Vector(0, 0, 0));
    EXPECT_EQ(point.normal, Vector(0, 0, 1));
    EXPECT_FALSE(point.mirror);
}

}  // namespace
}  // namespace trovik
