// SPDX-License-Identifier: Apache-2.0
#include "framework/nodes/SceneStream.h"
#include "host/Attribute.h"
#include "tests/nodes/RecordingNode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <memory>
#include <random>

namespace trovik {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AttributeTest : public testing::Test {
protected:
    test::RecordingNode node;
    AttributeInstance<bool> a{&node, QStringLiteral("a")};
    AttributeInstance<bool> b{&node, QStringLiteral("b")};
    AttributeInstance<bool> c{&node, QStringLiteral("c")};
    AttributeInstance<float> f{&node, QStringLiteral("f"), 1.5f};
};

TEST_F(AttributeTest, IsListedByItsOwnerInOrder) {
    EXPECT_THAT(node.Attributes(), ElementsAre(&a, &b, &c, &f));
    EXPECT_EQ(node.AttributeByName(QStringLiteral("c")), &c);
    EXPECT_EQ(node.AttributeByName(QStringLiteral("d")), nullptr);
    {
        const AttributeInstance<int> passing(&node, QStringLiteral("d"));
        EXPECT_EQ(node.Attributes().back(), &passing);
        EXPECT_EQ(passing.Owner(), &node);
    }
    EXPECT_EQ(node.Attributes().size(), 4u);
}

TEST_F(AttributeTest, TypesHaveTheirNumbersAndSizes) {
    EXPECT_EQ(AttributeInstance<int>(nullptr, QString()).attributeType(), 1);
    EXPECT_EQ(f.attributeType(), 2);
    EXPECT_EQ(a.attributeType(), 3);
    EXPECT_EQ(AttributeInstance<QString>(nullptr, QString()).attributeType(), 4);
    EXPECT_EQ(AttributeInstance<CheckableFloat>(nullptr, QString()).attributeType(), 5);
    EXPECT_EQ(a.Size(), 1u);
    EXPECT_EQ(f.Size(), 4u);
    EXPECT_EQ(a.TargetType(), 3);
}

TEST_F(AttributeTest, PanelStateIsStored) {
    EXPECT_TRUE(a.IsVisible());
    EXPECT_FALSE(a.HasSeparator());
    a.SetVisible(false);
    a.SetSeparator(true);
    a.SetCategory(QStringLiteral("Falloff"), true);
    EXPECT_FALSE(a.IsVisible());
    EXPECT_TRUE(a.HasSeparator());
    EXPECT_EQ(a.Category(), QStringLiteral("Falloff"));
    EXPECT_TRUE(a.CategoryCollapsed());
}

TEST_F(AttributeTest, SettingNotifiesTheOwnerUnlessSilent) {
    a.SetValue(true);
    EXPECT_THAT(node.TakeEvents(), ElementsAre("a:0"));
    a.SetValue(false, true);
    EXPECT_FALSE(a.Value());
    EXPECT_THAT(node.TakeEvents(), IsEmpty());
    a.SetValue(false);
    EXPECT_THAT(node.TakeEvents(), ElementsAre("a:0")) << "notified even if nothing changed";
}

TEST_F(AttributeTest, AssignmentIsSilentAndReturnsTheValue) {
    b = true;
    const bool answer = (a = b);
    EXPECT_TRUE(answer);
    EXPECT_TRUE(a.Value());
    EXPECT_THAT(node.TakeEvents(), IsEmpty());
}

TEST_F(AttributeTest, ConnectingCopiesTheValueAndNotifiesBothEnds) {
    a.SetValue(true, true);
    b.Connect(a, false);
    EXPECT_TRUE(b.Value());
    EXPECT_EQ(b.Source(), &a);
    EXPECT_EQ(a.TargetCount(), 1u);
    EXPECT_EQ(a.Target(0), &b);
    EXPECT_EQ(a.Target(1), nullptr);
    EXPECT_THAT(node.TakeEvents(), ElementsAre("b:0", "a:2", "b:1"));
}

TEST_F(AttributeTest, ConnectingEqualValuesChangesNothing) {
    b.Connect(a, false);
    EXPECT_THAT(node.TakeEvents(), ElementsAre("a:2", "b:1"));
}

TEST_F(AttributeTest, SilentConnectionStillReportsItself) {
    a.SetValue(true, true);
    a.AddTarget(b, true);
    EXPECT_TRUE(b.Value());
    EXPECT_THAT(node.TakeEvents(), ElementsAre("a:2", "b:1"));
}

TEST_F(AttributeTest, TargetsAreUpdatedInOrderBeforeTheOwnEvent) {
    b.Connect(a, true);
    c.Connect(a, true);
    node.TakeEvents();
    a.SetValue(true);
    EXPECT_TRUE(b.Value());
    EXPECT_TRUE(c.Value());
    EXPECT_THAT(node.TakeEvents(), ElementsAre("b:0", "c:0", "a:0"));
}

TEST_F(AttributeTest, SilentSetUpdatesAndNotifiesOnlyTheTargets) {
    b.Connect(a, true);
    node.TakeEvents();
    a.SetValue(true, true);
    EXPECT_TRUE(b.Value());
    EXPECT_THAT(node.TakeEvents(), ElementsAre("b:0"));
}

TEST_F(AttributeTest, TargetOfAnotherTypeIsOnlyNotified) {
    f.Connect(a, false);
    EXPECT_THAT(node.TakeEvents(), ElementsAre("a:2", "f:1"));
    a.SetValue(true);
    EXPECT_EQ(f.Value(), 1.5f);
    EXPECT_THAT(node.TakeEvents(), ElementsAre("f:0", "a:0"));
}

TEST_F(AttributeTest, NewSourceReplacesTheOldOne) {
    c.Connect(a, true);
    c.Connect(b, true);
    EXPECT_EQ(c.Source(), &b);
    EXPECT_EQ(a.TargetCount(), 0u);
    a.SetValue(true, true);
    EXPECT_FALSE(c.Value());
    c.Disconnect();
    EXPECT_EQ(b.TargetCount(), 0u);
    b.SetValue(true, true);
    EXPECT_FALSE(c.Value());
}

TEST_F(AttributeTest, CyclicConnectionIsRefused) {
    b.Connect(a, true);
    c.Connect(b, true);
    a.Connect(c, true);
    EXPECT_EQ(a.Source(), nullptr);
    a.Connect(a, true);
    EXPECT_EQ(a.Source(), nullptr);
    a.SetValue(true);
    EXPECT_TRUE(c.Value());
}

TEST_F(AttributeTest, EitherEndOfAConnectionMayBeDestroyedFirst) {
    auto source = std::make_unique<AttributeInstance<bool>>(&node, QStringLiteral("s"));
    a.Connect(*source, true);
    source.reset();
    EXPECT_EQ(a.Source(), nullptr);
    a.SetValue(true);
    auto target = std::make_unique<AttributeInstance<bool>>(&node, QStringLiteral("t"));
    target->Connect(a, true);
    target.reset();
    EXPECT_EQ(a.TargetCount(), 0u);
    a.SetValue(false);
    EXPECT_FALSE(a.Value());
}

TEST_F(AttributeTest, BoolIsStreamedAsOneByte) {
    a.SetValue(true, true);
    SceneStream empty;
    SceneStream written;
    a.Serialize(written);
    const std::vector<uint8_t> bytes = written.ToBytes();
    ASSERT_EQ(bytes.size(), empty.ToBytes().size() + 1);
    EXPECT_EQ(bytes.back(), 1);
    SceneStream read(bytes);
    b.Serialize(read);
    EXPECT_TRUE(b.Value());
    EXPECT_THAT(node.TakeEvents(), IsEmpty());
}

TEST_F(AttributeTest, NoWindowSystemMeansNoWidget) {
    EXPECT_EQ(a.CreateEditorWidget(nullptr, 100), nullptr);
    EXPECT_EQ(f.CreateEditorWidget(nullptr, 100), nullptr);
}

TEST(AttributeText, FloatsRoundTripExactly) {
    AttributeInstance<float> attribute(nullptr, QString());
    std::mt19937 engine(5);
    for (int i = 0; i < 20000; ++i) {
        const auto value = std::bit_cast<float>(static_cast<uint32_t>(engine()));
        if (std::isnan(value)) continue;
        attribute.SetValue(value, true);
        const QString text = attribute.AsString();
        attribute.SetValue(0.0f, true);
        ASSERT_TRUE(attribute.SetFromString(text)) << text.toStdString();
        ASSERT_EQ(std::bit_cast<uint32_t>(attribute.Value()), std::bit_cast<uint32_t>(value))
            << text.toStdString() << ", seed 5, " << i;
    }
    attribute.SetValue(0.1f, true);
    EXPECT_EQ(attribute.AsString(), QStringLiteral("0.1"));
}

TEST(AttributeText, EachTypeHasItsText) {
    EXPECT_EQ(AttributeInstance<int>(nullptr, QString(), -12).AsString(), QStringLiteral("-12"));
    EXPECT_EQ(AttributeInstance<bool>(nullptr, QString(), true).AsString(), QStringLiteral("true"));
    EXPECT_EQ(AttributeInstance<QString>(nullptr, QString(), QStringLiteral("x y")).AsString(),
              QStringLiteral("x y"));
    EXPECT_EQ(AttributeInstance<CheckableFloat>(nullptr, QString(), {true, 0.25f}).AsString(),
              QStringLiteral("true 0.25"));
}

TEST(AttributeText, InvalidTextChangesNothing) {
    test::RecordingNode node;
    AttributeInstance<int> number(&node, QStringLiteral("n"), 7);
    AttributeInstance<bool> flag(&node, QStringLiteral("b"), true);
    AttributeInstance<CheckableFloat> pair(&node, QStringLiteral("p"), {true, 2.0f});
    AttributeInstance<float> real(&node, QStringLiteral("r"), 3.0f);
    for (const char* text : {"", "seven", "7.5", "7x", "99999999999"})
        EXPECT_FALSE(number.SetFromString(QString::fromLatin1(text))) << text;
    for (const char* text : {"", "yes", "2", "truefalse"})
        EXPECT_FALSE(flag.SetFromString(QString::fromLatin1(text))) << text;
    for (const char* text : {"", "true", "0.5", "true x", "maybe 1"})
        EXPECT_FALSE(pair.SetFromString(QString::fromLatin1(text))) << text;
    for (const char* text : {"", "1,5", "1.5 m", "1e999"})
        EXPECT_FALSE(real.SetFromString(QString::fromLatin1(text))) << text;
    EXPECT_EQ(number.Value(), 7);
    EXPECT_TRUE(flag.Value());
    EXPECT_EQ(pair.Value(), (CheckableFloat{true, 2.0f}));
    EXPECT_EQ(real.Value(), 3.0f);
    EXPECT_THAT(node.TakeEvents(), IsEmpty());
    EXPECT_TRUE(pair.SetFromString(QStringLiteral("false 1e-3")));
    EXPECT_EQ(pair.Value(), (CheckableFloat{false, 0.001f}));
    EXPECT_TRUE(flag.SetFromString(QStringLiteral(" FALSE ")));
    EXPECT_FALSE(flag.Value());
    EXPECT_THAT(node.TakeEvents(), ElementsAre("p:0", "b:0"));
}

TEST(AttributeFloatRange, ClampsToItsRange) {
    AttributeFloatRange range(nullptr, QString(), 0.25f, 4.0f, 1.0f, 2);
    range.SetValue(9.0f);
    EXPECT_EQ(range.Value(), 4.0f);
    range.SetValue(-1.0f);
    EXPECT_EQ(range.Value(), 0.25f);
    range.SetValue(2.0f);
    EXPECT_EQ(range.Value(), 2.0f);
    range.SetValue(std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(range.Value(), 0.25f);
    EXPECT_TRUE(range.SetFromString(QStringLiteral("100")));
    EXPECT_EQ(range.Value(), 4.0f);
    EXPECT_EQ(AttributeFloatRange(nullptr, QString(), 0.0f, 1.0f, 5.0f, 2).Value(), 1.0f);
}

TEST(AttributeFloatRange, ReportsItsLimitsAsParameters) {
    const AttributeFloatRange range(nullptr, QString(), 0.25f, 4.0f, 1.0f, 2);
    ASSERT_EQ(range.ParameterCount(), 2u);
    EXPECT_EQ(range.ParameterName(0), QStringLiteral("minimum"));
    EXPECT_EQ(range.ParameterValue(0), QStringLiteral("0.25"));
    EXPECT_EQ(range.ParameterName(1), QStringLiteral("maximum"));
    EXPECT_EQ(range.ParameterValue(1), QStringLiteral("4"));
    EXPECT_TRUE(range.ParameterName(2).isEmpty());
    EXPECT_EQ(range.Decimals(), 2);
}

TEST(AttributeFloatRange, AssignmentCopiesRangeAndValueSilently) {
    test::RecordingNode node;
    AttributeFloatRange range(&node, QStringLiteral("r"), 0.0f, 1.0f, 0.5f, 2);
    const AttributeFloatRange other(nullptr, QString(), -8.0f, 8.0f, 6.0f, 1);
    range = other;
    EXPECT_EQ(range.Value(), 6.0f);
    EXPECT_EQ(range.Minimum(), -8.0f);
    EXPECT_EQ(range.Maximum(), 8.0f);
    EXPECT_EQ(range.Decimals(), 1);
    EXPECT_THAT(node.TakeEvents(), IsEmpty());
}

TEST(AttributeFloatRange, StreamedValueIsClampedToTheRange) {
    AttributeInstance<float> wild(nullptr, QString(), 1e30f);
    SceneStream written;
    wild.Serialize(written);
    SceneStream read(written.ToBytes());
    AttributeFloatRange range(nullptr, QString(), 0.0f, 1.0f, 0.5f, 2);
    read << range;
    EXPECT_EQ(range.Value(), 1.0f);
}

}  // namespace
}  // namespace trovik
