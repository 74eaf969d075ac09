// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/history/StepArray.h"
#include "host/Api.h"

#include <cstdint>
#include <vector>

namespace trovik {

/// How packed bytes are compressed: Quick (LZ4) for what was just made, Tight (Zstandard) for what
/// is likely to lie for long.
enum class PackMethod : uint8_t { Quick, Tight };

/// Arrays of plain values as one run of compressed bytes.
///
/// Each array is cut into pieces of at most 256 KiB; in each, the first bytes of all elements come
/// first, then all second bytes and so on, since bytes of the same rank are alike: signs and
/// exponents of neighbouring places, high bytes of indices. Pieces that do not shrink are kept as
/// they are. So compression needs room for two pieces and the result, whatever the arrays' size.
///
/// Layout: per array its element size and count (u32, u64), then per piece its packed length (u32)
/// and the bytes; a length equal to the piece's own means uncompressed.
TROVIK_API std::vector<uint8_t> PackArrays(const std::vector<StepArray>& arrays, PackMethod method);

/// Refills the arrays, which must be those that were packed. \throw HostError when the bytes are
/// not what PackArrays makes of such arrays; the arrays are empty then.
TROVIK_API void UnpackArrays(const std::vector<uint8_t>& packed,
                             PackMethod method,
                             const std::vector<StepArray>& arrays);

/// The same arrays packed in the other way, without having them: piece by piece. \throw HostError
/// when `packed` is damaged.
TROVIK_API std::vector<uint8_t> Repack(const std::vector<uint8_t>& packed,
                                       PackMethod from,
                                       PackMethod to);

}  // namespace trovik
