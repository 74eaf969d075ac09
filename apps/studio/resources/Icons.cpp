// SPDX-License-Identifier: Apache-2.0
#include "resources/Icons.h"

#include <QApplication>
#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>

// Q_INIT_RESOURCE does not work inside a namespace.
static void InitStudioResources() { Q_INIT_RESOURCE(studio); }

namespace trovik::studio {

namespace {

class LineIcon : public QIconEngine {
public:
    LineIcon(QByteArray given, QColor fixed) : svg(std::move(given)), color(fixed) {}

    void paint(QPainter* painter, const QRect& area, QIcon::Mode mode, QIcon::State) override {
        const QPalette palette = QApplication::palette();
        QColor ink = color.isValid()           ? color
                     : mode == QIcon::Selected ? palette.color(QPalette::HighlightedText)
                                               : palette.color(QPalette::ButtonText);
        QByteArray text = svg;
        text.replace("#000", ink.name(QColor::HexRgb).toLatin1());
        QSvgRenderer renderer(text);
        const double before = painter->opacity();
        if (mode == QIcon::Disabled) painter->setOpacity(before * 0.35);
        painter->setRenderHint(QPainter::Antialiasing);
        const double side = std::min(area.width(), area.height());
        renderer.render(painter,
                        QRectF(area.x() + (area.width() - side) / 2.0,
                               area.y() + (area.height() - side) / 2.0,
                               side,
                               side));
        painter->setOpacity(before);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap drawn(size);
        drawn.fill(Qt::transparent);
        QPainter painter(&drawn);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return drawn;
    }

    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State state, qreal) override {
        return pixmap(size, mode, state);
    }

    QIconEngine* clone() const override { return new LineIcon(*this); }

private:
    QByteArray svg;
    QColor color;
};

}  // namespace

void InitResources() {
    static const bool isDone = [] {
        InitStudioResources();
        return true;
    }();
    static_cast<void>(isDone);
}

QIcon Icon(const QString& name) { return Icon(name, QColor()); }

QIcon Icon(const QString& name, const QColor& color) {
    InitResources();
    QFile file(QStringLiteral(":/studio/icons/%1.svg").arg(name));
    if (!file.open(QIODevice::ReadOnly)) return {};
    return QIcon(new LineIcon(file.readAll(), color));
}

}  // namespace trovik::studio
