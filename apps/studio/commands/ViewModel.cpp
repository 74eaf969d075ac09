// SPDX-License-Identifier: Apache-2.0
#include "commands/ViewModel.h"

namespace trovik::studio {

void ViewModel::SetSettings(const RenderSettings& changed) {
    if (changed == settings) return;
    settings = changed;
    Q_EMIT SettingsChanged();
}

void ViewModel::SetOrthographic(bool on) {
    if (on == isOrthographic) return;
    isOrthographic = on;
    Q_EMIT OrthographicChanged(on);
}

void ViewModel::SetFieldOfView(float degrees) {
    if (degrees == fieldOfView) return;
    fieldOfView = degrees;
    Q_EMIT FieldOfViewChanged(degrees);
}

void ViewModel::SetPenLatency(double seconds) {
    penLatency = seconds;
    Q_EMIT PenLatencyChanged();
}

std::vector<MatcapName> MatcapTitles() {
    return {{QStringLiteral("clay"), ViewModel::tr("Clay")},
            {QStringLiteral("wax"), ViewModel::tr("Wax")},
            {QStringLiteral("grey"), ViewModel::tr("Grey")},
            {QStringLiteral("terracotta"), ViewModel::tr("Terracotta")},
            {QStringLiteral("porcelain"), ViewModel::tr("Porcelain")},
            {QStringLiteral("bronze"), ViewModel::tr("Bronze")}};
}

}  // namespace trovik::studio
