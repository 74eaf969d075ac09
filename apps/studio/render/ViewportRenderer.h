// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/display/LodChoice.h"
#include "render/BackdropPass.h"
#include "render/IdPass.h"
#include "render/ReferencePass.h"
#include "render/SurfacePass.h"

#include <optional>

namespace trovik::studio {

class FrameTimer;

/// Draws the surface sent by the engine, with background, floor and brush ring. Positions are
/// stored only in GPU buffers and in updates that are waiting for upload.
///
/// Unless stated otherwise, all functions and the destructor require the constructor's context:
/// OpenGL 3.3 or later, core profile.
class ViewportRenderer {
public:
    /// \throw std::runtime_error with one line if the context does not support the viewport.
    ViewportRenderer();
    ~ViewportRenderer();
    ViewportRenderer(const ViewportRenderer&) = delete;
    ViewportRenderer& operator=(const ViewportRenderer&) = delete;

    /// Maximum bytes uploaded per frame while a pen is drawing, and otherwise.
    static constexpr uint64_t penBudget = uint64_t{8} << 20;
    static constexpr uint64_t restBudget = uint64_t{32} << 20;
    static constexpr uint64_t unlimitedBudget = ~uint64_t{0};

    /// Adds an update, whose patches are uploaded by the next frames. An update with a different
    /// layout replaces the surface.
    void Add(const std::shared_ptr<const SurfaceUpdate>& update);
    /// Removes the surface; later updates may have the previous layout.
    void Clear();
    /// Whether patches, or lines of the wireframe, are waiting for a frame. Needs no context.
    bool HasPending() const { return !queue.IsEmpty() || surface.ArePendingEdges(); }
    /// Bytes of waiting patches. Needs no context.
    uint64_t PendingBytes() const { return queue.Bytes(); }

    struct Frame {
        RenderView view;
        RenderSettings settings;
        Overlays overlays;
        std::vector<ReferenceQuad> references;
        /// Device pixels per logical pixel.
        float pixelRatio = 1.0f;
        uint64_t uploadBudget = unlimitedBudget;
        /// Seconds since the camera last moved; for small values, less detail is drawn if frames
        /// are slow.
        double secondsAtRest = 1e9;
    };
    /// Uploads patches within the budget and draws a frame into the bound framebuffer, which must
    /// have a depth buffer. Afterwards, the state of the context is that of a new one, except for
    /// bound objects.
    void Draw(const Frame& frame);
    /// Whether the last frame was drawn with less detail. Needs no context.
    bool IsCoarse() const { return drawnStrideLog2 > 0; }
    /// Statistics of the last frame. Needs no context.
    const RenderStats& Stats() const { return stats; }
    /// GPU time of the newest measured frame, in seconds; 0 before the first measurement.
    double FrameSeconds() const { return frameSeconds; }

    /// World-space bounding box of the visible faces; empty without a surface. Needs no context.
    AxisAlignedBoundingBox WorldBounds() const;
    /// SurfaceUpdate::sampleTime of the newest pen sample that the last frame showed completely.
    double ShownSampleTime() const { return shownSampleTime; }

    /// The surface under each pixel, as far as it has been uploaded. For tests and single picks.
    IdImage Ids(const RenderView& view, uint32_t strideLog2 = 0) {
        return DrawIds(surface, view, toWorld, strideLog2);
    }
    /// For tests.
    SurfaceBuffers& Buffers() { return surface; }

private:
    void UploadPending(const Frame& frame);

    Gl& gl;
    UploadQueue queue;
    SurfaceBuffers surface;
    SurfacePass surfacePass;
    BackdropPass backdropPass;
    ReferencePass referencePass;
    std::unique_ptr<FrameTimer> timer;
    LodChoice lod;
    Matrix toWorld;
    AxisAlignedBoundingBox bounds;
    double sampleTime = 0.0;
    double shownSampleTime = 0.0;
    RenderStats stats;
    uint32_t drawnStrideLog2 = 0;
    double frameSeconds = 0.0;
};

}  // namespace trovik::studio
