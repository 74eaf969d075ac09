// SPDX-License-Identifier: Apache-2.0
#include "viewport/ViewportWidget.h"

#include "engine/Engine.h"
#include "render/Gl.h"
#include "render/ViewportRenderer.h"

#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QPainter>

#include <chrono>
#include <stdexcept>
#include <utility>

namespace trovik::studio {

namespace {

/// After this time without camera motion, a frame is drawn at full detail; slightly longer than the
/// delay in LodChoice.
constexpr int restMilliseconds = 160;
/// While this many bytes are waiting for upload, no further updates are taken from the engine.
constexpr uint64_t maxPendingBytes = 2 * ViewportRenderer::restBudget;

double SteadySeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

}  // namespace

ViewportWidget::ViewportWidget(Engine& ofEngine, QWidget* parent)
    : QOpenGLWidget(parent), engine(ofEngine) {
    QSurfaceFormat format;
    format.setVersion(3, 3);
    format.setProfile(QSurfaceFormat::CoreProfile);
    format.setDepthBufferSize(24);
    format.setSamples(4);
    setFormat(format);
    setAccessibleName(tr("Viewport"));
    setAccessibleDescription(tr("Shows the sculpture"));
    restTimer.setSingleShot(true);
    restTimer.setInterval(restMilliseconds);
    connect(&restTimer, &QTimer::timeout, this, [this] {
        if (renderer != nullptr && renderer->IsCoarse()) update();
    });
    connect(&engine, &Engine::Opened, this, [this] { isSurfaceCurrent = false; });
    connect(&engine, &Engine::SurfaceArrived, this, [this] { update(); });
    connect(&pictures, &ReferencePictures::Loaded, this, [this] { update(); });
}

ViewportWidget::~ViewportWidget() {
    FreeRenderer();
    // The context outlives the members of this class.
    if (context() != nullptr) disconnect(context(), nullptr, this, nullptr);
}

void ViewportWidget::FreeRenderer() {
    if (renderer == nullptr) return;
    makeCurrent();
    renderer.reset();
    doneCurrent();
}

void ViewportWidget::SetView(const Camera& moved) {
    if (moved == camera) return;
    camera = moved;
    FollowSize();
    sinceMotion.start();
    restTimer.start();
    engine.SetView(camera.ToStrokeView());
    update();
    Q_EMIT CameraChanged();
}

void ViewportWidget::SetSettings(const RenderSettings& changed) {
    if (changed == settings) return;
    settings = changed;
    update();
    Q_EMIT SettingsChanged();
}

void ViewportWidget::SetOverlays(const Overlays& changed) {
    overlays = changed;
    update();
}

void ViewportWidget::SetReferences(std::vector<ReferenceImage> images) {
    if (images == references) return;
    references = std::move(images);
    QStringList paths;
    for (const ReferenceImage& image : references) paths << image.path;
    pictures.Keep(paths);
    update();
}

std::vector<ReferenceQuad> ViewportWidget::ReferenceQuads(const RenderView& view) const {
    std::vector<ReferenceQuad> quads;
    if (!settings.showsReferences) return quads;
    for (const ReferenceImage& reference : references)
        if (auto quad = QuadOf(reference, pictures.Image(reference.path), view))
            quads.push_back(std::move(*quad));
    return quads;
}

void ViewportWidget::SetHudLines(const QStringList& lines) {
    if (hud.SetLines(lines)) update();
}

void ViewportWidget::FrameAll() {
    Camera moved = camera;
    moved.Frame(WorldBounds());
    SetView(moved);
}

AxisAlignedBoundingBox ViewportWidget::WorldBounds() const {
    if (isSurfaceCurrent && renderer != nullptr && !renderer->WorldBounds().IsEmpty())
        return renderer->WorldBounds();
    return engine.HasDocument() ? engine.Document().bounds : AxisAlignedBoundingBox();
}

const RenderStats& ViewportWidget::Stats() const {
    static const RenderStats none;
    return renderer != nullptr ? renderer->Stats() : none;
}

void ViewportWidget::FollowSize() {
    const qreal ratio = devicePixelRatioF();
    camera.SetSize(qRound(width() * ratio), qRound(height() * ratio));
}

void ViewportWidget::initializeGL() {
    // A widget that is moved into another window gets another context.
    const bool isRepeated = sinceMotion.isValid();
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, [this] { FreeRenderer(); });
    try {
        renderer = std::make_unique<ViewportRenderer>();
        problem.clear();
    } catch (const std::runtime_error& error) {
        problem = QString::fromUtf8(error.what());
    }
    sinceMotion.start();
    if (isRepeated) engine.RequestSurface();
}

