// SPDX-License-Identifier: Apache-2.0
#include "events/EventPlayer.h"

#include "commands/ActionRegistry.h"
#include "engine/Engine.h"
#include "input/ViewportInput.h"
#include "viewport/ViewportWidget.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QKeyEvent>
#include <QPixmap>

#include <filesystem>
#include <utility>

namespace trovik::studio {

namespace {

/// Interval at which a waiting event checks whether it can continue, if no signal triggers it.
constexpr int pollMilliseconds = 4;
/// If an event waits longer, the engine is considered unresponsive.
constexpr qint64 maxWaitMilliseconds = qint64{20} * 60 * 1000;

/// Closes open menus, as a press next to a menu would.
void ClosePopups() {
    while (QWidget* popup = QApplication::activePopupWidget())
        if (!popup->close()) return;
}

}  // namespace

EventPlayer::EventPlayer(const EventTarget& target, QObject* parent) : QObject(parent), to(target) {
    timer.setInterval(pollMilliseconds);
    timer.setTimerType(Qt::PreciseTimer);
    connect(&timer, &QTimer::timeout, this, &EventPlayer::Advance);
    connect(&to.engine, &Engine::BecameIdle, this, &EventPlayer::Advance, Qt::QueuedConnection);
    connect(&to.engine, &Engine::Failed, this, [this](const QString& message) {
        if (isPlaying && failure.isEmpty()) failure = message;
    });
    connect(&to.input.Router(), &PointerRouter::Pointer, this, [this](const PointerEvent& event) {
        pointerTime = event.milliseconds;
        if (next > 0 && next <= file.events.size()) pointerFileTime = file.events[next - 1].time;
    });
}

EventPlayer::~EventPlayer() { Stop(); }

void EventPlayer::Play(EventFile events) {
    Stop();
    file = std::move(events);
    sender = std::make_unique<InputSender>(to.viewport, to.actions);
    next = 0;
    failure.clear();
    isPlaying = true;
    to.input.FinishGesture();
    // If the user releases a held key during the playback, the event does not arrive.
    to.input.ReleaseKeys();
    to.input.SetTimerOn(false);
    qApp->installEventFilter(this);
    Resize(file.viewport);
    to.viewport.window()->activateWindow();
    to.viewport.setFocus(Qt::OtherFocusReason);
    const double ratio = to.viewport.devicePixelRatioF();
    if (ratio != file.pixelRatio)
        Q_EMIT Noted(tr("%1 was recorded with %2 device pixels per logical pixel; this display has "
                        "%3, so strokes differ.")
                         .arg(QString::fromStdString(file.path))
                         .arg(file.pixelRatio)
                         .arg(ratio));
    sinceWait.start();
    timer.start();
}

void EventPlayer::Stop() {
    if (isPlaying) Finish({});
}

void EventPlayer::Finish(const QString& error) {
    isPlaying = false;
    timer.stop();
    qApp->removeEventFilter(this);
    sender->ReleaseAll(file.events.empty() || next == 0 ? 0 : file.events[next - 1].time);
    to.input.FinishGesture();
    to.input.ReleaseKeys();
    to.input.SetTimerOn(true);
    SetFrames(true);
    to.viewport.setMinimumSize(0, 0);
    to.viewport.setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    Q_EMIT Finished(error);
}

bool EventPlayer::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::KeyPress:
            if (!event->spontaneous()) break;
            if (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) Stop();
            return true;
        case QEvent::KeyRelease:
        case QEvent::ShortcutOverride:
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseMove:
        case QEvent::Wheel:
        case QEvent::TabletPress:
        case QEvent::TabletMove:
        case QEvent::TabletRelease:
            if (event->spontaneous()) return true;
            break;
        // The user's pointer is not at the position of the played event.
        case QEvent::Enter:
        case QEvent::Leave:
        case QEvent::FocusOut:
            if (watched == &to.viewport) return true;
            break;
        default:
            break;
    }
    return QObject::eventFilter(watched, event);
}

void EventPlayer::Advance() {
    // Plays one event per event loop iteration, so that frames are drawn in between.
    if (isPlaying && !isResizing && PlayNext()) QTimer::singleShot(0, this, &EventPlayer::Advance);
}

bool EventPlayer::PlayNext() {
    if (!failure.isEmpty() && stopsOnError) {
        Finish(ErrorPrefix(next) + failure);
        return false;
    }
    failure.clear();
    if (next == file.events.size()) {
        if (!to.engine.IsIdle()) return false;
        Finish({});
        return false;
    }
    const TimedInput& event = file.events[next];
    SetFrames(NeedsFrame(event));
    if (!to.viewport.updatesEnabled()) to.viewport.AcceptUpdates();
    if (!IsReady(event)) {
        if (sinceWait.elapsed() > maxWaitMilliseconds)
            Finish(
                ErrorPrefix(next + 1) +
                tr("the engine has not responded for %1 minutes").arg(maxWaitMilliseconds / 60000));
        return false;
    }
    sinceWait.restart();
    if (!IsMotion(event)) {
        sinceAnchor.start();
        anchorTime = event.time;
    }
    ++next;
    const QString error = Send(event);
    // A nested event loop, for example that of a dialog, may have ended the playback.
    if (!isPlaying) return false;
    if (!error.isEmpty()) failure = error;
    Q_EMIT Progressed(static_cast<int>(next), static_cast<int>(file.events.size()));
    return true;
}

