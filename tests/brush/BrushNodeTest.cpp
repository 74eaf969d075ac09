// SPDX-License-Identifier: Apache-2.0
#include "brush/Registration.h"
#include "tests/brush/TestStream.h"
#include "tests/brush/ToolRows.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace trovik::test {
namespace {

TEST(BrushNode, AttributesAreInOrderOfCreation) {
    NeedTools();
    SwiftStroke brush;
    const std::vector<Attribute*> own = {&brush.bilinearSample,
                                         &brush.globalPlane,
                                         &brush.updatePlane,
                                         &brush.affectAllLayers,
                                         &brush.drawFromCenter,
                                         &brush.falloffName,
                                         &brush.buildUpRate};
    const std::vector<Attribute*>& all = brush.Attributes();
    ASSERT_GE(all.size(), own.size());
    EXPECT_EQ(std::vector<Attribute*>(all.end() - 7, all.end()), own);
    const char* names[] = {"bilinearsample",
                           "globalplane",
                           "updateplane",
                           "affectalllayers",
                           "drawfromcenter",
                           "",
                           "builduprate"};
    for (std::size_t i = 0; i < own.size(); ++i) {
        EXPECT_EQ(own[i]->Name().toStdString(), names[i]);
        EXPECT_EQ(own[i]->Owner(), static_cast<Node*>(&brush));
    }
}

TEST(BrushNode, StartsWithItsDefaults) {
    NeedTools();
    SwiftStroke brush;
    EXPECT_FALSE(brush.globalPlane.Value());
    EXPECT_TRUE(brush.updatePlane.Value());
    EXPECT_EQ(brush.buildUpRate.Value(), 0.5f);
    EXPECT_EQ(brush.buildUpRate.Minimum(), 0.0f);
    EXPECT_EQ(brush.buildUpRate.Maximum(), 1.0f);
    EXPECT_EQ(brush.buildUpRate.Decimals(), 2);
    EXPECT_FALSE(brush.falloffName.IsVisible());
    EXPECT_EQ(brush.falloffName.Category(), QStringLiteral("Falloff"));
    EXPECT_FALSE(brush.falloffName.CategoryCollapsed());
    EXPECT_EQ(brush.falloffName.Source(), &HostKernel::Instance().kernelCommandAttribute);
    EXPECT_TRUE(brush.strokeOptionE.IsVisible());

    EXPECT_FALSE(brush.isSmooth);
    EXPECT_FALSE(brush.isPlaneTool);
    EXPECT_FALSE(brush.followVertexNormal);
    EXPECT_FALSE(brush.planeSampling);
    EXPECT_FALSE(brush.wholeMesh);
    EXPECT_FALSE(brush.stampEnabled);
    EXPECT_FALSE(brush.coarseMeshWarned);
    EXPECT_FALSE(brush.strokeActive);
    EXPECT_TRUE(brush.rendererTakesFaces);
    EXPECT_EQ(brush.planeClampMin, -100000000.0f);
    EXPECT_EQ(brush.planeClampMax, 100000000.0f);
    EXPECT_EQ(brush.planeOffsetFactor, 0.0f);
    EXPECT_EQ(brush.planeDirectionSign, 1.0f);
    EXPECT_EQ(brush.strokePlaneSign, 1.0f);
    EXPECT_EQ(brush.brushStrengthScale, 1.0f);
    EXPECT_EQ(brush.radius, 1.0f);
    EXPECT_EQ(brush.radiusSquared, 1.0f);
    EXPECT_EQ(brush.inverseRadius, 1.0f);
    EXPECT_EQ(brush.falloffLastFloat, 1.0f);
    EXPECT_EQ(brush.mesh, nullptr);
    EXPECT_EQ(brush.patchMapMesh, nullptr);
    EXPECT_EQ(brush.patchMesh, nullptr);
    EXPECT_EQ(brush.patchMap, nullptr);
    EXPECT_EQ(brush.falloffTable, nullptr);
    EXPECT_EQ(brush.stampPixels, nullptr);
    EXPECT_EQ(brush.patchVertexList, nullptr);
    EXPECT_EQ(brush.positionGridAllocation, nullptr);
    EXPECT_EQ(brush.layerGridAllocation, nullptr);
    EXPECT_EQ(brush.configurationBeforeSmooth, nullptr);
    EXPECT_FALSE(brush.inTemporarySmooth);
    for (int pass = 0; pass < 2; ++pass) {
        EXPECT_EQ(brush.directions[pass], Vector());
        EXPECT_EQ(brush.planePoints[pass], Vector());
    }
    EXPECT_STREQ(brush.renderers.allocatorName, "swift stroke renderers");
    EXPECT_STREQ(brush.meshChanges.allocatorName, "unknown");
    EXPECT_STREQ(brush.deferredNormals.allocatorName, "unknown");
    EXPECT_EQ(brush.meshChanges.elementSize, 16u);
    EXPECT_EQ(brush.deferredNormals.elementSize, 8u);
}

TEST(BrushNode, AnnouncesSmoothAsItsOtherBehaviour) {
    NeedTools();
    SwiftStroke brush;
    EXPECT_EQ(brush.AlternateBehaviorCount(), 1u);
    EXPECT_EQ(brush.AlternateBehavior(0), QStringLiteral("Smooth"));
}

TEST(BrushNode, VectorBlockIsAlignedAndStartsWithUnitScale) {
    NeedTools();
    std::vector<std::unique_ptr<SwiftStroke>> brushes;
    for (int i = 0; i < 8; ++i) {
        brushes.push_back(std::make_unique<SwiftStroke>());
        const SwiftStroke& brush = *brushes.back();
        const auto raw = reinterpret_cast<uintptr_t>(brush.brushSpaceAllocation);
        const auto used = reinterpret_cast<uintptr_t>(brush.brushSpace);
        EXPECT_EQ(used % 16, 0u);
        // An aligned allocation is used directly; otherwise, the block starts at its next aligned
        // address.
        EXPECT_EQ(used, raw % 16 == 0 ? raw : raw + 16 - raw % 16);
        EXPECT_LE(used + sizeof(BrushSpace), raw + 255);
        EXPECT_EQ(static_cast<Vector>(brush.brushSpace->inverseScale), Vector(1.0f, 1.0f, 1.0f));
        EXPECT_EQ(brush.brushSpace->inverseScale.W(), 0.0f);
    }
}

TEST(BrushNode, PreferencesAreShownInTestModeOnly) {
    HostKernel& kernel = HostKernel::Instance();
    const Attribute* const preferences[] = {renderSwiftStroke.attribute,
                                            swiftStrokeLevelFactor.attribute,
                                            useOriginalDataForFlatten.attribute,
                                            useVertexWeightsForFlatten.attribute,
                                            waxFillsOnly.attribute,
                                            waxScrapesOnly.attribute};
    for (const bool on : {true, false}) {
        kernel.SetTestMode(on);
        const SwiftStroke brush;
        for (const Attribute* preference : preferences)
            EXPECT_EQ(preference->IsVisible(), on) << preference->Name().toStdString();
    }
}

TEST(BrushNode, RadiusSetterUpdatesDerivedValues) {
    NeedTools();
    SwiftStroke brush;
    brush.setFalloffLast(255.5f);
    EXPECT_EQ(brush.falloffLastFloat, 255.5f);
    EXPECT_EQ(brush.falloffLast, 255);
    EXPECT_EQ(brush.falloffScale, 255.5f);
    brush.setRadius(4.0f);
    EXPECT_EQ(brush.radius, 4.0f);
    EXPECT_EQ(brush.radiusSquared, 16.0f);
    EXPECT_EQ(brush.inverseRadius, 0.25f);
    EXPECT_EQ(brush.falloffScale, 255.5f / 4.0f);
    brush.setFalloffLast(100.0f);
    EXPECT_EQ(brush.falloffScale, 25.0f);
}

TEST(BrushNode, PlainSettersWriteTheirMembers) {
    NeedTools();
    SwiftStroke brush;
    brush.setIsBulge(true);
    brush.setUsePatchNormal(true);
    brush.setIsPlaneTool(true);
    brush.setPlaneDirectionSign(-1.0f);
    brush.setPlaneOffsetFactor(0.25f);
    brush.setPlaneClampMax(2.0f);
    brush.setPlaneClampMin(-2.0f);
    brush.setIsPinch(true);
    brush.setIsSmear(true);
    brush.setIsSmooth(true);
    brush.setIsWax(true);
    EXPECT_TRUE(brush.isBulge && brush.usePatchNormal && brush.isPlaneTool && brush.isPinch &&
                brush.isSmear && brush.isSmooth && brush.isWax);
    EXPECT_EQ(brush.planeDirectionSign, -1.0f);
    EXPECT_EQ(brush.planeOffsetFactor, 0.25f);
    EXPECT_EQ(brush.planeClampMax, 2.0f);
    EXPECT_EQ(brush.planeClampMin, -2.0f);
}

/// A node that records the events of its attributes.
class ListeningNode : public Node {
public:
    void OnNodeEvent(const Attribute& attribute, NodeEventType type) override {
        heard.push_back({attribute.Name().toStdString(), type});
    }
    std::vector<std::pair<std::string, NodeEventType>> heard;
};
using Heard = std::vector<std::pair<std::string, NodeEventType>>;

class BoolAttribute : public ::testing::Test {
protected:
    ListeningNode node;
    AttributeInstance<bool> source{&node, QStringLiteral("source")};
    AttributeInstance<bool> target{&node, QStringLiteral("target")};
    AttributeInstance<float> number{&node, QStringLiteral("number"), 5.0f};
};

TEST_F(BoolAttribute, IsOneByteOfTypeThree) {
    EXPECT_EQ(source.Size(), 1u);
    EXPECT_EQ(source.attributeType(), 3);
    source.SetValue(true, true);
    TestStream stream(1);
    source.Serialize(stream);
    EXPECT_EQ(stream.bytes, std::vector<uint8_t>{1});
    stream.Rewind();
    target.Serialize(stream);
    EXPECT_TRUE(target.Value());
}

TEST_F(BoolAttribute, SilentSetUpdatesTargetsAndStaysSilentItself) {
    source.AddTarget(target, true);
    node.heard.clear();
    source.SetValue(true, true);
    EXPECT_TRUE(target.Value());
    EXPECT_EQ(node.heard, (Heard{{"target", NodeEventValueChanged}}));
    node.heard.clear();
    source.SetValue(false, false);
    EXPECT_FALSE(target.Value());
    EXPECT_EQ(node.heard,
              (Heard{{"target", NodeEventValueChanged}, {"source", NodeEventValueChanged}}));
}

TEST_F(BoolAttribute, ConnectingUpdatesTheTargetAndNotifiesBothEnds) {
    source.SetValue(true, true);
    source.AddTarget(target, true);
    EXPECT_TRUE(target.Value());
    EXPECT_EQ(node.heard,
              (Heard{{"source", NodeEventSourceConnected}, {"target", NodeEventTargetConnected}}));
}

TEST_F(BoolAttribute, TargetOfAnotherSizeIsOnlyNotified) {
    source.AddTarget(number, true);
    node.heard.clear();
    source.SetValue(true, true);
    EXPECT_EQ(number.Value(), 5.0f);
    EXPECT_EQ(node.heard, (Heard{{"number", NodeEventValueChanged}}));
}

TEST_F(BoolAttribute, AssignmentsAreSilent) {
    EXPECT_TRUE(source = true);
    EXPECT_TRUE(target = source);
    EXPECT_TRUE(target.Value());
    EXPECT_TRUE(node.heard.empty());
}

}  // namespace
}  // namespace trovik::test
