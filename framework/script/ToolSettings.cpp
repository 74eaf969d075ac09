// SPDX-License-Identifier: Apache-2.0
#include "framework/script/ToolSettings.h"

#include "framework/brushes/BrushSettings.h"
#include "framework/brushes/Falloff.h"
#include "framework/brushes/ToolTraits.h"
#include "framework/freeze/FreezeBrush.h"
#include "framework/grab/GrabBrush.h"
#include "framework/nodes/HostKernel.h"
#include "framework/script/ScriptDocument.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

namespace trovik {

namespace {

using nlohmann::json;

struct Source {
    const BrushOperation& brush;
    const BrushOperation::Private& host;
    const SceneSettings& settings;
};

/// One setting. Its value is the attribute's value unless the row has a function that returns it. A
/// tool has the setting if the attribute is visible or if the row has no attribute, and if the
/// setting has an effect on the tool (HasEffect).
struct Row {
    const char* name;
    const char* unit;
    json (*value)(const Source& from);
    const Attribute* (*attribute)(const Source& from) = nullptr;
};

/// The shortest decimal number that yields the same float: 0.1 rather than 0.10000000149.
json Shortest(float value) {
    for (int digits = 1; digits < 9; ++digits) {
        char text[32];
        std::snprintf(text, sizeof text, "%.*g", digits, static_cast<double>(value));
        const double read = std::strtod(text, nullptr);
        if (static_cast<float>(read) == value) return read;
    }
    return static_cast<double>(value);
}

const Attribute* Named(const Source& from, const char* name) {
    return from.brush.AttributeByName(QString::fromLatin1(name));
}

template <auto member>
const Attribute* Member(const Source& from) {
    return &(from.brush.*member);
}

json ValueOf(const Attribute& attribute) {
    if (const auto* flag = dynamic_cast<const AttributeInstance<bool>*>(&attribute))
        return flag->Value();
    if (const auto* whole = dynamic_cast<const AttributeInstance<int>*>(&attribute))
        return whole->Value();
    if (const auto* number = dynamic_cast<const AttributeInstance<float>*>(&attribute))
        return Shortest(number->Value());
    if (const auto* length = dynamic_cast<const AttributeInstance<CheckableFloat>*>(&attribute))
        return length->Value().checked ? Shortest(length->Value().value) : json(false);
    return {};
}

json NonZero(float value) { return value == 0.0f ? json() : Shortest(value); }

json CurveOf(const PressureCurve& curve) {
    json points = curve.IsIdentity() ? json() : json::array();
    for (const PressureCurve::Point& point : curve.Points())
        points.push_back({Shortest(point.pressure), Shortest(point.value)});
    return points;
}

json FalloffOf(const Source& from) {
    if (IsFalloffIndex(from.host.falloffIndex)) return FalloffName(from.host.falloffIndex);
    json samples = json::array();
    const Store<float>& table = *from.host.falloff.Current();
    for (uint32_t i = 0; i < table.fill; ++i) samples.push_back(Shortest(table.array[i]));
    return samples;
}

json DirectionOf(const Source& from) {
    return DirectionNames().at(static_cast<std::size_t>(from.brush.Direction()));
}

json ElasticModeOf(const Source& from) {
    const auto* mode = dynamic_cast<const AttributeInstance<int>*>(Named(from, "elasticmode"));
    return mode == nullptr ? json() : json(elasticModeNames[static_cast<std::size_t>(*mode)]);
}

json PositioningOf(const Source& from) {
    return positioningNames[static_cast<std::size_t>(from.brush.resetOptionA.Value())];
}

json DetailUnitOf(const Source& from) {
    return detailUnitNames[static_cast<std::size_t>(from.settings.detail.measure)];
}

json DetailModeOf(const Source& from) {
    const DetailSettings& detail = from.settings.detail;
    return detail.splits ? (detail.collapses ? "both" : "refine") : "coarsen";
}

json StampPathOf(const Source& from) {
    return from.host.stamp.path.isEmpty() ? json() : json(from.host.stamp.path.toStdString());
}

// clang-format off
constexpr const char* ofRadius = "% of the radius";
constexpr const char* ofHeight = "of the viewport's height";

const Row rows[] = {
    {"radius", "world units", [](const Source& f) { return Shortest(f.settings.radius); }},
    {"radiusPixels", "pixels", [](const Source& f) { return NonZero(f.settings.dynamics.radiusPixels); }},
    {"spacing", ofRadius, [](const Source& f) { return Shortest(f.settings.spacing * 100.0f); }},
    {"strength", "%", [](const Source& f) { return Shortest(f.brush.BrushStrength()); }},
    {"falloff", "", FalloffOf},
    {"direction", "", DirectionOf, Member<&BrushOperation::directionAttribute>},
    {"buildUpRate", "", nullptr, [](const Source& f) { return Named(f, "builduprate"); }},
    {"globalPlane", "", nullptr, [](const Source& f) { return Named(f, "globalplane"); }},
    {"updatePlane", "", nullptr, [](const Source& f) { return Named(f, "updateplane"); }},
    {"affectAllLayers", "", nullptr, [](const Source& f) { return Named(f, "affectalllayers"); }},
    {"connectedOnly", "", nullptr, [](const Source& f) { return Named(f, "connectedonly"); }},
    {"alongNormal", "", nullptr, [](const Source& f) { return Named(f, "alongnormal"); }},
    {"mode", "", ElasticModeOf, [](const Source& f) { return Named(f, "elasticmode"); }},
    {"scales", "", nullptr, [](const Source& f) { return Named(f, "elasticscales"); }},
    {"poissonRatio", "", nullptr, [](const Source& f) { return Named(f, "poissonratio"); }},
    {"drawFromCenter", "", nullptr, [](const Source& f) { return Named(f, "drawfromcenter"); }},
    {"strengthBias", "%", [](const Source& f) { return Shortest(f.host.strengthBias); }},
    {"pressureControlsStrength", "", nullptr, Member<&BrushOperation::strokeOptionC>},
    {"pressureControlsSize", "", nullptr, Member<&BrushOperation::strokeOptionD>},
    {"sizeBias", "%", [](const Source& f) { return Shortest(f.host.sizeBias); }},
    {"strengthCurve", "", [](const Source& f) { return CurveOf(f.settings.dynamics.strengthCurve); }},
    {"sizeCurve", "", [](const Source& f) { return CurveOf(f.settings.dynamics.sizeCurve); }},
    {"randomSize", "of the radius", [](const Source& f) { return Shortest(f.settings.dynamics.randomSize); }},
    {"tilt.rotate", "", [](const Source& f) { return json(f.settings.dynamics.tiltRotatesStamp); }},
    {"tilt.size", "of the radius", [](const Source& f) { return Shortest(f.settings.dynamics.tiltToSize); }},
    {"tilt.strength", "of the strength", [](const Source& f) { return Shortest(f.settings.dynamics.tiltToStrength); }},
    {"airbrush", "dabs/s", [](const Source& f) { return Shortest(f.settings.dynamics.airbrush); }},
    {"detail.unit", "", DetailUnitOf},
    {"detail.length", "", [](const Source& f) { return Shortest(f.settings.detail.length); }},
    {"detail.mode", "", DetailModeOf},
    {"detail.creaseAngle", "degrees", [](const Source& f) { return Shortest(f.settings.detail.creaseAngle); }},
    {"smoothing", ofHeight, nullptr, Member<&BrushOperation::strokeSmoothingAttribute>},
    {"stabiliser", ofHeight, nullptr, Member<&BrushOperation::steadyStrokeAttribute>},
    {"facing.enabled", "", [](const Source& f) { return json(f.brush.UsesFalloffBasedOnFacingAngle()); }},
    {"facing.start", "degrees", [](const Source& f) { return Shortest(f.brush.facingAngleStart); }},
    {"facing.range", "degrees", [](const Source& f) { return Shortest(f.brush.facingAngleRange); }},
    {"stamp.path", "", StampPathOf},
    {"stamp.enabled", "", [](const Source& f) { return json(f.host.stamp.enabled); }},
    {"stamp.tiled", "", [](const Source& f) { return json(f.host.stampTiled); }},
    {"stamp.inverted", "", [](const Source& f) { return json(f.host.stampInverted); }},
    {"stamp.factor", "", [](const Source& f) { return Shortest(f.host.stampFactor); }},
    {"stamp.offset", "", [](const Source& f) { return Shortest(f.host.stampOffset); }},
    {"stamp.buildUp", "", [](const Source& f) { return json(f.host.stampBuildUp); }},
    {"stamp.bilinear", "", nullptr, [](const Source& f) { return Named(f, "bilinearsample"); }},
    {"stamp.onSurface", "", [](const Source& f) { return json(f.host.orientedToSurface); }},
    {"stamp.positioning", "", PositioningOf, Member<&BrushOperation::resetOptionA>},
    {"stamp.rotation", "degrees", nullptr, Member<&BrushOperation::separatorOption>},
    {"stamp.randomRotation", "of a full turn", [](const Source& f) { return Shortest(f.host.stamp.randomTurn); }},
    {"stamp.randomize", "", [](const Source& f) { return json(f.host.stamp.randomize); }},
    {"stamp.spacing", ofRadius, nullptr, Member<&BrushOperation::strokeFloatA>},
    {"stamp.randomSpacing", ofRadius, nullptr, Member<&BrushOperation::strokeFloatB>},
};
// clang-format on

const json& Resolved(const json& schema, const json& part) {
    const auto reference = part.find("$ref");
    if (reference == part.end()) return part;
    return Resolved(schema, schema.at(json::json_pointer(reference->get<std::string>().substr(1))));
}

bool HasEffect(const ToolTraits& traits, std::string_view setting) {
    if (setting == "falloff") return traits.usesFalloff;
    if (setting.starts_with("detail.")) return traits.refinesMesh;
    if (setting == "spacing") return traits.usesSpacing;
    if (setting == "airbrush" || setting == "tilt.strength") return traits.staysOnSurface;
    const bool isOfStamp = setting.starts_with("stamp.") || setting == "tilt.rotate";
    return traits.usesStamp || !isOfStamp;
}

/// The limits that the schema specifies for a setting of this name.
json RangeOf(const std::string& name) {
    static const json schema = json::parse(StrokeScriptSchema());
    const json* part = &Resolved(schema, schema.at("definitions").at("settings"));
    for (std::size_t at = 0; at != std::string::npos;) {
        const std::size_t dot = name.find('.', at);
        part = &Resolved(schema, part->at("properties").at(name.substr(at, dot - at)));
        at = dot == std::string::npos ? dot : dot + 1;
    }
    json range = json::object();
    for (const char* limit : {"type", "minimum", "exclusiveMinimum", "maximum", "exclusiveMaximum"})
        if (part->contains(limit)) range[limit] = part->at(limit);
    if (part->contains("enum")) range["choices"] = part->at("enum");
    if (name == "falloff") range["choices"] = FalloffNames();
    if (name == "direction") range["choices"] = DirectionNames();
    return range;
}

}  // namespace

const std::vector<std::string>& DirectionNames() {
    static const std::vector<std::string> names = {"surfaceNormal",
                                                   "average",
                                                   "vertexNormal",
                                                   "forward",
                                                   "sideways",
                                                   "x",
                                                   "y",
                                                   "z",
                                                   "camera",
                                                   "cameraToo",
                                                   "xy",
                                                   "xz",
                                                   "yz"};
    return names;
}

std::vector<ToolSetting> ReadToolSettings(const BrushOperation& brush,
                                          const SceneSettings& settings) {
    const Source source{brush, brush.Settings(), settings};
    const ToolTraits& traits = TraitsOf(brush);
    std::vector<ToolSetting> read;
    for (const Row& row : rows) {
        const Attribute* attribute = row.attribute == nullptr ? nullptr : row.attribute(source);
        const bool applies =
            (row.attribute == nullptr || (attribute != nullptr && attribute->IsVisible())) &&
            HasEffect(traits, row.name);
        json value;
        if (applies) value = row.value != nullptr ? row.value(source) : ValueOf(*attribute);
        read.push_back({row.name, row.unit, applies, std::move(value), RangeOf(row.name)});
    }
    return read;
}

std::vector<ToolDescription> DescribeTools() {
    HostKernel::Instance();
    RegisterGrabBrush();
    const SceneSettings settings;
    std::vector<ToolDescription> tools;
    for (uint32_t i = 0; i < BrushOperation::ConfigurationCount(); ++i) {
        BrushConfiguration* tool = BrushOperation::Configuration(i);
        const std::unique_ptr<Node> node(tool->BrushClass()->Create());
        auto* brush = dynamic_cast<BrushOperation*>(node.get());
        if (brush == nullptr) continue;
        brush->SetActiveConfiguration(tool);
        tools.push_back({tool, ReadToolSettings(*brush, settings)});
    }
    const FreezeBrush freeze;
    tools.push_back({FreezeBrush::Tool(), ReadToolSettings(freeze, settings)});
    return tools;
}

}  // namespace trovik
