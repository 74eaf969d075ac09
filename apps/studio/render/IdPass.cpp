// SPDX-License-Identifier: Apache-2.0
#include "render/IdPass.h"

#include "render/SurfaceShader.h"

#include <bit>
#include <stdexcept>

namespace trovik::studio {

namespace {

/// A framebuffer with two unsigned integers per pixel and a depth buffer; the destructor restores
/// the previous binding.
class IdFramebuffer {
public:
    IdFramebuffer(Gl& functions, int width, int height) : gl(functions) {
        gl.glGetIntegerv(GL_FRAMEBUFFER_BINDING, &previous);
        gl.glGenFramebuffers(1, &framebuffer);
        gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        gl.glGenRenderbuffers(2, buffers);
        const GLenum formats[2] = {GL_RG32UI, GL_DEPTH_COMPONENT32F};
        const GLenum attachments[2] = {GL_COLOR_ATTACHMENT0, GL_DEPTH_ATTACHMENT};
        for (int i = 0; i < 2; ++i) {
            gl.glBindRenderbuffer(GL_RENDERBUFFER, buffers[i]);
            gl.glRenderbufferStorage(GL_RENDERBUFFER, formats[i], width, height);
            gl.glFramebufferRenderbuffer(
                GL_FRAMEBUFFER, attachments[i], GL_RENDERBUFFER, buffers[i]);
        }
        isComplete = gl.glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
    }
    ~IdFramebuffer() {
        gl.glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(previous));
        gl.glDeleteFramebuffers(1, &framebuffer);
        gl.glDeleteRenderbuffers(2, buffers);
    }
    IdFramebuffer(const IdFramebuffer&) = delete;
    IdFramebuffer& operator=(const IdFramebuffer&) = delete;

    bool IsComplete() const { return isComplete; }

private:
    Gl& gl;
    GLint previous = 0;
    GLuint framebuffer = 0;
    GLuint buffers[2] = {};
    bool isComplete = false;
};

/// Finds the patch and face of a vertex that stores the flags of a face.
class FaceFinder {
public:
    explicit FaceFinder(const PatchLayout& ofLayout) : layout(ofLayout) {
        if (!layout.IsGrid()) return;
        const uint32_t cells = 1u << (2 * layout.Depth());
        faceOfCell.resize(cells);
        for (uint32_t face = 0; face < cells; ++face) faceOfCell[layout.GridCells()[face]] = face;
    }

    uint32_t PatchOf(uint32_t vertex) const {
        if (layout.IsGrid()) return vertex / layout.VertexCount(0);
        uint32_t low = 0;
        uint32_t high = layout.PatchCount();
        while (high - low > 1) {
            const uint32_t middle = (low + high) / 2;
            (layout.FirstVertex(middle) <= vertex ? low : high) = middle;
        }
        return low;
    }
    uint32_t FaceOf(uint32_t vertex, uint32_t patch) const {
        const auto inPatch = static_cast<uint32_t>(vertex - layout.FirstVertex(patch));
        if (!layout.IsGrid()) return layout.Buckets()->FlagFaces(patch)[inPatch];
        const uint32_t cells = 1u << layout.Depth();
        const uint32_t cell = inPatch / (cells + 1) * cells + inPatch % (cells + 1);
        return patch * cells * cells + faceOfCell[cell];
    }

private:
    const PatchLayout& layout;
    std::vector<uint32_t> faceOfCell;
};

}  // namespace

IdImage DrawIds(SurfaceBuffers& surface,
                const RenderView& view,
                const Matrix& toWorld,
                uint32_t strideLog2) {
    Gl& gl = CurrentGl();
    const std::size_t pixels =
        static_cast<std::size_t>(view.width) * static_cast<std::size_t>(view.height);
    IdImage image{view.width,
                  view.height,
                  std::vector<uint32_t>(pixels, IdImage::none),
                  std::vector<uint32_t>(pixels, IdImage::none),
                  std::vector<float>(pixels, 0.0f)};
    if (surface.Layout() == nullptr) return image;

    const IdFramebuffer framebuffer(gl, view.width, view.height);
    if (!framebuffer.IsComplete())
        throw std::runtime_error("the graphics driver cannot render face numbers");
    const auto program = MakeProgram(idVertexShader, idFragmentShader);
    program->bind();
    const Matrix localToClip = toWorld * view.worldToClip;
    SetUniform(*program, "localToClip", localToClip);
    const auto row = [&toWorld](int r) {
        return Vector(toWorld.m[r][0], toWorld.m[r][1], toWorld.m[r][2]);
    };
    SetUniform(*program,
               "depthAxis",
               Vector(row(0) | view.forward, row(1) | view.forward, row(2) | view.forward));
    SetUniform(*program, "depthAtOrigin", (row(3) - view.eye) | view.forward);
    gl.glViewport(0, 0, view.width, view.height);
    const GLuint nothing[4] = {IdImage::none, 0, 0, 0};
    const GLfloat farthest = 1.0f;
    gl.glClearBufferuiv(GL_COLOR, 0, nothing);
    gl.glClearBufferfv(GL_DEPTH, 0, &farthest);
    gl.glEnable(GL_DEPTH_TEST);
    gl.glDisable(GL_BLEND);
    gl.glProvokingVertex(GL_FIRST_VERTEX_CONVENTION);
    surface.Draw(FrustumCuller(localToClip), strideLog2, [&](uint64_t firstVertex) {
        program->setUniformValue("firstVertex", static_cast<GLuint>(firstVertex));
    });
    gl.glProvokingVertex(GL_LAST_VERTEX_CONVENTION);

    std::vector<std::array<uint32_t, 2>> read(pixels);
    gl.glPixelStorei(GL_PACK_ALIGNMENT, 4);
    gl.glReadPixels(0, 0, view.width, view.height, GL_RG_INTEGER, GL_UNSIGNED_INT, read.data());
    const FaceFinder finder(*surface.Layout());
    const auto width = static_cast<std::size_t>(view.width);
    for (std::size_t i = 0; i < pixels; ++i) {
        const auto [vertex, depth] = read[i];
        if (vertex == IdImage::none) continue;
        const std::size_t at = pixels - width - i / width * width + i % width;
        image.patches[at] = finder.PatchOf(vertex);
        image.faces[at] = finder.FaceOf(vertex, image.patches[at]);
        image.depths[at] = std::bit_cast<float>(depth);
    }
    return image;
}

}  // namespace trovik::studio
