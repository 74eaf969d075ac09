// SPDX-License-Identifier: Apache-2.0
#include "commands/RemeshDialog.h"
#include "tests/studio/panels/StudioWindow.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QPushButton>
#include <QSpinBox>

namespace trovik::studio {

namespace {

class RemeshDialogTest : public StudioWindow {
protected:
    template <typename Control>
    static Control* Named(RemeshDialog& dialog, const char* name) {
        for (Control* control : dialog.findChildren<Control*>())
            if (control->accessibleName() == QLatin1String(name)) return control;
        ADD_FAILURE() << "no control " << name;
        return nullptr;
    }
    uint32_t Faces() const { return State().levels[State().currentLevel].faces; }
};

TEST_F(RemeshDialogTest, PredictsTheResult) {
    OpenSphere(1);
    RemeshDialog dialog(engine, State(), window.get());
    EXPECT_EQ(dialog.ForecastText(), "Measuring the surface…");
    ASSERT_TRUE(WaitFor([&] { return dialog.ForecastText().startsWith("edges of about"); }));
    Named<QComboBox>(dialog, "Target")->setCurrentIndex(1);
    auto* length = Named<QDoubleSpinBox>(dialog, "Edge length");
    // The length that gives as many triangles as the sphere has faces.
    EXPECT_TRUE(dialog.ForecastText().startsWith("about 1,5"))
        << dialog.ForecastText().toStdString();
    length->setValue(length->value() / 2.0);
    EXPECT_TRUE(dialog.ForecastText().startsWith("about 6,1"))
        << dialog.ForecastText().toStdString();
    Named<QComboBox>(dialog, "Change")->setCurrentIndex(1);
    EXPECT_TRUE(dialog.ForecastText().startsWith("about 6,1"));
    EXPECT_TRUE(dialog.ForecastText().endsWith("triangles or more"));
    length->setValue(1e-6);
    EXPECT_FALSE(dialog.GoButton()->isEnabled());
    EXPECT_TRUE(dialog.GoButton()->toolTip().startsWith("At most 100"));
    Named<QComboBox>(dialog, "Change")->setCurrentIndex(2);
    EXPECT_TRUE(dialog.ForecastText().endsWith("triangles or fewer"));
    EXPECT_TRUE(dialog.GoButton()->isEnabled()) << "coarsening adds no triangles";
}

TEST_F(RemeshDialogTest, KeepsALengthThatIsEnteredBeforeTheMeasurementEnds) {
    OpenSphere(1);
    RemeshDialog dialog(engine, State(), window.get());
    Named<QComboBox>(dialog, "Target")->setCurrentIndex(1);
    Named<QDoubleSpinBox>(dialog, "Edge length")->setValue(0.25);
    EXPECT_EQ(dialog.ForecastText(), "Measuring the surface…");
    ASSERT_TRUE(WaitFor([&] { return dialog.ForecastText().startsWith("about"); }));
    EXPECT_EQ(Named<QDoubleSpinBox>(dialog, "Edge length")->value(), 0.25);
}

TEST_F(RemeshDialogTest, OptionsAreTheFieldsOfTheStep) {
    OpenSphere(1);
    RemeshDialog dialog(engine, State(), window.get());
    Named<QSpinBox>(dialog, "Triangles")->setValue(500);
    EXPECT_EQ(dialog.Options(),
              nlohmann::json::parse(R"({"faces": 500, "mode": "both", "keepBorders": true,
                                        "keepGroups": true, "keepUvs": true, "creaseAngle": 60.0})"));
    Named<QComboBox>(dialog, "Target")->setCurrentIndex(1);
    Named<QDoubleSpinBox>(dialog, "Edge length")->setValue(0.25);
    Named<QComboBox>(dialog, "Change")->setCurrentIndex(2);
    Named<QCheckBox>(dialog, "Keep borders")->setChecked(false);
    Named<QDoubleSpinBox>(dialog, "Sharp above")->setValue(45.0);
    EXPECT_EQ(dialog.Options(),
              nlohmann::json::parse(R"({"edgeLength": 0.25, "mode": "coarsen", "keepBorders": false,
                                        "keepGroups": true, "keepUvs": true, "creaseAngle": 45.0})"));
    Named<QCheckBox>(dialog, "Keep sharp edges")->setChecked(false);
    EXPECT_EQ(dialog.Options()["creaseAngle"], 180.0);
}

TEST_F(RemeshDialogTest, TheActionRunsTheStep) {
    QAction* action = Action("surface.remesh");
    ASSERT_NE(action, nullptr);
    EXPECT_FALSE(action->isEnabled()) << "there is no document";
    OpenSphere(1);
    ASSERT_TRUE(action->isEnabled());
    const uint32_t before = Faces();
    QTimer::singleShot(0, [&] {
        auto* dialog = qobject_cast<RemeshDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        Named<QSpinBox>(*dialog, "Triangles")->setValue(700);
        dialog->accept();
    });
    action->trigger();
    Finish();
    EXPECT_EQ(LastStep()["remesh"]["faces"], 700);
    EXPECT_NEAR(Faces(), 700, 35);
    EXPECT_EQ(State().levels.size(), 1u);
    EXPECT_EQ(State().history.back().label, "Remesh");
    engine.Run({{"undo", 1}});
    Finish();
    EXPECT_EQ(Faces(), before);
    EXPECT_TRUE(failures.empty());
}

}  // namespace

}  // namespace trovik::studio
