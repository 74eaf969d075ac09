// SPDX-License-Identifier: Apache-2.0
#include "panels/SettingRows.h"

#include <QCoreApplication>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(SettingCatalogue)
};

using enum SettingGroup;

/// Builds the list of settings.
class Builder {
public:
    void AddBrush();
    void AddDetail();
    void AddStamp();
    void AddAdvanced();
    SettingRows Take() { return std::move(rows); }

private:
    SettingAppearance& Add(const char* name,
                           const QString& label,
                           SettingGroup group,
                           const QString& description) {
        SettingAppearance& row = rows[name];
        row.label = label;
        row.group = group;
        row.description = description;
        return row;
    }
    /// Sets the limits of a drag.
    static void Soft(SettingAppearance& row,
                     double least,
                     double most,
                     bool isLogarithmic = false) {
        row.softLeast = least;
        row.softMost = most;
        row.isLogarithmic = isLogarithmic;
    }
    static void Scaled(SettingAppearance& row, double factor, const QString& unit) {
        row.factor = factor;
        row.unit = unit;
    }

    const QString percent = QStringLiteral("%");
    const QString degrees = QStringLiteral("°");
    SettingRows rows;
};

void Builder::AddBrush() {
    Soft(Add("radius", Text::tr("Radius"), Brush, Text::tr("Radius of the brush in world units.")),
         0.002,
         2,
         true);
    SettingAppearance& pixels =
        Add("radiusPixels",
            Text::tr("Screen radius"),
            Brush,
            Text::tr(
                "Keeps the brush at this radius in pixels, regardless of the surface's distance."));
    Soft(pixels, 2, 500, true);
    pixels.unit = QStringLiteral("px");
    pixels.firstValue = 60;
    Scaled(
        Add("strength", Text::tr("Strength"), Brush, Text::tr("Strength of a dab.")), 1, percent);
    Add("falloff",
        Text::tr("Falloff"),
        Brush,
        Text::tr("How the effect falls off from the centre of the brush to its edge."));
    Add("direction",
        Text::tr("Direction"),
        Brush,
        Text::tr("Direction in which the brush moves the surface."));
    Scaled(Add("buildUpRate",
               Text::tr("Build-up"),
               Brush,
               Text::tr("How quickly the effect of a stroke saturates.")),
           100,
           percent);
    Scaled(Add("strengthBias",
               Text::tr("Minimum strength"),
               Pressure,
               Text::tr("Part of the strength that does not depend on pressure.")),
           1,
           percent);
    rows["strengthBias"].dependsOn = "pressureControlsStrength";
    Add("pressureControlsStrength",
        Text::tr("Pressure controls strength"),
        Pressure,
        Text::tr("Pressing harder makes dabs stronger."));
    Add("strengthCurve",
        Text::tr("Strength curve"),
        Pressure,
        Text::tr("Maps the pen pressure to the pressure used for the strength."))
        .dependsOn = "pressureControlsStrength";
    Add("pressureControlsSize",
        Text::tr("Pressure controls size"),
        Pressure,
        Text::tr("Pressing harder makes dabs larger."));
    Scaled(Add("sizeBias",
               Text::tr("Minimum size"),
               Pressure,
               Text::tr("Part of the radius that does not depend on pressure.")),
           1,
           percent);
    rows["sizeBias"].dependsOn = "pressureControlsSize";
    Add("sizeCurve",
        Text::tr("Size curve"),
        Pressure,
        Text::tr("Maps the pen pressure to the pressure used for the size."))
        .dependsOn = "pressureControlsSize";
    Scaled(Add("tilt.size",
               Text::tr("Tilt to size"),
               Pressure,
               Text::tr("How much larger dabs become when the pen lies flat.")),
           100,
           percent);
    Scaled(Add("tilt.strength",
               Text::tr("Tilt to strength"),
               Pressure,
               Text::tr("How much stronger dabs become when the pen lies flat.")),
           100,
           percent);
    for (const char* name : {"tilt.size", "tilt.strength"}) Soft(rows[name], -100, 100);
    SettingAppearance& spacing = Add("spacing",
                                     Text::tr("Spacing"),
                                     Stroke,
                                     Text::tr("Distance between dabs, relative to the radius."));
    Soft(spacing, 1, 200, true);
    spacing.unit = percent;
    SettingAppearance& smoothing = Add(
        "smoothing",
        Text::tr("Smoothing"),
        Stroke,
        Text::tr("Averages the pen's path over this length, relative to the viewport's height."));
    Scaled(smoothing, 100, percent);
    Soft(smoothing, 0, 30);
    smoothing.firstValue = 0.0625;
    SettingAppearance& steady = Add(
        "stabiliser",
        Text::tr("Steady stroke"),
        Stroke,
        Text::tr("Distance at which the brush trails the pen, relative to the viewport's height."));
    Scaled(steady, 100, percent);
    Soft(steady, 0, 30);
    steady.firstValue = 0.04;
    SettingAppearance& airbrush =
        Add("airbrush",
            Text::tr("Airbrush"),
            Stroke,
            Text::tr("Minimum number of dabs per second, even while the pen is at rest; 0: off."));
    Soft(airbrush, 0, 60);
    airbrush.unit = QStringLiteral("/s");
    Scaled(Add("randomSize",
               Text::tr("Random size"),
               Stroke,
               Text::tr("Maximum amount by which dabs shrink at random.")),
           100,
           percent);
}

