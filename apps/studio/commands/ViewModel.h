// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"
#include "render/RenderSettings.h"
#include "viewport/Camera.h"

#include <QImage>
#include <QObject>

#include <functional>

namespace trovik::studio {

/// The display settings of the viewport, which actions and panels change. The window connects it to
/// the viewport; it can also be used without a viewport.
///
/// Call on the UI thread only.
class ViewModel : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    const RenderSettings& Settings() const { return settings; }
    /// Sends SettingsChanged if any value is different.
    void SetSettings(const RenderSettings& changed);
    bool IsOrthographic() const { return isOrthographic; }
    void SetOrthographic(bool on);
    /// Vertical angle in degrees.
    float FieldOfView() const { return fieldOfView; }
    void SetFieldOfView(float degrees);

    /// Looks along a world direction.
    void LookAlong(const Vector& direction, const Vector& up) {
        Q_EMIT LookRequested(direction, up);
    }
    /// Shows the whole surface.
    void FrameAll() { Q_EMIT FrameRequested(); }

    /// Moves the camera.
    void SetPose(const CameraPose& wanted) { Q_EMIT PoseRequested(wanted); }
    /// Returns the pose of the camera; unset without a viewport.
    std::function<CameraPose()> pose;
    /// World-space bounding box of the surface; unset without a viewport.
    std::function<AxisAlignedBoundingBox()> bounds;

    /// Returns the displayed frame, in device pixels; unset without a viewport.
    std::function<QImage()> grab;

    /// Seconds from a pen sample to the frame that shows it, for the panels; 0 if unknown.
    void SetPenLatency(double seconds);
    double PenLatency() const { return penLatency; }

Q_SIGNALS:
    void SettingsChanged();
    void OrthographicChanged(bool on);
    void FieldOfViewChanged(float degrees);
    void LookRequested(const trovik::Vector& direction, const trovik::Vector& up);
    void FrameRequested();
    void PoseRequested(const trovik::studio::CameraPose& wanted);
    void PenLatencyChanged();

private:
    RenderSettings settings;
    bool isOrthographic = false;
    float fieldOfView = 35.0f;
    double penLatency = 0.0;
};

/// The available matcaps, in menu order, with their display names.
struct MatcapName {
    QString name, title;
};
std::vector<MatcapName> MatcapTitles();

}  // namespace trovik::studio
