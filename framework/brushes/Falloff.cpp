// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/Falloff.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

float SmoothStep(float t) { return t * t * (3.0f - 2.0f * t); }

}  // namespace

const std::vector<std::string>& FalloffNames() {
    static const std::vector<std::string> names = {"constant", "linear", "smooth", "spherical",
                                                   "sharp",    "cone",   "bell",   "plateau"};
    return names;
}

int FalloffIndexOf(const std::string& name) {
    const auto& names = FalloffNames();
    const auto found = std::find(names.begin(), names.end(), name);
    return found == names.end() ? -1 : static_cast<int>(found - names.begin());
}

float FalloffValue(int index, float x) {
    const float inner = 1.0f - x;
    switch (index) {
        case 0:
            return 1.0f;
        case 1:
            return inner;
        case 3:
            return std::sqrt(std::max(0.0f, 1.0f - x * x));
        case 4:
            return inner * inner * inner;
        case 5:
            return x < 0.25f ? 1.0f : inner * (1.0f / 0.75f);
        case 6: {
            const float t = 1.0f - x * x;
            return t * t * t;
        }
        case 7:
            return x < 0.75f ? 1.0f : SmoothStep(inner * 4.0f);
        default:
            return SmoothStep(inner);
    }
}

void FillFalloff(Store<float>& samples, int index) {
    samples.SetFill(falloffSampleCount, false);
    for (unsigned i = 0; i < falloffSampleCount; ++i) {
        samples.array[i] = FalloffValue(
            index, static_cast<float>(i) / static_cast<float>(falloffSampleCount - 1));
    }
}

void FillFalloff(Store<float>& samples, const std::vector<float>& values) {
    samples.Clear();
    if (values.empty()) return;
    samples.SetFill(static_cast<uint32_t>(values.size()), false);
    std::copy(values.begin(), values.end(), samples.array);
}

}  // namespace trovik
