// SPDX-License-Identifier: Apache-2.0
#include "kernels/batch/RowSteps.h"

#include <algorithm>
#include <bit>

namespace trovik {

RowSteps::RowSteps(const RowBatches* rows, uint32_t rowCount, uint32_t points)
    : all{~0ull, ~0ull, ~0ull, ~0ull}, any{} {
    const uint32_t words = (points + 63) / 64;
    for (uint32_t row = 0; row < rowCount; ++row) {
        uint64_t carried = 0;
        for (uint32_t k = 0; k < std::size(all); ++k) {
            const uint64_t movingMask = k < words ? rows[row].movingMask[k] : 0;
            const uint64_t shifted = (movingMask << row) | carried;
            carried = row == 0 ? 0 : movingMask >> (64 - row);
            all[k] &= shifted;
            any[k] |= shifted;
        }
    }
}

uint32_t RowSteps::LengthOf(const uint64_t (&bits)[4], uint32_t step, uint64_t flip) {
    uint32_t length = 0;
    while (step < 256) {
        const uint64_t rest = (bits[step / 64] ^ flip) >> (step % 64);
        const auto here = std::min(static_cast<uint32_t>(std::countr_one(rest)), 64 - step % 64);
        length += here;
        if (here < 64 - step % 64) break;
        step += here;
    }
    return length;
}

}  // namespace trovik
