// SPDX-License-Identifier: Apache-2.0
#include "render/ReferencePass.h"

#include <algorithm>

namespace trovik::studio {

namespace {

const char* const vertexShader = R"(
uniform vec3 corners[4];
out vec2 texel;
void main() {
    vec3 corner = corners[gl_VertexID];
    texel = vec2(float(gl_VertexID & 1), 1.0 - float(gl_VertexID >> 1));
    gl_Position = vec4(corner.xy, 0.0, corner.z);
}
)";

const char* const fragmentShader = R"(
in vec2 texel;
uniform sampler2D image;
uniform float opacity;
layout(location = 0) out vec4 fragment;
void main() {
    vec4 color = texture(image, texel);
    fragment = vec4(color.rgb, color.a * opacity);
}
)";

}  // namespace

ReferencePass::ReferencePass()
    : gl(CurrentGl()), program(MakeProgram(vertexShader, fragmentShader)) {
    gl.glGenVertexArrays(1, &vertexArray);
}

ReferencePass::~ReferencePass() {
    for (const auto& [key, texture] : textures) gl.glDeleteTextures(1, &texture);
    gl.glDeleteVertexArrays(1, &vertexArray);
}

GLuint ReferencePass::Texture(const QImage& image) {
    const auto [found, isNew] = textures.try_emplace(image.cacheKey(), 0);
    GLuint& texture = found->second;
    if (!isNew) {
        gl.glBindTexture(GL_TEXTURE_2D, texture);
        return texture;
    }
    const QImage rows = image.convertToFormat(QImage::Format_RGBA8888);
    gl.glGenTextures(1, &texture);
    gl.glBindTexture(GL_TEXTURE_2D, texture);
    gl.glTexImage2D(GL_TEXTURE_2D,
                    0,
                    GL_RGBA8,
                    rows.width(),
                    rows.height(),
                    0,
                    GL_RGBA,
                    GL_UNSIGNED_BYTE,
                    rows.constBits());
    gl.glGenerateMipmap(GL_TEXTURE_2D);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    return texture;
}

uint64_t ReferencePass::Draw(const std::vector<ReferenceQuad>& quads, bool isInFront) {
    uint64_t calls = 0;
    for (const ReferenceQuad& quad : quads) {
        if (quad.isInFront != isInFront || quad.image.isNull()) continue;
        if (calls == 0) {
            program->bind();
            gl.glActiveTexture(GL_TEXTURE0);
            gl.glDisable(GL_DEPTH_TEST);
            gl.glEnable(GL_BLEND);
            gl.glBindVertexArray(vertexArray);
        }
        Texture(quad.image);
        SetUniform(*program, "image", 0);
        SetUniform(*program, "opacity", quad.opacity);
        program->setUniformValueArray("corners", quad.corners.front().data(), 4, 3);
        gl.glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
        ++calls;
    }
    if (calls == 0) return 0;
    gl.glBindTexture(GL_TEXTURE_2D, 0);
    gl.glBindVertexArray(0);
    gl.glDisable(GL_BLEND);
    gl.glEnable(GL_DEPTH_TEST);
    return calls;
}

void ReferencePass::Keep(const std::vector<ReferenceQuad>& quads) {
    for (auto it = textures.begin(); it != textures.end();) {
        const bool isUsed = std::any_of(quads.begin(), quads.end(), [&](const ReferenceQuad& quad) {
            return quad.image.cacheKey() == it->first;
        });
        if (isUsed) {
            ++it;
            continue;
        }
        gl.glDeleteTextures(1, &it->second);
        it = textures.erase(it);
    }
}

}  // namespace trovik::studio
