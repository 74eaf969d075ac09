// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "events/EventFile.h"

#include <QPointingDevice>
#include <QSet>

class QWidget;

namespace trovik::studio {

class ActionRegistry;

/// Sends pen, mouse, wheel and key events to a widget as the window system would. It stores which
/// buttons and keys are pressed.
///
/// Call on the UI thread only.
class InputSender {
public:
    /// \param actions  defines the keys that trigger actions.
    InputSender(QWidget& target, ActionRegistry& actions);

    /// \param time  milliseconds; becomes the timestamp.
    void Send(const PenInput& pen, uint32_t time);
    void Send(const MouseInput& mouse, uint32_t time);
    void Send(const WheelInput& wheel, uint32_t time);
    /// If the widget accepts the key's shortcut override, it receives the key. Otherwise the key
    /// triggers the action to which it is bound or, without such an action, is sent to the widget.
    void Send(const KeyInput& key, uint32_t time);
    /// Releases all pressed buttons and keys.
    void ReleaseAll(uint32_t time);
    /// Whether a pen or mouse button is pressed.
    bool IsDragging() const { return penButtons != Qt::NoButton || mouseButtons != Qt::NoButton; }

private:
    void SendPress(QKeyCombination key, const QString& text, uint32_t time);
    void SendRelease(Qt::Key key, uint32_t time);
    QPointF Global(const QPointF& position) const;

    QWidget& widget;
    ActionRegistry& actions;
    QPointingDevice pen, eraser;
    Qt::MouseButtons penButtons, mouseButtons;
    Qt::KeyboardModifiers modifiers;
    /// Keys other than modifiers whose press the widget received.
    QSet<int> keys;
    PenInput lastPen;
    MouseInput lastMouse;
};

}  // namespace trovik::studio
