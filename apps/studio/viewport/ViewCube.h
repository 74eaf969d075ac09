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

/// The cube in the top right corner of the viewport. It shows the orientation of the world; its
/// faces, edges and corners represent 26 view directions. Positions are in logical pixels of the
/// widget.
class ViewCube {
public:
    /// The area of a viewport in which the cube is drawn.
    static QRectF Area(const QSizeF& viewport);

    /// Draws the cube with the orientation in which a camera sees the world. Repeated calls with
    /// equal arguments copy a cached image.
    void Draw(QPainter& painter, const Camera& camera, const QSizeF& viewport);
    /// The view direction, of length 1, represented by the part of the cube under a point; empty
    /// off the cube.
    static std::optional<Vector> HitTest(const QPointF& point,
                                         const Camera& camera,
                                         const QSizeF& viewport);
    /// The up direction for a view direction returned by HitTest.
    static Vector UpFor(const Vector& direction);
    /// Highlights the part that represents a direction returned by HitTest. \return whether the
    /// highlight has changed, so that a frame has to be drawn.
    bool SetHovered(const std::optional<Vector>& direction);

private:
    QImage Paint(const Camera& camera, qreal pixelRatio) const;

    std::optional<Vector> hovered;
    QImage image;
    /// The state shown by the cached image.
    Matrix paintedAxes;
    bool isPainted = false;
};

}  // namespace trovik::studio
