// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Matrix.h"
#include "host/Vector.h"

#include <QOpenGLFunctions_3_3_Core>
#include <QOpenGLShaderProgram>

namespace trovik::studio {

/// The functions of the current context: OpenGL 3.3, core profile.
using Gl = QOpenGLFunctions_3_3_Core;

/// Whether the window system can create a context for `Gl`. Requires a QGuiApplication; a Qt
/// program that shows an OpenGL widget without it crashes.
bool IsGlAvailable();

/// The functions of the current context.
/// \throw std::runtime_error if there is none or it is older than 3.3.
Gl& CurrentGl();

/// Whether the current context draws on the processor, with Mesa's llvmpipe or softpipe.
bool IsSoftwareRenderer(Gl& gl);

/// Compiles and links a program of the current context. The first line, "#version", is added to
/// both sources. \param defines  lines after the version.
/// \throw std::runtime_error with the compiler log.
std::unique_ptr<QOpenGLShaderProgram> MakeProgram(const char* vertexText,
                                                  const char* fragmentText,
                                                  const QByteArray& defines = {});

/// Sets a uniform of the program in use. Unknown names are ignored, because program variants do not
/// have the uniforms that they do not need. Matrices keep the row-vector convention: in the shader,
/// `matrix * vec4(p, 1)` is p times the matrix here.
void SetUniform(QOpenGLShaderProgram& program, const char* name, const Matrix& value);
void SetUniform(QOpenGLShaderProgram& program, const char* name, const Vector& value);
void SetUniform(QOpenGLShaderProgram& program, const char* name, float value);
void SetUniform(QOpenGLShaderProgram& program, const char* name, int value);

}  // namespace trovik::studio
