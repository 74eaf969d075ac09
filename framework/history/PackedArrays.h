// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/history/StepArray.h"
#include "host/Api.h"

#include <cstdint>
#include <vector>

namespace trovik {

/// The compression method: Quick (LZ4) for recent data, Tight (Zstandard) for data that is likely
/// to be kept for a long time.
enum class PackMethod : uint8_t { Quick, Tight };

/// Packs arrays of plain values into one sequence of compressed bytes.
///
/// Each array is split into pieces of at most 256 KiB. Within a piece, the first bytes of all
/// elements come first, then all second bytes, and so on. Bytes of the same rank are often similar,
/// for example the signs and exponents of neighbouring positions or the high bytes of indices, so
/// this order improves compression. Pieces that do not shrink are stored uncompressed. Because
/// pieces are compressed one at a time, compression needs memory only for two pieces and the
/// result, regardless of the size of the arrays.
///
/// Layout: for each array, its element size and count (u32, u64); then, for each of its pieces, the
/// packed length (u32) and the bytes. If the packed length equals the length of the piece, the
/// piece is uncompressed.
TROVIK_API std::vector<uint8_t> PackArrays(const std::vector<StepArray>& arrays, PackMethod method);

/// Unpacks into the arrays, which must have the same types as the packed ones.
/// \throw HostError if the bytes were not produced by PackArrays from such arrays; the arrays are
/// then empty.
TROVIK_API void UnpackArrays(const std::vector<uint8_t>& packed,
                             PackMethod method,
                             const std::vector<StepArray>& arrays);

/// Converts packed bytes to the other method, piece by piece, without needing the arrays.
/// \throw HostError if `packed` is damaged.
TROVIK_API std::vector<uint8_t> Repack(const std::vector<uint8_t>& packed,
                                       PackMethod from,
                                       PackMethod to);

}  // namespace trovik
