// SPDX-License-Identifier: Apache-2.0
#include "events/InputSender.h"

#include "commands/ActionRegistry.h"
#include "input/KeyTracker.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QTabletEvent>
#include <QWheelEvent>
#include <QWidget>

namespace trovik::studio {

namespace {

/// IDs that are not used for real devices.
constexpr qint64 penId = 0x7472'0001;
constexpr qint64 eraserId = 0x7472'0002;
constexpr int buttonCount = 3;

Qt::KeyboardModifiers ModifierOf(Qt::Key key) {
    for (const auto& [modifier, modifierKey] : modifierKeys)
        if (modifierKey == key) return modifier;
    return Qt::NoModifier;
}

QInputDevice::Capabilities PenCapabilities() {
    return QInputDevice::Capability::Position | QInputDevice::Capability::Pressure |
           QInputDevice::Capability::XTilt | QInputDevice::Capability::YTilt |
           QInputDevice::Capability::Rotation;
}

/// In Qt, a timestamp of 0 means that the event does not have one.
quint64 TimestampOf(uint32_t time) { return quint64{time} + 1; }

/// Updates `buttons` from an event. \return the button that the event reports; none for a move.
Qt::MouseButton Follow(PenInput::Kind kind, Qt::MouseButton button, Qt::MouseButtons& buttons) {
    if (kind == PenInput::Kind::Move) return Qt::NoButton;
    buttons.setFlag(button, kind == PenInput::Kind::Press);
    return button;
}

}  // namespace

InputSender::InputSender(QWidget& target, ActionRegistry& registry)
    : widget(target),
      actions(registry),
      pen(QStringLiteral("played pen"),
          penId,
          QInputDevice::DeviceType::Stylus,
          QPointingDevice::PointerType::Pen,
          PenCapabilities(),
          1,
          buttonCount),
      eraser(QStringLiteral("played eraser"),
             eraserId,
             QInputDevice::DeviceType::Stylus,
             QPointingDevice::PointerType::Eraser,
             PenCapabilities(),
             1,
             buttonCount) {}

QPointF InputSender::Global(const QPointF& position) const { return widget.mapToGlobal(position); }

void InputSender::Send(const PenInput& input, uint32_t time) {
    const Qt::MouseButton button = Follow(input.kind, input.button, penButtons);
    lastPen = input;
    const QEvent::Type type = input.kind == PenInput::Kind::Press     ? QEvent::TabletPress
                              : input.kind == PenInput::Kind::Release ? QEvent::TabletRelease
                                                                      : QEvent::TabletMove;
    QTabletEvent event(type,
                       input.isEraser ? &eraser : &pen,
                       input.position,
                       Global(input.position),
                       input.pressure,
                       static_cast<float>(input.tilt.x()),
                       static_cast<float>(input.tilt.y()),
                       0.0f,
                       input.rotation,
                       0.0f,
                       modifiers,
                       button,
                       penButtons);
    event.setTimestamp(TimestampOf(time));
    QCoreApplication::sendEvent(&widget, &event);
}

void InputSender::Send(const MouseInput& input, uint32_t time) {
    // The window system reports the pen's buttons in mouse events that it synthesises from pen
    // events.
    Qt::MouseButtons fromPen = penButtons;
    Qt::MouseButtons& buttons = input.isFromPen ? fromPen : mouseButtons;
    const Qt::MouseButton button = Follow(input.kind, input.button, buttons);
    if (!input.isFromPen) lastMouse = input;
    const QEvent::Type type = input.kind == PenInput::Kind::Press     ? QEvent::MouseButtonPress
                              : input.kind == PenInput::Kind::Release ? QEvent::MouseButtonRelease
                                                                      : QEvent::MouseMove;
    QMouseEvent event(type,
                      input.position,
                      widget.window()->mapFromGlobal(Global(input.position)),
                      Global(input.position),
                      button,
                      buttons,
                      modifiers,
                      input.isFromPen ? &pen : QPointingDevice::primaryPointingDevice());
    event.setTimestamp(TimestampOf(time));
    QCoreApplication::sendEvent(&widget, &event);
}

void InputSender::Send(const WheelInput& input, uint32_t time) {
    QWheelEvent event(input.position,
                      Global(input.position),
                      QPoint(),
                      input.delta,
                      mouseButtons,
                      modifiers,
                      Qt::NoScrollPhase,
                      false);
    event.setTimestamp(TimestampOf(time));
    QCoreApplication::sendEvent(&widget, &event);
}

void InputSender::Send(const KeyInput& input, uint32_t time) {
    const Qt::Key key = input.key.key();
    if (input.kind == KeyInput::Kind::Press) {
        SendPress(input.key, input.text, time);
    } else if (input.kind == KeyInput::Kind::Release) {
        SendRelease(key, time);
    } else {
        const Qt::KeyboardModifiers wanted = input.key.keyboardModifiers();
        const Qt::KeyboardModifiers held = modifiers;
        for (const auto& [modifier, modifierKey] : modifierKeys)
            if (wanted.testFlag(modifier) && !held.testFlag(modifier))
                SendPress(modifierKey, {}, time);
        SendPress(key, input.text, time);
        SendRelease(key, time);
        for (const auto& [modifier, modifierKey] : modifierKeys)
            if (wanted.testFlag(modifier) && !held.testFlag(modifier))
                SendRelease(modifierKey, time);
    }
}

void InputSender::SendPress(QKeyCombination key, const QString& text, uint32_t time) {
    QKeyEvent claim(QEvent::ShortcutOverride, key.key(), modifiers, text);
    claim.setTimestamp(TimestampOf(time));
    claim.ignore();
    QCoreApplication::sendEvent(&widget, &claim);
    if (!claim.isAccepted()) {
        const QKeySequence shortcut(QKeyCombination(modifiers, key.key()));
        const QString owner = actions.Owner(shortcut);
        if (actions.Find(owner) != nullptr) {
            actions.Trigger(owner);
            return;
        }
    }
    QKeyEvent event(QEvent::KeyPress, key.key(), modifiers, text);
    event.setTimestamp(TimestampOf(time));
    QCoreApplication::sendEvent(&widget, &event);
    const Qt::KeyboardModifiers modifier = ModifierOf(key.key());
    modifiers |= modifier;
    if (modifier == Qt::NoModifier) keys.insert(key.key());
}

void InputSender::SendRelease(Qt::Key key, uint32_t time) {
    modifiers &= ~ModifierOf(key);
    keys.remove(key);
    QKeyEvent event(QEvent::KeyRelease, key, modifiers);
    event.setTimestamp(TimestampOf(time));
    QCoreApplication::sendEvent(&widget, &event);
}

void InputSender::ReleaseAll(uint32_t time) {
    for (const Qt::MouseButton button : {Qt::LeftButton, Qt::MiddleButton, Qt::RightButton}) {
        if (penButtons.testFlag(button)) {
            lastPen.kind = PenInput::Kind::Release;
            lastPen.button = button;
            Send(PenInput(lastPen), time);
        }
        if (mouseButtons.testFlag(button)) {
            lastMouse.kind = PenInput::Kind::Release;
            lastMouse.button = button;
            Send(MouseInput(lastMouse), time);
        }
    }
    const QSet<int> pressed = keys;
    for (const int key : pressed) SendRelease(static_cast<Qt::Key>(key), time);
    for (const auto& [modifier, key] : modifierKeys)
        if (modifiers.testFlag(modifier)) SendRelease(key, time);
}

}  // namespace trovik::studio
