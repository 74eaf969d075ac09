// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/BrushSettings.h"
#include "framework/script/ToolSettings.h"
#include "framework/script/commands/SettingsParameters.h"

#include <algorithm>
#include <iterator>

namespace trovik {

namespace {

PressureCurve CurveOf(const CurveSetting& setting, const std::string& pointer) {
    const auto* list = std::get_if<std::vector<std::array<float, 2>>>(&setting);
    if (list == nullptr) return {};
    std::vector<PressureCurve::Point> points;
    for (const auto& point : *list) points.push_back({point[0], point[1]});
    std::size_t index = 0;
    if (const auto flaw = PressureCurve::Flaw(points, index)) {
        throw FieldFault(index < points.size() ? pointer + "/" + std::to_string(index) : pointer,
                         *flaw);
    }
    return PressureCurve(points);
}

CheckableFloat LengthOf(const LengthSetting& setting, const CheckableFloat& present) {
    if (const auto* on = std::get_if<bool>(&setting)) return {*on, present.value};
    return {true, std::get<float>(setting)};
}

// The schema has already checked the names.
void SetDetail(DetailSettings& detail, const DetailParameters& setting, float radius) {
    if (setting.unit) {
        const auto* const name =
            std::find(std::begin(detailUnitNames), std::end(detailUnitNames), *setting.unit);
        detail.SelectMeasure(
            static_cast<DetailSettings::Measure>(name - std::begin(detailUnitNames)), radius);
    }
    detail.length = setting.length.value_or(detail.length);
    if (setting.mode) {
        detail.splits = *setting.mode != "coarsen";
        detail.collapses = *setting.mode != "refine";
    }
    detail.creaseAngle = setting.creaseAngle.value_or(detail.creaseAngle);
}

}  // namespace

void SetPen(CommandContext& context, const SettingsParameters& settings) {
    BrushOperation& brush = context.document.Brush();
    BrushOperation::Private& host = brush.Settings();
    DabDynamics& dynamics = context.document.Settings().dynamics;
    if (settings.smoothing)
        brush.strokeSmoothingAttribute.SetValue(
            LengthOf(*settings.smoothing, brush.strokeSmoothingAttribute.Value()), true);
    if (settings.stabiliser)
        brush.steadyStrokeAttribute.SetValue(
            LengthOf(*settings.stabiliser, brush.steadyStrokeAttribute.Value()), true);
    if (settings.strengthCurve)
        dynamics.strengthCurve = CurveOf(*settings.strengthCurve, "/strengthCurve");
    if (settings.sizeCurve) {
        dynamics.sizeCurve = CurveOf(*settings.sizeCurve, "/sizeCurve");
        if (!dynamics.sizeCurve.IsIdentity()) brush.strokeOptionD.SetValue(true, true);
    }
    if (settings.pressureControlsSize)
        brush.strokeOptionD.SetValue(*settings.pressureControlsSize, true);
    host.sizeBias = settings.sizeBias.value_or(host.sizeBias);
    if (settings.tilt) {
        const TiltParameters& tilt = *settings.tilt;
        dynamics.tiltRotatesStamp = tilt.rotate.value_or(dynamics.tiltRotatesStamp);
        dynamics.tiltToSize = tilt.size.value_or(dynamics.tiltToSize);
        dynamics.tiltToStrength = tilt.strength.value_or(dynamics.tiltToStrength);
    }
    dynamics.randomSize = settings.randomSize.value_or(dynamics.randomSize);
    dynamics.airbrush = settings.airbrush.value_or(dynamics.airbrush);
    SceneSettings& scene = context.document.Settings();
    if (settings.detail) SetDetail(scene.detail, *settings.detail, scene.radius);
    if (settings.radius && settings.radiusPixels)
        throw FieldFault("/radiusPixels", "\"radius\" and \"radiusPixels\" cannot be combined");
    if (settings.radius) dynamics.radiusPixels = 0.0f;
    dynamics.radiusPixels = settings.radiusPixels.value_or(dynamics.radiusPixels);
}

}  // namespace trovik
