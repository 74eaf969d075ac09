// SPDX-License-Identifier: Apache-2.0
#include "input/CameraGesture.h"

#include "viewport/ViewportWidget.h"

#include <cmath>

namespace trovik::studio {

namespace {

/// Length of a drag, in logical pixels, that halves or doubles the distance.
constexpr double pixelsPerDoubling = 200.0;

}  // namespace

CameraGesture::CameraGesture(ViewportWidget& onViewport,
                             CameraMotion cameraMotion,
                             const Vector& anchorPoint,
                             const PointerEvent& press)
    : viewport(onViewport),
      motion(cameraMotion),
      anchor(anchorPoint),
      before(onViewport.View()),
      last(press.position) {}

void CameraGesture::Move(const PointerEvent& event) {
    const QPointF step = event.position - last;
    const auto dx = static_cast<float>(step.x());
    const auto dy = static_cast<float>(step.y());
    Camera camera = viewport.View();
    switch (motion) {
        case CameraMotion::Orbit:
            camera.Orbit(anchor, dx, dy);
            break;
        case CameraMotion::Pan:
            camera.Pan(anchor, dx, dy);
            break;
        case CameraMotion::Zoom: {
            const double pixels = pixelsPerDoubling * viewport.devicePixelRatioF();
            camera.Dolly(anchor, static_cast<float>(std::exp2((step.y() - step.x()) / pixels)));
            break;
        }
        case CameraMotion::Roll: {
            const QPointF centre = QRectF(viewport.rect()).center() * viewport.devicePixelRatioF();
            const QPointF from = last - centre;
            const QPointF to = event.position - centre;
            camera.Roll(static_cast<float>(
                std::atan2(to.x() * from.y() - to.y() * from.x(), QPointF::dotProduct(from, to))));
            break;
        }
    }
    last = event.position;
    viewport.SetView(camera);
}

void CameraGesture::Cancel() { viewport.SetView(before); }

}  // namespace trovik::studio
