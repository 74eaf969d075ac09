// SPDX-License-Identifier: Apache-2.0
#include "viewport/ViewCube.h"

#include <QCoreApplication>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <array>
#include <cmath>

namespace trovik::studio {

namespace {

constexpr qreal areaSize = 104.0;
constexpr qreal margin = 10.0;
/// Half the length of an edge, in logical pixels.
constexpr qreal halfEdge = 27.0;
/// Threshold above which a cube coordinate, -1 to 1, belongs to the adjacent face as well.
constexpr float edgeStart = 0.56f;

struct Face {
    const char* label;
    Vector normal;
    /// Right and up directions of the label.
    Vector right;
    Vector up;
};

const std::array<Face, 6> faces = {{
    {QT_TRANSLATE_NOOP("ViewCube", "Front"), {0, 0, 1}, {1, 0, 0}, {0, 1, 0}},
    {QT_TRANSLATE_NOOP("ViewCube", "Back"), {0, 0, -1}, {-1, 0, 0}, {0, 1, 0}},
    {QT_TRANSLATE_NOOP("ViewCube", "Right"), {1, 0, 0}, {0, 0, -1}, {0, 1, 0}},
    {QT_TRANSLATE_NOOP("ViewCube", "Left"), {-1, 0, 0}, {0, 0, 1}, {0, 1, 0}},
    {QT_TRANSLATE_NOOP("ViewCube", "Top"), {0, 1, 0}, {1, 0, 0}, {0, 0, -1}},
    {QT_TRANSLATE_NOOP("ViewCube", "Bottom"), {0, -1, 0}, {1, 0, 0}, {0, 0, 1}},
}};

/// Camera directions; the rows are right, up, back.
struct Axes {
    explicit Axes(const Camera& camera) : matrix(camera.ToStrokeView().ToWorld()) {
        // The position of the eye has no effect.
        for (float& value : matrix.m[3]) value = 0.0f;
    }
    Vector Row(int row) const { return {matrix.m[row][0], matrix.m[row][1], matrix.m[row][2]}; }
    /// Converts cube coordinates to pixels, measured from the centre with y down.
    QPointF ToPixel(const Vector& p) const {
        return {(p | Row(0)) * halfEdge, -(p | Row(1)) * halfEdge};
    }

    Matrix matrix;
};

/// Returns -1, 0 or 1 per axis, which identifies the face, edge or corner that a point on the cube
/// belongs to.
Vector PartAt(const Vector& point) {
    const auto part = [](float value) {
        return value > edgeStart ? 1.0f : value < -edgeStart ? -1.0f : 0.0f;
    };
    return {part(point.x), part(point.y), part(point.z)};
}

/// The range of cube coordinates that a part covers along one axis.
std::array<float, 2> RangeOf(float part) {
    if (part > 0.0f) return {edgeStart, 1.0f};
    if (part < 0.0f) return {-1.0f, -edgeStart};
    return {-edgeStart, edgeStart};
}

}  // namespace

QRectF ViewCube::Area(const QSizeF& viewport) {
    return {viewport.width() - areaSize - margin, margin, areaSize, areaSize};
}

bool ViewCube::SetHovered(const std::optional<Vector>& direction) {
    if (hovered == direction) return false;
    hovered = direction;
    isPainted = false;
    return true;
}

QImage ViewCube::Paint(const Camera& camera, qreal pixelRatio) const {
    const int pixels = static_cast<int>(std::ceil(areaSize * pixelRatio));
    QImage painted(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    painted.setDevicePixelRatio(pixelRatio);
    painted.fill(Qt::transparent);
    QPainter painter(&painted);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(areaSize * 0.5, areaSize * 0.5);

    const Axes axes(camera);
    QFont font = painter.font();
    font.setPixelSize(26);
    font.setWeight(QFont::DemiBold);
    for (const Face& face : faces) {
        const float facing = face.normal | axes.Row(2);
        if (facing <= 0.01f) continue;
        const auto corner = [&](float x, float y) {
            return axes.ToPixel(face.normal + face.right * x + face.up * y);
        };
        const QPolygonF outline({corner(-1, 1), corner(1, 1), corner(1, -1), corner(-1, -1)});
        const int grey = static_cast<int>(92.0f + 92.0f * facing);
        painter.setPen(
            QPen(QColor(24, 26, 30, 210), 1.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.setBrush(QColor(grey, grey + 2, grey + 6, 232));
        painter.drawPolygon(outline);

        if (hovered.has_value()) {
            const Vector part = PartAt(-*hovered * 2.0f);
            if ((part | face.normal) > 0.5f) {
                const auto across = RangeOf(part | face.right);
                const auto along = RangeOf(part | face.up);
                painter.setPen(Qt::NoPen);
                painter.setBrush(QColor(242, 153, 60, 220));
                painter.drawPolygon(QPolygonF({corner(across[0], along[1]),
                                               corner(across[1], along[1]),
                                               corner(across[1], along[0]),
                                               corner(across[0], along[0])}));
            }
        }

        // The label is drawn flat on the face.
        constexpr qreal side = 100.0;
        QTransform onFace;
        if (!QTransform::quadToQuad(
                QPolygonF({{0, 0}, {side, 0}, {side, side}, {0, side}}), outline, onFace))
            continue;
        QPainterPath text;
        text.addText(0, 0, font, QCoreApplication::translate("ViewCube", face.label));
        const QRectF bounds = text.boundingRect();
        text.translate(side * 0.5 - bounds.center().x(), side * 0.5 - bounds.center().y());
        QColor ink(28, 30, 34);
        ink.setAlphaF(std::clamp(facing * 1.6f - 0.2f, 0.0f, 1.0f));
        painter.fillPath(onFace.map(text), ink);
    }
    return painted;
}

void ViewCube::Draw(QPainter& painter, const Camera& camera, const QSizeF& viewport) {
    const qreal pixelRatio = painter.device()->devicePixelRatioF();
    const Matrix axes = Axes(camera).matrix;
    if (!isPainted || !(paintedAxes == axes) || image.devicePixelRatio() != pixelRatio) {
        image = Paint(camera, pixelRatio);
        paintedAxes = axes;
        isPainted = true;
    }
    painter.drawImage(Area(viewport).topLeft(), image);
}

std::optional<Vector> ViewCube::HitTest(const QPointF& point,
                                        const Camera& camera,
                                        const QSizeF& viewport) {
    const QPointF offset = point - Area(viewport).center();
    const Axes axes(camera);
    // Intersects a ray along the view direction with the three visible faces.
    const Vector onView = axes.Row(0) * static_cast<float>(offset.x() / halfEdge) -
                          axes.Row(1) * static_cast<float>(offset.y() / halfEdge);
    for (const Face& face : faces) {
        const float facing = face.normal | axes.Row(2);
        if (facing <= 0.01f) continue;
        const Vector hit = onView + axes.Row(2) * ((1.0f - (onView | face.normal)) / facing);
        if (std::abs(hit | face.right) > 1.0f || std::abs(hit | face.up) > 1.0f) continue;
        return -PartAt(hit).Normalized();
    }
    return std::nullopt;
}

Vector ViewCube::UpFor(const Vector& direction) {
    if (std::abs(direction.y) < 0.99f) return {0.0f, 1.0f, 0.0f};
    return {0.0f, 0.0f, direction.y < 0.0f ? -1.0f : 1.0f};
}

}  // namespace trovik::studio
