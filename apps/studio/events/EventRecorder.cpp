// SPDX-License-Identifier: Apache-2.0
#include "events/EventRecorder.h"

#include "commands/ActionRegistry.h"
#include "engine/ActionLog.h"
#include "engine/Engine.h"
#include "input/ViewportInput.h"
#include "viewport/ViewportWidget.h"

#include <QApplication>
#include <QMouseEvent>
#include <QTabletEvent>
#include <QWheelEvent>

#include <chrono>
#include <cmath>
#include <utility>

namespace trovik::studio {

EventRecorder::EventRecorder(const EventTarget& target, QObject* parent)
    : QObject(parent), from(target) {
    connect(&from.engine, &Engine::StepRequested, this, &EventRecorder::RecordStep);
    connect(&from.engine, &Engine::Opened, this, [this] {
        if (isRecording) Q_EMIT Interrupted();
    });
    connect(&from.actions, &ActionRegistry::Starting, this, [this] {
        hasRunStep = false;
        hasOpenedWindow = false;
    });
    connect(&from.actions, &ActionRegistry::Triggered, this, [this](const QString& id) {
        if (isRecording && !hasRunStep && !hasOpenedWindow) Put(Now(), ActionInput{id});
    });
    connect(&from.input.Router(), &PointerRouter::Pointer, this, [this](const PointerEvent& event) {
        pointerTime = event.milliseconds;
        if (!file.events.empty()) pointerFileTime = file.events.back().time;
    });
    connect(&from.input, &ViewportInput::Ticked, this, [this](double milliseconds) {
        if (!isRecording) return;
        const auto elapsed = static_cast<uint32_t>(std::lround(milliseconds - pointerTime));
        Put(pointerFileTime + elapsed, TickInput());
    });
}

EventRecorder::~EventRecorder() {
    if (isRecording) qApp->removeEventFilter(this);
}

void EventRecorder::Start() {
    if (isRecording) Stop();
    file = {};
    size = from.viewport.size();
    file.viewport = size;
    file.pixelRatio = from.viewport.devicePixelRatioF();
    hasBase = false;
    buttons = {};
    modifiers = {};
    sinceStart.start();
    isRecording = true;
    camera = from.viewport.View().Pose();
    file.events.push_back({0, camera});
    qApp->installEventFilter(this);
}

EventFile EventRecorder::Stop() {
    if (!isRecording) return {};
    RecordReleases();
    RecordModifiers(Qt::NoModifier, Now());
    RecordCamera(Now());
    isRecording = false;
    qApp->removeEventFilter(this);
    return std::exchange(file, {});
}

uint32_t EventRecorder::Now() const { return static_cast<uint32_t>(sinceStart.elapsed()); }

uint32_t EventRecorder::TimeOf(quint64 timestamp) {
    using std::chrono::steady_clock;
    // As in PointerRouter: events synthesised by other programs have no timestamp.
    if (timestamp == 0)
        timestamp = static_cast<quint64>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                             steady_clock::now().time_since_epoch())
                                             .count());
    if (!hasBase) {
        hasBase = true;
        baseTimestamp = timestamp;
        baseTime = Now();
    }
    // The window system's counter has 32 bits.
    return baseTime + static_cast<uint32_t>(timestamp - baseTimestamp);
}

void EventRecorder::Put(uint32_t time, Input input) {
    if (from.viewport.size() != size) {
        size = from.viewport.size();
        file.events.push_back({time, ResizeInput{size}});
    }
    // During a drag, the camera follows the pointer, and will do so again during playback.
    if (buttons == Qt::NoButton) RecordCamera(time);
    file.events.push_back({time, std::move(input)});
}

void EventRecorder::RecordCamera(uint32_t time) {
    const CameraInput present = from.viewport.View().Pose();
    if (present == camera) return;
    camera = present;
    file.events.push_back({time, camera});
}

void EventRecorder::RecordStep(const nlohmann::json& step) {
    hasRunStep = true;
    // Steps that gestures run are effects of the recorded input.
    if (!isRecording || from.input.IsHandling() || OnlyWritesFiles(step)) return;
    Put(Now(), StepInput{step});
}

bool EventRecorder::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &from.viewport) {
        RecordViewport(*event);
    } else if (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease) {
        // Modifiers affect the viewport regardless of the focus.
        const auto& key = static_cast<const QKeyEvent&>(*event);
        for (const auto& [modifier, modifierKey] : modifierKeys)
            if (key.key() == modifierKey && watched == QApplication::focusWidget()) RecordKey(key);
    } else if (event->type() == QEvent::Show && watched->isWidgetType()) {
        const auto* widget = static_cast<const QWidget*>(watched);
        if (widget->isWindow() && widget->windowType() != Qt::ToolTip) hasOpenedWindow = true;
    }
    return QObject::eventFilter(watched, event);
}