void Builder::AddDetail() {
    Add("detail.unit",
        Text::tr("Adapt triangles"),
        Detail,
        Text::tr("Strokes on a triangle mesh split and collapse edges under the brush, until they "
                 "have about the given length."));
    SettingAppearance& length = Add("detail.length",
                                    Text::tr("Edge length"),
                                    Detail,
                                    Text::tr("The edge length to aim for, in the chosen unit."));
    Soft(length, 0.005, 40, true);
    Add("detail.mode",
        Text::tr("Change"),
        Detail,
        Text::tr("Whether long edges are split, short ones collapsed, or both."));
    SettingAppearance& crease = Add("detail.creaseAngle",
                                    Text::tr("Keep creases above"),
                                    Detail,
                                    Text::tr("Edges with a larger angle between their faces are "
                                             "kept; 180° keeps none."));
    crease.unit = degrees;
    for (const char* name : {"detail.length", "detail.mode", "detail.creaseAngle"})
        rows[name].dependsOn = "detail.unit";
}

void Builder::AddStamp() {
    Add("stamp.enabled", Text::tr("Use stamp"), Stamp, Text::tr("Shapes the dabs with an image."));
    Add("stamp.path", Text::tr("Image"), Stamp, Text::tr("The stamp's image."));
    Add("stamp.positioning",
        Text::tr("Orientation"),
        Stamp,
        Text::tr("Direction in which the top of the stamp points."));
    SettingAppearance& rotation = Add(
        "stamp.rotation", Text::tr("Rotation"), Stamp, Text::tr("Rotates the stamp clockwise."));
    Soft(rotation, -180, 180);
    rotation.unit = degrees;
    Scaled(Add("stamp.randomRotation",
               Text::tr("Random rotation"),
               Stamp,
               Text::tr("Randomly rotates the stamp of each dab.")),
           100,
           percent);
    SettingAppearance& factor = Add(
        "stamp.factor", Text::tr("Factor"), Stamp, Text::tr("Multiplies the values of the image."));
    Soft(factor, -2, 2);
    SettingAppearance& offset = Add("stamp.offset",
                                    Text::tr("Offset"),
                                    Stamp,
                                    Text::tr("The image value that leaves the surface unchanged."));
    Soft(offset, -1, 1);
    SettingAppearance& gap =
        Add("stamp.spacing",
            Text::tr("Copy spacing"),
            Stamp,
            Text::tr("Gap between two copies along the stroke, relative to the radius."));
    Soft(gap, -100, 300);
    gap.unit = percent;
    SettingAppearance& randomGap = Add("stamp.randomSpacing",
                                       Text::tr("Random spacing"),
                                       Stamp,
                                       Text::tr("Randomly widens the gap between copies."));
    Soft(randomGap, 0, 300);
    randomGap.unit = percent;
    Add("stamp.tiled",
        Text::tr("Tiled"),
        Stamp,
        Text::tr("Tiles the image across the surface instead of applying it once per dab."));
    Add("stamp.inverted", Text::tr("Inverted"), Stamp, Text::tr("Inverts the image."));
    Add("stamp.onSurface",
        Text::tr("Lie on surface"),
        Stamp,
        Text::tr("The stamp lies flat on the surface instead of facing the view."));
    Add("stamp.randomize",
        Text::tr("Scatter"),
        Stamp,
        Text::tr("Gives each stamp a random position, size and rotation."));
    Add("stamp.buildUp",
        Text::tr("Build up by stamp"),
        Stamp,
        Text::tr("Build-up accounts for the stamp's values instead of counting whole dabs."));
    Add("stamp.bilinear",
        Text::tr("Interpolate pixels"),
        Stamp,
        Text::tr("Values between pixels are interpolated."));
    for (auto& [name, row] : rows)
        if (name.starts_with("stamp.") && name != "stamp.enabled" && name != "stamp.path")
            row.dependsOn = "stamp.enabled";
}

