// SPDX-License-Identifier: Apache-2.0
#include "tests/studio/render/OffscreenViewport.h"

#include <stdexcept>

namespace trovik::studio::test {

OffscreenViewport::OffscreenViewport(int width, int height) {
    QSurfaceFormat format;
    format.setVersion(3, 3);
    format.setProfile(QSurfaceFormat::CoreProfile);
    surface.setFormat(format);
    surface.create();
    context.setFormat(format);
    if (!context.create() || !context.makeCurrent(&surface))
        throw std::runtime_error("no OpenGL context");
    QOpenGLFramebufferObjectFormat buffers;
    buffers.setAttachment(QOpenGLFramebufferObject::CombinedDepthStencil);
    buffers.setSamples(4);
    target = std::make_unique<QOpenGLFramebufferObject>(width, height, buffers);
    renderer = std::make_unique<ViewportRenderer>();
    camera.SetSize(width, height);
}

OffscreenViewport::~OffscreenViewport() {
    renderer.reset();
    target.reset();
}

void OffscreenViewport::Add(SurfaceFeed& feed, std::size_t maxBytes) {
    while (const std::shared_ptr<SurfaceUpdate> update = feed.Pack(maxBytes)) renderer->Add(update);
}

QImage OffscreenViewport::Draw() {
    frame.view = camera.ToRenderView(renderer->WorldBounds());
    target->bind();
    renderer->Draw(frame);
    return target->toImage();
}

}  // namespace trovik::studio::test
