// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QTimer>

namespace trovik::studio {

/// Refreshes statistics that change with every frame at most five times per second. Each change of
/// a label redraws the whole window, which would delay the next frame.
///
/// Owned by the widget that shows the statistics.
class DelayedRefresh : public QTimer {
public:
    template <typename Widget>
    DelayedRefresh(Widget* owner, void (Widget::*refresh)()) : QTimer(owner) {
        setSingleShot(true);
        setInterval(intervalMilliseconds);
        QObject::connect(this, &QTimer::timeout, owner, refresh);
    }
    /// Refreshes the widget when the interval has passed.
    void Request() {
        if (!isActive()) start();
    }

private:
    static constexpr int intervalMilliseconds = 200;
};

}  // namespace trovik::studio
