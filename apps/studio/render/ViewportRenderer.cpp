// SPDX-License-Identifier: Apache-2.0
#include "render/ViewportRenderer.h"

#include "framework/display/PatchBounds.h"
#include "render/FrameTimer.h"

#include <algorithm>

namespace trovik::studio {

namespace {

/// Longer measurements are discarded as errors.
constexpr double maxFrameSeconds = 60.0;

}  // namespace

ViewportRenderer::ViewportRenderer() : gl(CurrentGl()), timer(std::make_unique<FrameTimer>()) {}

ViewportRenderer::~ViewportRenderer() = default;

void ViewportRenderer::Add(const std::shared_ptr<const SurfaceUpdate>& update) {
    if (update->layout != surface.Layout()) {
        queue.Reset(update->layout);
        surface.Reset(update->layout);
        if (update->layout != nullptr) stats.bufferBytes = surface.Bytes();
    }
    queue.Add(update);
    toWorld = update->toWorld;
    bounds = update->bounds;
    sampleTime = std::max(sampleTime, update->sampleTime);
}

void ViewportRenderer::Clear() {
    queue.Reset(nullptr);
    surface.Reset(nullptr);
    bounds = {};
}

void ViewportRenderer::UploadPending(const Frame& frame) {
    const FrustumCuller culler(toWorld * frame.view.worldToClip);
    queue.Take(
        frame.uploadBudget,
        [&](const AxisAlignedBoundingBox& box) { return !culler.IsOutside(box); },
        [&](const UploadQueue::Patch& patch) {
            surface.Upload(patch);
            ++stats.patchesUploaded;
            stats.bytesUploaded += patch.vertices.size_bytes();
        });
    if (queue.IsEmpty()) shownSampleTime = sampleTime;
}

void ViewportRenderer::Draw(const Frame& frame) {
    stats = {};
    UploadPending(frame);
    while (const auto measured = timer->Take()) {
        // Some drivers return the time since driver start for the first query.
        if (measured->seconds > maxFrameSeconds) continue;
        frameSeconds = measured->seconds;
        lod.FrameMeasured(measured->tag, measured->seconds);
    }
    // A surface that arrives over many frames is not drawn at full detail each time.
    const bool isArriving = frame.uploadBudget != unlimitedBudget && !surface.IsComplete();
    drawnStrideLog2 =
        surface.UsedStrideLog2(lod.StrideLog2(isArriving ? 0.0 : frame.secondsAtRest));

    timer->Begin(drawnStrideLog2);
    gl.glViewport(0, 0, frame.view.width, frame.view.height);
    gl.glDisable(GL_BLEND);
    gl.glDisable(GL_CULL_FACE);
    gl.glDisable(GL_SCISSOR_TEST);
    gl.glDisable(GL_STENCIL_TEST);
    gl.glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    gl.glDepthMask(GL_TRUE);
    gl.glEnable(GL_DEPTH_TEST);
    gl.glDepthFunc(GL_LESS);
    // Alpha stays 1, because the window system may use it to blend windows.
    gl.glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    gl.glClear(GL_DEPTH_BUFFER_BIT);

    stats.drawCalls += backdropPass.DrawBackground(frame.settings, frame.view);
    referencePass.Keep(frame.references);
    stats.drawCalls += referencePass.Draw(frame.references, false);
    const SurfaceBuffers::Drawn drawn = surfacePass.Draw(surface,
                                                         {frame.view,
                                                          frame.settings,
                                                          frame.overlays,
                                                          toWorld,
                                                          frame.pixelRatio,
                                                          drawnStrideLog2,
                                                          frame.uploadBudget == unlimitedBudget});
    stats.drawCalls += drawn.calls;
    stats.trianglesDrawn = drawn.triangles;
    stats.patchesCulled = drawn.culled;
    stats.drawCalls +=
        backdropPass.DrawFloor(frame.settings, frame.view, WorldBounds(), frame.pixelRatio);
    stats.drawCalls += referencePass.Draw(frame.references, true);

    gl.glDisable(GL_DEPTH_TEST);
    gl.glUseProgram(0);
    gl.glBindBuffer(GL_ARRAY_BUFFER, 0);
    timer->End();
    stats.bufferBytes = surface.Bytes();
    stats.bytesPending = queue.Bytes();
}

AxisAlignedBoundingBox ViewportRenderer::WorldBounds() const {
    return TransformBox(bounds, toWorld);
}

}  // namespace trovik::studio
