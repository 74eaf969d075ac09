// SPDX-License-Identifier: Apache-2.0
#include "panels/CurveEditor.h"
#include "panels/SettingCatalogue.h"
#include "panels/ValueSlider.h"

#include <QAccessible>
#include <QApplication>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

namespace trovik::studio {

TEST(ValueSlider, DragsWithinItsSoftRangeAndTypesBeyondIt) {
    ValueSlider slider("Strength", "", nullptr);
    slider.resize(200, 22);
    slider.SetRange({.least = 0, .most = 1000, .softLeast = 0, .softMost = 100, .unit = "%"});
    slider.SetValue(50);
    slider.show();
    QSignalSpy edited(&slider, &ValueSlider::Edited);
    QTest::mousePress(&slider, Qt::LeftButton, {}, {100, 10});
    QTest::mouseMove(&slider, {150, 10});
    QTest::mouseMove(&slider, {400, 10});
    EXPECT_EQ(edited.count(), 0) << "sent before the release";
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, {400, 10});
    ASSERT_EQ(edited.count(), 1);
    EXPECT_EQ(slider.Value(), 100);
    slider.BeginEntry();
    auto* entry = slider.findChild<QWidget*>();
    QTest::keyClicks(entry, "5000");
    QTest::keyClick(entry, Qt::Key_Return);
    EXPECT_EQ(slider.Value(), 1000) << "the limit for typed values";
    EXPECT_EQ(edited.count(), 2);
}

TEST(ValueSlider, DescribesItselfToAssistiveTechnology) {
    ValueSlider slider("Strength", "How much", nullptr);
    slider.SetRange({.least = 0, .most = 200, .softMost = 100, .isWhole = true, .unit = "%"});
    slider.SetValue(40);
    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&slider);
    ASSERT_NE(accessible, nullptr);
    EXPECT_EQ(accessible->role(), QAccessible::Slider);
    EXPECT_EQ(accessible->text(QAccessible::Name), "Strength");
    EXPECT_EQ(accessible->text(QAccessible::Value), "40%");
    QAccessibleValueInterface* value = accessible->valueInterface();
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->currentValue(), 40.0);
    EXPECT_EQ(value->minimumValue(), 0.0);
    EXPECT_EQ(value->maximumValue(), 200.0);
    EXPECT_EQ(value->minimumStepSize(), 1.0);
    QSignalSpy edited(&slider, &ValueSlider::Edited);
    value->setCurrentValue(150);
    EXPECT_EQ(slider.Value(), 150.0);
    EXPECT_EQ(edited.count(), 1);
    slider.setEnabled(false);
    value->setCurrentValue(10);
    EXPECT_EQ(slider.Value(), 150.0);
}

TEST(ValueSlider, ShiftDragsFinely) {
    ValueSlider slider("Strength", "", nullptr);
    slider.resize(200, 22);
    slider.SetRange({.least = 0, .most = 100, .unit = {}});
    slider.SetValue(50);
    slider.show();
    const auto drag = [&](Qt::KeyboardModifiers keys) {
        slider.SetValue(50);
        QTest::mousePress(&slider, Qt::LeftButton, keys, {100, 10});
        QMouseEvent move(
            QEvent::MouseMove, {140, 10}, {140, 10}, Qt::LeftButton, Qt::LeftButton, keys);
        QApplication::sendEvent(&slider, &move);
        QTest::mouseRelease(&slider, Qt::LeftButton, keys, {140, 10});
        return slider.Value();
    };
    EXPECT_NEAR(drag({}), 70, 0.5);
    EXPECT_NEAR(drag(Qt::ShiftModifier), 52, 0.1);
}

TEST(ValueSlider, LogarithmicRangesReachSmallValues) {
    ValueSlider slider("Radius", "", nullptr);
    slider.resize(100, 22);
    slider.SetRange({.least = 0,
                     .most = 1e12,
                     .softLeast = 0.01,
                     .softMost = 1,
                     .isLogarithmic = true,
                     .unit = {}});
    slider.SetValue(1);
    slider.show();
    QTest::mousePress(&slider, Qt::LeftButton, {}, {80, 10});
    QTest::mouseMove(&slider, {30, 10});
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, {30, 10});
    EXPECT_NEAR(slider.Value(), 0.1, 0.01);
}

