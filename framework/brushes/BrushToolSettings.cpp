// SPDX-License-Identifier: Apache-2.0

/// \file
/// Each tool keeps its own settings: leaving a tool stores them, coming back restores them.
#include "framework/brushes/BrushSettings.h"
#include "framework/scene/SceneStream.h"

namespace trovik {

bool BrushOperation::SetActiveConfiguration(const QString& tool) {
    for (uint32_t i = 0; i < ConfigurationCount(); ++i) {
        BrushConfiguration* row = Configuration(i);
        if (row->Name() == tool && row->BrushClass() == RuntimeClass()) {
            SetActiveConfiguration(row);
            return true;
        }
    }
    return false;
}

void BrushOperation::SetActiveConfiguration(BrushConfiguration* configuration) {
    if (d->active != nullptr) StoreConfiguration(d->active);
    d->active = configuration;
    if (configuration != nullptr && IsConfigurationInited(configuration))
        RestoreConfiguration(configuration);
}

BrushConfiguration* BrushOperation::ActiveConfiguration() const { return d->active; }

void BrushOperation::ResetBrushConfiguration() {
    if (d->active == nullptr) return;
    // Coming to it anew, without storing what is to be forgotten.
    BrushConfiguration* tool = d->active;
    d->stored.erase(tool);
    d->active = nullptr;
    SetActiveConfiguration(tool);
}

bool BrushOperation::IsConfigurationInited(const BrushConfiguration* configuration) const {
    return d->stored.count(configuration) != 0;
}

void BrushOperation::StoreConfiguration(const BrushConfiguration* configuration) {
    SceneStream stream;
    TransferToolSettings(stream);
    d->stored[configuration] = stream.ToBytes();
}

void BrushOperation::RestoreConfiguration(const BrushConfiguration* configuration) {
    const auto found = d->stored.find(configuration);
    if (found == d->stored.end()) return;
    SceneStream stream(found->second);
    TransferToolSettings(stream);
}

// Everything that a tool sets or its user may change; the brush's size is common to all tools.
void BrushOperation::TransferToolSettings(Stream& stream) {
    for (Attribute* attribute : Attributes()) {
        // An attribute that follows another one has no value of its own.
        if (attribute->Source() == nullptr) attribute->Serialize(stream);
    }
    Private& s = *d;
    stream.Transfer(s.strength);
    stream.Transfer(s.strengthBias);
    stream.Transfer(s.sizeBias);
    stream.Transfer(s.falloffIndex);
    stream.Transfer(s.stamp.path);
    stream.Transfer(s.stamp.randomTurn);
    for (bool* flag : {&s.pressureControlsStrength, &s.pressureControlsSize, &s.orientedToSurface,
                       &s.stamp.enabled, &s.stamp.randomize, &s.stampTiled, &s.stampInverted,
                       &s.stampBuildUp}) {
        uint8_t byte = *flag ? 1 : 0;
        stream.Transfer(byte);
        *flag = byte != 0;
    }
    stream.Transfer(s.stampFactor);
    stream.Transfer(s.stampOffset);
    if (stream.IsStoring()) return;
    SetFalloffIndex(s.falloffIndex);
    OnMaskChanged(-1);
}

}  // namespace trovik
