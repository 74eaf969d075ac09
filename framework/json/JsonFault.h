// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <string>
#include <string_view>

namespace trovik {

/// A fault in a JSON document.
struct JsonFault {
    /// JSON Pointer (RFC 6901) to the faulty value; empty for the document itself.
    std::string pointer;
    std::string reason;
};

/// Returns the JSON Pointer to a field of the value at `pointer`. Control characters in the name
/// are replaced with spaces, so that messages stay on one line.
TROVIK_API std::string FieldPointer(const std::string& pointer, std::string_view name);
TROVIK_API std::string ItemPointer(const std::string& pointer, std::size_t index);

/// Returns "NAME: POINTER: reason"; the pointer to the document itself is shown as "/".
TROVIK_API std::string FaultMessage(const std::string& name, const JsonFault& fault);

}  // namespace trovik
