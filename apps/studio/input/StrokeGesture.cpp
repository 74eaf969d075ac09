// SPDX-License-Identifier: Apache-2.0
#include "input/StrokeGesture.h"

#include "engine/Engine.h"
#include "viewport/ViewportWidget.h"

#include <algorithm>

namespace trovik::studio {

namespace {

/// A pen that has reported nothing for this long is considered to be at rest.
constexpr qint64 restMilliseconds = 16;

}  // namespace

StrokeGesture::StrokeGesture(Engine& ofEngine,
                             ViewportWidget& onViewport,
                             const StrokeStart& start,
                             const PointerEvent& press,
                             bool ringStays)
    : engine(ofEngine),
      viewport(onViewport),
      isRingFixed(ringStays),
      pressTime(press.milliseconds) {
    viewport.SetStroking(true);
    engine.BeginStroke(start);
    Add(press);
}

void StrokeGesture::Add(const PointerEvent& event) {
    // Decreasing times, which some drivers report, are passed on to the stroke's filter.
    const double time = std::max(0.0, event.milliseconds - pressTime);
    newestTime = std::max(newestTime, time);
    engine.AddSamples({{static_cast<float>(event.position.x()),
                        static_cast<float>(event.position.y()),
                        event.pressure,
                        event.tiltX,
                        event.tiltY,
                        time}});
    sinceSample.start();
}

void StrokeGesture::Move(const PointerEvent& event) { Add(event); }

std::optional<double> StrokeGesture::Tick() {
    if (sinceSample.elapsed() < restMilliseconds) return std::nullopt;
    const double time = pressTime + newestTime + static_cast<double>(sinceSample.restart());
    TickAt(time);
    return time;
}

void StrokeGesture::TickAt(double milliseconds) {
    newestTime = std::max(newestTime, milliseconds - pressTime);
    engine.Tick(newestTime);
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
