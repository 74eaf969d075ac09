// SPDX-License-Identifier: Apache-2.0
#include "input/SelectionGesture.h"

#include "viewport/ViewportWidget.h"

#include <algorithm>
#include <cmath>

namespace trovik::studio {

namespace {

/// Minimum distance between lasso corners, in pixels.
constexpr double minStep = 3.0;
/// A smaller selection is treated as an accidental click.
constexpr double minExtent = 3.0;

}  // namespace

SelectionGesture::SelectionGesture(ViewportWidget& onViewport,
                                   Shape selectionShape,
                                   Done whenDone,
                                   const PointerEvent& press)
    : viewport(onViewport),
      shape(selectionShape),
      done(std::move(whenDone)),
      points{press.position} {}

std::vector<QPointF> SelectionGesture::Box() const {
    const QPointF& a = points.front();
    const QPointF& b = points.back();
    return {QPointF(std::min(a.x(), b.x()), std::min(a.y(), b.y())),
            QPointF(std::max(a.x(), b.x()), std::max(a.y(), b.y()))};
}

void SelectionGesture::Show(const std::vector<QPointF>& outline) const {
    Overlays overlays = viewport.Shown();
    overlays.selection.clear();
    for (const QPointF& point : outline)
        overlays.selection.push_back(
            {static_cast<float>(point.x()), static_cast<float>(point.y())});
    viewport.SetOverlays(overlays);
}

void SelectionGesture::Move(const PointerEvent& event) {
    const QPointF step = event.position - points.back();
    if (shape == Shape::Box) {
        points.resize(1);
        points.push_back(event.position);
        const std::vector<QPointF> box = Box();
        Show({box[0], {box[1].x(), box[0].y()}, box[1], {box[0].x(), box[1].y()}});
    } else if (std::hypot(step.x(), step.y()) >= minStep) {
        points.push_back(event.position);
        Show(points);
    }
}

void SelectionGesture::Finish() {
    Show({});
    if (shape == Shape::Lasso) {
        if (points.size() >= 3) done(shape, points);
        return;
    }
    const std::vector<QPointF> box = Box();
    if (box[1].x() - box[0].x() >= minExtent && box[1].y() - box[0].y() >= minExtent)
        done(shape, box);
}

void SelectionGesture::Cancel() { Show({}); }

}  // namespace trovik::studio
