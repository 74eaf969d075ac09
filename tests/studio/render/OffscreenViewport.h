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

/// An OpenGL context with a multisampled framebuffer into which a ViewportRenderer draws, without a
/// window. Needs a QGuiApplication.
class OffscreenViewport {
public:
    OffscreenViewport(int width, int height);
    ~OffscreenViewport();

    /// Adds the pending updates of the feed, each of at most `maxBytes`.
    void Add(SurfaceFeed& feed, std::size_t maxBytes = std::size_t{1} << 30);
    /// Draws a frame with `camera`, which has the size of the viewport.
    QImage Draw();
    /// The settings that Draw uses; tests change those that they examine.
    ViewportRenderer::Frame frame;
    Camera camera;
    /// Makes the context current and returns the renderer.
    ViewportRenderer& Renderer() {
        MakeCurrent();
        return *renderer;
    }

private:
    /// Necessary because another viewport may have made its own context current.
    void MakeCurrent() { context.makeCurrent(&surface); }

    QOffscreenSurface surface;
    QOpenGLContext context;
    std::unique_ptr<QOpenGLFramebufferObject> target;
    std::unique_ptr<ViewportRenderer> renderer;
};

/// A document that is changed by script steps, with its surface feed.
struct ShownDocument {
    explicit ShownDocument(std::unique_ptr<Document> opened)
        : document(std::move(opened)), feed(*document), runner(*document) {}

    void Do(const char* step) { runner.Do(nlohmann::json::parse(step)); }

    std::unique_ptr<Document> document;
    SurfaceFeed feed;
    CommandRunner runner;
};

}  // namespace trovik::studio::test