TEST(ValueSlider, ShowsFewDigitsWithUnits) {
    ValueSlider slider("Radius", "", nullptr);
    slider.SetRange({.least = 0, .most = 1e6, .decimals = 4, .unit = {}});
    slider.SetValue(0.12345678);
    EXPECT_EQ(slider.ValueText(), "0.123");
    slider.SetRange({.least = 0, .most = 100, .unit = "%"});
    slider.SetValue(15);
    EXPECT_EQ(slider.ValueText(), "15%");
    slider.SetRange({.least = 0, .most = 500, .unit = "px"});
    EXPECT_EQ(slider.ValueText(), "15 px");
}

class Curve : public testing::Test {
protected:
    CurveEditor editor{"Curve", "", nullptr};
    QSignalSpy edited{&editor, &CurveEditor::Edited};

    void SetUp() override {
        editor.resize(213, 113);
        editor.show();
    }
    QPoint At(float x, float y) { return editor.PositionOf({x, y}).toPoint(); }
};

TEST_F(Curve, EvaluatesAsTheEngineDoes) {
    const CurveEditor::Points points{{0, 0.1f}, {0.3f, 0.7f}, {1, 1}};
    editor.SetValue(points);
    const std::vector<float> samples = editor.Samples(11);
    const PressureCurve curve(points);
    ASSERT_EQ(samples.size(), 11u);
    for (std::size_t i = 0; i < samples.size(); ++i)
        EXPECT_EQ(samples[i], curve.At(static_cast<float>(i) / 10.0f));
    EXPECT_FLOAT_EQ(samples.front(), 0.1f);
    EXPECT_FLOAT_EQ(samples[3], 0.7f);
}

TEST_F(Curve, PointsAreAddedMovedAndRemoved) {
    QTest::mouseDClick(&editor, Qt::LeftButton, {}, At(0.5f, 0.8f));
    ASSERT_EQ(editor.Value().size(), 3u);
    EXPECT_NEAR(editor.Value()[1].pressure, 0.5f, 0.01f);
    EXPECT_NEAR(editor.Value()[1].value, 0.8f, 0.01f);
    EXPECT_EQ(edited.count(), 1);
    QTest::mousePress(&editor, Qt::LeftButton, {}, At(0.5f, 0.8f));
    QTest::mouseMove(&editor, At(0.25f, 0.4f));
    QTest::mouseRelease(&editor, Qt::LeftButton, {}, At(0.25f, 0.4f));
    EXPECT_NEAR(editor.Value()[1].pressure, 0.25f, 0.01f);
    EXPECT_NEAR(editor.Value()[1].value, 0.4f, 0.01f);
    EXPECT_EQ(edited.count(), 2);
    QTest::mouseClick(&editor, Qt::RightButton, {}, At(0.25f, 0.4f));
    EXPECT_EQ(editor.Value().size(), 2u);
}

TEST_F(Curve, PointsKeepTheirOrderAndTheEndsStay) {
    editor.SetValue({{0, 0}, {0.4f, 0.5f}, {0.6f, 0.5f}, {1, 1}});
    QTest::mousePress(&editor, Qt::LeftButton, {}, At(0.4f, 0.5f));
    QTest::mouseMove(&editor, At(0.9f, 0.5f));
    QTest::mouseRelease(&editor, Qt::LeftButton, {}, At(0.9f, 0.5f));
    EXPECT_LT(editor.Value()[1].pressure, editor.Value()[2].pressure);
    QTest::mousePress(&editor, Qt::LeftButton, {}, At(0, 0));
    QTest::mouseMove(&editor, At(0.3f, 0.6f));
    QTest::mouseRelease(&editor, Qt::LeftButton, {}, At(0.3f, 0.6f));
    EXPECT_EQ(editor.Value()[0].pressure, 0.0f);
    EXPECT_NEAR(editor.Value()[0].value, 0.6f, 0.01f);
    QTest::mouseClick(&editor, Qt::RightButton, {}, At(0, editor.Value()[0].value));
    EXPECT_EQ(editor.Value().size(), 4u) << "an endpoint was removed";
    std::size_t index = 0;
    EXPECT_FALSE(PressureCurve::Flaw(editor.Value(), index));
}

TEST(Settings, StepsNestFieldsOfGroups) {
    EXPECT_EQ(SetStep("radius", 0.5), (nlohmann::json{{"set", {{"radius", 0.5}}}}));
    EXPECT_EQ(SetStep("stamp.factor", 2), (nlohmann::json{{"set", {{"stamp", {{"factor", 2}}}}}}));
}

TEST(Settings, UnknownSettingsGetALabelFromTheirName) {
    ToolSetting setting;
    setting.name = "newShinyThing";
    EXPECT_EQ(AppearanceOf(setting).label, "New shiny thing");
    EXPECT_EQ(AppearanceOf(setting).group, SettingGroup::Advanced);
}

}  // namespace trovik::studio
