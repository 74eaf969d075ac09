// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json_fwd.hpp>

namespace trovik {

/// Prints a JSON document on standard output, with an indent of two spaces and a final newline.
///
/// Strings such as file names may contain bytes that are not UTF-8. Such bytes are printed as
/// U+FFFD, and the enclosing object gets an additional field, named like the string's field with
/// "Bytes" appended. Its value is the same string (or list of strings) percent-encoded, which
/// preserves the exact bytes (RFC 3986; all but letters, digits and -._~/ are encoded).
void PrintJson(const nlohmann::json& document);

}  // namespace trovik
