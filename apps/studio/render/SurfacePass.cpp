// SPDX-License-Identifier: Apache-2.0
#include "render/SurfacePass.h"

#include "render/GroupColors.h"
#include "render/SurfaceShader.h"

#include <algorithm>

namespace trovik::studio {

namespace {

/// Size of the array in the shader.
constexpr int maxRings = 33;
/// Opacity of the falloff preview where the falloff is 1.
constexpr float falloffOpacity = 0.30f;

Matrix WorldToView(const RenderView& view) {
    const Vector back = -view.forward;
    const Vector axes[3] = {view.right, view.up, back};
    Matrix matrix;
    for (int column = 0; column < 3; ++column) {
        matrix.m[0][column] = axes[column].x;
        matrix.m[1][column] = axes[column].y;
        matrix.m[2][column] = axes[column].z;
        matrix.m[3][column] = -(view.eye | axes[column]);
    }
    return matrix;
}

/// Returns the matrix that transforms normals, the inverse transpose.
Matrix NormalToView(const Matrix& toWorld, const Matrix& worldToView) {
    Matrix inverse = toWorld;
    inverse.Invert(nullptr);
    Matrix normals;
    Matrix view;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column) {
            normals.m[row][column] = inverse.m[column][row];
            view.m[row][column] = worldToView.m[row][column];
        }
    return normals * view;
}

float Determinant(const Matrix& matrix) {
    const Vector x(matrix.m[0][0], matrix.m[0][1], matrix.m[0][2]);
    const Vector y(matrix.m[1][0], matrix.m[1][1], matrix.m[1][2]);
    const Vector z(matrix.m[2][0], matrix.m[2][1], matrix.m[2][2]);
    return x | (y & z);
}

Vector ColorOf(const QColor& color) {
    return {static_cast<float>(color.redF()),
            static_cast<float>(color.greenF()),
            static_cast<float>(color.blueF())};
}

}  // namespace

SurfacePass::SurfacePass()
    : gl(CurrentGl()), edges(MakeProgram(edgeVertexShader, edgeFragmentShader)) {
    gl.glGenTextures(1, &falloffTexture);
    gl.glBindTexture(GL_TEXTURE_2D, falloffTexture);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    SetFalloff({0.0f});
}

SurfacePass::~SurfacePass() { gl.glDeleteTextures(1, &falloffTexture); }

QOpenGLShaderProgram& SurfacePass::Variant(const SurfaceBuffers& surface, const Frame& frame) {
    const RenderSettings& settings = frame.settings;
    QByteArray defines;
    const auto add = [&](bool isUsed, const char* name) {
        if (isUsed) defines += QByteArray("#define ") + name + '\n';
    };
    add(frame.view.isOrthographic, "ORTHOGRAPHIC");
    add(settings.isFlat, "FLAT");
    // Flat normals have no derivatives within a triangle.
    add(settings.cavity > 0.0f && !settings.isFlat, "CAVITY");
    add(settings.hasWireframe && surface.Layout()->IsGrid(), "WIRE");
    add(settings.showsMask, "MASK");
    add(settings.showsGroups, "GROUPS");
    add(frame.overlays.ring.has_value() || !frame.overlays.mirroredRings.empty(), "RINGS");
    add(!frame.overlays.symmetryPlanes.empty(), "PLANES");
    auto& program = variants[defines];
    if (program == nullptr)
        program = MakeProgram(surfaceVertexShader, surfaceFragmentShader, defines);
    return *program;
}

void SurfacePass::SetFalloff(const std::vector<float>& values) {
    if (values == falloff || values.empty()) return;
    falloff = values;
    gl.glBindTexture(GL_TEXTURE_2D, falloffTexture);
    gl.glTexImage2D(GL_TEXTURE_2D,
                    0,
                    GL_R16F,
                    static_cast<GLsizei>(values.size()),
                    1,
                    0,
                    GL_RED,
                    GL_FLOAT,
                    values.data());
}

