// SPDX-License-Identifier: Apache-2.0

/// \file
/// The effects of keys and of the wheel over the viewport.
#include "commands/ActionRegistry.h"
#include "engine/Engine.h"
#include "input/BrushCursor.h"
#include "input/ViewportInput.h"
#include "viewport/ViewportWidget.h"

#include <QKeyEvent>
#include <QWheelEvent>

#include <cmath>
#include <utility>

namespace trovik::studio {

namespace {

/// One wheel notch, 120 units, changes the distance by a tenth.
constexpr double unitsPerFactor = 120.0;
constexpr double wheelFactor = 0.9;

const QColor plainRing(245, 245, 245);
const QColor invertRing(255, 150, 80);
const QColor smoothRing(110, 190, 255);
const QColor maskRing(255, 225, 90);

}  // namespace

bool ViewportInput::IsHeld(const char* action) const {
    const QList<QKeySequence> bound = actions.Keys(QString::fromLatin1(action));
    for (const QKeySequence& key : bound)
        if (keys.IsHeld(key)) return true;
    return false;
}

void ViewportInput::KeyPressed(int key) {
    const Handling handling(*this);
    ShowRingColor();
    if (key == Qt::Key_Escape || IsHeld("stroke.abandon")) {
        selection.reset();
        viewport.unsetCursor();
        // A released stroke may still be waiting for its last dabs.
        if (gesture == nullptr) engine.AbandonStroke();
        End(false);
        return;
    }
    if (gesture != nullptr) {
        if (gesture->GoesOnWithoutButton() && (key == Qt::Key_Return || key == Qt::Key_Enter))
            End(true);
        return;
    }
    if (!viewport.hasFocus() || !cursor->Position()) return;
    for (const auto& [action, value] :
         {std::pair("brush.radius", ValueGesture::Value::Radius),
          std::pair("brush.strength", ValueGesture::Value::Strength)}) {
        if (!IsHeld(action) || engine.State() == nullptr) continue;
        auto next = std::make_unique<ValueGesture>(
            engine, *cursor, value, *cursor->Position(), viewport.devicePixelRatioF());
        ValueGesture* const begun = next.get();
        Begin(std::move(next), Qt::NoButton);
        valueGesture = begun;
        gestureKey = key;
        return;
    }
}

// Hold the key, drag and release; or tap the key, move and click.
void ViewportInput::KeyReleased(int key) {
    const Handling handling(*this);
    ShowRingColor();
    if (valueGesture != nullptr && key == gestureKey && valueGesture->HasChanged()) End(true);
}

bool ViewportInput::TypeNumber(const QKeyEvent& event) {
    if (valueGesture == nullptr || !valueGesture->Type(event.key(), event.text())) return false;
    // A typed number is confirmed by a key, not by releasing the key that began the gesture.
    gestureKey = 0;
    ShowHud();
    return true;
}

bool ViewportInput::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::ShortcutOverride:
            // While a gesture is active, keys do not trigger shortcuts.
            if (gesture != nullptr) {
                event->accept();
                return true;
            }
            break;
        case QEvent::KeyPress:
            if (TypeNumber(*static_cast<QKeyEvent*>(event))) return true;
            break;
        case QEvent::MouseButtonPress:
            keys.Synchronise(static_cast<QMouseEvent*>(event)->modifiers());
            break;
        case QEvent::Wheel:
            Wheel(*static_cast<QWheelEvent*>(event));
            return true;
        case QEvent::FocusOut:
            End(true);
            break;
        default:
            break;
    }
    return QObject::eventFilter(watched, event);
}

void ViewportInput::Wheel(const QWheelEvent& event) {
    if (gesture != nullptr) return;
    const double notches = event.angleDelta().y() / unitsPerFactor;
    Camera camera = viewport.View();
    const Vector anchor = cursor->Hit().isHit ? cursor->Hit().position : Anchor();
    camera.Dolly(anchor, static_cast<float>(std::pow(wheelFactor, notches)));
    viewport.SetView(camera);
}

void ViewportInput::ShowRingColor() {
    QColor color = plainRing;
    if (IsHeld("stroke.mask")) color = maskRing;
    if (IsHeld("stroke.invert")) color = invertRing;
    if (IsHeld("stroke.smooth")) color = smoothRing;
    cursor->SetColor(color);
}

}  // namespace trovik::studio
