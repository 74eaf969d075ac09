// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "render/Gl.h"
#include "render/RenderSettings.h"

namespace trovik::studio {

/// Draws the background gradient, grid and ground plane. Requires the constructor's context.
class BackdropPass {
public:
    BackdropPass();
    ~BackdropPass();
    BackdropPass(const BackdropPass&) = delete;
    BackdropPass& operator=(const BackdropPass&) = delete;

    /// Fills the framebuffer and leaves its depth values unchanged. \return the number of draw
    /// calls.
    uint64_t DrawBackground(const RenderSettings& settings, const RenderView& view);
    /// Blends the grid and the ground plane over the surface and background, with depth testing.
    /// They lie below the surface, at a multiple of the grid spacing, so that small changes to the
    /// surface do not move them. \param worldBox  the world-space bounding box of the surface.
    /// \return the number of draw calls.
    uint64_t DrawFloor(const RenderSettings& settings,
                       const RenderView& view,
                       const AxisAlignedBoundingBox& worldBox,
                       float pixelRatio);

    /// Distance between grid lines for a surface of this size, in world units: a power of ten.
    static double GridSpacing(const AxisAlignedBoundingBox& worldBox);
    /// World-space y of the grid and the ground plane.
    static double FloorHeight(const AxisAlignedBoundingBox& worldBox);

private:
    Gl& gl;
    std::unique_ptr<QOpenGLShaderProgram> background;
    std::unique_ptr<QOpenGLShaderProgram> floor;
    /// Has no attributes; the shader derives the corners from the vertex number.
    GLuint vertexArray = 0;
};

}  // namespace trovik::studio
