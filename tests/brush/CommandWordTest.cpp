// SPDX-License-Identifier: Apache-2.0
#include "brush/Registration.h"
#include "tests/brush/ToolRows.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

/// Rendering is on at the start and at the end of each test.
class CommandWord : public ::testing::Test {
protected:
    CommandWord() {
        HostKernel::Instance();
        renderSwiftStroke.attribute->SetValue(true, true);
    }
    ~CommandWord() override {
        HostKernel::Instance().kernelCommandAttribute.SetValue(QString(), true);
        renderSwiftStroke.attribute->SetValue(true, true);
        HostKernel::Instance().SetTestMode(false);
    }
    const QString word = QStringLiteral("swiftstroke_norender");
};

TEST_F(CommandWord, SwitchesRenderingOffWhateverCodeWritesIt) {
    SwiftStroke brush;
    EXPECT_EQ(brush.falloffName.Source(), &HostKernel::Instance().kernelCommandAttribute);
    HostKernel::Instance().kernelCommandAttribute.SetValue(word, false);
    EXPECT_EQ(brush.falloffName.Value(), word);
    EXPECT_FALSE(renderSwiftStroke);
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
    // The brush never switches rendering on again.
    HostKernel::Instance().kernelCommandAttribute.SetValue(QString(), false);
    EXPECT_FALSE(renderSwiftStroke);
}

TEST_F(CommandWord, AnotherWordChangesNothing) {
    SwiftStroke brush;
    for (const char* other :
         {"", "swiftstroke_norende", "swiftstroke_norender ", "Swiftstroke_norender"}) {
        HostKernel::Instance().kernelCommandAttribute.SetValue(QString::fromLatin1(other), false);
        EXPECT_TRUE(renderSwiftStroke) << other;
    }
}

TEST_F(CommandWord, OnlyAChangeOfThatAttributeCounts) {
    SwiftStroke brush;
    AttributeInstance<QString>& held = brush.falloffName;
    // The value is set without a notification, so that the command word is present but has not been
    // processed.
    held.SetValue(word, true);
    EXPECT_TRUE(renderSwiftStroke);
    brush.OnNodeEvent(held, NodeEventTargetConnected);
    brush.OnNodeEvent(held, NodeEventSourceConnected);
    brush.OnNodeEvent(brush.globalPlane, NodeEventValueChanged);
    EXPECT_TRUE(renderSwiftStroke);
    brush.OnNodeEvent(held, NodeEventValueChanged);
    EXPECT_FALSE(renderSwiftStroke);
}

TEST_F(CommandWord, AlsoWorksInTestMode) {
    HostKernel::Instance().SetTestMode(true);
    SwiftStroke brush;
    HostKernel::Instance().kernelCommandAttribute.SetValue(word, false);
    EXPECT_FALSE(renderSwiftStroke);
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
}

}  // namespace
}  // namespace trovik::test
