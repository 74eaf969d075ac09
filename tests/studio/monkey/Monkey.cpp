// SPDX-License-Identifier: Apache-2.0
#include "tests/studio/monkey/Monkey.h"

#include "commands/CommandPalette.h"
#include "commands/SubdivideDialog.h"
#include "input/KeyTracker.h"
#include "input/ViewportInput.h"
#include "tests/studio/WaitFor.h"
#include "viewport/ViewportWidget.h"
#include "window/MainWindow.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QFileDialog>
#include <QMenu>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include <algorithm>

namespace trovik::studio::test {

namespace {

/// Above this number of faces, no level is added.
constexpr uint32_t maxFaces = 10'000;
/// Number of events after which a dialog or menu is closed.
constexpr int maxStepsInside = 5;
constexpr int maxCloseAttempts = 1000;

constexpr Qt::Key letters[] = {
    Qt::Key_A, Qt::Key_B, Qt::Key_C, Qt::Key_D, Qt::Key_E, Qt::Key_F, Qt::Key_G,
    Qt::Key_H, Qt::Key_I, Qt::Key_J, Qt::Key_K, Qt::Key_L, Qt::Key_M, Qt::Key_N,
    Qt::Key_O, Qt::Key_P, Qt::Key_Q, Qt::Key_R, Qt::Key_S, Qt::Key_T, Qt::Key_U,
    Qt::Key_V, Qt::Key_W, Qt::Key_X, Qt::Key_Y, Qt::Key_Z,
};
constexpr Qt::Key otherKeys[] = {
    Qt::Key_0,      Qt::Key_1,      Qt::Key_5,      Qt::Key_9,         Qt::Key_Period,
    Qt::Key_Escape, Qt::Key_Return, Qt::Key_Space,  Qt::Key_Backspace, Qt::Key_BracketLeft,
    Qt::Key_PageUp, Qt::Key_Tab,    Qt::Key_Delete, Qt::Key_PageDown,  Qt::Key_BracketRight,
    Qt::Key_F3,     Qt::Key_F11,    Qt::Key_Home,   Qt::Key_Plus,      Qt::Key_Minus,
};
constexpr Qt::Key dialogKeys[] = {
    Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Space, Qt::Key_Return, Qt::Key_Escape};
constexpr Qt::Key menuKeys[] = {
    Qt::Key_Up, Qt::Key_Down, Qt::Key_Down, Qt::Key_Left, Qt::Key_Right, Qt::Key_Escape};

}  // namespace

Monkey::Monkey(StudioApplication& ofStudio, unsigned seed)
    : studio(ofStudio), sender(ofStudio.Viewport(), ofStudio.Actions()), random(seed) {}

int Monkey::Random(int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); }

QPointF Monkey::RandomPosition() {
    const QSize size = studio.Viewport().size();
    // Some positions are outside the viewport, because a drag may leave it.
    return QPointF(Random(size.width() + 40) - 20, Random(size.height() + 40) - 20) +
           QPointF(Random(8), Random(8)) * 0.125;
}

bool Monkey::MayTrigger(const QString& id) const {
    if (id == QLatin1String("file.quit") || id == QLatin1String("edit.reset")) return false;
    if (!id.startsWith(QLatin1String("level.subdivide"))) return true;
    // Several requests that wait in the queue would each add a level.
    const auto& state = studio.GetEngine().State();
    return studio.GetEngine().IsIdle() && state != nullptr &&
           state->levels.back().faces <= maxFaces;
}

void Monkey::Send(int count) {
    remaining = count;
    closeAttempts = 0;
    isSending = true;
    Schedule();
    WaitFor([this] { return remaining <= 0; }, 3'600'000);
    isSending = false;
    sender.ReleaseAll(time += 8);
    held = {};
    isPenDown = isMouseDown = false;
}

bool Monkey::CloseAll() {
    studio.Window().Palette().hide();
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (widget != &studio.Window() && widget->isVisible() && widget->isWindow())
            widget->close();
    QApplication::processEvents();
    studio.Viewport().setFocus();
    return QApplication::activePopupWidget() == nullptr &&
           QApplication::activeModalWidget() == nullptr;
}

void Monkey::Schedule() {
    // Each event gets a new timer, because a timer whose handler is still running does not fire in
    // the event loop of a dialog.
    QTimer::singleShot(1, this, &Monkey::Step);
}

void Monkey::Step() {
    if (!isSending) return;
    Schedule();
    if (remaining <= 0) {
        // Send returns only when no dialog is running its own event loop.
        QWidget* open = QApplication::activePopupWidget();
        if (open == nullptr) open = QApplication::activeModalWidget();
        if (open == nullptr) return;
        if (++closeAttempts > maxCloseAttempts)
            qFatal("%s \"%s\" cannot be closed",
                   open->metaObject()->className(),
                   qPrintable(open->windowTitle()));
        open->close();
        return;
    }
    --remaining;
    if (QWidget* popup = QApplication::activePopupWidget()) {
        StepInPopup(*popup);
        return;
    }
    if (QWidget* dialog = QApplication::activeModalWidget()) {
        StepInDialog(*dialog);
        return;
    }
    stepsInside = 0;
    const int choice = Random(100);
    if (choice < 60)
        SendPointer();
    else if (choice < 78)
        SendKey();
    else if (choice < 90)
        SendAction();
    else
        ClickAnywhere();
}

