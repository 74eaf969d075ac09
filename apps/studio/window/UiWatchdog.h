// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QApplication>
#include <QString>

#include <cstdint>
#include <vector>

namespace trovik::studio {

/// An event of the UI thread. Times are in milliseconds.
struct UiEvent {
    /// Type of the event, and class and name of the receiver. If most of the time was spent on an
    /// event that was sent within this one, " > " follows, and then the same data of that event.
    QString text;
    /// Processor time of the thread.
    double processor = 0.0;
    /// Time during which the thread was computing or waiting. Time during which the system ran
    /// other threads instead is not counted.
    double busy = 0.0;
};

/// The longest times for which the UI thread was busy with one event.
struct UiBusyTimes {
    /// The events with the longest processor times, longest first; at most 20.
    std::vector<UiEvent> longest;
    /// The longest UiEvent::busy.
    double longestBusy = 0.0;
    /// Events that took more processor time than UiWatchdogApplication::limitMilliseconds.
    uint64_t overLimit = 0;
    uint64_t events = 0;
};

/// An application that measures how much processor time each event takes on the UI thread, and how
/// long it takes including waiting. Used for tests and profiles. Painting (paint, update, expose
/// and resize events of widgets and windows) is not counted, and neither are event loops of
/// dialogs, whose events are measured individually.
class UiWatchdogApplication : public QApplication {
    Q_OBJECT
public:
    static constexpr double limitMilliseconds = 4.0;

    UiWatchdogApplication(int& argumentCount, char** arguments);

    bool notify(QObject* receiver, QEvent* event) override;
    const UiBusyTimes& Times() const { return times; }
    void Restart() { times = {}; }

private:
    struct Frame {
        bool isPainting = false;
        bool hasEventLoop = false;
        /// Times of painting within this event.
        double paintingProcessor = 0.0, paintingBusy = 0.0;
        /// The longest event within this one.
        UiEvent inner;
    };
    void Note(UiEvent event);

    std::vector<Frame> frames;
    UiBusyTimes times;
};

}  // namespace trovik::studio
