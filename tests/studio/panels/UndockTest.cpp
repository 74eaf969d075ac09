// SPDX-License-Identifier: Apache-2.0

/// \file
/// Tests panels in windows of their own.
#include "tests/studio/panels/StudioWindow.h"
#include "window/PanelStack.h"
#include "window/PanelWindows.h"

#include <QAction>
#include <QApplication>
#include <QDockWidget>
#include <QKeyEvent>
#include <QTest>

namespace trovik::studio {

namespace {

class KeyLog : public QObject {
public:
    QList<int> pressed, released;

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::KeyPress) pressed << static_cast<QKeyEvent*>(event)->key();
        if (event->type() == QEvent::KeyRelease) released << static_cast<QKeyEvent*>(event)->key();
        return false;
    }
};

class Undocking : public StudioWindow {
protected:
    PanelWindow* WindowOf(const char* id) {
        return window->Undocked().Window(QString::fromLatin1(id));
    }
    void Activate(QWidget* widget) {
        widget->activateWindow();
        ASSERT_TRUE(WaitFor([&] { return QApplication::activeWindow() == widget; }));
    }
};

}  // namespace

TEST_F(Undocking, EveryPanelGetsAWindowAndReturnsWhenItIsClosed) {
    OpenSphere();
    QStringList ids = window->Panels().Ids();
    ids << "brush"
        << "tools";
    for (const QString& id : ids) {
        SCOPED_TRACE(id.toStdString());
        QAction* action = actions.Find("undock." + id);
        ASSERT_NE(action, nullptr);
        action->trigger();
        const PanelWindow* panel = window->Undocked().Window(id);
        ASSERT_NE(panel, nullptr);
        EXPECT_TRUE(panel->isVisible());
        EXPECT_TRUE(panel->isWindow());
        EXPECT_GE(panel->height(), panel->sizeHint().height());
        EXPECT_GE(panel->x(), 0);
        EXPECT_FALSE(panel->findChildren<QWidget*>().isEmpty());
        EXPECT_TRUE(action->isChecked());
        EXPECT_NE(window->Panels().Shown(), id);
    }
    EXPECT_EQ(window->Panels().Shown(), "") << "all panels are undocked";
    // The icon of an undocked panel raises its window.
    window->Panels().Show("layers");
    EXPECT_EQ(window->Panels().Shown(), "");
    for (const QString& id : ids) {
        SCOPED_TRACE(id.toStdString());
        window->Undocked().Window(id)->close();
        ASSERT_TRUE(WaitFor([&] { return !window->Undocked().IsUndocked(id); }));
        EXPECT_FALSE(actions.Find("undock." + id)->isChecked());
        if (window->Panels().Ids().contains(id)) {
            EXPECT_EQ(window->Panels().Shown(), id);
        }
    }
    for (const QDockWidget* dock : window->findChildren<QDockWidget*>()) {
        EXPECT_TRUE(dock->isVisible()) << dock->objectName().toStdString();
        EXPECT_NE(dock->widget(), nullptr);
    }
}

TEST_F(Undocking, KeysReachActionsAndViewport) {
    OpenSphere();
    Action("undock.layers")->trigger();
    PanelWindow* panel = WindowOf("layers");
    Activate(panel);
    KeyLog log;
    viewport->installEventFilter(&log);
    QTest::keyClick(panel, Qt::Key_W);
    Finish();
    EXPECT_EQ(State().tool.name, "Wax");
    // The radius is changed while this key is held; it is not a shortcut.
    ASSERT_EQ(actions.HeldKey("brush.radius"), QKeySequence(Qt::Key_F));
    QTest::keyClick(panel, Qt::Key_F);
    EXPECT_TRUE(log.pressed.contains(Qt::Key_F));
    EXPECT_TRUE(log.released.contains(Qt::Key_F));
    // The pointer returns to the viewport.
    QEnterEvent enter({5, 5}, {5, 5}, {5, 5});
    QApplication::sendEvent(viewport, &enter);
    EXPECT_TRUE(WaitFor([this] { return QApplication::focusWidget() == viewport; }));
    // This shortcut otherwise requires the focus of the viewport.
    QTest::keyClick(panel, Qt::Key_Tab);
    EXPECT_FALSE(panel->isVisible());
    EXPECT_FALSE(window->Panels().isVisible());
    Action("window.panels")->trigger();
    EXPECT_TRUE(panel->isVisible());
    EXPECT_TRUE(window->Panels().isVisible());
}

TEST_F(Undocking, WindowsAreRestoredAtTheNextStart) {
    Action("undock.brush")->trigger();
    Action("undock.stamps")->trigger();
    WindowOf("brush")->setGeometry(120, 90, 333, 444);
    window->Undocked().Dock("stamps");
    const QByteArray state = window->Undocked().State();
    window->close();
    EXPECT_EQ(preferences.Layout("undocked"), state);
    EXPECT_FALSE(WindowOf("brush")->isVisible());

    window->Undocked().Dock("brush");
    window->Undocked().Restore("no state");
    window->Undocked().Restore("{\"none\": \"\", \"stamps\": 3}");
    EXPECT_TRUE(window->Undocked().IsUndocked("stamps"));
    window->Undocked().Dock("stamps");
    window->Undocked().Restore(state);
    ASSERT_NE(WindowOf("brush"), nullptr);
    EXPECT_EQ(WindowOf("brush")->size(), QSize(333, 444));
    EXPECT_EQ(WindowOf("stamps"), nullptr);
}

}  // namespace trovik::studio
