// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "input/PointerEvent.h"

#include <QStringList>

#include <optional>

namespace trovik::studio {

/// The operation that a drag performs, from press to release: a stroke, a camera motion, a change
/// of the radius, or a selection. Only one is active at a time.
class Gesture {
public:
    virtual ~Gesture() = default;
    Gesture(const Gesture&) = delete;
    Gesture& operator=(const Gesture&) = delete;

    /// The pointer moved.
    virtual void Move(const PointerEvent& event) = 0;
    /// The gesture is complete.
    virtual void Finish() = 0;
    /// The gesture is cancelled and has no effect.
    virtual void Cancel() = 0;
    /// A digit, '.', '-' or backspace, for gestures that accept a number. \return whether it was
    /// accepted.
    virtual bool Type(int /*key*/, const QString& /*text*/) { return false; }
    /// Called 60 times a second. \return the timestamp of a tick that affects the gesture, to be
    /// recorded for TickAt, in milliseconds on the clock of pointer events; otherwise empty.
    virtual std::optional<double> Tick() { return std::nullopt; }
    /// Repeats the effect of Tick at a recorded time.
    virtual void TickAt(double /*milliseconds*/) {}
    /// Lines of text that are shown over the viewport.
    virtual QStringList Hud() const { return {}; }
    /// Whether the gesture continues while no button is pressed, until a press or a key ends it.
    virtual bool GoesOnWithoutButton() const { return false; }
    /// Whether the brush ring follows the pointer during the gesture.
    virtual bool MovesRing() const { return false; }

protected:
    Gesture() = default;
};

}  // namespace trovik::studio
