// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "render/Gl.h"
#include "render/ReferenceQuad.h"

#include <map>
#include <vector>

namespace trovik::studio {

/// Draws reference images, without depth testing. Requires the constructor's context.
class ReferencePass {
public:
    ReferencePass();
    ~ReferencePass();
    ReferencePass(const ReferencePass&) = delete;
    ReferencePass& operator=(const ReferencePass&) = delete;

    /// Blends the images on one side of the surface over the framebuffer, in the order of the list.
    /// \return the number of draw calls.
    uint64_t Draw(const std::vector<ReferenceQuad>& quads, bool isInFront);
    /// Frees the textures of images that are not in the list.
    void Keep(const std::vector<ReferenceQuad>& quads);

private:
    GLuint Texture(const QImage& image);

    Gl& gl;
    std::unique_ptr<QOpenGLShaderProgram> program;
    GLuint vertexArray = 0;
    /// Keyed by QImage::cacheKey.
    std::map<qint64, GLuint> textures;
};

}  // namespace trovik::studio
