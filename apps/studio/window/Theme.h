// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace trovik::studio {

/// Sets the application's style to Fusion, with a palette, a font size and a small style sheet.
/// Icons follow the palette. Has no effect if all of this is already set.
/// \param theme  "dark" or "light"; other values are treated as "dark".
/// \param scale  of texts and controls relative to the desktop's size, as in Preferences::UiScale.
void ApplyTheme(const QString& theme, double scale);

}  // namespace trovik::studio
