// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Attribute.h"

namespace trovik {

/// Brings the value of `from` into `to`, where both are of one type and `to` follows no other
/// attribute. \return whether it did.
TROVIK_API bool CopyAttributeValue(const Attribute& from, Attribute& to, bool silent);

/// As Attribute::SetFromString, with the choice to raise no event at the owner.
TROVIK_API bool SetAttributeText(Attribute& attribute, const QString& text, bool silent);

}  // namespace trovik
