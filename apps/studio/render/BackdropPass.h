// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "render/Gl.h"
#include "render/RenderSettings.h"

namespace trovik::studio {

/// Draws what lies behind and below the surface: background gradient, grid and ground plane. Needs
/// the context of the constructor.
class BackdropPass {
public:
    BackdropPass();
    ~BackdropPass();
    BackdropPass(const BackdropPass&) = delete;
    BackdropPass& operator=(const BackdropPass&) = delete;

    /// Covers the framebuffer; leaves its depths. \return draw calls.
    uint64_t DrawBackground(const RenderSettings& settings, const RenderView& view);
    /// Blends grid and ground plane over surface and background, with depth test. They lie below
    /// the surface, at a multiple of the grid's spacing, so that small changes of the surface do
    /// not move them. \param worldBox  of the surface. \return draw calls.
    uint64_t DrawFloor(const RenderSettings& settings,
                       const RenderView& view,
                       const AxisAlignedBoundingBox& worldBox,
                       float pixelRatio);

    /// Distance of the lines of the grid for a surface of a size, world units: a power of ten.
    static double GridSpacing(const AxisAlignedBoundingBox& worldBox);
    /// World y of grid and ground.
    static double FloorHeight(const AxisAlignedBoundingBox& worldBox);

private:
    Gl& gl;
    std::unique_ptr<QOpenGLShaderProgram> background;
    std::unique_ptr<QOpenGLShaderProgram> floor;
    /// Without attributes; corners come from the number of the vertex.
    GLuint vertexArray = 0;
};

}  // namespace trovik::studio
