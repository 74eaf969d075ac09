// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <QString>

#include <string>

namespace trovik {

/// Returns a message or tool tip of a brush as one line of plain text, for terminals.
///
/// Brushes write rich text: tags become spaces, the "%%" around command names is removed, and each
/// run of white space becomes one space. A "<" that does not start a tag is kept. Cost: linear.
TROVIK_API std::string PlainText(QString richText);

}  // namespace trovik
