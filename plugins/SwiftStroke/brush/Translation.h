// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace trovik {

/// Translates a text into the user's language, in the context "SwiftStroke". All user-visible texts
/// pass through this function.
/// \param comment  distinguishes identical texts with different meanings; may be null.
QString Translate(const char* text, const char* comment = nullptr);

}  // namespace trovik
