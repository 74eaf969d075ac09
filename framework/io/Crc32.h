// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstddef>
#include <cstdint>

namespace trovik {

/// CRC-32 as in IEEE 802.3: polynomial 0x04C11DB7 reflected, start and closing inversion; of
/// "123456789" it is 0xCBF43926. \param before  result for the bytes ahead of these, 0 at the
/// start.
TROVIK_API uint32_t Crc32(const void* bytes, std::size_t size, uint32_t before = 0);

}  // namespace trovik
