// SPDX-License-Identifier: Apache-2.0
#include "render/Matcaps.h"

#include "framework/render/Matcap.h"
#include "framework/render/ToneCurve.h"

#include <cmath>

namespace trovik::studio {

namespace {

constexpr int textureSize = 256;

QString KnownName(const QString& name) {
    return Matcaps::Names().contains(name) ? name : Matcaps::Names().first();
}

}  // namespace

const QStringList& Matcaps::Names() {
    static const QStringList names = [] {
        QStringList all{QStringLiteral("clay")};
        for (const std::string& name : Matcap::Names())
            if (!all.contains(QString::fromStdString(name)))
                all.append(QString::fromStdString(name));
        return all;
    }();
    return names;
}

QImage Matcaps::Preview(const QString& name, int size) {
    const Matcap matcap(KnownName(name).toStdString());
    QImage image(size, size, QImage::Format_ARGB32);
    const float radius = static_cast<float>(size) * 0.5f;
    for (int row = 0; row < size; ++row) {
        for (int column = 0; column < size; ++column) {
            const float x = (static_cast<float>(column) + 0.5f) / radius - 1.0f;
            const float y = 1.0f - (static_cast<float>(row) + 0.5f) / radius;
            const float inside = (1.0f - std::sqrt(x * x + y * y)) * radius + 0.5f;
            const Vector color = matcap.At(x, y);
            image.setPixel(column,
                           row,
                           qRgba(ToByte(Coded(color.x)),
                                 ToByte(Coded(color.y)),
                                 ToByte(Coded(color.z)),
                                 ToByte(inside)));
        }
    }
    return image;
}

Matcaps::~Matcaps() {
    for (const auto& [name, texture] : textures) CurrentGl().glDeleteTextures(1, &texture);
}

GLuint Matcaps::Texture(const QString& name) {
    const QString known = KnownName(name);
    const auto found = textures.find(known);
    if (found != textures.end()) return found->second;

    const Matcap matcap(known.toStdString());
    std::vector<Vector> texels;
    texels.reserve(std::size_t{textureSize} * textureSize);
    const auto coordinate = [](int texel) {
        return (static_cast<float>(texel) + 0.5f) * (2.0f / textureSize) - 1.0f;
    };
    for (int row = 0; row < textureSize; ++row)
        for (int column = 0; column < textureSize; ++column)
            texels.push_back(matcap.At(coordinate(column), coordinate(row)));

    Gl& gl = CurrentGl();
    GLuint texture = 0;
    gl.glGenTextures(1, &texture);
    gl.glBindTexture(GL_TEXTURE_2D, texture);
    gl.glTexImage2D(
        GL_TEXTURE_2D, 0, GL_RGB16F, textureSize, textureSize, 0, GL_RGB, GL_FLOAT, texels.data());
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    textures.emplace(known, texture);
    return texture;
}

}  // namespace trovik::studio
