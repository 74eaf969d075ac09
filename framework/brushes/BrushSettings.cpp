// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/BrushSettings.h"

#include "framework/brushes/Falloff.h"

#include <cmath>

namespace trovik {

namespace {

/// Reads or writes the falloff, which consists of the curve's index and, for a user-defined curve,
/// its samples.
void TransferFalloff(BrushOperation::Private& settings, Stream& stream) {
    int32_t index = settings.falloffIndex;
    stream.Transfer(index);
    if (index != customFalloffIndex) {
        if (stream.IsStoring()) return;
        settings.falloffIndex = IsFalloffIndex(index) ? index : smoothFalloffIndex;
        settings.falloff.Set(settings.falloffIndex);
        return;
    }
    const Store<float>& samples = *settings.falloff.Current();
    uint32_t count = samples.fill;
    stream.Transfer(count);
    if (stream.IsStoring()) {
        stream.WriteElements(samples.array, sizeof(float), count);
        return;
    }
    // Samples are read one at a time, so that a wrong count causes an end-of-file error instead of
    // a huge allocation.
    std::vector<float> values;
    for (uint32_t i = 0; i < count; ++i) {
        float value = 0.0f;
        stream.Transfer(value);
        values.push_back(value);
    }
    settings.falloff.Set(values);
    settings.falloffIndex = customFalloffIndex;
}

/// Replaces a non-finite value, which a file may contain, with `otherwise`.
void Finite(float& value, float otherwise) {
    if (!std::isfinite(value)) value = otherwise;
}

void Percent(float& value) {
    if (!(value >= 0.0f)) value = 0.0f;
    if (value > 100.0f) value = 100.0f;
}

}  // namespace

void TransferPlainSettings(BrushOperation& brush, Stream& stream) {
    BrushOperation::Private& s = brush.Settings();
    for (float* number : {&s.strength,
                          &s.strengthBias,
                          &s.sizeBias,
                          &s.stamp.randomTurn,
                          &s.stampFactor,
                          &s.stampOffset})
        stream.Transfer(*number);
    stream.Transfer(s.stamp.path);
    for (bool* flag : {&s.orientedToSurface,
                       &s.stamp.enabled,
                       &s.stamp.randomize,
                       &s.stampTiled,
                       &s.stampInverted,
                       &s.stampBuildUp}) {
        uint8_t byte = *flag ? 1 : 0;
        stream.Transfer(byte);
        *flag = byte != 0;
    }
    TransferFalloff(s, stream);
    if (stream.IsStoring()) return;
    brush.SetBrushStrength(s.strength);
    Percent(s.strengthBias);
    Percent(s.sizeBias);
    Finite(s.stamp.randomTurn, 0.0f);
    Finite(s.stampFactor, 1.0f);
    Finite(s.stampOffset, 0.0f);
    brush.OnMaskChanged(-1);
}

}  // namespace trovik
