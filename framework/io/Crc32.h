// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstddef>
#include <cstdint>

namespace trovik {

/// Computes the CRC-32 of IEEE 802.3: polynomial 0x04C11DB7, reflected, with initial and final
/// inversion. The result for "123456789" is 0xCBF43926. See Peterson, Brown: "Cyclic Codes for
/// Error Detection" (1961).
/// \param before  the result for the preceding bytes, or 0 at the start.
TROVIK_API uint32_t Crc32(const void* bytes, std::size_t size, uint32_t before = 0);

}  // namespace trovik
