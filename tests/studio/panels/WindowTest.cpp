// SPDX-License-Identifier: Apache-2.0
#include "commands/CommandPalette.h"
#include "commands/FileActions.h"
#include "commands/KeymapEditor.h"
#include "commands/ToolCatalogue.h"
#include "panels/BrushPanel.h"
#include "panels/SettingControl.h"
#include "panels/ToolShelf.h"
#include "panels/ValueSlider.h"
#include "resources/Icons.h"
#include "tests/studio/panels/StudioWindow.h"
#include "window/JournalNotice.h"
#include "window/PanelStack.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSlider>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <QToolButton>
#include <QTreeWidget>

#include <set>

namespace trovik::studio {

namespace {

void CollectActions(const QList<QAction*>& from, std::set<QAction*>& found) {
    for (QAction* action : from) {
        if (action->menu() != nullptr)
            CollectActions(action->menu()->actions(), found);
        else
            found.insert(action);
    }
}

}  // namespace

TEST_F(StudioWindow, EveryActionIsInPaletteAndKeymap) {
    window->Palette().Open();
    const QStringList listed = window->Palette().Listed();
    KeymapEditor editor(actions, keymap);
    QStringList edited;
    auto* list = editor.findChild<QTreeWidget*>();
    for (int i = 0; i < list->topLevelItemCount(); ++i)
        for (int row = 0; row < list->topLevelItem(i)->childCount(); ++row)
            edited.append(list->topLevelItem(i)->child(row)->data(0, Qt::UserRole).toString());
    ASSERT_GT(actions.Infos().size(), 100u);
    for (const ActionInfo& info : actions.Infos()) {
        EXPECT_TRUE(listed.contains(info.id)) << info.id.toStdString();
        EXPECT_TRUE(edited.contains(info.id)) << info.id.toStdString();
        EXPECT_FALSE(info.description.isEmpty()) << info.id.toStdString();
        EXPECT_TRUE(info.description.endsWith(u'.')) << info.id.toStdString();
        EXPECT_FALSE(Icon(info.icon).isNull()) << info.id.toStdString() << " has no icon";
    }
}

TEST_F(StudioWindow, NoTwoActionsShareADefaultKey) {
    std::map<QString, QString> owners;
    for (const ActionInfo& info : actions.Infos()) {
        for (const QKeySequence& key : info.keys) {
            const auto [place, isNew] = owners.try_emplace(key.toString(), info.id);
            EXPECT_TRUE(isNew) << key.toString().toStdString() << " is the key of "
                               << place->second.toStdString() << " and " << info.id.toStdString();
        }
    }
    EXPECT_GT(owners.size(), 60u);
}

TEST_F(StudioWindow, PresetsNameActionsThatExistAndLeaveNoToolWithoutAKey) {
    for (const QString& preset : Keymap::Presets()) {
        keymap.SetPreset(preset);
        QStringList bare;
        for (const ToolAppearance& tool : KnownTools())
            if (actions.Keys("tool." + tool.name).isEmpty()) bare << tool.name;
        EXPECT_TRUE(bare.isEmpty())
            << preset.toStdString() << ": " << bare.join(", ").toStdString();
    }
    EXPECT_EQ(actions.HeldKey("brush.radius"), QKeySequence("S"));
}

TEST_F(StudioWindow, MenusHoldActionsOfTheRegistry) {
    std::set<QAction*> inMenus;
    CollectActions(window->menuBar()->actions(), inMenus);
    QStringList missing;
    for (const ActionInfo& info : actions.Infos()) {
        QAction* action = actions.Find(info.id);
        if (action != nullptr && inMenus.count(action) == 0) missing << info.id;
    }
    // This action, which opens the default sphere as on the first launch, is the only one without a
    // menu item.
    EXPECT_EQ(missing, QStringList{"file.new.sphere"}) << missing.join(", ").toStdString();
}

TEST_F(StudioWindow, TabHidesPanelsOnlyFromTheViewport) {
    OpenSphere();
    ASSERT_TRUE(WaitFor([this] { return QApplication::focusWidget() == viewport; }));
    const auto isShown = [this] { return window->Brush().isVisible(); };
    ASSERT_TRUE(isShown());
    auto* slider = window->Brush().Control("strength")->findChild<ValueSlider*>();
    slider->BeginEntry();
    auto* entry = slider->findChild<QLineEdit*>();
    ASSERT_NE(entry, nullptr);
    ASSERT_EQ(QApplication::focusWidget(), entry);
    QTest::keyClick(entry, Qt::Key_Tab);
    EXPECT_TRUE(isShown());
    viewport->setFocus();
    QTest::keyClick(viewport, Qt::Key_Tab);
    EXPECT_FALSE(isShown());
    QTest::keyClick(viewport, Qt::Key_Tab);
    EXPECT_TRUE(isShown());
}

TEST_F(StudioWindow, LetterKeysReachActionsAfterPanelsWereUsed) {
    OpenSphere();
    ASSERT_TRUE(WaitFor([this] { return QApplication::focusWidget() == viewport; }));
    SettingControl* strength = window->Brush().Control("strength");
    ASSERT_NE(strength, nullptr);
    auto* slider = strength->findChild<ValueSlider*>();
    // A click opens the number entry, which receives all keys until Return is pressed.
    QTest::mouseClick(slider, Qt::LeftButton);
    auto* entry = slider->findChild<QLineEdit*>();
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(QApplication::focusWidget(), entry);
    QTest::keyClick(entry, Qt::Key_4);
    QTest::keyClick(entry, Qt::Key_2);
    QTest::keyClick(entry, Qt::Key_Return);
    EXPECT_EQ(QApplication::focusWidget(), viewport);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_W);
    Finish();
    EXPECT_EQ(State().tool.name, "Wax");
    const nlohmann::json steps = Steps();
    ASSERT_GE(steps.size(), 2u);
    EXPECT_EQ(steps[steps.size() - 2], (nlohmann::json{{"set", {{"strength", 42.0}}}}));
    EXPECT_EQ(steps.back(), (nlohmann::json{{"tool", "Wax"}}));

