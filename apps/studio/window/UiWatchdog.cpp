// SPDX-License-Identifier: Apache-2.0
#include "window/UiWatchdog.h"

#include <QAbstractEventDispatcher>
#include <QEvent>
#include <QThread>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <sys/resource.h>

namespace trovik::studio {

namespace {

constexpr uint64_t maxLateEvents = 20;

double ThreadMilliseconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) * 1e-6;
}

/// How often the thread has waited for something.
long WaitCount() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_nvcsw;
}

/// Measures for how long the thread is busy. A thread that has not waited was either computing or
/// preempted.
class BusyTimer {
public:
    double Milliseconds() const {
        if (WaitCount() == waits) return ThreadMilliseconds() - processor;
        return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
    }

private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point begin = Clock::now();
    double processor = ThreadMilliseconds();
    long waits = WaitCount();
};

bool IsPainting(QEvent::Type type) {
    return type == QEvent::Paint || type == QEvent::UpdateRequest || type == QEvent::Expose ||
           type == QEvent::Resize || type == QEvent::Show || type == QEvent::Polish ||
           type == QEvent::LayoutRequest;
}

}  // namespace

UiWatchdogApplication::UiWatchdogApplication(int& argumentCount, char** arguments)
    : QApplication(argumentCount, arguments) {
    // While an event is being handled, the dispatcher waits for further events only in the event
    // loop of a dialog.
    connect(QAbstractEventDispatcher::instance(),
            &QAbstractEventDispatcher::aboutToBlock,
            this,
            [this] {
                for (Frame& frame : frames) frame.hasEventLoop = true;
            });
}

bool UiWatchdogApplication::notify(QObject* receiver, QEvent* event) {
    if (QThread::currentThread() != thread()) return QApplication::notify(receiver, event);
    const QEvent::Type type = event->type();
    const bool isInner = !frames.empty() && !frames.back().hasEventLoop;
    const bool isPainting = IsPainting(type) || (isInner && frames.back().isPainting);
    // The receiver and the event may be deleted by the call.
    const char* const className = receiver->metaObject()->className();
    const QString name = receiver->objectName();
    frames.push_back({isPainting});
    const BusyTimer timer;
    const bool isAccepted = QApplication::notify(receiver, event);
    const double busy = timer.Milliseconds();
    const Frame frame = frames.back();
    frames.pop_back();
    if (isInner) {
        frames.back().painting += isPainting ? busy : frame.painting;
    } else if (!isPainting && !frame.hasEventLoop) {
        ++times.events;
        const double counted = busy - frame.painting;
        times.longest = std::max(times.longest, counted);
        if (counted > limitMilliseconds && ++times.overLimit <= maxLateEvents)
            times.late.append(QStringLiteral("%1 %2, event type %3: %4 ms")
                                  .arg(QLatin1String(className), name)
                                  .arg(static_cast<int>(type))
                                  .arg(counted, 0, 'f', 2));
    }
    return isAccepted;
}

}  // namespace trovik::studio
