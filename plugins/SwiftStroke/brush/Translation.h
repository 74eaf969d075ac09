// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace trovik {

/// Translates a string into the user's language, in the context "SwiftStroke". All user-visible
/// strings pass through this function.
/// \param comment  a comment that distinguishes identical strings with different meanings; may be
/// null.
QString Translate(const char* text, const char* comment = nullptr);

}  // namespace trovik
