// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/EngineMessages.h"

#include <QColor>
#include <QObject>
#include <QPointF>

#include <optional>

namespace trovik::studio {

class Engine;
class ViewportWidget;

/// The ring on the surface that shows the position and actual radius of the next dab, and the rings
/// for mirrored dabs. The engine picks the surface when it is idle; during long jobs the ring does
/// not move.
class BrushCursor : public QObject {
    Q_OBJECT
public:
    BrushCursor(Engine& engine, ViewportWidget& viewport, QObject* parent);

    /// Sets the pointer position, in device pixels, and requests a pick.
    void MoveTo(const QPointF& position);
    void Hide();
    /// Sets the colour of the rings, which indicates the effect of the next stroke.
    void SetColor(const QColor& color);
    /// Shows this radius, in device pixels, instead of the brush radius while the radius is being
    /// changed; 0 restores the brush radius.
    void SetPreviewRadius(double pixels);
    /// The last pointer position; empty after Hide.
    const std::optional<QPointF>& Position() const { return position; }
    /// The last result of a pick.
    const HoverHit& Hit() const { return hit; }
    /// The last pointer position on the surface, about which the camera orbits; empty before the
    /// pointer first reaches the surface.
    const std::optional<Vector>& LastOnSurface() const { return lastOnSurface; }
    /// Radius of a dab at the last hit, in device pixels; 0 if there is none.
    double RadiusInPixels() const;

private:
    void Show();

    Engine& engine;
    ViewportWidget& viewport;
    std::optional<QPointF> position;
    HoverHit hit;
    std::optional<Vector> lastOnSurface;
    QColor color = Qt::white;
    double previewRadius = 0.0;
    std::vector<float> falloff;
};

}  // namespace trovik::studio
