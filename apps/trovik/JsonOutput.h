// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json_fwd.hpp>

namespace trovik {

/// Prints a document for programs on standard output: indented by two, a newline at its end.
///
/// Strings may hold bytes that are not UTF-8, such as names of files. They are printed with U+FFFD
/// for such bytes, and their object gets one more field: the name of the field with "Bytes" behind
/// it, whose value is the same string (or list of strings) percent-encoded, which gives the bytes
/// back (RFC 3986; all but letters, digits and -._~/ are encoded).
void PrintJson(const nlohmann::json& document);

}  // namespace trovik
