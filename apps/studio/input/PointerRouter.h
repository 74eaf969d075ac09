// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "input/PointerEvent.h"

#include <QObject>

#include <optional>

class QMouseEvent;
class QPointingDevice;
class QTabletEvent;
class QWidget;

namespace trovik::studio {

/// Whether a device, which may be null, is a pen.
bool IsPen(const QPointingDevice* device);

/// Merges the tablet and mouse events of a widget into one stream of pointer events. Between press
/// and release of one device, the other is ignored, and mouse events that the window system
/// synthesises from pen events are dropped, so that no stroke is drawn twice. All tablet events
/// over the widget are accepted; otherwise Qt drops the rest of a drag.
class PointerRouter : public QObject {
    Q_OBJECT
public:
    /// The source of pen positions: the tablet, which reports fractions of a pixel, or the cursor,
    /// for tablets that are mapped to only part of the desktop.
    enum class PenPosition { Device, Cursor };

    explicit PointerRouter(QWidget* viewport);

    void SetPenPosition(PenPosition source) { penPosition = source; }

Q_SIGNALS:
    void Pointer(const trovik::studio::PointerEvent& event);
    /// Sent for every tablet event, before any is dropped; for the tablet tester.
    void TabletArrived(const QTabletEvent* event);
    void Left();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    enum class Active { None, Pen, Mouse };

    void Route(const QTabletEvent& event);
    /// \return whether the event was accepted.
    bool Route(const QMouseEvent& event);
    void Send(PointerEvent& event);
    /// Releases all buttons. Called when a motion without buttons shows that a release was lost.
    void SendLostRelease(const PointerEvent& move);
    double Unwrapped(quint64 timestamp);

    QWidget* viewport;
    PenPosition penPosition = PenPosition::Device;
    Active active = Active::None;
    Qt::MouseButtons penButtons;
    /// State of the window system's 32-bit counter.
    quint64 lastTimestamp = 0;
    quint64 wraps = 0;
};

}  // namespace trovik::studio
