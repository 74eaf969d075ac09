// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/batch/VertexBatch.h"

namespace trovik {

/// The steps in which a group of rows is processed: at step t, row r is at column t - r.
class RowSteps {
public:
    static constexpr uint32_t maxRows = 4;

    RowSteps(const RowBatches* rows, uint32_t rowCount, uint32_t points);
    /// Returns the number of consecutive steps, starting at `step`, in which the vertices of all
    /// rows move.
    uint32_t Together(uint32_t step) const { return LengthOf(all, step, 0); }
    /// Returns the number of consecutive steps, starting at `step`, in which no vertex moves.
    uint32_t Idle(uint32_t step) const { return LengthOf(any, step, ~uint64_t{0}); }

private:
    static uint32_t LengthOf(const uint64_t (&bits)[4], uint32_t step, uint64_t flip);

    uint64_t all[4];
    uint64_t any[4];
};
static_assert(RowBatches::capacity + RowSteps::maxRows - 1 <= 256);

}  // namespace trovik