    // Dragging a slider and clicking a button do not move the focus.
    QTest::mousePress(slider, Qt::LeftButton, {}, {20, 5});
    QTest::mouseMove(slider, {60, 5});
    QTest::mouseRelease(slider, Qt::LeftButton, {}, {60, 5});
    EXPECT_EQ(QApplication::focusWidget(), viewport);
    QTest::mouseClick(window->Tools().Button("Pinch"), Qt::LeftButton);
    EXPECT_EQ(QApplication::focusWidget(), viewport);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_K);
    Finish();
    EXPECT_EQ(State().tool.name, "SnakeHook");
}

TEST_F(StudioWindow, EscapeAndThePointerEndAnEntry) {
    OpenSphere();
    auto* slider = window->Brush().Control("strength")->findChild<ValueSlider*>();
    const double before = slider->Value();
    slider->BeginEntry();
    QTest::keyClicks(QApplication::focusWidget(), "77");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    EXPECT_EQ(QApplication::focusWidget(), viewport);
    EXPECT_EQ(slider->Value(), before);
    slider->BeginEntry();
    QTest::keyClicks(QApplication::focusWidget(), "66");
    QEnterEvent enter({5, 5}, {5, 5}, {5, 5});
    QApplication::sendEvent(viewport, &enter);
    EXPECT_EQ(QApplication::focusWidget(), viewport);
    EXPECT_EQ(slider->Value(), 66.0) << "the number was lost when the pointer left";
}

TEST_F(StudioWindow, NoControlOfAPanelTakesTheFocusByItself) {
    OpenSphere();
    for (const QString& id : window->Panels().Ids()) window->Panels().Show(id);
    for (QWidget* widget : window->findChildren<QWidget*>()) {
        if (widget == viewport || viewport->isAncestorOf(widget) ||
            window->Palette().isAncestorOf(widget) || window->menuBar()->isAncestorOf(widget))
            continue;
        const bool isControl = qobject_cast<QAbstractButton*>(widget) != nullptr ||
                               qobject_cast<QAbstractSlider*>(widget) != nullptr ||
                               qobject_cast<QAbstractItemView*>(widget) != nullptr ||
                               qobject_cast<QComboBox*>(widget) != nullptr ||
                               qobject_cast<ValueSlider*>(widget) != nullptr;
        // Skips internal widgets of Qt's controls.
        if (!isControl || widget->objectName().startsWith("qt_") ||
            qobject_cast<QComboBox*>(widget->parentWidget()) != nullptr ||
            widget->parentWidget()->inherits("QComboBoxPrivateContainer"))
            continue;
        EXPECT_EQ(widget->focusPolicy(), Qt::NoFocus)
            << widget->metaObject()->className() << " " << widget->accessibleName().toStdString();
    }
}

