// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace trovik {

/// Decodes base64 (RFC 4648, section 4) with padding and without line breaks.
/// \throw HostError with the index of the first character that is not valid.
TROVIK_API std::vector<std::uint8_t> DecodeBase64(std::string_view text);

}  // namespace trovik
