// SPDX-License-Identifier: Apache-2.0
#include "panels/SettingCatalogue.h"

#include <QCoreApplication>

#include <map>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(SettingCatalogue)
};

using enum SettingGroup;

std::map<std::string, SettingAppearance> MakeCatalogue() {
    const QString percent = QStringLiteral("%"), degrees = QStringLiteral("°");
    std::map<std::string, SettingAppearance> rows;
    const auto add = [&](const char* name,
                         const QString& label,
                         SettingGroup group,
                         const QString& description) -> SettingAppearance& {
        SettingAppearance& row = rows[name];
        row.label = label;
        row.group = group;
        row.description = description;
        return row;
    };
    const auto soft = [](SettingAppearance& row, double least, double most, bool log = false) {
        row.softLeast = least;
        row.softMost = most;
        row.isLogarithmic = log;
    };
    const auto scaled = [](SettingAppearance& row, double factor, const QString& unit) {
        row.factor = factor;
        row.unit = unit;
    };

    soft(add("radius", Text::tr("Radius"), Brush, Text::tr("Radius of the brush in world units.")),
         0.002,
         2,
         true);
    SettingAppearance& pixels =
        add("radiusPixels",
            Text::tr("Screen radius"),
            Brush,
            Text::tr(
                "Keeps the brush at this radius in pixels, regardless of the surface's distance."));
    soft(pixels, 2, 500, true);
    pixels.unit = QStringLiteral("px");
    pixels.firstValue = 60;
    scaled(
        add("strength", Text::tr("Strength"), Brush, Text::tr("Strength of a dab.")), 1, percent);
    add("falloff",
        Text::tr("Falloff"),
        Brush,
        Text::tr("How the effect falls off from the centre of the brush to its edge."));
    add("direction",
        Text::tr("Direction"),
        Brush,
        Text::tr("Direction in which the brush moves the surface."));
    scaled(add("buildUpRate",
               Text::tr("Build-up"),
               Brush,
               Text::tr("How quickly the effect of a stroke saturates.")),
           100,
           percent);
    scaled(add("strengthBias",
               Text::tr("Minimum strength"),
               Pressure,
               Text::tr("Part of the strength that does not depend on pressure.")),
           1,
           percent);
    rows["strengthBias"].dependsOn = "pressureControlsStrength";
    add("pressureControlsStrength",
        Text::tr("Pressure controls strength"),
        Pressure,
        Text::tr("Pressing harder makes dabs stronger."));
    add("strengthCurve",
        Text::tr("Strength curve"),
        Pressure,
        Text::tr("Maps the pen pressure to the pressure used for the strength."))
        .dependsOn = "pressureControlsStrength";
    add("pressureControlsSize",
        Text::tr("Pressure controls size"),
        Pressure,
        Text::tr("Pressing harder makes dabs larger."));
    scaled(add("sizeBias",
               Text::tr("Minimum size"),
               Pressure,
               Text::tr("Part of the radius that does not depend on pressure.")),
           1,
           percent);
    rows["sizeBias"].dependsOn = "pressureControlsSize";
    add("sizeCurve",
        Text::tr("Size curve"),
        Pressure,
        Text::tr("Maps the pen pressure to the pressure used for the size."))
        .dependsOn = "pressureControlsSize";
    scaled(add("tilt.size",
               Text::tr("Tilt to size"),
               Pressure,
               Text::tr("How much larger dabs become when the pen lies flat.")),
           100,
           percent);
    scaled(add("tilt.strength",
               Text::tr("Tilt to strength"),
               Pressure,
               Text::tr("How much stronger dabs become when the pen lies flat.")),
           100,
           percent);
    for (const char* name : {"tilt.size", "tilt.strength"}) soft(rows[name], -100, 100);
    SettingAppearance& spacing = add("spacing",
                                     Text::tr("Spacing"),
                                     Stroke,
                                     Text::tr("Distance between dabs, relative to the radius."));
    soft(spacing, 1, 200, true);
    spacing.unit = percent;
    SettingAppearance& smoothing = add(
        "smoothing",
        Text::tr("Smoothing"),
        Stroke,
        Text::tr("Averages the pen's path over this length, relative to the viewport's height."));
    scaled(smoothing, 100, percent);
    soft(smoothing, 0, 30);
    smoothing.firstValue = 0.0625;
    SettingAppearance& steady = add(
        "stabiliser",
        Text::tr("Steady stroke"),
        Stroke,
        Text::tr("Distance at which the brush trails the pen, relative to the viewport's height."));
    scaled(steady, 100, percent);
    soft(steady, 0, 30);
    steady.firstValue = 0.04;
    SettingAppearance& airbrush =
        add("airbrush",
            Text::tr("Airbrush"),
            Stroke,
            Text::tr("Minimum number of dabs per second, even while the pen is at rest; 0: off."));
    soft(airbrush, 0, 60);
    airbrush.unit = QStringLiteral("/s");
    scaled(add("randomSize",
               Text::tr("Random size"),
               Stroke,
               Text::tr("Maximum amount by which dabs shrink at random.")),
           100,
           percent);

    add("stamp.enabled", Text::tr("Use stamp"), Stamp, Text::tr("Shapes the dabs with an image."));
    add("stamp.path", Text::tr("Image"), Stamp, Text::tr("The stamp's image."));
    add("stamp.positioning",
        Text::tr("Orientation"),
        Stamp,
        Text::tr("Direction in which the top of the stamp points."));
    SettingAppearance& rotation = add(
        "stamp.rotation", Text::tr("Rotation"), Stamp, Text::tr("Rotates the stamp clockwise."));
    soft(rotation, -180, 180);
    rotation.unit = degrees;
    scaled(add("stamp.randomRotation",
               Text::tr("Random rotation"),
               Stamp,
               Text::tr("Randomly rotates the stamp of each dab.")),
           100,
           percent);
    SettingAppearance& factor = add(
        "stamp.factor", Text::tr("Factor"), Stamp, Text::tr("Multiplies the values of the image."));
    soft(factor, -2, 2);
    SettingAppearance& offset = add("stamp.offset",
                                    Text::tr("Offset"),
                                    Stamp,
                                    Text::tr("The image value that leaves the surface unchanged."));
    soft(offset, -1, 1);
    SettingAppearance& gap =
        add("stamp.spacing",
            Text::tr("Copy spacing"),
            Stamp,
            Text::tr("Gap between two copies along the stroke, relative to the radius."));
    soft(gap, -100, 300);
    gap.unit = percent;
    SettingAppearance& randomGap = add("stamp.randomSpacing",
                                       Text::tr("Random spacing"),
                                       Stamp,
                                       Text::tr("Randomly widens the gap between copies."));
    soft(randomGap, 0, 300);
    randomGap.unit = percent;
    add("stamp.tiled",
        Text::tr("Tiled"),
        Stamp,
        Text::tr("Tiles the image across the surface instead of applying it once per dab."));
    add("stamp.inverted", Text::tr("Inverted"), Stamp, Text::tr("Inverts the image."));
    add("stamp.onSurface",
        Text::tr("Lie on surface"),
        Stamp,
        Text::tr("The stamp lies flat on the surface instead of facing the view."));
    add("stamp.randomize",
        Text::tr("Scatter"),
        Stamp,
        Text::tr("Gives each stamp a random position, size and rotation."));
    add("stamp.buildUp",
        Text::tr("Build up by stamp"),
        Stamp,
        Text::tr("Build-up accounts for the stamp's values instead of counting whole dabs."));
    add("stamp.bilinear",
        Text::tr("Interpolate pixels"),
        Stamp,
        Text::tr("Values between pixels are interpolated."));
    for (auto& [name, row] : rows)
        if (name.starts_with("stamp.") && name != "stamp.enabled" && name != "stamp.path")
            row.dependsOn = "stamp.enabled";

    add("facing.enabled",
        Text::tr("Front faces only"),
        Advanced,
        Text::tr("Reduces the effect where the surface faces away from the view."));
    SettingAppearance& start =
        add("facing.start",
            Text::tr("Full up to"),
            Advanced,
            Text::tr("Largest angle to the view direction at which the brush has full effect."));
    SettingAppearance& fade = add("facing.range",
                                  Text::tr("Fades over"),
                                  Advanced,
                                  Text::tr("Angle range over which the effect fades out."));
    for (SettingAppearance* row : {&start, &fade}) {
        row->unit = degrees;
        row->dependsOn = "facing.enabled";
    }
    add("globalPlane",
        Text::tr("One plane per stroke"),
        Advanced,
        Text::tr("The plane is averaged over the whole stroke."));
    add("updatePlane",
        Text::tr("Plane follows stroke"),
        Advanced,
        Text::tr("The plane follows the surface along the stroke."));
    add("affectAllLayers",
        Text::tr("Smooth surface, not layer"),
        Advanced,
        Text::tr("Smooths the whole surface instead of the active layer's detail."));
    add("drawFromCenter",
        Text::tr("Draw from centre"),
        Advanced,
        Text::tr(
            "The copy grows outward from where you press, instead of spanning press to release."));
    add("tilt.rotate",
        Text::tr("Tilt turns stamp"),
        Advanced,
        Text::tr("The top of the stamp points in the direction in which the pen leans."));
    return rows;
}

