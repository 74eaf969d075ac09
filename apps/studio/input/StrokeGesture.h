// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/EngineMessages.h"
#include "input/Gesture.h"

#include <QElapsedTimer>

namespace trovik::studio {

class Engine;
class ViewportWidget;

/// A live stroke. Every sample reaches the engine; while the pen rests, ticks do.
class StrokeGesture final : public Gesture {
public:
    /// Begins the stroke with the press.
    StrokeGesture(Engine& engine,
                  ViewportWidget& viewport,
                  const StrokeStart& start,
                  const PointerEvent& press);

    void Move(const PointerEvent& event) override;
    void Finish() override;
    void Cancel() override;
    std::optional<double> Tick() override;
    void TickAt(double milliseconds) override;
    bool MovesRing() const override { return true; }

private:
    void Add(const PointerEvent& event);

    Engine& engine;
    ViewportWidget& viewport;
    double pressTime;
    /// Milliseconds since the press of the newest sample or tick.
    double newestTime = 0.0;
    QElapsedTimer sinceSample;
};

}  // namespace trovik::studio
