// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/script/Command.h"

namespace trovik {

struct StampParameters {
    std::optional<std::string> path;
    std::optional<bool> enabled;
    std::optional<bool> tiled;
    std::optional<bool> inverted;
    std::optional<float> factor;
    std::optional<float> offset;
    std::optional<bool> buildUp;
    std::optional<bool> bilinear;
    std::optional<bool> onSurface;
    std::optional<std::string> positioning;
    std::optional<int> rotation;
    std::optional<float> randomRotation;
    std::optional<bool> randomize;
    std::optional<float> spacing;
    std::optional<float> randomSpacing;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("path", path);
        visit("enabled", enabled);
        visit("tiled", tiled);
        visit("inverted", inverted);
        visit("factor", factor);
        visit("offset", offset);
        visit("buildUp", buildUp);
        visit("bilinear", bilinear);
        visit("onSurface", onSurface);
        visit("positioning", positioning);
        visit("rotation", rotation);
        visit("randomRotation", randomRotation);
        visit("randomize", randomize);
        visit("spacing", spacing);
        visit("randomSpacing", randomSpacing);
    }
};

/// On or off, a file name, or the individual fields.
using StampSetting = std::variant<bool, std::string, StampParameters>;

struct TiltParameters {
    std::optional<bool> rotate;
    std::optional<float> size;
    std::optional<float> strength;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("rotate", rotate);
        visit("size", size);
        visit("strength", strength);
    }
};

struct FacingParameters {
    std::optional<bool> enabled;
    std::optional<float> start;
    std::optional<float> range;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("enabled", enabled);
        visit("start", start);
        visit("range", range);
    }
};

struct DetailParameters {
    std::optional<std::string> unit;
    std::optional<float> length;
    std::optional<std::string> mode;
    std::optional<float> creaseAngle;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("unit", unit);
        visit("length", length);
        visit("mode", mode);
        visit("creaseAngle", creaseAngle);
    }
};

/// Name of a curve, its number, or samples from the centre to the edge.
using FalloffSetting = std::variant<std::string, int, std::vector<float>>;
using DirectionSetting = std::variant<std::string, int>;
/// Off (false), on with the current length (true), or a length as a fraction of the viewport
/// height.
using LengthSetting = std::variant<bool, float>;
/// (pressure, value) pairs; null selects the identity.
using CurveSetting = std::variant<std::nullptr_t, std::vector<std::array<float, 2>>>;

struct SettingsParameters {
    std::optional<float> radius;
    std::optional<float> radiusPixels;
    std::optional<float> spacing;
    std::optional<float> strength;
    std::optional<FalloffSetting> falloff;
    std::optional<DirectionSetting> direction;
    std::optional<float> buildUpRate;
    std::optional<bool> globalPlane;
    std::optional<bool> updatePlane;
    std::optional<bool> affectAllLayers;
    std::optional<float> strengthBias;
    std::optional<bool> pressureControlsStrength;
    std::optional<FacingParameters> facing;
    std::optional<bool> connectedOnly;
    std::optional<bool> alongNormal;
    std::optional<std::string> mode;
    std::optional<int> scales;
    std::optional<float> poissonRatio;
    std::optional<bool> drawFromCenter;
    std::optional<StampSetting> stamp;
    std::optional<LengthSetting> smoothing;
    std::optional<LengthSetting> stabiliser;
    std::optional<CurveSetting> strengthCurve;
    std::optional<CurveSetting> sizeCurve;
    std::optional<bool> pressureControlsSize;
    std::optional<float> sizeBias;
    std::optional<TiltParameters> tilt;
    std::optional<float> randomSize;
    std::optional<float> airbrush;
    std::optional<DetailParameters> detail;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("radius", radius);
        visit("radiusPixels", radiusPixels);
        visit("spacing", spacing);
        visit("strength", strength);
        visit("falloff", falloff);
        visit("direction", direction);
        visit("buildUpRate", buildUpRate);
        visit("globalPlane", globalPlane);
        visit("updatePlane", updatePlane);
        visit("affectAllLayers", affectAllLayers);
        visit("strengthBias", strengthBias);
        visit("pressureControlsStrength", pressureControlsStrength);
        visit("facing", facing);
        visit("connectedOnly", connectedOnly);
        visit("alongNormal", alongNormal);
        visit("mode", mode);
        visit("scales", scales);
        visit("poissonRatio", poissonRatio);
        visit("drawFromCenter", drawFromCenter);
        visit("stamp", stamp);
        visit("smoothing", smoothing);
        visit("stabiliser", stabiliser);
        visit("strengthCurve", strengthCurve);
        visit("sizeCurve", sizeCurve);
        visit("pressureControlsSize", pressureControlsSize);
        visit("sizeBias", sizeBias);
        visit("tilt", tilt);
        visit("randomSize", randomSize);
        visit("airbrush", airbrush);
        visit("detail", detail);
    }
};

/// Returns an attribute of the active brush.
/// \param pointer  JSON pointer of the setting.
/// \throw FieldFault if the brush has no such attribute.
template <typename T>
AttributeInstance<T>& BrushAttribute(BrushOperation& brush,
                                     const char* name,
                                     const std::string& pointer) {
    Attribute* attribute = brush.AttributeByName(QString::fromLatin1(name));
    if (attribute == nullptr || attribute->attributeType() != AttributeValue<T>::type)
        throw FieldFault(pointer, std::string("the brush has no setting ") + name);
    return static_cast<AttributeInstance<T>&>(*attribute);
}

/// Configures the stamp of the active brush and reads its file.
void SetStamp(CommandContext& context, const StampSetting& setting);

/// Applies the path and pen settings.
void SetPen(CommandContext& context, const SettingsParameters& settings);

}  // namespace trovik
