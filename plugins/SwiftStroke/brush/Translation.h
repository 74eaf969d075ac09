// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace trovik {

/// Translates a text to the user's language, context "SwiftStroke". All texts that users see are
/// passed through this function.
/// \param comment  distinguishes identical texts with different meanings; may be null.
QString Translate(const char* text, const char* comment = nullptr);

}  // namespace trovik
