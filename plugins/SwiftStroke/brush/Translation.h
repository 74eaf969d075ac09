// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace trovik {

/// The text in the user's language, context "SwiftStroke". Every text that the user sees goes
/// through here. \param comment  tells equal texts of different meaning apart; null for none.
QString Translate(const char* text, const char* comment = nullptr);

}  // namespace trovik
