// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/history/UndoHistory.h"
#include "framework/mesh/LevelMesh.h"

#include <memory>
#include <vector>

namespace trovik {

/// How given freeze amounts g meet the amounts b that are there, 0 to 127 each.
enum class FreezeMode : int {
    /// The larger of both.
    Raise,
    /// g, also where it is 0.
    Replace,
    /// b + g, at most 127.
    Add,
    /// b - g, at least 0.
    Subtract,
    /// b x g / 127, to the nearest: what is frozen by both, and nothing elsewhere.
    Multiply,
};

/// The amount for a share of 0 to 1: the nearest of the 127ths, halves up. A share outside is
/// brought to the nearer end; one that is no number freezes nothing.
TROVIK_API uint8_t FreezeAmountOf(float share);

TROVIK_API uint8_t Blended(uint8_t before, uint8_t given, FreezeMode mode);

/// Amounts for shares of 0 to 1, each taken by `amount`, 0 to 1.
TROVIK_API std::vector<uint8_t> FreezeAmountsOf(const std::vector<float>& shares, float amount);

/// What lies the share `amount` (0 to 1) of the way from `from` to `to`, to the nearest.
TROVIK_API std::vector<uint8_t> FreezeBetween(const std::vector<uint8_t>& from,
                                              const std::vector<uint8_t>& to,
                                              float amount);

/// Blends amounts, one for each vertex, into the level's and answers the step of it, not yet
/// pushed; null when no amount changed. Hidden vertices keep their amounts. Cost: O(vertices).
TROVIK_API std::unique_ptr<UndoStep> BlendFreezeAsStep(LevelMesh& level,
                                                       const std::vector<uint8_t>& given,
                                                       FreezeMode mode);

}  // namespace trovik
