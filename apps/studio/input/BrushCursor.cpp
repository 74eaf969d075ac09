// SPDX-License-Identifier: Apache-2.0
#include "input/BrushCursor.h"

#include "engine/Engine.h"
#include "framework/brushes/Falloff.h"
#include "viewport/ViewportWidget.h"

#include <cmath>

namespace trovik::studio {

namespace {

/// Number of samples in the falloff preview.
constexpr int falloffSamples = 64;

std::vector<float> FalloffOf(const Engine& engine) {
    const ToolSetting* setting = engine.Setting("falloff");
    std::vector<float> samples;
    if (setting == nullptr || !setting->applies) return samples;
    if (setting->value.is_array()) return setting->value.get<std::vector<float>>();
    if (!setting->value.is_string()) return samples;
    const int index = FalloffIndexOf(setting->value.get<std::string>());
    if (index < 0) return samples;
    for (int i = 0; i < falloffSamples; ++i)
        samples.push_back(FalloffValue(index, static_cast<float>(i) / (falloffSamples - 1)));
    return samples;
}

}  // namespace

BrushCursor::BrushCursor(Engine& ofEngine, ViewportWidget& onViewport, QObject* parent)
    : QObject(parent), engine(ofEngine), viewport(onViewport) {
    connect(&engine, &Engine::HoverPicked, this, [this](const HoverHit& picked) {
        hit = picked;
        if (hit.isHit) lastOnSurface = hit.position;
        Show();
    });
    const auto pickAgain = [this] {
        if (position) MoveTo(*position);
    };
    // A dab, a step or a change of the radius may have changed the surface or the ring under a
    // resting pointer.
    connect(&engine, &Engine::StateChanged, this, pickAgain);
    connect(&viewport, &ViewportWidget::CameraChanged, this, pickAgain);
    connect(&engine, &Engine::SettingsChanged, this, [this] { falloff = FalloffOf(engine); });
    connect(&engine, &Engine::Opened, this, [this] { lastOnSurface.reset(); });
}

void BrushCursor::MoveTo(const QPointF& to) {
    position = to;
    engine.Pick(static_cast<float>(to.x()), static_cast<float>(to.y()));
}

void BrushCursor::Hide() {
    position.reset();
    hit = {};
    Show();
}

void BrushCursor::SetColor(const QColor& newColor) {
    if (color == newColor) return;
    color = newColor;
    Show();
}

void BrushCursor::SetPreviewRadius(double pixels) {
    previewRadius = pixels;
    Show();
}

double BrushCursor::RadiusInPixels() const {
    if (!hit.isHit) return 0.0;
    // A length perpendicular to the view direction covers the same number of pixels in every
    // direction.
    const Camera& camera = viewport.View();
    const Vector side = ((camera.Target() - camera.Eye()) & camera.Up()).Normalized() * hit.radius;
    const Vector centre = camera.ToPixel(hit.position);
    const Vector rim = camera.ToPixel(hit.position + side);
    return std::hypot(rim.x - centre.x, rim.y - centre.y);
}

void BrushCursor::Show() {
    Overlays overlays = viewport.Shown();
    overlays.ring.reset();
    overlays.mirroredRings.clear();
    if (position && hit.isHit) {
        const double pixels = RadiusInPixels();
        const double scale = previewRadius > 0.0 && pixels > 0.0 ? previewRadius / pixels : 1.0;
        const float radius = hit.radius * static_cast<float>(scale);
        overlays.ring = BrushRing{hit.position, hit.normal, radius, color, falloff};
        for (const HoverHit::Mirrored& mirrored : hit.mirrored)
            overlays.mirroredRings.push_back(
                {mirrored.position, mirrored.normal, radius, color, {}});
    }
    viewport.SetOverlays(overlays);
}

}  // namespace trovik::studio