void ViewportWidget::ChangeSize() {
    FollowSize();
    engine.SetView(camera.ToStrokeView());
    Q_EMIT CameraChanged();
}

void ViewportWidget::resizeGL(int, int) { ChangeSize(); }

bool ViewportWidget::event(QEvent* event) {
    const bool isHandled = QOpenGLWidget::event(event);
    // A window that moves to another screen gets its ratio without a change of its size.
    const qreal ratio = devicePixelRatioF();
    if (ratio != knownRatio) {
        knownRatio = ratio;
        ChangeSize();
        update();
    }
    return isHandled;
}

void ViewportWidget::TakeUpdates(bool all) {
    if (!all && renderer->PendingBytes() > maxPendingBytes) return;
    for (const auto& surface : engine.TakeUpdates()) {
        renderer->Add(surface);
        isSurfaceCurrent = true;
    }
}

void ViewportWidget::paintGL() {
    if (renderer != nullptr) {
        TakeUpdates(isGrabbing);
        ViewportRenderer::Frame frame;
        frame.view = camera.ToRenderView(WorldBounds());
        frame.settings = settings;
        frame.overlays = overlays;
        frame.references = ReferenceQuads(frame.view);
        frame.pixelRatio = static_cast<float>(devicePixelRatioF());
        frame.uploadBudget = isGrabbing   ? ViewportRenderer::unlimitedBudget
                             : isStroking ? ViewportRenderer::penBudget
                                          : ViewportRenderer::restBudget;
        if (!isGrabbing) frame.secondsAtRest = static_cast<double>(sinceMotion.elapsed()) * 1e-3;
        renderer->Draw(frame);
        if (renderer->HasPending()) update();
    }
    QPainter painter(this);
    if (renderer != nullptr) {
        Hud::DrawOutlines(painter, overlays);
        viewCube.Draw(painter, camera, size());
        hud.DrawLines(painter, size());
    } else {
        painter.fillRect(rect(), settings.background[0]);
        painter.setPen(palette().color(QPalette::BrightText));
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap, problem);
    }
    painter.end();
    if (renderer != nullptr && renderer->ShownSampleTime() > lastSampleTime) {
        lastSampleTime = renderer->ShownSampleTime();
        penLatency = SteadySeconds() - lastSampleTime;
    }
    Q_EMIT FrameDrawn();
}

QImage ViewportWidget::Grab() {
    isGrabbing = true;
    QImage image = grabFramebuffer();
    isGrabbing = false;
    return image;
}

QImage ViewportWidget::ShownFrame() {
    if (renderer == nullptr) return {};
    makeCurrent();
    const QSize pixels = size() * devicePixelRatioF();
    QOpenGLFramebufferObject copy(pixels);
    // Resolves the samples of the widget's framebuffer.
    Gl& gl = CurrentGl();
    gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, defaultFramebufferObject());
    gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, copy.handle());
    gl.glBlitFramebuffer(0,
                         0,
                         pixels.width(),
                         pixels.height(),
                         0,
                         0,
                         pixels.width(),
                         pixels.height(),
                         GL_COLOR_BUFFER_BIT,
                         GL_NEAREST);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, defaultFramebufferObject());
    QImage image = copy.toImage().convertToFormat(QImage::Format_RGB32);
    doneCurrent();
    return image;
}

bool ViewportWidget::IsComplete() const {
    if (renderer == nullptr) return true;
    return !engine.HasUpdates() && !renderer->HasPending() && !renderer->IsCoarse() &&
           !pictures.IsLoading();
}

void ViewportWidget::AcceptUpdates() {
    if (renderer == nullptr || !engine.HasUpdates()) return;
    makeCurrent();
    TakeUpdates(true);
    doneCurrent();
    // The time until the next frame says nothing about the delay of the pen.
    lastSampleTime = SteadySeconds();
}

void ViewportWidget::UploadAll() {
    if (renderer == nullptr) return;
    makeCurrent();
    renderer->Clear();
    doneCurrent();
    engine.RequestSurface();
    update();
}

}  // namespace trovik::studio
