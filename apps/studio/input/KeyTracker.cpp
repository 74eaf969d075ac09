// SPDX-License-Identifier: Apache-2.0
#include "input/KeyTracker.h"

#include <QGuiApplication>
#include <QKeyEvent>

#include <utility>

namespace trovik::studio {

namespace {

bool IsModifier(int key) {
    for (const auto& [modifier, modifierKey] : modifierKeys)
        if (modifierKey == key) return true;
    return false;
}

}  // namespace

KeyTracker::KeyTracker(QObject* parent) : QObject(parent) {
    qGuiApp->installEventFilter(this);
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, [this](auto state) {
        if (state != Qt::ApplicationActive) Clear();
    });
}

Qt::KeyboardModifiers KeyTracker::Modifiers() const {
    Qt::KeyboardModifiers modifiers;
    for (const auto& [modifier, key] : modifierKeys)
        if (keys.contains(key)) modifiers |= modifier;
    return modifiers;
}

bool KeyTracker::IsHeld(const QKeySequence& sequence) const {
    if (sequence.count() != 1) return false;
    const QKeyCombination chord = sequence[0];
    if (!keys.contains(chord.key())) return false;
    return IsModifier(chord.key()) || chord.keyboardModifiers() == Modifiers();
}

void KeyTracker::Synchronise(Qt::KeyboardModifiers modifiers) {
    for (const auto& [modifier, key] : modifierKeys) Set(key, modifiers.testFlag(modifier));
}

void KeyTracker::Clear() {
    const QSet<int> held = std::exchange(keys, {});
    for (const int key : held) Q_EMIT Released(key);
}

void KeyTracker::Set(int key, bool isHeld) {
    if (keys.contains(key) == isHeld) return;
    if (isHeld) {
        keys.insert(key);
        Q_EMIT Pressed(key);
    } else {
        keys.remove(key);
        Q_EMIT Released(key);
    }
}

bool KeyTracker::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease) {
        const auto& key = *static_cast<QKeyEvent*>(event);
        if (!key.isAutoRepeat()) Set(key.key(), event->type() == QEvent::KeyPress);
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace trovik::studio
