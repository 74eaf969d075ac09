// SPDX-License-Identifier: Apache-2.0
#include "window/UiWatchdog.h"

#include <QAbstractEventDispatcher>
#include <QEvent>
#include <QMetaEnum>
#include <QThread>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <sys/resource.h>
#include <utility>

namespace trovik::studio {

namespace {

constexpr std::size_t maxListedEvents = 20;
constexpr double minNamedMilliseconds = 0.2;

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

/// Measures how long the thread is busy. A thread that has not waited was either computing or
/// preempted.
class BusyTimer {
public:
    double Processor() const { return ThreadMilliseconds() - processor; }
    double Busy() const {
        if (WaitCount() == waits) return Processor();
        return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
    }

private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point begin = Clock::now();
    double processor = ThreadMilliseconds();
    long waits = WaitCount();
};

QString NameOf(QEvent::Type type) {
    const char* name = QMetaEnum::fromType<QEvent::Type>().valueToKey(type);
    return name == nullptr ? QString::number(type) : QString::fromLatin1(name);
}

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
    Frame entered;
    entered.isPainting = isPainting;
    frames.push_back(std::move(entered));
    const BusyTimer timer;
    const bool isAccepted = QApplication::notify(receiver, event);
    UiEvent done{{}, timer.Processor(), timer.Busy()};
    const Frame frame = frames.back();
    frames.pop_back();
    if (isPainting) {
        if (!isInner) return isAccepted;
        frames.back().paintingProcessor += done.processor;
        frames.back().paintingBusy += done.busy;
        return isAccepted;
    }
    if (frame.hasEventLoop) return isAccepted;
    done.processor -= frame.paintingProcessor;
    done.busy -= frame.paintingBusy;
    if (isInner) {
        frames.back().paintingProcessor += frame.paintingProcessor;
        frames.back().paintingBusy += frame.paintingBusy;
    }
    // Most events are short, and their names are not needed.
    if (done.processor > minNamedMilliseconds) {
        done.text = QStringLiteral("%1 %2 %3").arg(NameOf(type), QLatin1String(className), name);
        if (frame.inner.processor > done.processor / 2)
            done.text += QStringLiteral(" > ") + frame.inner.text;
    }
    if (!isInner)
        Note(std::move(done));
    else if (done.processor > frames.back().inner.processor)
        frames.back().inner = std::move(done);
    return isAccepted;
}

void UiWatchdogApplication::Note(UiEvent event) {
    ++times.events;
    times.longestBusy = std::max(times.longestBusy, event.busy);
    if (event.processor > limitMilliseconds) ++times.overLimit;
    const auto position =
        std::find_if(times.longest.begin(), times.longest.end(), [&](const UiEvent& other) {
            return other.processor < event.processor;
        });
    times.longest.insert(position, std::move(event));
    if (times.longest.size() > maxListedEvents) times.longest.pop_back();
}

}  // namespace trovik::studio
