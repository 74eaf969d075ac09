// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <string>
#include <string_view>

namespace trovik {

/// A fault of a JSON document.
struct JsonFault {
    /// The faulty value as a JSON pointer (RFC 6901); empty for the document itself.
    std::string pointer;
    std::string reason;
};

/// Returns the pointer of a field of the value at `pointer`. Control characters of the name become
/// spaces, so that messages stay on one line.
TROVIK_API std::string FieldPointer(const std::string& pointer, std::string_view name);
TROVIK_API std::string ItemPointer(const std::string& pointer, std::size_t index);

/// Returns "NAME: POINTER: reason"; the pointer of the document itself is shown as "/".
TROVIK_API std::string FaultMessage(const std::string& name, const JsonFault& fault);

}  // namespace trovik
