// SPDX-License-Identifier: Apache-2.0
#include "render/GroupColors.h"

#include "framework/display/DisplayVertex.h"
#include "framework/render/ToneCurve.h"

#include <cmath>

namespace trovik::studio {

namespace {

/// With this factor, the white tint is about as bright as clay in the viewport.
constexpr float swatchLight = 0.75f;

}  // namespace

QVector3D GroupTint(uint8_t displayGroup) {
    if (displayGroup == 0) return {1.0f, 1.0f, 1.0f};
    // Steps of the golden ratio give neighbouring numbers distant hues.
    const float turns = static_cast<float>(displayGroup) * 0.61803399f + 0.1f;
    const QColor pure = QColor::fromHsvF(turns - std::floor(turns), 0.62f, 1.0f);
    return {pure.redF(), pure.greenF(), pure.blueF()};
}

const std::vector<QVector3D>& GroupTints() {
    static const std::vector<QVector3D> tints = [] {
        std::vector<QVector3D> all;
        for (uint32_t group = 0; group <= displayGroupCount; ++group)
            all.push_back(GroupTint(static_cast<uint8_t>(group)));
        return all;
    }();
    return tints;
}

QColor GroupColor(uint8_t displayGroup) {
    const QVector3D tint = GroupTint(displayGroup) * swatchLight;
    return QColor::fromRgb(
        ToByte(Coded(tint.x())), ToByte(Coded(tint.y())), ToByte(Coded(tint.z())));
}

}  // namespace trovik::studio
