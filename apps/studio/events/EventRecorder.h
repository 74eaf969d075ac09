// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "events/EventFile.h"
#include "events/EventPlayer.h"

#include <QElapsedTimer>
#include <QObject>

class QKeyEvent;
class QMouseEvent;
class QTabletEvent;
class QWheelEvent;

namespace trovik::studio {

/// Records events for EventPlayer: pen, mouse, wheel and key events sent to the viewport, the ticks
/// of a resting pen, steps run by panels, menus and the palette, and actions without steps. Steps
/// that only write files and actions that open a window are omitted. The camera is recorded
/// whenever it has changed, so that strokes do not depend on how fast it moved.
///
/// Call on the UI thread only.
class EventRecorder : public QObject {
    Q_OBJECT
public:
    explicit EventRecorder(const EventTarget& target, QObject* parent = nullptr);
    ~EventRecorder() override;

    /// Begins a new recording, to be played on the current state of the document.
    void Start();
    /// \return the recorded events.
    EventFile Stop();
    bool IsRecording() const { return isRecording; }
    std::size_t Count() const { return file.events.size(); }

Q_SIGNALS:
    /// Another document was opened, which ends the recording; Stop returns the events.
    void Interrupted();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// Converts a pointer event's timestamp to milliseconds in the file.
    uint32_t TimeOf(quint64 timestamp);
    /// The current time in the file.
    uint32_t Now() const;
    void Put(uint32_t time, Input input);
    void RecordViewport(QEvent& event);
    void Record(const QTabletEvent& event);
    void Record(const QMouseEvent& event);
    void Record(const QWheelEvent& event);
    void RecordKey(const QKeyEvent& event);
    void RecordStep(const nlohmann::json& step);
    /// Records modifier keys that were pressed in another window.
    void RecordModifiers(Qt::KeyboardModifiers modifiers, uint32_t time);
    /// Records the camera, if it has changed since it was last recorded.
    void RecordCamera(uint32_t time);
    /// Records the release of all pressed buttons.
    void RecordReleases();
    void FollowButton(PenInput::Kind kind, bool isPen, Qt::MouseButton button);

    EventTarget from;
    EventFile file;
    bool isRecording = false;
    CameraInput camera;
    QSize size;
    Qt::KeyboardModifiers modifiers;
    /// Pressed buttons of the most recently used device.
    Qt::MouseButtons buttons;
    bool isPenDown = false;
    PenInput lastPen;
    MouseInput lastMouse;
    /// A timestamp of pointer events and its time in the file.
    quint64 baseTimestamp = 0;
    uint32_t baseTime = 0;
    bool hasBase = false;
    QElapsedTimer sinceStart;
    /// Timestamp of the last pointer event, on the router's clock and in the file.
    double pointerTime = 0.0;
    uint32_t pointerFileTime = 0;
    /// Effects of the running action so far.
    bool hasRunStep = false;
    bool hasOpenedWindow = false;
};

}  // namespace trovik::studio
