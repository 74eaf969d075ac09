// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/BrushOperation.h"
#include "host/Vector.h"
#include "input/Gesture.h"
#include "input/KeyTracker.h"
#include "input/NavigationPreset.h"
#include "input/PointerRouter.h"
#include "input/SelectionGesture.h"
#include "input/ValueGesture.h"

#include <QObject>
#include <QTimer>

#include <memory>
#include <optional>
#include <vector>

class QKeyEvent;
class QWheelEvent;

namespace trovik::studio {

class ActionRegistry;
class BrushCursor;
class Engine;
class ViewportWidget;

/// Maps pointer and key input over the viewport to operations: sculpting, moving the camera,
/// changing a value, selecting. It owns the objects that read the input.
class ViewportInput : public QObject {
    Q_OBJECT
public:
    ViewportInput(Engine& engine, ActionRegistry& actions, ViewportWidget& viewport);
    ~ViewportInput() override;

    void SetNavigation(const NavigationPreset& preset) { navigation = &preset; }
    /// The effect of the pen's eraser end.
    void SetEraser(BrushOperation::Modifier modifier) { eraser = modifier; }
    /// The effect of dragging with a pen's barrel button; if empty, the menu opens.
    void SetBarrel(std::optional<CameraMotion> motion) { barrel = motion; }
    PointerRouter& Router() { return router; }
    BrushCursor& Cursor() { return *cursor; }

    /// The next drag draws a box or lasso selection instead of sculpting. Escape or another tool
    /// ends this.
    void SelectNext(SelectionGesture::Shape shape, SelectionGesture::Done done);
    /// Ends the active gesture; a stroke is released.
    void FinishGesture();
    bool HasGesture() const { return gesture != nullptr; }
    /// Marks all keys as released. Call it when the release of a held key may not arrive, for
    /// example at the start of a playback, which blocks the user's keys.
    void ReleaseKeys() { keys.Clear(); }
    const KeyTracker& Keys() const { return keys; }

    // --- Recorded events ---

    /// Whether the effect of a press depends on a pick that is not complete.
    bool IsWaitingForPick() const { return !pending.empty(); }
    /// Whether an event is being handled; steps that are run during this time are its effects.
    bool IsHandling() const { return handlingDepth > 0; }
    /// Whether a timer generates the ticks of a resting pen. Otherwise, PlayTick supplies them.
    void SetTimerOn(bool on) { isTimerOn = on; }
    /// \param milliseconds  on the clock of pointer events, as for Ticked.
    void PlayTick(double milliseconds);

Q_SIGNALS:
    /// Lines to show over the viewport; empty for none.
    void HudChanged(const QStringList& lines);
    /// The right button, or a pen's barrel button, was pressed without a drag.
    void MenuRequested(const QPoint& globalPosition);
    /// A stroke was refused because the engine is busy.
    void Refused(const QString& reason);
    /// A camera drag, a stroke or another gesture began or ended.
    void GestureChanged(bool isActive);
    /// A tick of the timer affected a gesture.
    /// \param milliseconds  on the clock of pointer events.
    void Ticked(double milliseconds);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Handle(const PointerEvent& event);
    void Press(const PointerEvent& event);
    void Begin(std::unique_ptr<Gesture> next, Qt::MouseButton button);
    void End(bool isFinished);
    /// Begins the operation that depends on whether the press is on the surface.
    void PressKnown(const PointerEvent& press, bool isOnSurface);
    void BeginStroke(const PointerEvent& press);
    std::optional<CameraMotion> HeldMotion() const;
    bool ClickCube(const PointerEvent& event);
    Vector Anchor() const;
    void KeyPressed(int key);
    void KeyReleased(int key);
    bool TypeNumber(const QKeyEvent& event);
    void Wheel(const QWheelEvent& event);
    void ShowRingColor();
    void ShowHud();
    bool IsHeld(const char* action) const;

    /// Marks the time during which an event is handled; see IsHandling.
    class Handling {
    public:
        explicit Handling(ViewportInput& of) : input(of) { ++input.handlingDepth; }
        ~Handling() { --input.handlingDepth; }
        Handling(const Handling&) = delete;
        Handling& operator=(const Handling&) = delete;

    private:
        ViewportInput& input;
    };

    Engine& engine;
    ActionRegistry& actions;
    ViewportWidget& viewport;
    PointerRouter router;
    KeyTracker keys;
    std::unique_ptr<BrushCursor> cursor;
    QTimer ticks;
    bool isTimerOn = true;
    int handlingDepth = 0;
    const NavigationPreset* navigation;
    BrushOperation::Modifier eraser = BrushOperation::ModifierInvert;
    std::optional<CameraMotion> barrel = CameraMotion::Pan;

    std::unique_ptr<Gesture> gesture;
    /// The button whose release ends the gesture.
    Qt::MouseButton gestureButton = Qt::NoButton;
    /// A held key that began the gesture; 0: none.
    int gestureKey = 0;
    ValueGesture* valueGesture = nullptr;
    /// A press whose effect depends on a pick that is not complete, and the events since.
    std::vector<PointerEvent> pending;
    struct Selection {
        SelectionGesture::Shape shape;
        SelectionGesture::Done done;
    };
    std::optional<Selection> selection;
};

}  // namespace trovik::studio
