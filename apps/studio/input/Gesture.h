// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "input/PointerEvent.h"

#include <QStringList>

#include <optional>

namespace trovik::studio {

/// Something that a drag does, from press to release: a stroke, a motion of the camera, a change
/// of the radius, a selection. One is active at a time.
class Gesture {
public:
    virtual ~Gesture() = default;
    Gesture(const Gesture&) = delete;
    Gesture& operator=(const Gesture&) = delete;

    /// The pointer moved.
    virtual void Move(const PointerEvent& event) = 0;
    /// The gesture is complete.
    virtual void Finish() = 0;
    /// The gesture is abandoned; nothing of it stays.
    virtual void Cancel() = 0;
    /// A digit, '.', '-' or backspace, for gestures that take a number. \return whether it was
    /// taken.
    virtual bool Type(int /*key*/, const QString& /*text*/) { return false; }
    /// Called 60 times a second. \return a time that has an effect on what the gesture does, to be
    /// recorded for TickAt: milliseconds on the clock of pointer events.
    virtual std::optional<double> Tick() { return std::nullopt; }
    /// Has the effect that Tick had at a recorded time.
    virtual void TickAt(double /*milliseconds*/) {}
    /// Shown over the viewport.
    virtual QStringList Hud() const { return {}; }
    /// Whether it goes on when no button is down, until a press or a key ends it.
    virtual bool GoesOnWithoutButton() const { return false; }
    /// Whether the brush ring follows the pointer during it.
    virtual bool MovesRing() const { return false; }

protected:
    Gesture() = default;
};

}  // namespace trovik::studio
