// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Attribute.h"

namespace trovik {

/// Copies the value of `from` to `to`, if both have the same type and `to` is not connected to
/// another attribute.
/// \return whether the value was copied.
TROVIK_API bool CopyAttributeValue(const Attribute& from, Attribute& to, bool silent);

/// Like Attribute::SetFromString, with the option not to send an event to the owner.
TROVIK_API bool SetAttributeText(Attribute& attribute, const QString& text, bool silent);

}  // namespace trovik
