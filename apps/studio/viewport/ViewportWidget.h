// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/EngineMessages.h"
#include "render/RenderSettings.h"
#include "viewport/Camera.h"
#include "viewport/Hud.h"
#include "viewport/ReferenceImage.h"
#include "viewport/ReferencePictures.h"
#include "viewport/ViewCube.h"

#include <QElapsedTimer>
#include <QImage>
#include <QOpenGLWidget>
#include <QTimer>

#include <memory>

namespace trovik::studio {

class Engine;
class ViewportRenderer;

/// Draws the document's surface with its overlays. It owns the camera and the contents of the
/// frame. It does not forward input; input objects install event filters.
class ViewportWidget : public QOpenGLWidget {
    Q_OBJECT
public:
    explicit ViewportWidget(Engine& engine, QWidget* parent = nullptr);
    ~ViewportWidget() override;

    const Camera& View() const { return camera; }
    /// Changes the camera, passes it to the engine, and schedules a frame; while it moves, frames
    /// are drawn with less detail.
    void SetView(const Camera& moved);
    const RenderSettings& Settings() const { return settings; }
    void SetSettings(const RenderSettings& changed);
    const Overlays& Shown() const { return overlays; }
    void SetOverlays(const Overlays& changed);
    /// Reads the files of the images on other threads and shows them.
    void SetReferences(std::vector<ReferenceImage> images);
    /// Shows the whole surface.
    void FrameAll();
    /// Lines of text in the lower left corner.
    void SetHudLines(const QStringList& lines);
    /// While a pen is drawing, frames upload less data, so that they keep up with the pen.
    void SetStroking(bool on) { isStroking = on; }
    /// For clicks: ViewCube::HitTest with View() and size().
    ViewCube& Cube() { return viewCube; }

    /// World box of the surface; empty without a document.
    AxisAlignedBoundingBox WorldBounds() const;
    /// Statistics of the last frame.
    const RenderStats& Stats() const;
    /// Seconds from the newest pen sample that a frame showed completely to the end of that frame;
    /// 0 before the first one.
    double PenLatency() const { return penLatency; }
    /// Uploads all updates that have arrived, draws a frame at full detail and returns it, in
    /// device pixels.
    QImage Grab();
    /// A copy of the last frame, in device pixels; draws nothing. Null without a renderer.
    QImage ShownFrame();
    /// Whether all updates that have arrived are drawn, at full detail.
    bool IsComplete() const;
    /// Takes all updates that have arrived, without drawing; the next frame uploads them. The
    /// engine is not idle while it has updates that it cannot send, so call this if no frames are
    /// drawn.
    void AcceptUpdates();
    /// Requests every patch from the engine again and uploads it, which must not change the image.
    /// For tests and for use after the context was lost.
    void UploadAll();
    /// The reason why the viewport cannot be drawn, in one line; empty if it can.
    const QString& Problem() const { return problem; }

Q_SIGNALS:
    void CameraChanged();
    void SettingsChanged();
    /// A frame was drawn.
    void FrameDrawn();

protected:
    bool event(QEvent* event) override;
    void initializeGL() override;
    void resizeGL(int width, int height) override;
    void paintGL() override;

private:
    void FreeRenderer();
    void FollowSize();
    /// Applies a change of the size or the device pixel ratio to the camera.
    void ChangeSize();
    /// Passes engine updates on to the renderer. Unless `all` is set, it does nothing while many
    /// bytes are waiting for upload.
    void TakeUpdates(bool all);
    std::vector<ReferenceQuad> ReferenceQuads(const RenderView& view) const;

    Engine& engine;
    std::unique_ptr<ViewportRenderer> renderer;
    Camera camera;
    RenderSettings settings;
    Overlays overlays;
    Hud hud;
    ViewCube viewCube;
    std::vector<ReferenceImage> references;
    ReferencePictures pictures;
    /// The device pixel ratio that the camera's size was computed with.
    qreal knownRatio = 1.0;
    double penLatency = 0.0;
    /// ViewportRenderer::ShownSampleTime at the last frame.
    double lastSampleTime = 0.0;
    QString problem;
    /// Whether the renderer has received the surface of the open document. Until then, it has that
    /// of the previous document.
    bool isSurfaceCurrent = false;
    bool isStroking = false;
    bool isGrabbing = false;
    /// Time since the camera last moved.
    QElapsedTimer sinceMotion;
    /// Draws a frame at full detail when the camera has been at rest for a while.
    QTimer restTimer;
};

}  // namespace trovik::studio
