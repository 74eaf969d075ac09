// SPDX-License-Identifier: Apache-2.0
#include "brush/Registration.h"
#include "framework/nodes/PreferenceFile.h"
#include "host/Plugin.h"
#include "tests/brush/ToolRows.h"
#include "topology/PatchMap.h"

#include <gtest/gtest.h>

#include <memory>

namespace trovik::test {
namespace {

int RegistryIndex(const ClassDesc* desc) {
    for (unsigned i = 0; i < ClassDesc::Count(); ++i)
        if (ClassDesc::At(i) == desc) return static_cast<int>(i);
    return -1;
}

TEST(Registration, BrushDescriptorHasTheDocumentedFields) {
    const ClassDesc* desc = ClassDesc::ByName(QStringLiteral("SwiftStroke"));
    ASSERT_NE(desc, nullptr);
    EXPECT_EQ(desc, SwiftStroke::StaticClass());
    EXPECT_EQ(desc->DisplayName(), QStringLiteral("Swift Sculpt Stroke"));
    EXPECT_EQ(desc->Parent(), BrushOperation::StaticClass());
    EXPECT_EQ(desc->DisplayParent(), BrushOperation::StaticClass());
    EXPECT_EQ(desc->Flags(), 0);
    EXPECT_EQ(desc->Version(), 1);
    SwiftStroke brush;
    EXPECT_EQ(static_cast<Node&>(brush).RuntimeClass(), desc);
}

TEST(Registration, PatchMapDescriptorHasTheDocumentedFields) {
    const ClassDesc* desc = ClassDesc::ByName(QStringLiteral("PatchMap"));
    ASSERT_NE(desc, nullptr);
    EXPECT_EQ(desc, PatchMap::StaticClass());
    EXPECT_EQ(desc->DisplayName(), QStringLiteral("Patchmap"));
    EXPECT_EQ(desc->Parent(), TreeNode::StaticClass());
    EXPECT_EQ(desc->DisplayParent(), TreeNode::StaticClass());
    EXPECT_EQ(desc->Flags(), 0);
    EXPECT_EQ(desc->Version(), 0);
    PatchMap map;
    EXPECT_EQ(static_cast<Node&>(map).RuntimeClass(), desc);
    EXPECT_LT(RegistryIndex(SwiftStroke::StaticClass()), RegistryIndex(desc));
    const std::unique_ptr<Node> made(desc->Create());
    EXPECT_NE(dynamic_cast<PatchMap*>(made.get()), nullptr);
}

TEST(Registration, PluginRecordHasTheDocumentedFields) {
    const Plugin* record = nullptr;
    for (unsigned i = 0; i < Plugin::Count(); ++i)
        if (Plugin::At(i)->Name() == QStringLiteral("Swift Stroke")) record = Plugin::At(i);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->Description(), QStringLiteral("Hardware accelerated simple sculptor brush"));
    EXPECT_FALSE(record->Author().isEmpty());
    EXPECT_FALSE(record->Address().isEmpty());
    // The format in which the compiler writes date and time: "Mmm dd yyyy hh:mm:ss".
    EXPECT_EQ(record->Date().size(), 20);
    EXPECT_EQ(record->Date()[14], QLatin1Char(':'));
}

TEST(Registration, RegistersSixPreferencesWithDefaultsAndRange) {
    for (const char* key : {"Use Original Data For Flatten",
                            "Use Vertex Weights For Flatten",
                            "Wax Fills Only",
                            "Wax Scrapes Only"}) {
        const auto* found = dynamic_cast<AttributeInstance<bool>*>(FindPreference(key));
        ASSERT_NE(found, nullptr) << key;
        EXPECT_FALSE(found->Value()) << key;
        EXPECT_EQ(found->Category(), QStringLiteral("Sculpting"));
    }
    const auto* render =
        dynamic_cast<AttributeInstance<bool>*>(FindPreference("Render Swift Stroke"));
    ASSERT_NE(render, nullptr);
    EXPECT_TRUE(render->Value());
    EXPECT_EQ(render, renderSwiftStroke.attribute);
    const auto* factor =
        dynamic_cast<AttributeFloatRange*>(FindPreference("Swift Stroke Level Factor"));
    ASSERT_NE(factor, nullptr);
    EXPECT_EQ(factor->Value(), 1.0f);
    EXPECT_EQ(factor->Minimum(), 0.25f);
    EXPECT_EQ(factor->Maximum(), 4.0f);
    EXPECT_EQ(factor, swiftStrokeLevelFactor.attribute);
}

TEST(Registration, FactoryMakesOneBrushForCountsBelowTwo) {
    NeedTools();
    for (const unsigned count : {0u, 1u}) {
        Node* made = SwiftStroke::StaticClass()->Create(count);
        auto* brush = dynamic_cast<SwiftStroke*>(made);
        ASSERT_NE(brush, nullptr);
        EXPECT_EQ(brush->buildUpRate.Value(), 0.5f);
        delete brush;
    }
}

TEST(Registration, FactoryMakesAnArrayForLargerCounts) {
    NeedTools();
    auto* brushes = dynamic_cast<SwiftStroke*>(SwiftStroke::StaticClass()->Create(3));
    ASSERT_NE(brushes, nullptr);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(brushes[i].buildUpRate.Value(), 0.5f);
        EXPECT_EQ(brushes[i].RuntimeClass(), SwiftStroke::StaticClass());
    }
    // This is valid, because the element count is stored in front of the first element.
    delete[] brushes;
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
}

}  // namespace
}  // namespace trovik::test
