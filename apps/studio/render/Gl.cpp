// SPDX-License-Identifier: Apache-2.0
#include "render/Gl.h"

#include <QOpenGLContext>
#include <QOpenGLVersionFunctionsFactory>

#include <stdexcept>
#include <string_view>

namespace trovik::studio {

bool IsGlAvailable() {
    QSurfaceFormat format;
    format.setVersion(3, 3);
    format.setProfile(QSurfaceFormat::CoreProfile);
    QOpenGLContext context;
    context.setFormat(format);
    return context.create() && context.format().version() >= format.version();
}

Gl& CurrentGl() {
    QOpenGLContext* const context = QOpenGLContext::currentContext();
    auto* const functions =
        context != nullptr ? QOpenGLVersionFunctionsFactory::get<Gl>(context) : nullptr;
    if (functions == nullptr)
        throw std::runtime_error("the viewport needs OpenGL 3.3 or later with the core profile");
    return *functions;
}

bool IsSoftwareRenderer(Gl& gl) {
    const auto* const text = reinterpret_cast<const char*>(gl.glGetString(GL_RENDERER));
    const std::string_view name(text != nullptr ? text : "");
    return name.starts_with("llvmpipe") || name.starts_with("softpipe");
}

std::unique_ptr<QOpenGLShaderProgram> MakeProgram(const char* vertexText,
                                                  const char* fragmentText,
                                                  const QByteArray& defines) {
    auto program = std::make_unique<QOpenGLShaderProgram>();
    const QByteArray head = "#version 330 core\n" + defines;
    if (!program->addShaderFromSourceCode(QOpenGLShader::Vertex, head + vertexText) ||
        !program->addShaderFromSourceCode(QOpenGLShader::Fragment, head + fragmentText) ||
        !program->link())
        throw std::runtime_error("shader program: " + program->log().toStdString());
    return program;
}

void SetUniform(QOpenGLShaderProgram& program, const char* name, const Matrix& value) {
    const int location = program.uniformLocation(name);
    if (location >= 0) CurrentGl().glUniformMatrix4fv(location, 1, GL_FALSE, &value.m[0][0]);
}

void SetUniform(QOpenGLShaderProgram& program, const char* name, const Vector& value) {
    program.setUniformValue(program.uniformLocation(name), value.x, value.y, value.z);
}

void SetUniform(QOpenGLShaderProgram& program, const char* name, float value) {
    program.setUniformValue(program.uniformLocation(name), value);
}

void SetUniform(QOpenGLShaderProgram& program, const char* name, int value) {
    program.setUniformValue(program.uniformLocation(name), value);
}

}  // namespace trovik::studio