void Monkey::StepInPopup(QWidget& popup) {
    Count("menu");
    if (++stepsInside > maxStepsInside) {
        popup.close();
        return;
    }
    auto* menu = qobject_cast<QMenu*>(&popup);
    const QAction* active = menu == nullptr ? nullptr : menu->activeAction();
    // Entries without a name in the registry open recent files.
    const bool mayRun = active != nullptr && active->menu() == nullptr &&
                        !active->objectName().isEmpty() && MayTrigger(active->objectName());
    QTest::keyClick(&popup, mayRun && Random(2) == 0 ? Qt::Key_Return : Any(menuKeys));
}

void Monkey::StepInDialog(QWidget& dialog) {
    Count("dialog");
    const bool isFile = qobject_cast<QFileDialog*>(&dialog) != nullptr;
    const bool isSubdivision = qobject_cast<SubdivideDialog*>(&dialog) != nullptr;
    if (++stepsInside > maxStepsInside || isFile) {
        if (auto* asked = qobject_cast<QDialog*>(&dialog))
            asked->reject();
        else
            dialog.close();
        return;
    }
    QWidget* focus = dialog.focusWidget() != nullptr ? dialog.focusWidget() : &dialog;
    const Qt::Key key = Any(dialogKeys);
    QTest::keyClick(focus, isSubdivision && key == Qt::Key_Space ? Qt::Key_Return : key);
}

void Monkey::SendPointer() {
    time += 4 + static_cast<uint32_t>(Random(12));
    const int choice = Random(20);
    if (choice == 0) {
        Count("wheel");
        sender.Send(WheelInput{RandomPosition(), QPoint(0, 120 * (Random(5) - 2))}, time);
    } else if (choice == 1) {
        Count("tick");
        studio.Input().PlayTick(time);
    } else if (choice < 5) {
        Count("mouse");
        MouseInput mouse;
        mouse.position = RandomPosition();
        if (Random(3) == 0) {
            mouse.kind = isMouseDown ? MouseInput::Kind::Release : MouseInput::Kind::Press;
            if (!isMouseDown)
                mouseButton = Any({Qt::LeftButton, Qt::MiddleButton, Qt::RightButton});
            mouse.button = mouseButton;
            isMouseDown = !isMouseDown;
        }
        sender.Send(mouse, time);
    } else {
        Count("pen");
        PenInput input;
        // Mostly short distances, so that strokes consist of many dabs.
        pen = Random(12) == 0 ? RandomPosition() : pen + QPointF(Random(31) - 15, Random(31) - 15);
        input.position = pen;
        input.pressure = isPenDown ? 0.01 * Random(101) : 0.0;
        input.tilt = QPointF(Random(120) - 60, Random(120) - 60);
        if (Random(6) == 0) {
            input.kind = isPenDown ? PenInput::Kind::Release : PenInput::Kind::Press;
            isPenDown = !isPenDown;
        }
        sender.Send(input, time);
    }
}

void Monkey::SendKey() {
    const Qt::Key key = Random(3) == 0 ? Any(otherKeys) : Any(letters);
    if (Random(5) == 0) {
        Count("modifier");
        const auto& [modifier, modifierKey] = Any(modifierKeys);
        held ^= modifier;
        sender.Send(
            KeyInput{held.testFlag(modifier) ? KeyInput::Kind::Press : KeyInput::Kind::Release,
                     QKeyCombination(modifierKey),
                     {}},
            time);
        return;
    }
    if (!MayTrigger(studio.Actions().Owner(QKeySequence(QKeyCombination(held, key))))) return;
    QWidget* focus = QApplication::focusWidget();
    if (focus == nullptr || focus == &studio.Viewport() || Random(2) == 0) {
        Count("key");
        const auto kind =
            Any({KeyInput::Kind::Tap, KeyInput::Kind::Press, KeyInput::Kind::Release});
        sender.Send(KeyInput{kind, QKeyCombination(key), {}}, time);
        return;
    }
    // The palette could run any command.
    const bool isInPalette = studio.Window().Palette().isVisible();
    Count("text");
    QTest::keyClick(focus, isInPalette && key == Qt::Key_Return ? Qt::Key_Escape : key);
}

void Monkey::SendAction() {
    const ActionInfo& info = Any(studio.Actions().Infos());
    if (!MayTrigger(info.id)) return;
    Count("action");
    // The action may open a dialog, whose event loop handles the following events.
    studio.Actions().Trigger(info.id);
}

void Monkey::ClickAnywhere() {
    QWidget& window = studio.Window();
    const QPoint position(Random(window.width()), Random(window.height()));
    QWidget* target = window.childAt(position);
    if (target == nullptr || target == &studio.Viewport() ||
        studio.Window().Palette().isAncestorOf(target))
        return;
    const auto* button = qobject_cast<QToolButton*>(target);
    if (button != nullptr && button->defaultAction() != nullptr &&
        !MayTrigger(button->defaultAction()->objectName()))
        return;
    Count("click");
    const QPoint local = target->mapFrom(&window, position);
    QTest::mousePress(target, Qt::LeftButton, {}, local);
    if (Random(3) == 0) QTest::mouseMove(target, local + QPoint(Random(40) - 20, Random(20) - 10));
    QTest::mouseRelease(target, Qt::LeftButton, {}, local);
}

}  // namespace trovik::studio::test
