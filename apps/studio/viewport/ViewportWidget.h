// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/EngineMessages.h"
#include "render/RenderSettings.h"
#include "viewport/Camera.h"

#include <QImage>
#include <QOpenGLWidget>

#include <memory>

namespace trovik::studio {

class Engine;
class ViewportRenderer;

/// Draws the document's surface with its overlays. It holds the camera and what the frame shows,
/// and forwards no input by itself: input objects install event filters.
class ViewportWidget : public QOpenGLWidget {
    Q_OBJECT
public:
    explicit ViewportWidget(Engine& engine, QWidget* parent = nullptr);
    ~ViewportWidget() override;

    const Camera& View() const { return camera; }
    /// Changes the camera, tells the engine, and schedules a frame; while it moves, frames are
    /// drawn with less detail.
    void SetView(const Camera& moved);
    const RenderSettings& Settings() const { return settings; }
    void SetSettings(const RenderSettings& changed);
    const Overlays& Shown() const { return overlays; }
    void SetOverlays(const Overlays& changed);
    /// Shows the whole surface.
    void FrameAll();

    /// World box of the surface; empty without a document.
    AxisAlignedBoundingBox WorldBounds() const;
    /// Work of the last frame.
    const RenderStats& Stats() const;
    /// Seconds from the newest pen sample that a frame showed to the end of that frame; 0 if none.
    double PenLatency() const { return penLatency; }
    /// Draws a frame with all detail and returns it, in device pixels.
    QImage Grab();
    /// Uploads every patch again from what the engine sent; the picture must not change by it. For
    /// tests and after a lost context.
    void UploadAll();

Q_SIGNALS:
    void CameraChanged();
    void SettingsChanged();
    /// A frame was drawn.
    void FrameDrawn();

protected:
    void initializeGL() override;
    void resizeGL(int width, int height) override;
    void paintGL() override;

private:
    Engine& engine;
    std::unique_ptr<ViewportRenderer> renderer;
    Camera camera;
    RenderSettings settings;
    Overlays overlays;
    double penLatency = 0.0;
};

}  // namespace trovik::studio
