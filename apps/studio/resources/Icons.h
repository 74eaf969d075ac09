// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QIcon>
#include <QString>

namespace trovik::studio {

/// An icon of resources/icons, drawn as vector graphics at the size and scale of each use, in the
/// current text colour of the application's palette; disabled icons are dimmed.
/// \param name  without ".svg". An unknown name gives an empty icon.
QIcon Icon(const QString& name);
/// The icon of resources/icons in a given colour.
QIcon Icon(const QString& name, const QColor& color);

/// Makes the compiled-in files below ":/studio" available. Icon calls it; further calls have no
/// effect.
void InitResources();

}  // namespace trovik::studio
