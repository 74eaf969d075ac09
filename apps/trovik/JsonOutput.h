// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json_fwd.hpp>

namespace trovik {

/// Returns whether all strings of a JSON value are valid UTF-8.
bool IsUtf8(const nlohmann::json& text);

/// Prints a JSON document on standard output, indented by two spaces and with a trailing newline.
///
/// Strings such as file names may contain bytes that are not UTF-8. Such bytes are printed as
/// U+FFFD, and the enclosing object gets an additional field, whose name is that of the string's
/// field with "Bytes" appended. Its value is the same string (or list of strings), percent-encoded
/// to preserve the exact bytes (RFC 3986; everything except letters, digits and -._~/ is encoded).
void PrintJson(const nlohmann::json& document);

}  // namespace trovik
