// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/Falloff.h"

#include "framework/brushes/BrushSettings.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

float SmoothStep(float t) { return t * t * (3.0f - 2.0f * t); }

struct Curve {
    const char* name;
    /// Returns the falloff at distance x (0 to 1) from the centre.
    float (*value)(float x);
};

/// Ordered by index. Scenes store the index, so new curves must be added at the end.
constexpr Curve curves[] = {
    {"constant", [](float) { return 1.0f; }},
    {"linear", [](float x) { return 1.0f - x; }},
    {"smooth", [](float x) { return SmoothStep(1.0f - x); }},
    {"spherical", [](float x) { return std::sqrt(std::max(0.0f, 1.0f - x * x)); }},
    {"sharp",
     [](float x) {
         const float inner = 1.0f - x;
         return inner * inner * inner;
     }},
    {"cone", [](float x) { return x < 0.25f ? 1.0f : (1.0f - x) * (1.0f / 0.75f); }},
    {"bell",
     [](float x) {
         const float t = 1.0f - x * x;
         return t * t * t;
     }},
    {"plateau", [](float x) { return x < 0.75f ? 1.0f : SmoothStep((1.0f - x) * 4.0f); }}};

}  // namespace

const std::vector<std::string>& FalloffNames() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> list;
        for (const Curve& curve : curves) list.emplace_back(curve.name);
        return list;
    }();
    return names;
}

int FalloffIndexOf(const std::string& name) {
    const auto& names = FalloffNames();
    const auto found = std::find(names.begin(), names.end(), name);
    return found == names.end() ? -1 : static_cast<int>(found - names.begin());
}

bool IsFalloffIndex(int index) {
    return index >= 0 && index < static_cast<int>(FalloffNames().size());
}

std::string FalloffName(int index) {
    return IsFalloffIndex(index) ? FalloffNames()[static_cast<std::size_t>(index)] : "custom";
}

float FalloffValue(int index, float x) {
    return curves[IsFalloffIndex(index) ? index : smoothFalloffIndex].value(x);
}

void FillFalloff(Store<float>& samples, int index) {
    // A failed allocation does not throw; it leaves the samples empty.
    if (!samples.SetFill(falloffSampleCount, false)) throw Error::s_cBadAlloc;
    for (unsigned i = 0; i < falloffSampleCount; ++i) {
        samples.array[i] =
            FalloffValue(index, static_cast<float>(i) / static_cast<float>(falloffSampleCount - 1));
    }
}

void FillFalloff(Store<float>& samples, const std::vector<float>& values) {
    samples.Clear();
    if (values.empty()) return;
    if (!samples.SetFill(static_cast<uint32_t>(values.size()), false)) throw Error::s_cBadAlloc;
    std::copy(values.begin(), values.end(), samples.array);
}

namespace {

template <typename Content>
FalloffTable::Samples MakeSamples(const Content& content) {
    auto samples = std::make_shared<Store<float>>("brush falloff");
    FillFalloff(*samples, content);
    return samples;
}

}  // namespace

void FalloffTable::Set(int index) { current = MakeSamples(index); }

void FalloffTable::Set(const std::vector<float>& values) { current = MakeSamples(values); }

const Store<float>& FalloffTable::Lend() {
    if (lent.empty() || lent.back() != current) lent.push_back(current);
    return *current;
}

void SetFalloffSamples(BrushOperation& brush, const std::vector<float>& samples) {
    brush.Settings().falloff.Set(samples);
    brush.Settings().falloffIndex = customFalloffIndex;
}

}  // namespace trovik
