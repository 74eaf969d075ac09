// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "render/Matcaps.h"
#include "render/RenderSettings.h"
#include "render/SurfaceBuffers.h"

namespace trovik::studio {

/// Draws the surface and everything that its shader adds. Requires the constructor's context.
/// Wireframes of grids come from the shader; those of bucket layouts are lines of constant width.
class SurfacePass {
public:
    SurfacePass();
    ~SurfacePass();
    SurfacePass(const SurfacePass&) = delete;
    SurfacePass& operator=(const SurfacePass&) = delete;

    struct Frame {
        const RenderView& view;
        const RenderSettings& settings;
        const Overlays& overlays;
        /// Mesh-local to world.
        const Matrix& toWorld;
        /// Device pixels per logical pixel; determines the line width.
        float pixelRatio;
        uint32_t strideLog2;
        /// Whether to wait for lines that are being computed instead of leaving them out.
        bool waits;
    };
    /// Draws into the bound framebuffer, with depth testing.
    SurfaceBuffers::Drawn Draw(SurfaceBuffers& surface, const Frame& frame);

private:
    QOpenGLShaderProgram& Variant(const SurfaceBuffers& surface, const Frame& frame);
    void SetRings(QOpenGLShaderProgram& program, const Overlays& overlays);
    void SetFalloff(const std::vector<float>& values);

    Gl& gl;
    Matcaps matcaps;
    std::map<QByteArray, std::unique_ptr<QOpenGLShaderProgram>> variants;
    std::unique_ptr<QOpenGLShaderProgram> edges;
    GLuint falloffTexture = 0;
    std::vector<float> falloff;
};

}  // namespace trovik::studio
