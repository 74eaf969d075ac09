// SPDX-License-Identifier: Apache-2.0
#include "input/ViewportInput.h"

#include "engine/Engine.h"
#include "framework/brushes/ToolTraits.h"
#include "input/BrushCursor.h"
#include "input/CameraGesture.h"
#include "input/StrokeGesture.h"
#include "viewport/ViewportWidget.h"

#include <utility>

namespace trovik::studio {

namespace {

constexpr int tickMilliseconds = 16;

}  // namespace

ViewportInput::ViewportInput(Engine& ofEngine, ActionRegistry& registry, ViewportWidget& onViewport)
    : QObject(&onViewport),
      engine(ofEngine),
      actions(registry),
      viewport(onViewport),
      router(&onViewport),
      cursor(std::make_unique<BrushCursor>(ofEngine, onViewport, nullptr)),
      navigation(&NavigationPreset::Named({})) {
    viewport.setFocusPolicy(Qt::StrongFocus);
    viewport.installEventFilter(this);
    connect(&router, &PointerRouter::Pointer, this, &ViewportInput::Handle);
    connect(&router, &PointerRouter::Left, cursor.get(), &BrushCursor::Hide);
    connect(&keys, &KeyTracker::Pressed, this, &ViewportInput::KeyPressed);
    connect(&keys, &KeyTracker::Released, this, &ViewportInput::KeyReleased);
    connect(&engine, &Engine::HoverPicked, this, [this](const HoverHit& hit) {
        if (pending.empty()) return;
        // A pick of an earlier position is not valid for the press.
        const PointerEvent& press = pending.front();
        if (hit.x == static_cast<float>(press.position.x()) &&
            hit.y == static_cast<float>(press.position.y()))
            PressKnown(press, hit.isHit);
    });
    // A busy engine does not pick; the camera remains usable.
    connect(&engine, &Engine::BusyChanged, this, [this](bool isBusy) {
        if (isBusy && !pending.empty()) PressKnown(pending.front(), false);
    });
    connect(&engine, &Engine::Opened, this, [this] { End(false); });
    ticks.setTimerType(Qt::PreciseTimer);
    ticks.setInterval(tickMilliseconds);
    connect(&ticks, &QTimer::timeout, this, [this] {
        if (gesture == nullptr) return;
        const std::optional<double> time = gesture->Tick();
        if (time) Q_EMIT Ticked(*time);
    });
    ShowRingColor();
}

ViewportInput::~ViewportInput() = default;

void ViewportInput::SelectNext(SelectionGesture::Shape shape, SelectionGesture::Done done) {
    selection = Selection{shape, std::move(done)};
    viewport.setCursor(Qt::CrossCursor);
}

void ViewportInput::FinishGesture() { End(true); }

void ViewportInput::PlayTick(double milliseconds) {
    if (gesture != nullptr) gesture->TickAt(milliseconds);
}

void ViewportInput::Handle(const PointerEvent& event) {
    const Handling handling(*this);
    if (!pending.empty()) {
        pending.push_back(event);
        return;
    }
    if (event.kind == PointerEvent::Kind::Press) {
        Press(event);
        return;
    }
    if (gesture != nullptr) {
        gesture->Move(event);
        ShowHud();
        const bool isReleased =
            event.kind == PointerEvent::Kind::Release && event.button == gestureButton;
        if (gesture->MovesRing()) cursor->MoveTo(event.position);
        if (isReleased) End(true);
        return;
    }
    const QSizeF size(viewport.size());
    const QPointF logical = event.position / viewport.devicePixelRatioF();
    if (viewport.Cube().SetHovered(ViewCube::HitTest(logical, viewport.View(), size)))
        viewport.update();
    cursor->MoveTo(event.position);
    ShowRingColor();
}

void ViewportInput::Press(const PointerEvent& event) {
    viewport.setFocus(Qt::MouseFocusReason);
    if (gesture != nullptr) {
        // A click ends a gesture that continues without a pressed button; a right click cancels it.
        if (gesture->GoesOnWithoutButton()) End(event.button == Qt::LeftButton);
        return;
    }
    if (event.button == Qt::LeftButton && ClickCube(event)) return;
    if (selection && event.button == Qt::LeftButton) {
        Begin(std::make_unique<SelectionGesture>(
                  viewport, selection->shape, std::move(selection->done), event),
              event.button);
        selection.reset();
        viewport.unsetCursor();
        return;
    }
    const bool isBarrel =
        event.device != PointerEvent::Device::Mouse && event.button == Qt::RightButton;
    std::optional<CameraMotion> motion = HeldMotion();
    if (!motion && isBarrel) motion = barrel;
    if (motion) {
        Begin(std::make_unique<CameraGesture>(viewport, *motion, Anchor(), event), event.button);
        return;
    }
    if (navigation->DependsOnSurface(event.button, keys.Modifiers()) && !engine.IsBusy()) {
        pending = {event};
        cursor->MoveTo(event.position);
        return;
    }
    PressKnown(event, false);
}

std::optional<CameraMotion> ViewportInput::HeldMotion() const {
    if (!IsHeld("view.navigate")) return std::nullopt;
    if (keys.Modifiers().testFlag(Qt::ShiftModifier)) return CameraMotion::Pan;
    if (keys.Modifiers().testFlag(Qt::ControlModifier)) return CameraMotion::Zoom;
    return CameraMotion::Orbit;
}

void ViewportInput::PressKnown(const PointerEvent& press, bool isOnSurface) {
    const std::vector<PointerEvent> waited = std::exchange(pending, {});
    const auto motion = navigation->MotionOf(press.button, keys.Modifiers(), isOnSurface);
    if (motion) {
        Begin(std::make_unique<CameraGesture>(viewport, *motion, Anchor(), press), press.button);
    } else if (press.button == Qt::LeftButton) {
        BeginStroke(press);
    } else if (press.button == Qt::RightButton) {
        // Queued, because the menu runs its own event loop.
        const QPoint at =
            viewport.mapToGlobal((press.position / viewport.devicePixelRatioF()).toPoint());
        QMetaObject::invokeMethod(
            this, [this, at] { Q_EMIT MenuRequested(at); }, Qt::QueuedConnection);
    }
    for (std::size_t i = 1; i < waited.size(); ++i) Handle(waited[i]);
}

void ViewportInput::BeginStroke(const PointerEvent& press) {
    if (!engine.HasDocument()) return;
    if (!engine.AcceptsStrokes()) {
        Q_EMIT Refused(tr("The sculpture cannot be changed until the running task has finished."));
        return;
    }
    StrokeStart start;
    start.view = viewport.View().ToStrokeView();
    if (press.device == PointerEvent::Device::Eraser) start.modifier = eraser;
    if (IsHeld("stroke.invert")) start.modifier = BrushOperation::ModifierInvert;
    if (IsHeld("stroke.smooth")) start.modifier = BrushOperation::ModifierSmooth;
    start.isLine = IsHeld("stroke.line");
    if (IsHeld("stroke.mask")) start.tool = "Freeze";
    const auto state = engine.State();
    const std::string active = state == nullptr ? std::string() : state->tool.name;
    const auto traits = [&] {
        return TraitsOf(QString::fromStdString(start.tool.empty() ? active : start.tool));
    };
    if (start.modifier == BrushOperation::ModifierSmooth && !traits().canSmooth) {
        start.tool = "Smooth";
        start.modifier = BrushOperation::ModifierNone;
    }
    Begin(std::make_unique<StrokeGesture>(engine, viewport, start, press, traits().holdsPressPoint),
          press.button);
    cursor->MoveTo(press.position);
}

void ViewportInput::Begin(std::unique_ptr<Gesture> next, Qt::MouseButton button) {
    gesture = std::move(next);
    gestureButton = button;
    if (isTimerOn) ticks.start();
    ShowHud();
    Q_EMIT GestureChanged(true);
}

void ViewportInput::End(bool isFinished) {
    pending.clear();
    if (gesture == nullptr) return;
    ticks.stop();
    const std::unique_ptr<Gesture> ended = std::move(gesture);
    valueGesture = nullptr;
    gestureKey = 0;
    if (isFinished)
        ended->Finish();
    else
        ended->Cancel();
    ShowHud();
    Q_EMIT GestureChanged(false);
}

bool ViewportInput::ClickCube(const PointerEvent& event) {
    const QPointF logical = event.position / viewport.devicePixelRatioF();
    const auto direction = ViewCube::HitTest(logical, viewport.View(), QSizeF(viewport.size()));
    if (!direction) return false;
    Camera camera = viewport.View();
    camera.LookAlong(*direction, ViewCube::UpFor(*direction));
    viewport.SetView(camera);
    return true;
}

Vector ViewportInput::Anchor() const {
    if (cursor->LastOnSurface()) return *cursor->LastOnSurface();
    const AxisAlignedBoundingBox box = viewport.WorldBounds();
    if (box.IsEmpty()) return viewport.View().Target();
    return {
        (box.minX + box.maxX) * 0.5f, (box.minY + box.maxY) * 0.5f, (box.minZ + box.maxZ) * 0.5f};
}

void ViewportInput::ShowHud() {
    Q_EMIT HudChanged(gesture != nullptr ? gesture->Hud() : QStringList());
}

}  // namespace trovik::studio
