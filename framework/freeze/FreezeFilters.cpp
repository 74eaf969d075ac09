// SPDX-License-Identifier: Apache-2.0
#include "framework/freeze/FreezeFilters.h"

#include "framework/mesh/FaceSides.h"
#include "framework/multires/Steps.h"

#include <algorithm>
#include <cstdint>

namespace trovik {

namespace {

/// Number of fractional bits that an amount has between two steps.
constexpr int fractionBits = 16;
constexpr int64_t largest = int64_t{freezeAmountMask} << fractionBits;

template <typename Choose>
std::vector<uint8_t> Spread(const LevelMesh& level, uint32_t rings, Choose choose) {
    std::vector<uint8_t> amounts = FreezeAmounts(level);
    std::vector<uint8_t> next = amounts;
    for (uint32_t ring = 0; ring < rings; ++ring) {
        ForEachSide(level, [&](uint32_t a, uint32_t b) {
            next[a] = choose(next[a], amounts[b]);
            next[b] = choose(next[b], amounts[a]);
        });
        if (next == amounts) break;
        amounts = next;
    }
    return amounts;
}

/// Returns value / divisor, rounded to nearest, with halves rounded up; the divisor must be
/// positive.
int64_t Divided(int64_t value, int64_t divisor) {
    const int64_t twice = 2 * value + divisor;
    const int64_t by = 2 * divisor;
    return twice >= 0 ? twice / by : -((-twice + by - 1) / by);
}

/// \param step  computes the next amount; its arguments are the current amount, the sum of the
/// neighbours' amounts and the number of neighbours.
template <typename Step>
std::vector<uint8_t> FilteredAmounts(const LevelMesh& level, uint32_t steps, Step step) {
    std::vector<int64_t> amounts(level.VertexCount());
    for (uint32_t v = 0; v < level.VertexCount(); ++v)
        amounts[v] = int64_t{level.Freeze(v)} << fractionBits;
    std::vector<int64_t> sums(amounts.size());
    std::vector<uint32_t> counts(amounts.size(), 0);
    ForEachSide(level, [&](uint32_t a, uint32_t b) {
        ++counts[a];
        ++counts[b];
    });
    for (uint32_t i = 0; i < steps; ++i) {
        std::fill(sums.begin(), sums.end(), 0);
        ForEachSide(level, [&](uint32_t a, uint32_t b) {
            sums[a] += amounts[b];
            sums[b] += amounts[a];
        });
        bool changed = false;
        for (std::size_t v = 0; v < amounts.size(); ++v) {
            if (counts[v] == 0) continue;
            const int64_t after =
                std::clamp<int64_t>(step(amounts[v], sums[v], int64_t{counts[v]}), 0, largest);
            changed = changed || after != amounts[v];
            amounts[v] = after;
        }
        if (!changed) break;
    }
    std::vector<uint8_t> rounded(amounts.size());
    for (std::size_t v = 0; v < amounts.size(); ++v)
        rounded[v] =
            static_cast<uint8_t>((amounts[v] + (int64_t{1} << (fractionBits - 1))) >> fractionBits);
    return rounded;
}

}  // namespace

std::vector<uint8_t> InvertedFreeze(const LevelMesh& level) {
    std::vector<uint8_t> amounts = FreezeAmounts(level);
    for (uint8_t& amount : amounts) amount = static_cast<uint8_t>(freezeAmountMask - amount);
    return amounts;
}

std::vector<uint8_t> GrownFreeze(const LevelMesh& level, uint32_t rings) {
    return Spread(level, rings, [](uint8_t a, uint8_t b) { return std::max(a, b); });
}

std::vector<uint8_t> ShrunkFreeze(const LevelMesh& level, uint32_t rings) {
    return Spread(level, rings, [](uint8_t a, uint8_t b) { return std::min(a, b); });
}

std::vector<uint8_t> BlurredFreeze(const LevelMesh& level, uint32_t steps) {
    return FilteredAmounts(level, steps, [](int64_t amount, int64_t sum, int64_t count) {
        return Divided(amount * count + sum, 2 * count);
    });
}

std::vector<uint8_t> SharpenedFreeze(const LevelMesh& level, uint32_t steps) {
    return FilteredAmounts(level, steps, [](int64_t amount, int64_t sum, int64_t count) {
        return Divided(2 * amount * count - sum, count);
    });
}

}  // namespace trovik
