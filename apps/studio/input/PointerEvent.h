// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPointF>
#include <Qt>

namespace trovik::studio {

/// An event of a pen or mouse over the viewport.
struct PointerEvent {
    enum class Kind { Press, Move, Release };
    enum class Device { Mouse, Pen, Eraser };

    Kind kind = Kind::Move;
    Device device = Device::Mouse;
    /// The button that was pressed or released. A pen's tip is the left button; its barrel buttons
    /// are the middle and the right one.
    Qt::MouseButton button = Qt::NoButton;
    /// All buttons that are pressed after the event.
    Qt::MouseButtons buttons;
    /// Position in the viewport, in device pixels with fractions.
    QPointF position;
    /// Pressure from 0 to 1; 1 for a mouse.
    float pressure = 1.0f;
    /// As in PathSample::tilt.
    float tiltX = 0.0f, tiltY = 0.0f;
    /// Rotation about the pen's axis in degrees, if the device reports it.
    double rotation = 0.0;
    /// Timestamp of the device, in milliseconds. It increases even when the window system's counter
    /// wraps around.
    double milliseconds = 0.0;
};

}  // namespace trovik::studio
