// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/history/UndoHistory.h"
#include "framework/mesh/LevelMesh.h"

#include <memory>
#include <vector>

namespace trovik {

/// Specifies how new freeze amounts g are combined with existing amounts b; both range from 0 to
/// 127.
enum class FreezeMode : int {
    /// The maximum of b and g.
    Raise,
    /// The new amount g replaces b, even if g is 0.
    Replace,
    /// b + g, at most 127.
    Add,
    /// b - g, at least 0.
    Subtract,
    /// b * g / 127, rounded to nearest: the intersection of the two masks.
    Multiply,
};

/// Returns the freeze amount for a mask weight of 0 to 1, rounded to the nearest multiple of 1/127,
/// with halves rounded up. Other weights are clamped; NaN yields 0.
TROVIK_API uint8_t FreezeAmountOf(float weight);

TROVIK_API uint8_t Blended(uint8_t before, uint8_t given, FreezeMode mode);

/// Returns the freeze amounts for mask weights of 0 to 1, each multiplied by `amount` (0 to 1).
TROVIK_API std::vector<uint8_t> FreezeAmountsOf(const std::vector<float>& weights, float amount);

/// Interpolates linearly from `from` to `to` by `amount` (0 to 1) and rounds to nearest.
TROVIK_API std::vector<uint8_t> InterpolatedFreeze(const std::vector<uint8_t>& from,
                                                   const std::vector<uint8_t>& to,
                                                   float amount);

/// Blends freeze amounts, one per vertex, into the level's mask and returns the undo step, which is
/// not pushed yet; null if no amount changed. Hidden vertices keep their amounts. Cost:
/// O(vertices).
TROVIK_API std::unique_ptr<UndoStep> BlendFreezeAsStep(LevelMesh& level,
                                                       const std::vector<uint8_t>& given,
                                                       FreezeMode mode);

}  // namespace trovik
