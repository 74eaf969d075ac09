// SPDX-License-Identifier: Apache-2.0
#include "viewport/Hud.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace trovik::studio {

namespace {

constexpr qreal margin = 12.0;
/// Margin around the text for its shadow.
constexpr qreal padding = 4.0;

QPolygonF ToLogical(const std::vector<std::array<float, 2>>& points, qreal pixelRatio) {
    QPolygonF polygon;
    for (const auto& [x, y] : points) polygon.append(QPointF(x, y) / pixelRatio);
    return polygon;
}

}  // namespace

bool Hud::SetLines(const QStringList& newLines) {
    if (newLines == lines) return false;
    lines = newLines;
    image = {};
    return true;
}

QImage Hud::Paint(const QFont& font, qreal pixelRatio) const {
    const QFontMetricsF metrics(font);
    qreal width = 0.0;
    for (const QString& line : lines) width = std::max(width, metrics.horizontalAdvance(line));
    const qreal lineHeight = std::ceil(metrics.height() * 1.15);
    const QSizeF size(width + 2 * padding,
                      lineHeight * static_cast<qreal>(lines.size()) + 2 * padding);
    QImage painted((size * pixelRatio).toSize() + QSize(1, 1), QImage::Format_ARGB32_Premultiplied);
    painted.setDevicePixelRatio(pixelRatio);
    painted.fill(Qt::transparent);
    QPainter painter(&painted);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(font);
    QPainterPath text;
    for (int i = 0; i < lines.size(); ++i)
        text.addText(padding, padding + metrics.ascent() + lineHeight * i, font, lines[i]);
    // A soft edge around the glyphs and a shadow below them, for light surfaces.
    for (const qreal outline : {3.5, 2.0})
        painter.strokePath(
            text.translated(0.0, 0.6),
            QPen(QColor(0, 0, 0, 70), outline, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setPen(QColor(236, 238, 242));
    for (int i = 0; i < lines.size(); ++i)
        painter.drawText(QPointF(padding, padding + metrics.ascent() + lineHeight * i), lines[i]);
    return painted;
}

void Hud::DrawLines(QPainter& painter, const QSizeF& viewport) {
    if (lines.isEmpty()) return;
    const qreal pixelRatio = painter.device()->devicePixelRatioF();
    if (image.isNull() || image.devicePixelRatio() != pixelRatio)
        image = Paint(painter.font(), pixelRatio);
    const qreal height = image.height() / pixelRatio;
    painter.drawImage(QPointF(margin - padding, viewport.height() - height - margin + padding),
                      image);
}

void Hud::DrawOutlines(QPainter& painter, const Overlays& overlays) {
    const qreal pixelRatio = painter.device()->devicePixelRatioF();
    painter.setRenderHint(QPainter::Antialiasing);
    if (overlays.lazyString.size() > 1) {
        const QPolygonF string = ToLogical(overlays.lazyString, pixelRatio);
        painter.setPen(QPen(QColor(0, 0, 0, 110), 3.0, Qt::SolidLine, Qt::RoundCap));
        painter.drawPolyline(string);
        painter.setPen(QPen(QColor(242, 153, 60), 1.5, Qt::SolidLine, Qt::RoundCap));
        painter.drawPolyline(string);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(242, 153, 60));
        painter.drawEllipse(string.last(), 2.5, 2.5);
        painter.setBrush(Qt::NoBrush);
    }
    if (overlays.selection.size() > 1) {
        const QPolygonF outline = ToLogical(overlays.selection, pixelRatio);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(255, 255, 255, 18));
        painter.drawPolygon(outline);
        painter.setBrush(Qt::NoBrush);
        // A dark line below the dashes keeps them visible on every surface.
        painter.setPen(QPen(QColor(0, 0, 0, 170), 1.5));
        painter.drawPolygon(outline);
        QPen dashes(QColor(255, 255, 255, 235), 1.5);
        dashes.setDashPattern({4.0, 4.0});
        painter.setPen(dashes);
        painter.drawPolygon(outline);
    }
}

}  // namespace trovik::studio