bool EventPlayer::IsMotion(const TimedInput& event) const {
    if (!sender->IsDragging()) return false;
    if (std::holds_alternative<TickInput>(event.input)) return true;
    const auto* pen = std::get_if<PenInput>(&event.input);
    if (pen != nullptr) return pen->kind != PenInput::Kind::Press;
    const auto* mouse = std::get_if<MouseInput>(&event.input);
    return mouse != nullptr && (mouse->isFromPen || mouse->kind != PenInput::Kind::Press);
}

bool EventPlayer::IsReady(const TimedInput& event) const {
    // The result of the pick determines which operation the press begins.
    if (to.input.IsWaitingForPick()) return false;
    if (pace == Pace::Timed && IsMotion(event)) {
        const qint64 due = qint64{event.time} - qint64{anchorTime};
        return sinceAnchor.elapsed() >= due;
    }
    if (!to.engine.IsIdle()) return false;
    return !NeedsFrame(event) || to.viewport.IsComplete();
}

bool EventPlayer::NeedsFrame(const TimedInput& event) const {
    return std::holds_alternative<WaitInput>(event.input) ||
           std::holds_alternative<ScreenshotInput>(event.input);
}

void EventPlayer::SetFrames(bool on) {
    if (!drawsFrames && to.viewport.updatesEnabled() != on) to.viewport.setUpdatesEnabled(on);
}

QString EventPlayer::Send(const TimedInput& event) {
    if (const auto* pen = std::get_if<PenInput>(&event.input)) {
        if (pen->kind == PenInput::Kind::Press) ClosePopups();
        sender->Send(*pen, event.time);
    } else if (const auto* mouse = std::get_if<MouseInput>(&event.input)) {
        if (mouse->kind == PenInput::Kind::Press) ClosePopups();
        sender->Send(*mouse, event.time);
    } else if (const auto* wheel = std::get_if<WheelInput>(&event.input)) {
        sender->Send(*wheel, event.time);
    } else if (const auto* key = std::get_if<KeyInput>(&event.input)) {
        sender->Send(*key, event.time);
    } else if (std::holds_alternative<TickInput>(event.input)) {
        to.input.PlayTick(pointerTime + static_cast<double>(event.time) -
                          static_cast<double>(pointerFileTime));
    } else if (const auto* action = std::get_if<ActionInput>(&event.input)) {
        return Trigger(action->id);
    } else if (const auto* step = std::get_if<StepInput>(&event.input)) {
        to.engine.Run(step->step);
    } else if (const auto* open = std::get_if<OpenInput>(&event.input)) {
        Open(*open);
    } else if (const auto* camera = std::get_if<CameraInput>(&event.input)) {
        SetCamera(*camera);
    } else if (const auto* resize = std::get_if<ResizeInput>(&event.input)) {
        Resize(resize->viewport);
    } else if (const auto* screenshot = std::get_if<ScreenshotInput>(&event.input)) {
        return Screenshot(*screenshot);
    }
    return {};
}

void EventPlayer::Resize(const QSize& size) {
    QWidget& window = *to.viewport.window();
    const QSize change = size - to.viewport.size();
    to.viewport.setFixedSize(size);
    window.resize(window.size() + change);
    // Strokes depend on the size of the view, which the widget receives in an event.
    isResizing = true;
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    isResizing = false;
}

QString EventPlayer::Trigger(const QString& id) {
    if (to.actions.Trigger(id)) return {};
    return to.actions.Find(id) == nullptr ? tr("there is no action \"%1\"").arg(id)
                                          : tr("the action \"%1\" is disabled").arg(id);
}

void EventPlayer::Open(const OpenInput& open) {
    const std::filesystem::path folder = std::filesystem::path(file.path).parent_path();
    OpenRequest request;
    if (!open.mesh.empty()) request.meshPath = (folder / open.mesh).lexically_normal().string();
    if (!open.scene.empty()) request.scenePath = (folder / open.scene).lexically_normal().string();
    request.levels = open.levels;
    to.engine.Open(request);
}

void EventPlayer::SetCamera(const CameraInput& camera) {
    Camera view = to.viewport.View();
    view.SetPose(camera);
    to.viewport.SetView(view);
}

QString EventPlayer::Screenshot(const ScreenshotInput& screenshot) {
    const QString path = QDir(outputFolder).filePath(screenshot.file);
    QDir().mkpath(QFileInfo(path).path());
    const bool isSaved = screenshot.isWindow ? to.viewport.window()->grab().save(path)
                                             : to.viewport.Grab().save(path);
    return isSaved ? QString() : tr("%1 cannot be written").arg(path);
}

QString EventPlayer::ErrorPrefix(std::size_t event) const {
    QString name = QString::fromStdString(file.path);
    if (!name.isEmpty()) name += QStringLiteral(": ");
    if (event == 0) return name;
    return name + QStringLiteral("/events/%1: ").arg(event - 1);
}

}  // namespace trovik::studio