double Limit(const nlohmann::json& range, const char* name, const char* exclusive, double none) {
    if (range.contains(name)) return range.at(name).get<double>();
    // The next value above the limit, so that the limit itself cannot be entered.
    if (range.contains(exclusive)) return range.at(exclusive).get<double>() + 1e-6;
    return none;
}

}  // namespace

SettingAppearance AppearanceOf(const ToolSetting& setting) {
    static const std::map<std::string, SettingAppearance> catalogue = MakeCatalogue();
    const auto found = catalogue.find(setting.name);
    if (found != catalogue.end()) return found->second;
    SettingAppearance row;
    row.label = ChoiceText(QString::fromStdString(setting.name));
    row.description = row.label;
    row.unit = QString::fromStdString(setting.unit);
    return row;
}

QString TitleOf(SettingGroup group) {
    switch (group) {
        case Brush:
            return Text::tr("Brush");
        case Pressure:
            return Text::tr("Pressure");
        case Stroke:
            return Text::tr("Stroke");
        case Stamp:
            return Text::tr("Stamp");
        case Advanced:
            return Text::tr("Advanced");
    }
    return {};
}

QString ChoiceText(const QString& value) {
    static const std::map<QString, QString> texts = {{"tool", Text::tr("Tool default")},
                                                     {"upright", Text::tr("Upright")},
                                                     {"stroke", Text::tr("Along the stroke")},
                                                     {"start", Text::tr("As at the start")},
                                                     {"cameraToo", Text::tr("Average and view")},
                                                     {"camera", Text::tr("View")},
                                                     {"xy", Text::tr("In plane XY")},
                                                     {"xz", Text::tr("In plane XZ")},
                                                     {"yz", Text::tr("In plane YZ")},
                                                     {"x", Text::tr("X axis")},
                                                     {"y", Text::tr("Y axis")},
                                                     {"z", Text::tr("Z axis")}};
    if (const auto found = texts.find(value); found != texts.end()) return found->second;
    QString text;
    for (const QChar letter : value) {
        if (letter == u'.') {
            text += u' ';
        } else if (letter.isUpper() && !text.isEmpty()) {
            text += u' ';
            text += letter.toLower();
        } else {
            text += text.isEmpty() ? letter.toUpper() : letter;
        }
    }
    return text;
}

ValueSlider::Range SliderRange(const ToolSetting& setting, const SettingAppearance& appearance) {
    ValueSlider::Range range;
    range.least = Limit(setting.range, "minimum", "exclusiveMinimum", -1e6) * appearance.factor;
    range.most = Limit(setting.range, "maximum", "exclusiveMaximum", 1e6) * appearance.factor;
    range.softLeast = appearance.softLeast;
    range.softMost = appearance.softMost;
    range.isLogarithmic = appearance.isLogarithmic;
    range.isWhole = setting.range.value("type", nlohmann::json()) == "integer";
    range.decimals = setting.name == "radius" ? 4 : 2;
    range.unit = appearance.unit;
    return range;
}

nlohmann::json SetStep(const std::string& name, const nlohmann::json& value) {
    const std::size_t dot = name.find('.');
    nlohmann::json set;
    if (dot == std::string::npos)
        set[name] = value;
    else
        set[name.substr(0, dot)][name.substr(dot + 1)] = value;
    return {{"set", set}};
}

}  // namespace trovik::studio
