// SPDX-License-Identifier: Apache-2.0
#include "input/PointerRouter.h"

#include <QCursor>
#include <QMouseEvent>
#include <QPointingDevice>
#include <QTabletEvent>
#include <QWidget>

#include <chrono>
#include <cmath>

namespace trovik::studio {

namespace {

double SteadyMilliseconds() {
    const std::chrono::duration<double, std::milli> now =
        std::chrono::steady_clock::now().time_since_epoch();
    return now.count();
}

/// The direction in which the upper end of the pen leans, for a unit vector along the pen. \param
/// xTilt, yTilt degrees from upright.
void SetTilt(PointerEvent& event, qreal xTilt, qreal yTilt) {
    constexpr double radians = 0.017453292519943295;
    const double x = std::tan(xTilt * radians);
    const double y = std::tan(yTilt * radians);
    const double length = std::sqrt(x * x + y * y + 1.0);
    event.tiltX = static_cast<float>(x / length);
    event.tiltY = static_cast<float>(y / length);
}

}  // namespace

bool IsPen(const QPointingDevice* device) {
    return device != nullptr && (device->type() == QInputDevice::DeviceType::Stylus ||
                                 device->type() == QInputDevice::DeviceType::Airbrush);
}

PointerRouter::PointerRouter(QWidget* widget) : QObject(widget), viewport(widget) {
    viewport->setMouseTracking(true);
    viewport->setTabletTracking(true);
    viewport->installEventFilter(this);
}

double PointerRouter::Unwrapped(quint64 timestamp) {
    // Events synthesised by other programs have no timestamp.
    if (timestamp == 0) return SteadyMilliseconds();
    constexpr quint64 range = quint64{1} << 32;
    if (timestamp < lastTimestamp && lastTimestamp - timestamp > range / 2) ++wraps;
    lastTimestamp = timestamp;
    return static_cast<double>(timestamp + wraps * range);
}

bool PointerRouter::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::TabletPress:
        case QEvent::TabletMove:
        case QEvent::TabletRelease: {
            auto* tablet = static_cast<QTabletEvent*>(event);
            Q_EMIT TabletArrived(tablet);
            Route(*tablet);
            event->accept();
            return true;
        }
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseMove:
        case QEvent::MouseButtonRelease:
            return Route(*static_cast<QMouseEvent*>(event));
        case QEvent::Leave:
            if (active == Active::None) Q_EMIT Left();
            break;
        default:
            break;
    }
    return QObject::eventFilter(watched, event);
}

void PointerRouter::Route(const QTabletEvent& event) {
    if (active == Active::Mouse) return;
    PointerEvent pointer;
    pointer.device = event.pointerType() == QPointingDevice::PointerType::Eraser
                         ? PointerEvent::Device::Eraser
                         : PointerEvent::Device::Pen;
    pointer.button = event.button();
    pointer.buttons = event.buttons();
    pointer.position = penPosition == PenPosition::Device
                           ? event.position()
                           : QPointF(viewport->mapFromGlobal(QCursor::pos()));
    pointer.pressure = static_cast<float>(event.pressure());
    SetTilt(pointer, event.xTilt(), event.yTilt());
    pointer.rotation = event.rotation();
    pointer.milliseconds = Unwrapped(event.timestamp());
    if (event.type() == QEvent::TabletPress) {
        pointer.kind = PointerEvent::Kind::Press;
        active = Active::Pen;
    } else if (event.type() == QEvent::TabletRelease) {
        pointer.kind = PointerEvent::Kind::Release;
        if (event.buttons() == Qt::NoButton) active = Active::None;
    } else if (active == Active::Pen && event.buttons() == Qt::NoButton) {
        SendLostRelease(pointer);
    }
    Send(pointer);
}

bool PointerRouter::Route(const QMouseEvent& event) {
    // QMouseEvent::source() does not identify mouse events made from a pen; the device does.
    if (IsPen(event.pointingDevice()) || active == Active::Pen) return true;
    PointerEvent pointer;
    pointer.button = event.button();
    pointer.buttons = event.buttons();
    pointer.position = event.position();
    pointer.milliseconds = Unwrapped(event.timestamp());
    if (event.type() == QEvent::MouseButtonPress || event.type() == QEvent::MouseButtonDblClick) {
        pointer.kind = PointerEvent::Kind::Press;
        active = Active::Mouse;
    } else if (event.type() == QEvent::MouseButtonRelease) {
        pointer.kind = PointerEvent::Kind::Release;
        if (event.buttons() == Qt::NoButton) active = Active::None;
    } else if (active == Active::Mouse && event.buttons() == Qt::NoButton) {
        SendLostRelease(pointer);
    }
    Send(pointer);
    return true;
}

// Some drivers and window managers do not deliver every release; without this function, the stroke
// would never end.
void PointerRouter::SendLostRelease(const PointerEvent& move) {
    active = Active::None;
    for (const Qt::MouseButton button : {Qt::LeftButton, Qt::MiddleButton, Qt::RightButton}) {
        PointerEvent release = move;
        release.kind = PointerEvent::Kind::Release;
        release.button = button;
        Send(release);
    }
}

void PointerRouter::Send(PointerEvent& event) {
    event.position *= viewport->devicePixelRatioF();
    Q_EMIT Pointer(event);
}

}  // namespace trovik::studio
