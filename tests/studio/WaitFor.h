// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

namespace trovik::studio {

/// Runs the event loop until the condition holds. \return false on a timeout.
template <typename Condition>
bool WaitFor(Condition condition, int milliseconds = 120'000) {
    QElapsedTimer since;
    since.start();
    QEventLoop loop;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    timer.start(1);
    while (!condition() && since.elapsed() < milliseconds) loop.exec();
    return condition();
}

}  // namespace trovik::studio
