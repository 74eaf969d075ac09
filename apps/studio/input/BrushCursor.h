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
    /// The effect of the next stroke, which determines the appearance of the rings.
    void SetColor(const QColor& color);
    /// Shows this radius, in device pixels, instead of the brush radius while the radius is being
    /// changed; 0 ends this.
    void SetPreviewRadius(double pixels);
    /// The last pointer position; empty after Hide.
    const std::optional<QPointF>& Position() const { return position; }
    /// The last result of a pick.
    const HoverHit& Hit() const { return hit; }
    /// The last position on the surface, for orbits; empty before the first one.
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
