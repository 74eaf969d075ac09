// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "viewport/Camera.h"

#include <QImage>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <optional>

class QPainter;

namespace trovik::studio {

/// The cube in the upper right corner of the viewport. It shows how the world is turned; its faces,
/// edges and corners stand for 26 viewing directions. Positions are logical pixels of the widget.
class ViewCube {
public:
    /// Where the cube is drawn in a viewport.
    static QRectF Area(const QSizeF& viewport);

    /// Draws the cube as a camera sees the world's axes. Repeated calls with equal arguments copy
    /// an image.
    void Draw(QPainter& painter, const Camera& camera, const QSizeF& viewport);
    /// The direction in which to look for the part of the cube under a point, of length 1; nothing
    /// next to the cube.
    static std::optional<Vector> HitTest(const QPointF& point,
                                         const Camera& camera,
                                         const QSizeF& viewport);
    /// The up direction that goes with a viewing direction of HitTest.
    static Vector UpFor(const Vector& direction);
    /// Highlights the part that stands for a direction of HitTest. \return whether that is a
    /// change, so that a frame has to be drawn.
    bool SetHovered(const std::optional<Vector>& direction);

private:
    QImage Paint(const Camera& camera, qreal pixelRatio) const;

    std::optional<Vector> hovered;
    QImage image;
    /// What the image shows.
    Matrix paintedAxes;
    bool isPainted = false;
};

}  // namespace trovik::studio
