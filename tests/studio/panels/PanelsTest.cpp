// SPDX-License-Identifier: Apache-2.0
#include "commands/SubdivideDialog.h"
#include "commands/SymmetrySetting.h"
#include "framework/script/ToolSettings.h"
#include "panels/BrushPanel.h"
#include "panels/Controls.h"
#include "panels/CurveSetting.h"
#include "panels/HistoryPanel.h"
#include "panels/InfoPanel.h"
#include "panels/LayerRow.h"
#include "panels/LayersPanel.h"
#include "panels/SettingControl.h"
#include "panels/StampTray.h"
#include "tests/studio/panels/StudioWindow.h"

#include <QApplication>
#include <QLineEdit>
#include <QTest>
#include <QThreadPool>
#include <QToolButton>

#include <algorithm>
#include <cmath>

namespace trovik::studio {

namespace {

using nlohmann::json;

}  // namespace

TEST_F(StudioWindow, BrushPanelShowsTheSettingsThatApplyForEveryTool) {
    OpenSphere();
    for (const std::string& tool : std::vector<std::string>(State().tools)) {
        engine.Run({{"tool", tool}});
        Finish();
        for (const ToolSetting& setting : *engine.Settings()) {
            // The stamp tray shows this setting.
            if (setting.name == "stamp.path") continue;
            const SettingControl* control = window->Brush().Control(setting.name);
            if (setting.applies) {
                ASSERT_NE(control, nullptr) << tool << ": " << setting.name;
                EXPECT_FALSE(control->isHidden()) << tool << ": " << setting.name;
            } else if (control != nullptr) {
                EXPECT_TRUE(control->isHidden()) << tool << ": " << setting.name;
            }
        }
    }
}

TEST_F(StudioWindow, EverySliderSendsItsOwnSetting) {
    OpenSphere();
    engine.Run({{"set",
                 {{"stamp", {{"enabled", true}}},
                  {"facing", {{"enabled", true}}},
                  {"pressureControlsSize", true}}}});
    Finish();
    int sliders = 0;
    for (const ToolSetting& setting : ToolSettingList(*engine.Settings())) {
        SettingControl* control = window->Brush().Control(setting.name);
        if (control == nullptr || !setting.applies || !setting.value.is_number()) continue;
        auto* slider = control->findChild<ValueSlider*>();
        ASSERT_NE(slider, nullptr) << setting.name;
        ++sliders;
        const ValueSlider::Range& range = slider->Limits();
        const double shown =
            (range.softLeast == range.softMost ? range.least + range.most
                                               : range.softLeast + range.softMost) /
            2.5;
        Q_EMIT slider->Edited(shown);
        Finish();
        const double factor = AppearanceOf(setting).factor;
        EXPECT_NEAR(engine.Setting(setting.name)->value.get<double>(),
                    range.isWhole ? std::round(shown) : shown / factor,
                    1e-4 * std::abs(shown) + 1e-6)
            << setting.name;
        EXPECT_NEAR(slider->Value(),
                    range.isWhole ? std::round(shown) : shown,
                    1e-3 * std::abs(shown) + 1e-4)
            << setting.name;
        const std::size_t dot = setting.name.find('.');
        EXPECT_TRUE(LastStep().at("set").contains(setting.name.substr(0, dot))) << setting.name;
    }
    EXPECT_GT(sliders, 15);
    EXPECT_TRUE(failures.empty()) << failures.join("\n").toStdString();
}

TEST_F(StudioWindow, SwitchesListsAndOptionalNumbersSendTheirSteps) {
    OpenSphere();
    BrushPanel& panel = window->Brush();
    panel.Control("pressureControlsSize")->findChild<PanelCheck*>()->click();
    EXPECT_EQ(LastStep(), (json{{"set", {{"pressureControlsSize", true}}}}));
    EXPECT_TRUE(panel.Control("sizeBias")->isEnabled());

    auto* direction = panel.Control("direction")->findChild<PanelCombo*>();
    const int index = direction->findData("camera");
    direction->setCurrentIndex(index);
    Q_EMIT direction->activated(index);
    EXPECT_EQ(LastStep(), (json{{"set", {{"direction", "camera"}}}}));

    auto* steady = panel.Control("stabiliser")->findChild<PanelCheck*>();
    EXPECT_FALSE(steady->isChecked());
    steady->click();
    EXPECT_EQ(LastStep(), (json{{"set", {{"stabiliser", 0.04}}}}));
    Finish();
    EXPECT_TRUE(steady->isChecked());
    steady->click();
    EXPECT_EQ(LastStep(), (json{{"set", {{"stabiliser", false}}}}));

    auto* pixels = panel.Control("radiusPixels")->findChild<PanelCheck*>();
    pixels->click();
    Finish();
    EXPECT_TRUE(engine.Setting("radiusPixels")->value.is_number());
    pixels->click();
    Finish();
    EXPECT_TRUE(engine.Setting("radiusPixels")->value.is_null());
    EXPECT_TRUE(failures.empty()) << failures.join("\n").toStdString();
}

TEST_F(StudioWindow, SettingsWithoutEffectAreDisabled) {
    OpenSphere();
    EXPECT_FALSE(window->Brush().Control("facing.start")->isEnabled());
    Action("brush.facing")->trigger();
    Finish();
    EXPECT_TRUE(window->Brush().Control("facing.start")->isEnabled());
    EXPECT_TRUE(Action("brush.facing")->isChecked());
}

TEST_F(StudioWindow, CurvesAreSentAndShown) {
    OpenSphere();
    auto* falloff = dynamic_cast<FalloffControl*>(window->Brush().Control("falloff"));
    ASSERT_NE(falloff, nullptr);
    EXPECT_NEAR(falloff->Editor().Samples(2)[0], 1.0f, 1e-5f);
    EXPECT_NEAR(falloff->Editor().Samples(2)[1], 0.0f, 1e-5f);
    const CurveEditor::Points own{{0, 0.2f}, {0.5f, 1}, {1, 0}};
    falloff->Editor().SetValue(own);
    Q_EMIT falloff->Editor().Edited();
    Finish();
    const json sent = LastStep().at("set").at("falloff");
    ASSERT_EQ(sent.size(), FalloffControl::sampleCount);
    EXPECT_NEAR(sent.front().get<float>(), 0.2f, 1e-5f);
    EXPECT_NEAR(sent.at(32).get<float>(), 1.0f, 1e-3f);
    EXPECT_EQ(falloff->Editor().Value().size(), own.size()) << "the points were replaced";

    auto* strength = dynamic_cast<CurveControl*>(window->Brush().Control("strengthCurve"));
    ASSERT_NE(strength, nullptr);
    strength->Editor().SetValue({{0, 0}, {0.5f, 0.25f}, {1, 1}});
    Q_EMIT strength->Editor().Edited();
    EXPECT_EQ(LastStep(), (json{{"set", {{"strengthCurve", {{0, 0}, {0.5, 0.25}, {1, 1}}}}}}));
    strength->Editor().SetValue({{0, 0}, {1, 1}});
    Q_EMIT strength->Editor().Edited();
    EXPECT_EQ(LastStep(), (json{{"set", {{"strengthCurve", nullptr}}}}));
    EXPECT_TRUE(failures.empty()) << failures.join("\n").toStdString();
}

TEST_F(StudioWindow, RadiusKeysScaleTheUnitInUse) {
    OpenSphere();
    engine.Run({{"set", {{"radius", 1.0}}}});
    Finish();
    Action("brush.smaller")->trigger();
    Finish();
    EXPECT_NEAR(engine.Setting("radius")->value.get<double>(), 0.9, 1e-6);
    engine.Run({{"set", {{"radiusPixels", 100}}}});
    Finish();
    Action("brush.larger")->trigger();
    Finish();
    EXPECT_NEAR(engine.Setting("radiusPixels")->value.get<double>(), 111.11, 0.1);
}

TEST_F(StudioWindow, SymmetryIsReadFromTheMapsOfTheDocument) {
    OpenSphere();
    Action("symmetry.x")->trigger();
    Finish();
    EXPECT_EQ(State().symmetry.copies, 1u);
    EXPECT_TRUE(Action("symmetry.x")->isChecked());
    Action("symmetry.z")->trigger();
    Finish();
    EXPECT_EQ(State().symmetry.copies, 3u);
    EXPECT_TRUE(Action("symmetry.x")->isChecked() && Action("symmetry.z")->isChecked());
    Action("symmetry.x")->trigger();
    Finish();
    EXPECT_FALSE(Action("symmetry.x")->isChecked());
    EXPECT_TRUE(Action("symmetry.z")->isChecked());
    for (const json& mirror : {json{{"radial", 5}, {"axis", "z"}, {"planes", json::array()}},
                               json{{"radial", 4}, {"axis", "y"}, {"planes", {"y"}}},
                               json{{"radial", 2}, {"axis", "x"}, {"planes", json::array()}}}) {
        engine.Run({{"mirror", mirror}});
        Finish();
        EXPECT_EQ(SymmetrySetting::Of(State()).ToJson(), mirror);
    }
    Action("symmetry.topological")->trigger();
    Finish();
    EXPECT_TRUE(State().symmetry.topological) << failures.join("\n").toStdString();
    Action("symmetry.off")->trigger();
    Finish();
    EXPECT_EQ(SymmetrySetting::Of(State()).ToJson(), json::array());
}

TEST_F(StudioWindow, LayersAreAddedRenamedMovedAndRemoved) {
    OpenSphere();
    auto* panel = window->findChild<LayersPanel*>();
    Action("layer.add")->trigger();
    Finish();
    Action("layer.add")->trigger();
    Finish();
    Action("layer.add")->trigger();
    Finish();
    ASSERT_EQ(panel->Rows().size(), 3u);
    EXPECT_EQ(panel->Rows()[0]->Layer().name, "Layer 3") << "the highest is first";
    EXPECT_TRUE(panel->Rows()[0]->Layer().active);

    Action("layer.rename")->trigger();
    auto* entry = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    ASSERT_NE(entry, nullptr);
    entry->setText("Layer 1");
    QTest::keyClick(entry, Qt::Key_Return);
    Finish();
    EXPECT_EQ(panel->Rows()[0]->Layer().name, "Layer 4") << "two layers have the same name";
    EXPECT_EQ(QApplication::focusWidget(), viewport);

    // Drags the top layer to the end of the list.
    Q_EMIT panel->Rows()[0]->GripMoved(panel->Rows()[2]->geometry().bottom() + 4);
    Q_EMIT panel->Rows()[0]->GripReleased();
    Finish();
    EXPECT_EQ(State().layers[0].name, "Layer 4");
    Q_EMIT panel->Rows()[0]->StrengthEdited(0.25);
    Finish();
    EXPECT_FLOAT_EQ(State().layers[2].strength, 0.25f);
    Q_EMIT panel->Rows()[1]->TargetClicked();
    Finish();
    EXPECT_TRUE(State().layers[1].active);
    Q_EMIT panel->Rows()[1]->TargetClicked();
    Finish();
    EXPECT_FALSE(State().layers[1].active);
    EXPECT_FALSE(Action("layer.delete")->isEnabled());
    Q_EMIT panel->Rows()[0]->TargetClicked();
    Finish();
    Action("layer.delete")->trigger();
    Finish();
    EXPECT_EQ(panel->Rows().size(), 2u);
    EXPECT_TRUE(failures.empty()) << failures.join("\n").toStdString();
}

TEST_F(StudioWindow, LevelsFollowTheirKeysAndForecastsAreExact) {
    OpenSphere(2);
    EXPECT_EQ(State().currentLevel, 2u);
    const LevelForecast more = ForecastLevels(State(), 1);
    Action("level.subdivide.once")->trigger();
    Finish();
    EXPECT_EQ(State().levels.back().faces, more.faces);
    EXPECT_EQ(State().levels.back().vertices, more.vertices);
    Action("level.down")->trigger();
    Finish();
    EXPECT_EQ(State().currentLevel, 2u);
    EXPECT_TRUE(Action("level.delete.higher")->isEnabled());
    Action("level.delete.higher")->trigger();
    Finish();
    EXPECT_EQ(State().levels.size(), 3u);
    EXPECT_FALSE(Action("level.up")->isEnabled());
    auto* info = window->findChild<InfoPanel*>();
    EXPECT_EQ(info->Text("faces"), CountText(State().levels[2].faces));
    EXPECT_TRUE(failures.empty()) << failures.join("\n").toStdString();
}

TEST_F(StudioWindow, HistoryJumpsToAStep) {
    OpenSphere();
    for (const char* name : {"One", "Two", "Three", "Four"})
        engine.Run({{"layer", {{"add", name}}}});
    Finish();
    ASSERT_EQ(State().layers.size(), 4u);
    auto* panel = window->findChild<HistoryPanel*>();
    // A history position counts stored steps, several of which may be undone together.
    std::vector<std::size_t> ends;
    for (std::size_t i = 0; i < State().history.size(); ++i)
        if (i + 1 == State().history.size() || !State().history[i + 1].joinsPrevious)
            ends.push_back(i + 1);
    ASSERT_GE(ends.size(), 4u);
    panel->JumpTo(ends[ends.size() - 3]);
    Finish();
    EXPECT_EQ(State().layers.size(), 2u);
    panel->JumpTo(ends.back());
    Finish();
    EXPECT_EQ(State().layers.size(), 4u);
}

TEST_F(StudioWindow, MaskAndVisibilityActionsRun) {
    OpenSphere();
    for (const char* id : {"mask.fill",
                           "mask.invert",
                           "mask.cavity",
                           "mask.grow",
                           "mask.shrink",
                           "mask.blur",
                           "mask.sharpen",
                           "mask.fill",
                           "visibility.isolate",
                           "visibility.show",
                           "visibility.invert",
                           "visibility.show",
                           "mask.clear"}) {
        Action(id)->trigger();
        Finish();
        EXPECT_TRUE(failures.empty()) << id << ": " << failures.join("\n").toStdString();
        failures.clear();
    }
}

TEST_F(StudioWindow, StampsAreShownAndChosen) {
    OpenSphere();
    auto* tray = window->findChild<StampTray*>();
    QString knife;
    for (const QString& path : tray->Shown())
        if (path.endsWith("knife.tif")) knife = path;
    ASSERT_FALSE(knife.isEmpty());
    const QImage thumbnail = StampThumbnail(knife, 48);
    ASSERT_FALSE(thumbnail.isNull());
    EXPECT_EQ(std::max(thumbnail.width(), thumbnail.height()), 48);
    tray->Choose(knife);
    Finish();
    EXPECT_EQ(engine.Setting("stamp.enabled")->value, json(true));
    EXPECT_EQ(engine.Setting("stamp.path")->value, json(knife.toStdString()));
    EXPECT_EQ(tray->Shown().first(), knife) << "not remembered";
    EXPECT_TRUE(StampThumbnail(folder.filePath("none.png"), 48).isNull());
}

TEST_F(StudioWindow, StampThumbnailsAreLoadedWhenTheTrayIsShown) {
    auto* tray = window->findChild<StampTray*>();
    const auto countLoaded = [tray] {
        const QList<QToolButton*> buttons = tray->findChildren<QToolButton*>();
        return std::count_if(buttons.begin(), buttons.end(), [](const QToolButton* button) {
            return button->accessibleName().startsWith("Stamp ") && !button->icon().isNull();
        });
    };
    ASSERT_FALSE(tray->Shown().isEmpty());
    QThreadPool::globalInstance()->waitForDone();
    QApplication::processEvents();
    EXPECT_EQ(countLoaded(), 0);
    Action("panel.stamps")->trigger();
    EXPECT_TRUE(WaitFor([&] { return countLoaded() == tray->Shown().size(); }));
}

TEST_F(StudioWindow, StatisticsFollowFramesWithADelay) {
    OpenSphere();
    auto* info = window->findChild<InfoPanel*>();
    const QString before = info->Text("latency");
    view.SetPenLatency(0.0105);
    EXPECT_EQ(info->Text("latency"), before);
    view.SetPenLatency(0.0205);
    EXPECT_TRUE(WaitFor([&] { return info->Text("latency") == "20.5 ms"; }));
}

TEST_F(StudioWindow, ViewActionsChangeTheRenderSettings) {
    Action("view.wireframe")->trigger();
    EXPECT_TRUE(view.Settings().hasWireframe);
    EXPECT_TRUE(Action("view.wireframe")->isChecked());
    Action("view.cavity")->trigger();
    EXPECT_EQ(view.Settings().cavity, 0.0f);
    const QString matcap = view.Settings().matcap;
    Action("view.matcap.next")->trigger();
    EXPECT_NE(view.Settings().matcap, matcap);
    EXPECT_TRUE(Action(("view.matcap." + view.Settings().matcap).toLatin1())->isChecked());
    Action("view.orthographic")->trigger();
    EXPECT_TRUE(view.IsOrthographic());
    Vector along;
    QObject::connect(
        &view, &ViewModel::LookRequested, [&](const Vector& d, const Vector&) { along = d; });
    Action("view.right")->trigger();
    EXPECT_EQ(along, Vector(-1, 0, 0));
}

}  // namespace trovik::studio