TEST_F(StudioWindow, EveryControlHasANameAndATooltip) {
    OpenSphere();
    int controls = 0;
    for (QWidget* widget : window->findChildren<QWidget*>()) {
        const bool isControl = qobject_cast<QAbstractButton*>(widget) != nullptr ||
                               qobject_cast<QComboBox*>(widget) != nullptr ||
                               qobject_cast<ValueSlider*>(widget) != nullptr;
        // Skips internal widgets of Qt's controls, such as the icon in a line edit.
        if (!isControl || widget->objectName().startsWith("qt_") ||
            qobject_cast<QLineEdit*>(widget->parentWidget()) != nullptr)
            continue;
        ++controls;
        EXPECT_FALSE(widget->accessibleName().isEmpty())
            << widget->metaObject()->className() << " " << widget->objectName().toStdString();
        EXPECT_FALSE(widget->toolTip().isEmpty()) << widget->accessibleName().toStdString();
    }
    EXPECT_GT(controls, 100);
}

TEST_F(StudioWindow, ThePaletteRunsTheBestMatchAndPutsItFirst) {
    OpenSphere();
    CommandPalette& palette = window->Palette();
    palette.Open();
    palette.SetQuery("inv mask");
    ASSERT_FALSE(palette.Listed().isEmpty());
    EXPECT_EQ(palette.Listed().first(), "mask.invert");
    QTest::keyClick(palette.findChild<QLineEdit*>(), Qt::Key_Return);
    EXPECT_FALSE(palette.isVisible());
    QApplication::processEvents();
    EXPECT_EQ(LastStep(), (nlohmann::json{{"mask", "invert"}}));
    EXPECT_EQ(QApplication::focusWidget(), viewport);
    palette.Open();
    EXPECT_EQ(palette.Listed().first(), "mask.invert");
    QTest::keyClick(palette.findChild<QLineEdit*>(), Qt::Key_Escape);
    EXPECT_FALSE(palette.isVisible());
    EXPECT_EQ(QApplication::focusWidget(), viewport);
}

TEST_F(StudioWindow, ToolShelfHasAllToolsWithTheirKeys) {
    OpenSphere();
    ASSERT_GE(State().tools.size(), 16u);
    for (const std::string& name : State().tools) {
        QToolButton* button = window->Tools().Button(QString::fromStdString(name));
        ASSERT_NE(button, nullptr) << name;
        EXPECT_FALSE(button->icon().isNull()) << name;
        EXPECT_TRUE(
            button->toolTip().contains(AppearanceOf(QString::fromStdString(name)).description))
            << name;
    }
    QTest::mouseClick(window->Tools().Button("Flatten"), Qt::LeftButton);
    Finish();
    EXPECT_EQ(State().tool.name, "Flatten");
    EXPECT_TRUE(Action("tool.Flatten")->isChecked());
    EXPECT_FALSE(Action("tool.Sculpt")->isChecked());
}

TEST_F(StudioWindow, IncrementalNamesCountOn) {
    EXPECT_EQ(FileActions::NextIncrement(folder.filePath("head.trovik")),
              folder.filePath("head_001.trovik"));
    EXPECT_EQ(FileActions::NextIncrement(folder.filePath("head_009.trovik")),
              folder.filePath("head_010.trovik"));
    QFile taken(folder.filePath("head_001.trovik"));
    ASSERT_TRUE(taken.open(QIODevice::WriteOnly));
    EXPECT_EQ(FileActions::NextIncrement(folder.filePath("head.trovik")),
              folder.filePath("head_002.trovik"));
}

TEST_F(StudioWindow, OpeningUnknownFilesIsRefused) {
    QString refused;
    QObject::connect(
        &window->Files(), &FileActions::Refused, [&](const QString& m) { refused = m; });
    window->Files().Open("/tmp/picture.bmp");
    EXPECT_TRUE(refused.startsWith("/tmp/picture.bmp: expected a scene"));
}

TEST_F(StudioWindow, ShowsThatTheJournalCannotBeWrittenUntilItCan) {
    auto* notice = viewport->findChild<JournalNotice*>();
    ASSERT_NE(notice, nullptr);
    EXPECT_EQ(notice->Text(), "");
    OpenSphere();
    Q_EMIT engine.JournalFailureChanged(QStringLiteral("the disk is full"));
    EXPECT_TRUE(notice->isVisible());
    EXPECT_TRUE(notice->Text().contains(QStringLiteral("the disk is full")));
    // Work continues while it is shown.
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    Finish();
    EXPECT_TRUE(notice->isVisible());
    const auto buttons = notice->findChildren<QAbstractButton*>();
    ASSERT_EQ(buttons.size(), 2);
    for (const QAbstractButton* button : buttons) EXPECT_EQ(button->focusPolicy(), Qt::NoFocus);
    EXPECT_TRUE(viewport->rect().contains(notice->geometry()));
    Q_EMIT engine.JournalFailureChanged(QString());
    EXPECT_FALSE(notice->isVisible());
}

}  // namespace trovik::studio
