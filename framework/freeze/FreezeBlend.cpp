// SPDX-License-Identifier: Apache-2.0
#include "framework/freeze/FreezeBlend.h"

#include "framework/mesh/LevelHierarchy.h"
#include "framework/multires/Steps.h"

#include <algorithm>
#include <cassert>

namespace trovik {

namespace {

constexpr int full = freezeAmountMask;

float Limited(float weight) { return weight > 0.0f ? std::min(weight, 1.0f) : 0.0f; }

/// Rounds to nearest, with halves rounded up. Unlike std::lround, it may also round up an amount
/// just below one half, because the sum is rounded. Stored masks depend on this.
uint8_t Rounded(float amount) {
    // NOLINTNEXTLINE(bugprone-incorrect-roundings)
    return static_cast<uint8_t>(amount + 0.5f);
}

}  // namespace

uint8_t FreezeAmountOf(float weight) { return Rounded(Limited(weight) * static_cast<float>(full)); }

uint8_t Blended(uint8_t before, uint8_t given, FreezeMode mode) {
    const int b = before;
    const int g = given;
    switch (mode) {
        case FreezeMode::Raise:
            return std::max(before, given);
        case FreezeMode::Replace:
            return given;
        case FreezeMode::Add:
            return static_cast<uint8_t>(std::min(b + g, full));
        case FreezeMode::Subtract:
            return static_cast<uint8_t>(std::max(b - g, 0));
        case FreezeMode::Multiply:
            // The divisor, 127, is odd, so no quotient lies exactly halfway between two integers.
            return static_cast<uint8_t>((b * g + full / 2) / full);
    }
    return before;
}

std::vector<uint8_t> FreezeAmountsOf(const std::vector<float>& weights, float amount) {
    std::vector<uint8_t> amounts(weights.size());
    for (std::size_t v = 0; v < weights.size(); ++v)
        amounts[v] = FreezeAmountOf(Limited(weights[v]) * Limited(amount));
    return amounts;
}

std::vector<uint8_t> InterpolatedFreeze(const std::vector<uint8_t>& from,
                                        const std::vector<uint8_t>& to,
                                        float amount) {
    assert(from.size() == to.size());
    const float weight = Limited(amount);
    std::vector<uint8_t> between(from.size());
    for (std::size_t v = 0; v < from.size(); ++v) {
        const auto start = static_cast<float>(from[v]);
        const float way = static_cast<float>(to[v]) - start;
        between[v] = Rounded(start + way * weight);
    }
    return between;
}

std::unique_ptr<UndoStep> BlendFreezeAsStep(LevelMesh& level,
                                            const std::vector<uint8_t>& given,
                                            FreezeMode mode) {
    assert(given.size() == level.VertexCount());
    std::vector<uint32_t> vertices;
    std::vector<uint8_t> before;
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        if (level.IsVertexHidden(v)) continue;
        const uint8_t present = level.Freeze(v);
        const uint8_t after = Blended(present, given[v], mode);
        if (after == present) continue;
        vertices.push_back(v);
        before.push_back(present);
        level.SetFreeze(v, after);
    }
    auto step = MakeFreezeStep(level, vertices, before);
    if (step == nullptr) return nullptr;
    level.ContentChanged();
    level.Hierarchy().ReportVertices(
        static_cast<uint32_t>(level.Index()), SurfaceChange::Mask, vertices);
    return step;
}

}  // namespace trovik
