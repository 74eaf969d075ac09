// SPDX-License-Identifier: Apache-2.0

/// \file Each tool has its own settings, which are stored when another tool is selected and
/// restored when the tool is selected again.
#include "framework/brushes/BrushSettings.h"
#include "framework/nodes/SceneStream.h"

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
    // Selects the tool again without storing the settings that are being reset.
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

// Reads or writes all settings that a tool sets or that the user can change per tool. The brush
// size is shared by all tools.
void BrushOperation::TransferToolSettings(Stream& stream) {
    for (Attribute* attribute : Attributes()) {
        // An attribute that is connected to a source has no value of its own. The connection may no
        // longer exist when the settings are restored, so the settings also store whether the
        // attribute has its own value.
        uint8_t own = attribute->Source() == nullptr ? 1 : 0;
        stream.Transfer(own);
        if (own == 0) continue;
        attribute->Serialize(stream);
        if (!stream.IsStoring()) attribute->UpdateTargets();
    }
    TransferPlainSettings(*this, stream);
}

}  // namespace trovik
