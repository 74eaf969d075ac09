// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "input/Gesture.h"

#include <QPointF>

#include <functional>
#include <vector>

namespace trovik::studio {

class ViewportWidget;

/// Draws a box or lasso over the viewport.
class SelectionGesture final : public Gesture {
public:
    enum class Shape { Box, Lasso };
    /// Receives the corners in device pixels; for a box, the top left and the bottom right corner.
    using Done = std::function<void(Shape shape, const std::vector<QPointF>& points)>;

    SelectionGesture(ViewportWidget& viewport, Shape shape, Done done, const PointerEvent& press);

    void Move(const PointerEvent& event) override;
    void Finish() override;
    void Cancel() override;

private:
    void Show(const std::vector<QPointF>& outline) const;
    std::vector<QPointF> Box() const;

    ViewportWidget& viewport;
    Shape shape;
    Done done;
    std::vector<QPointF> points;
};

}  // namespace trovik::studio
