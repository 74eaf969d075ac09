// SPDX-License-Identifier: Apache-2.0
#include "panels/CurveEditor.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace trovik::studio {

namespace {

constexpr double grabDistance = 10.0;
/// Minimum distance between two points along the axis.
constexpr float pointGap = 0.01f;
constexpr int gridLines = 4;

}  // namespace

CurveEditor::CurveEditor(const QString& name, const QString& tip, QWidget* parent)
    : QWidget(parent) {
    setFocusPolicy(Qt::NoFocus);
    setAccessibleName(name);
    setToolTip(tip);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setMouseTracking(true);
}

QSize CurveEditor::sizeHint() const { return {180, 104}; }

void CurveEditor::SetAxis(const QString& left, const QString& right) {
    leftText = left;
    rightText = right;
    update();
}

void CurveEditor::SetValue(const Points& shown) {
    std::size_t index = 0;
    if (dragged >= 0 || PressureCurve::Flaw(shown, index)) return;
    points = shown;
    update();
}

std::vector<float> CurveEditor::Samples(std::size_t count) const {
    const PressureCurve curve(points);
    std::vector<float> samples(count);
    for (std::size_t i = 0; i < count; ++i)
        samples[i] = curve.At(static_cast<float>(i) / static_cast<float>(count - 1));
    return samples;
}

QRectF CurveEditor::Area() const { return QRectF(rect()).adjusted(6.5, 6.5, -6.5, -6.5); }

QPointF CurveEditor::PositionOf(const PressureCurve::Point& point) const {
    const QRectF area = Area();
    return {area.left() + static_cast<double>(point.pressure) * area.width(),
            area.bottom() - static_cast<double>(point.value) * area.height()};
}

PressureCurve::Point CurveEditor::PointOf(const QPointF& position) const {
    const QRectF area = Area();
    return {
        static_cast<float>(std::clamp((position.x() - area.left()) / area.width(), 0.0, 1.0)),
        static_cast<float>(std::clamp((area.bottom() - position.y()) / area.height(), 0.0, 1.0))};
}

int CurveEditor::PointAt(const QPointF& position) const {
    int nearest = -1;
    double best = grabDistance;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const QPointF offset = PositionOf(points[i]) - position;
        const double distance = std::hypot(offset.x(), offset.y());
        if (distance > best) continue;
        best = distance;
        nearest = static_cast<int>(i);
    }
    return nearest;
}

void CurveEditor::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled()) painter.setOpacity(0.4);
    painter.setPen(QPen(palette().color(QPalette::Mid), 1));
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 3, 3);
    const QRectF area = Area();
    QColor faint = palette().color(QPalette::WindowText);
    faint.setAlphaF(0.1f);
    painter.setPen(QPen(faint, 1));
    for (int i = 0; i <= gridLines; ++i) {
        const double x = area.left() + area.width() * i / gridLines;
        const double y = area.top() + area.height() * i / gridLines;
        painter.drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
        painter.drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
    }
    const PressureCurve curve(points);
    QPainterPath line;
    const int steps = std::max(width(), 2);
    for (int i = 0; i <= steps; ++i) {
        const float x = static_cast<float>(i) / static_cast<float>(steps);
        const QPointF position = PositionOf({x, curve.At(x)});
        i == 0 ? line.moveTo(position) : line.lineTo(position);
    }
    QPainterPath below = line;
    below.lineTo(area.bottomRight());
    below.lineTo(area.bottomLeft());
    QColor accent = palette().color(QPalette::Highlight);
    accent.setAlphaF(0.22f);
    painter.fillPath(below, accent);
    accent.setAlphaF(1.0f);
    painter.setPen(QPen(accent.lighter(115), 1.8));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(line);
    faint.setAlphaF(0.55f);
    painter.setPen(faint);
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    painter.setFont(small);
    const QRectF texts = area.adjusted(3, 2, -3, -1);
    painter.drawText(texts, Qt::AlignLeft | Qt::AlignBottom, leftText);
    painter.drawText(texts, Qt::AlignRight | Qt::AlignBottom, rightText);
    painter.setBrush(palette().color(QPalette::WindowText));
    painter.setPen(QPen(palette().color(QPalette::Base), 1));
    for (std::size_t i = 0; i < points.size(); ++i) {
        const double radius = static_cast<int>(i) == dragged ? 5.0 : 3.8;
        painter.drawEllipse(PositionOf(points[i]), radius, radius);
    }
}

void CurveEditor::mousePressEvent(QMouseEvent* event) {
    const int index = PointAt(event->position());
    if (event->button() == Qt::RightButton) {
        Remove(index);
        return;
    }
    if (event->button() != Qt::LeftButton) return;
    dragged = index;
    hasMoved = false;
    update();
}

void CurveEditor::mouseMoveEvent(QMouseEvent* event) {
    if (dragged < 0) {
        setCursor(PointAt(event->position()) >= 0 ? Qt::PointingHandCursor : Qt::ArrowCursor);
        return;
    }
    const auto at = static_cast<std::size_t>(dragged);
    PressureCurve::Point moved = PointOf(event->position());
    // Points keep their order, and the end points stay at the ends of the axis.
    if (at == 0)
        moved.pressure = points[0].pressure;
    else if (at + 1 == points.size())
        moved.pressure = points[at].pressure;
    else
        moved.pressure = std::clamp(
            moved.pressure, points[at - 1].pressure + pointGap, points[at + 1].pressure - pointGap);
    points[at] = moved;
    hasMoved = true;
    update();
    Q_EMIT Dragged();
}

void CurveEditor::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || dragged < 0) return;
    dragged = -1;
    update();
    if (hasMoved) Q_EMIT Edited();
}

void CurveEditor::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || PointAt(event->position()) >= 0) return;
    if (points.size() >= PressureCurve::maxCurvePoints) return;
    const PressureCurve::Point added = PointOf(event->position());
    const auto after = std::find_if(points.begin(), points.end(), [&](const auto& point) {
        return point.pressure > added.pressure;
    });
    // There is no room between the two points, or the position is beyond the ends.
    if (after == points.begin() || after == points.end() ||
        after->pressure - added.pressure < pointGap ||
        added.pressure - std::prev(after)->pressure < pointGap)
        return;
    points.insert(after, added);
    update();
    Q_EMIT Edited();
}

void CurveEditor::Remove(int index) {
    if (index <= 0 || index + 1 >= static_cast<int>(points.size())) return;
    points.erase(points.begin() + index);
    update();
    Q_EMIT Edited();
}

}  // namespace trovik::studio
