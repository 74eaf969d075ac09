// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "render/RenderSettings.h"

#include <QImage>
#include <QStringList>

class QPainter;

namespace trovik::studio {

/// Texts and outlines drawn over the viewport with QPainter.
class Hud {
public:
    /// Sets the lines in the bottom left corner, from top to bottom. \return whether they have
    /// changed.
    bool SetLines(const QStringList& newLines);
    const QStringList& Lines() const { return lines; }

    /// Draws the lines, legible on light and dark surfaces. \param viewport  logical pixels.
    void DrawLines(QPainter& painter, const QSizeF& viewport);
    /// Draws the line from a stabilised brush to the pen, and the outline of a selection, whose
    /// points are in device pixels. \param painter  in logical pixels.
    static void DrawOutlines(QPainter& painter, const Overlays& overlays);

private:
    QImage Paint(const QFont& font, qreal pixelRatio) const;

    QStringList lines;
    QImage image;
};

}  // namespace trovik::studio
