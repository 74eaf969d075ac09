// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/PressureCurve.h"

#include <QWidget>

#include <vector>

namespace trovik::studio {

/// Shows and edits the control points of a curve from 0 to 1, for falloffs and pressure. A drag
/// moves a point, a double click adds one, and a right click removes one. Between the points, the
/// curve is that of PressureCurve, which the engine also uses.
class CurveEditor : public QWidget {
    Q_OBJECT
public:
    using Points = std::vector<PressureCurve::Point>;

    CurveEditor(const QString& name, const QString& tip, QWidget* parent);

    const Points& Value() const { return points; }
    /// Shows a curve of at least two points with ascending pressures. Ignored during a drag.
    void SetValue(const Points& shown);
    /// Labels at the left and right ends of the horizontal axis.
    void SetAxis(const QString& left, const QString& right);
    /// The curve's values at `count` positions from 0 to 1.
    std::vector<float> Samples(std::size_t count) const;
    /// The widget position of a curve point.
    QPointF PositionOf(const PressureCurve::Point& point) const;

    QSize sizeHint() const override;

Q_SIGNALS:
    /// The curve changes during a drag.
    void Dragged();
    /// The user has changed the curve.
    void Edited();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    QRectF Area() const;
    /// Index of the point near a position; -1 if there is none.
    int PointAt(const QPointF& position) const;
    PressureCurve::Point PointOf(const QPointF& position) const;
    void Remove(int index);

    QString leftText, rightText;
    Points points{{0.0f, 0.0f}, {1.0f, 1.0f}};
    int dragged = -1;
    bool hasMoved = false;
};

}  // namespace trovik::studio