void Builder::AddAdvanced() {
    Add("facing.enabled",
        Text::tr("Front faces only"),
        Advanced,
        Text::tr("Reduces the effect where the surface faces away from the view."));
    SettingAppearance& start =
        Add("facing.start",
            Text::tr("Full up to"),
            Advanced,
            Text::tr("Largest angle to the view direction at which the brush has full effect."));
    SettingAppearance& fade = Add("facing.range",
                                  Text::tr("Fades over"),
                                  Advanced,
                                  Text::tr("Angle range over which the effect fades out."));
    for (SettingAppearance* row : {&start, &fade}) {
        row->unit = degrees;
        row->dependsOn = "facing.enabled";
    }
    Add("globalPlane",
        Text::tr("One plane per stroke"),
        Advanced,
        Text::tr("The plane is averaged over the whole stroke."));
    Add("updatePlane",
        Text::tr("Plane follows stroke"),
        Advanced,
        Text::tr("The plane follows the surface along the stroke."));
    Add("affectAllLayers",
        Text::tr("Smooth surface, not layer"),
        Advanced,
        Text::tr("Smooths the whole surface instead of the active layer's detail."));
    Add("connectedOnly",
        Text::tr("Connected only"),
        Brush,
        Text::tr("Only the part of the surface moves that is connected with the press point."));
    Add("alongNormal",
        Text::tr("Along the normal"),
        Brush,
        Text::tr("Moves only along the surface normal at the press point."));
    Add("mode",
        Text::tr("Deformation"),
        Brush,
        Text::tr("What a drag does. Twist, scale and pinch follow the motion to the right."));
    Add("scales",
        Text::tr("Locality"),
        Brush,
        Text::tr("Higher values limit the deformation to the surroundings of the press point."));
    Add("poissonRatio",
        Text::tr("Volume preservation"),
        Brush,
        Text::tr("Poisson ratio of the material: 0.5 preserves its volume, 0 does not."));
    Add("drawFromCenter",
        Text::tr("Draw from centre"),
        Advanced,
        Text::tr(
            "The copy grows outward from where you press, instead of spanning press to release."));
    Add("tilt.rotate",
        Text::tr("Tilt turns stamp"),
        Advanced,
        Text::tr("The top of the stamp points in the direction in which the pen leans."));
}

}  // namespace

SettingRows MakeSettingRows() {
    Builder builder;
    builder.AddBrush();
    builder.AddDetail();
    builder.AddStamp();
    builder.AddAdvanced();
    return builder.Take();
}

}  // namespace trovik::studio
