// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QApplication>
#include <QStringList>

#include <cstdint>
#include <vector>

namespace trovik::studio {

/// The longest times for which the UI thread was busy with one event.
struct UiBusyTimes {
    /// Time that the thread was computing or waiting, in milliseconds. Time for which the system
    /// ran other threads instead is not counted.
    double longest = 0.0;
    /// The first events that took longer than the limit, at most 20: class and name of the
    /// receiver, number of the event type, and time.
    QStringList late;
    /// Events that took longer than UiWatchdogApplication::limitMilliseconds.
    uint64_t overLimit = 0;
    uint64_t events = 0;
};

/// An application that measures for how long each event keeps the UI thread busy, so that tests can
/// prove that nothing blocks it. Painting (paint, update, expose and resize events of widgets and
/// windows) is not counted, and neither are event loops of dialogs, whose events are measured one
/// by one.
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
        /// Milliseconds of painting within this event.
        double painting = 0.0;
    };

    std::vector<Frame> frames;
    UiBusyTimes times;
};

}  // namespace trovik::studio
