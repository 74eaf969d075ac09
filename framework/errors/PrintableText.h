// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <string>
#include <string_view>

namespace trovik {

/// Returns the text as one line of valid UTF-8 that is safe to print on a terminal. Messages quote
/// file names and file content, which may contain any bytes.
///
/// Printable characters are unchanged. Bytes that are not UTF-8 become `\xHH`. Line breaks, other
/// control characters and the characters that change the direction of text become `\n`, `\t`, `\r`
/// or `\u{H...}`. Cost: linear.
TROVIK_API std::string PrintableText(std::string_view text);

}  // namespace trovik
