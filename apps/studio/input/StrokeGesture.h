// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/EngineMessages.h"
#include "input/Gesture.h"

#include <QElapsedTimer>

namespace trovik::studio {

class Engine;
class ViewportWidget;

/// A live stroke. Every sample is sent to the engine; while the pen is at rest, ticks are sent.
class StrokeGesture final : public Gesture {
public:
    /// Begins the stroke with the press.
    /// \param ringStays  whether the brush ring stays at the press point.
    StrokeGesture(Engine& engine,
                  ViewportWidget& viewport,
                  const StrokeStart& start,
                  const PointerEvent& press,
                  bool ringStays);

    void Move(const PointerEvent& event) override;
    void Finish() override;
    void Cancel() override;
    std::optional<double> Tick() override;
    void TickAt(double milliseconds) override;
    bool MovesRing() const override { return !isRingFixed; }

private:
    void Add(const PointerEvent& event);

    Engine& engine;
    ViewportWidget& viewport;
    bool isRingFixed;
    double pressTime;
    /// Time of the newest sample or tick, in milliseconds since the press.
    double newestTime = 0.0;
    QElapsedTimer sinceSample;
};

}  // namespace trovik::studio
