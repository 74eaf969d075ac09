// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "render/Gl.h"

#include <QImage>
#include <QStringList>

#include <map>

namespace trovik::studio {

/// The matcaps of the viewport, as textures of the current context.
class Matcaps {
public:
    /// The valid values of RenderSettings::matcap; the first is the default.
    static const QStringList& Names();
    /// A sphere with the matcap on a transparent background, for buttons. Callable from any thread.
    /// \param size  width and height in device pixels.
    static QImage Preview(const QString& name, int size);

    Matcaps() = default;
    /// Requires the context of Texture.
    ~Matcaps();
    Matcaps(const Matcaps&) = delete;
    Matcaps& operator=(const Matcaps&) = delete;

    /// A texture of linear colours, indexed by normals from (-1, -1) to (1, 1), x to the right and
    /// y up. Created by the first call; unknown names select the default.
    GLuint Texture(const QString& name);

private:
    std::map<QString, GLuint> textures;
};

}  // namespace trovik::studio
