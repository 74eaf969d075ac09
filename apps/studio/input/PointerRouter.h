// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "input/PointerEvent.h"

#include <QObject>

#include <optional>

class QMouseEvent;
class QTabletEvent;
class QWidget;

namespace trovik::studio {

/// Turns the tablet and mouse events of a widget into one stream of pointer events. Between press
/// and release of one device the other one is ignored, and mouse events that the window system
/// makes of a pen's are dropped, so that no stroke is drawn twice. All tablet events over the
/// widget are accepted; otherwise Qt drops the rest of a drag.
class PointerRouter : public QObject {
    Q_OBJECT
public:
    /// Where positions of pens come from: the tablet with its fractions of a pixel, or the cursor,
    /// for tablets that are mapped to a part of the screens.
    enum class PenPosition { Device, Cursor };

    explicit PointerRouter(QWidget* viewport);

    void SetPenPosition(PenPosition source) { penPosition = source; }

Q_SIGNALS:
    void Pointer(const trovik::studio::PointerEvent& event);
    /// Every tablet event as it came, before anything is dropped; for the tablet tester.
    void TabletArrived(const QTabletEvent* event);
    void Left();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    enum class Active { None, Pen, Mouse };

    void Route(const QTabletEvent& event);
    /// \return whether the event was taken.
    bool Route(const QMouseEvent& event);
    void Send(PointerEvent& event);
    double Unwrapped(quint64 timestamp);

    QWidget* viewport;
    PenPosition penPosition = PenPosition::Device;
    Active active = Active::None;
    Qt::MouseButtons penButtons;
    /// Of the window system's counter of 32 bits.
    quint64 lastTimestamp = 0;
    quint64 wraps = 0;
};

}  // namespace trovik::studio