void SurfacePass::SetRings(QOpenGLShaderProgram& program, const Overlays& overlays) {
    std::vector<QVector4D> rings;
    std::vector<QVector3D> colors;
    const auto add = [&](const BrushRing& ring) {
        if (rings.size() == maxRings) return;
        rings.emplace_back(ring.position.x, ring.position.y, ring.position.z, ring.radius);
        const Vector color = ColorOf(ring.color);
        colors.emplace_back(color.x, color.y, color.z);
    };
    // Index 0 is for the brush ring; a negative radius draws nothing.
    if (overlays.ring.has_value())
        add(*overlays.ring);
    else
        add(BrushRing{{}, {}, -1e30f, Qt::black, {}});
    for (const BrushRing& ring : overlays.mirroredRings) add(ring);
    program.setUniformValueArray("rings", rings.data(), static_cast<int>(rings.size()));
    program.setUniformValueArray("ringColors", colors.data(), static_cast<int>(colors.size()));
    SetUniform(program, "ringCount", static_cast<int>(rings.size()));
    const bool hasFalloff = overlays.ring.has_value() && !overlays.ring->falloff.empty();
    if (hasFalloff) SetFalloff(overlays.ring->falloff);
    SetUniform(program, "falloffStrength", hasFalloff ? falloffOpacity : 0.0f);
    SetUniform(program, "falloff", 1);
    gl.glActiveTexture(GL_TEXTURE1);
    gl.glBindTexture(GL_TEXTURE_2D, falloffTexture);
    gl.glActiveTexture(GL_TEXTURE0);
}

SurfaceBuffers::Drawn SurfacePass::Draw(SurfaceBuffers& surface, const Frame& frame) {
    if (surface.Layout() == nullptr) return {};
    const Matrix localToClip = frame.toWorld * frame.view.worldToClip;
    const Matrix worldToView = WorldToView(frame.view);
    const uint32_t stride = surface.UsedStrideLog2(frame.strideLog2);
    const PatchLayout& layout = *surface.Layout();

    QOpenGLShaderProgram& program = Variant(surface, frame);
    program.bind();
    SetUniform(program, "localToClip", localToClip);
    SetUniform(program, "localToWorld", frame.toWorld);
    SetUniform(program, "worldToView", worldToView);
    SetUniform(program, "normalToView", NormalToView(frame.toWorld, worldToView));
    SetUniform(program, "pixelRatio", frame.pixelRatio);
    SetUniform(program, "cavity", frame.settings.cavity);
    if (layout.IsGrid()) {
        SetUniform(program, "gridSide", static_cast<int>(1u << layout.Depth()) + 1);
        SetUniform(program, "wireStride", static_cast<float>(1u << stride));
        SetUniform(program, "wireLevels", static_cast<int>(layout.Depth() - stride + 1));
    }
    Vector planes;
    for (const int axis : frame.overlays.symmetryPlanes)
        (axis == 0 ? planes.x : axis == 1 ? planes.y : planes.z) = 1.0f;
    SetUniform(program, "planes", planes);
    if (frame.settings.showsGroups)
        program.setUniformValueArray(
            "groupColors", GroupTints().data(), static_cast<int>(GroupTints().size()));
    if (program.uniformLocation("ringCount") >= 0) SetRings(program, frame.overlays);
    SetUniform(program, "matcap", 0);
    gl.glActiveTexture(GL_TEXTURE0);
    gl.glBindTexture(GL_TEXTURE_2D, matcaps.Texture(frame.settings.matcap));

    gl.glProvokingVertex(GL_FIRST_VERTEX_CONVENTION);
    gl.glFrontFace(Determinant(frame.toWorld) < 0.0f ? GL_CW : GL_CCW);
    const FrustumCuller culler(localToClip);
    SurfaceBuffers::Drawn drawn = surface.Draw(culler, stride);
    if (frame.settings.hasWireframe && !layout.IsGrid()) {
        edges->bind();
        SetUniform(*edges, "localToClip", localToClip);
        gl.glEnable(GL_BLEND);
        gl.glDepthMask(GL_FALSE);
        drawn.calls += surface.DrawEdges(culler, frame.waits).calls;
        gl.glDepthMask(GL_TRUE);
        gl.glDisable(GL_BLEND);
    }
    gl.glFrontFace(GL_CCW);
    gl.glProvokingVertex(GL_LAST_VERTEX_CONVENTION);
    return drawn;
}

}  // namespace trovik::studio
