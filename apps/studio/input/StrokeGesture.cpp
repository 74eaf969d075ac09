// SPDX-License-Identifier: Apache-2.0
#include "input/StrokeGesture.h"

#include "engine/Engine.h"
#include "viewport/ViewportWidget.h"

#include <algorithm>

namespace trovik::studio {

namespace {

/// A pen that has reported nothing for so long rests.
constexpr qint64 restMilliseconds = 16;

}  // namespace

StrokeGesture::StrokeGesture(Engine& ofEngine,
                             ViewportWidget& onViewport,
                             const StrokeStart& start,
                             const PointerEvent& press)
    : engine(ofEngine), viewport(onViewport), pressTime(press.milliseconds) {
    viewport.SetStroking(true);
    engine.BeginStroke(start);
    Add(press);
}

void StrokeGesture::Add(const PointerEvent& event) {
    lastTime = std::max(lastTime, event.milliseconds - pressTime);
    engine.AddSamples({{static_cast<float>(event.position.x()),
                        static_cast<float>(event.position.y()),
                        event.pressure,
                        event.tiltX,
                        event.tiltY,
                        lastTime}});
    sinceSample.start();
}

void StrokeGesture::Move(const PointerEvent& event) { Add(event); }

void StrokeGesture::Tick() {
    if (sinceSample.elapsed() < restMilliseconds) return;
    lastTime += static_cast<double>(sinceSample.restart());
    engine.Tick(lastTime);
}

void StrokeGesture::Finish() {
    engine.EndStroke();
    viewport.SetStroking(false);
}

void StrokeGesture::Cancel() {
    engine.AbandonStroke();
    viewport.SetStroking(false);
}

}  // namespace trovik::studio
