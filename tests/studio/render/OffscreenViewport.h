// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/SurfaceFeed.h"
#include "framework/script/CommandRunner.h"
#include "render/ViewportRenderer.h"
#include "viewport/Camera.h"

#include <QImage>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>

#include <memory>

namespace trovik::studio::test {

/// A context with a multisampled framebuffer in which a ViewportRenderer draws, without a window.
/// Needs a QGuiApplication.
class OffscreenViewport {
public:
    OffscreenViewport(int width, int height);
    ~OffscreenViewport();

    /// Adds what the feed has, in updates of at most `maxBytes`.
    void Add(SurfaceFeed& feed, std::size_t maxBytes = std::size_t{1} << 30);
    /// Draws a frame with the camera, which has the size of the viewport.
    QImage Draw();
    /// `frame` as Draw uses it; tests change what they look at.
    ViewportRenderer::Frame frame;
    Camera camera;
    ViewportRenderer& Renderer() { return *renderer; }
    /// To be called after another viewport was used.
    void MakeCurrent() { context.makeCurrent(&surface); }

private:
    QOffscreenSurface surface;
    QOpenGLContext context;
    std::unique_ptr<QOpenGLFramebufferObject> target;
    std::unique_ptr<ViewportRenderer> renderer;
};

/// A document that is changed by steps of scripts, with the feed of its surface.
struct ShownDocument {
    explicit ShownDocument(std::unique_ptr<Document> opened)
        : document(std::move(opened)), feed(*document), runner(*document) {}

    void Do(const char* step) { runner.Do(nlohmann::json::parse(step)); }

    std::unique_ptr<Document> document;
    SurfaceFeed feed;
    CommandRunner runner;
};

}  // namespace trovik::studio::test