void EventRecorder::RecordViewport(QEvent& event) {
    switch (event.type()) {
        case QEvent::TabletPress:
        case QEvent::TabletMove:
        case QEvent::TabletRelease:
            Record(static_cast<const QTabletEvent&>(event));
            break;
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseMove:
        case QEvent::MouseButtonRelease:
            Record(static_cast<const QMouseEvent&>(event));
            break;
        case QEvent::Wheel:
            Record(static_cast<const QWheelEvent&>(event));
            break;
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
            RecordKey(static_cast<const QKeyEvent&>(event));
            break;
        case QEvent::FocusOut:
            // This ends the stroke; the real release event then has no effect.
            RecordReleases();
            break;
        default:
            break;
    }
}

void EventRecorder::FollowButton(PenInput::Kind kind, bool isPen, Qt::MouseButton button) {
    if (kind == PenInput::Kind::Move) return;
    isPenDown = isPen;
    buttons.setFlag(button, kind == PenInput::Kind::Press);
}

void EventRecorder::Record(const QTabletEvent& event) {
    PenInput pen;
    pen.kind = event.type() == QEvent::TabletPress     ? PenInput::Kind::Press
               : event.type() == QEvent::TabletRelease ? PenInput::Kind::Release
                                                       : PenInput::Kind::Move;
    pen.position = event.position();
    pen.pressure = event.pressure();
    pen.tilt = {event.xTilt(), event.yTilt()};
    pen.rotation = event.rotation();
    if (pen.kind != PenInput::Kind::Move) pen.button = event.button();
    pen.isEraser = event.pointerType() == QPointingDevice::PointerType::Eraser;
    Put(TimeOf(event.timestamp()), pen);
    lastPen = pen;
    FollowButton(pen.kind, true, pen.button);
}

void EventRecorder::Record(const QMouseEvent& event) {
    MouseInput mouse;
    mouse.kind = event.type() == QEvent::MouseMove            ? PenInput::Kind::Move
                 : event.type() == QEvent::MouseButtonRelease ? PenInput::Kind::Release
                                                              : PenInput::Kind::Press;
    mouse.position = event.position();
    if (mouse.kind != PenInput::Kind::Move) mouse.button = event.button();
    mouse.isFromPen = IsPen(event.pointingDevice());
    const uint32_t time = TimeOf(event.timestamp());
    if (mouse.kind == PenInput::Kind::Press && !mouse.isFromPen)
        RecordModifiers(event.modifiers(), time);
    Put(time, mouse);
    if (mouse.isFromPen) return;
    lastMouse = mouse;
    FollowButton(mouse.kind, false, mouse.button);
}

void EventRecorder::Record(const QWheelEvent& event) {
    const uint32_t time = TimeOf(event.timestamp());
    Put(time, WheelInput{event.position(), event.angleDelta()});
}

void EventRecorder::RecordKey(const QKeyEvent& event) {
    const bool isPress = event.type() == QEvent::KeyPress;
    if (event.isAutoRepeat() && !isPress) return;
    for (const auto& [modifier, key] : modifierKeys)
        if (event.key() == key) modifiers.setFlag(modifier, isPress);
    if (KeyName(event.key()).isEmpty()) return;
    KeyInput key;
    key.kind = isPress ? KeyInput::Kind::Press : KeyInput::Kind::Release;
    key.key = QKeyCombination::fromCombined(event.key());
    if (isPress) key.text = event.text();
    Put(Now(), key);
}

void EventRecorder::RecordModifiers(Qt::KeyboardModifiers wanted, uint32_t time) {
    for (const auto& [modifier, key] : modifierKeys) {
        if (wanted.testFlag(modifier) == modifiers.testFlag(modifier)) continue;
        modifiers.setFlag(modifier, wanted.testFlag(modifier));
        const auto kind =
            wanted.testFlag(modifier) ? KeyInput::Kind::Press : KeyInput::Kind::Release;
        Put(time, KeyInput{kind, QKeyCombination::fromCombined(key), {}});
    }
}

void EventRecorder::RecordReleases() {
    for (const Qt::MouseButton button : {Qt::LeftButton, Qt::MiddleButton, Qt::RightButton}) {
        if (!buttons.testFlag(button)) continue;
        const uint32_t time = file.events.empty() ? Now() : file.events.back().time;
        if (isPenDown) {
            lastPen.kind = PenInput::Kind::Release;
            lastPen.button = button;
            Put(time, lastPen);
        } else {
            lastMouse.kind = PenInput::Kind::Release;
            lastMouse.button = button;
            Put(time, lastMouse);
        }
    }
    buttons = {};
}

}  // namespace trovik::studio
