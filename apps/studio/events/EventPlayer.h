// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "events/EventFile.h"
#include "events/InputSender.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <memory>

namespace trovik::studio {

class ActionRegistry;
class Engine;
class ViewportInput;
class ViewportWidget;

/// The parts of the application on which events are played. All must outlive the player or
/// recorder.
struct EventTarget {
    Engine& engine;
    ActionRegistry& actions;
    ViewportWidget& viewport;
    ViewportInput& input;
};

/// Plays recorded events in the event loop. During playback, user input has no effect, except that
/// Escape stops the playback. The ticks in the file, not the clock, determine how long a pen is
/// held still.
///
/// Call on the UI thread only.
class EventPlayer : public QObject {
    Q_OBJECT
public:
    enum class Pace {
        /// Before each event, waits until the engine has finished all earlier work, so that a file
        /// gives bit-identical results on every machine. Apart from this, events are played as fast
        /// as possible.
        Settled,
        /// Motions between a press and its release are played at the times in the file, regardless
        /// of the engine's state; other events wait.
        Timed
    };

    explicit EventPlayer(const EventTarget& target, QObject* parent = nullptr);
    ~EventPlayer() override;

    void SetPace(Pace newPace) { pace = newPace; }
    /// Whether an event that fails, such as a step with an error or a disabled action, ends the
    /// playback (default true).
    void SetStopsOnError(bool on) { stopsOnError = on; }
    /// Whether the viewport draws frames while events are played. Otherwise, it draws only those
    /// that events wait for, so that the playback is as fast as the engine. The default is true.
    void SetDrawsFrames(bool on) { drawsFrames = on; }
    /// Folder for screenshots with relative paths (default: the working folder).
    void SetOutputFolder(const QString& folder) { outputFolder = folder; }

    /// Resizes the viewport and starts the playback. Ends a running playback first.
    void Play(EventFile events);
    /// Releases all pressed buttons and keys, and ends the playback without an error.
    void Stop();
    bool IsPlaying() const { return isPlaying; }

Q_SIGNALS:
    void Progressed(int done, int total);
    /// \param error  one line that names the file and the event; empty if all events were played.
    void Finished(const QString& error);
    /// A one-line note.
    void Noted(const QString& message);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Advance();
    /// Plays the next event if its time has come. \return false if it has to wait.
    bool PlayNext();
    bool IsReady(const TimedInput& next) const;
    bool NeedsFrame(const TimedInput& event) const;
    /// Makes the viewport start or stop drawing frames. Has no effect if all frames are drawn.
    void SetFrames(bool on);
    bool IsMotion(const TimedInput& event) const;
    void Finish(const QString& error);
    /// \return the reason for a failure, in one line; empty on success.
    QString Send(const TimedInput& event);
    void Resize(const QSize& viewport);
    QString Trigger(const QString& id);
    void Open(const OpenInput& open);
    void SetCamera(const CameraInput& camera);
    QString Screenshot(const ScreenshotInput& screenshot);
    /// The start of an error message: the file, and the event's JSON pointer unless `event` is 0.
    /// \param event  number of the event, from 1.
    QString ErrorPrefix(std::size_t event) const;

    EventTarget to;
    Pace pace = Pace::Settled;
    bool stopsOnError = true;
    bool drawsFrames = true;
    QString outputFolder;
    EventFile file;
    std::unique_ptr<InputSender> sender;
    std::size_t next = 0;
    bool isPlaying = false;
    bool isResizing = false;
    /// Calls Advance if no signal does.
    QTimer timer;
    QElapsedTimer sinceWait;
    /// Time since the last event other than a motion, and the time of that event.
    QElapsedTimer sinceAnchor;
    uint32_t anchorTime = 0;
    /// Timestamp of the last pointer event, on the router's clock and in the file.
    double pointerTime = 0.0;
    uint32_t pointerFileTime = 0;
    QString failure;
};

}  // namespace trovik::studio
