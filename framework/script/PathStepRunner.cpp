// SPDX-License-Identifier: Apache-2.0

/// \file
/// What stroke scripts say of the path of a stroke and of the pen that draws it.
#include "framework/brushes/BrushSettings.h"
#include "framework/document/DocumentStroke.h"
#include "framework/errors/HostError.h"
#include "framework/script/PenStream.h"
#include "framework/script/ScriptRunner.h"
#include "framework/strokes/LiveStroke.h"

#include <filesystem>

namespace trovik {

namespace {

constexpr const char* kinds[] = {"pen", "pointer", "surface"};

/// Whether dabs differ from those of a plain path.
bool Shapes(const DabDynamics& dynamics) {
    return !dynamics.strengthCurve.IsIdentity() || !dynamics.sizeCurve.IsIdentity() ||
           dynamics.randomSize > 0.0f || dynamics.radiusPixels > 0.0f;
}

bool IsImprint(const BrushOperation& brush) {
    return brush.StrokeDrawMode() != static_cast<int>(DrawMode::AlongPath);
}

PressureCurve CurveOf(const FieldReader& list) {
    if (!list.Json().is_array()) return {};
    std::vector<PressureCurve::Point> points;
    for (std::size_t i = 0; i < list.Size(); ++i)
        points.push_back({list.At(i).At(std::size_t{0}).Number(), list.At(i).At(1).Number()});
    std::size_t index = 0;
    if (const auto flaw = PressureCurve::Flaw(points, index))
        (index < points.size() ? list.At(index) : list).Fail(*flaw);
    return PressureCurve(points);
}

/// A length, or false for none.
CheckableFloat SwitchOf(const FieldReader& field, const CheckableFloat& present) {
    if (field.Json().is_boolean()) return {field.Flag(), present.value};
    return {true, field.Number()};
}

}  // namespace

void ScriptRunner::SetPen(const FieldReader& settings) {
    BrushOperation& brush = document->Brush();
    BrushOperation::Private& host = brush.Settings();
    DabDynamics& dynamics = document->Settings().dynamics;
    if (settings.Has("smoothing"))
        brush.strokeSmoothingAttribute.SetValue(
            SwitchOf(settings.At("smoothing"), brush.strokeSmoothingAttribute.Value()), true);
    if (settings.Has("steady"))
        brush.steadyStrokeAttribute.SetValue(
            SwitchOf(settings.At("steady"), brush.steadyStrokeAttribute.Value()), true);
    if (settings.Has("strengthCurve"))
        dynamics.strengthCurve = CurveOf(settings.At("strengthCurve"));
    if (settings.Has("sizeCurve")) {
        dynamics.sizeCurve = CurveOf(settings.At("sizeCurve"));
        if (!dynamics.sizeCurve.IsIdentity()) brush.strokeOptionD.SetValue(true, true);
    }
    if (settings.Has("pressureControlsSize"))
        brush.strokeOptionD.SetValue(settings.At("pressureControlsSize").Flag(), true);
    host.sizeBias = settings.NumberOr("sizeBias", host.sizeBias);
    if (settings.Has("tilt")) {
        const FieldReader tilt = settings.At("tilt");
        dynamics.tiltTurnsStamp = tilt.FlagOr("turn", dynamics.tiltTurnsStamp);
        dynamics.tiltToSize = tilt.NumberOr("size", dynamics.tiltToSize);
        dynamics.tiltToStrength = tilt.NumberOr("strength", dynamics.tiltToStrength);
    }
    dynamics.randomSize = settings.NumberOr("randomSize", dynamics.randomSize);
    dynamics.airbrush = settings.NumberOr("airbrush", dynamics.airbrush);
    if (settings.Has("radius") && settings.Has("radiusPixels"))
        settings.At("radiusPixels").Fail("a brush has one of \"radius\" and \"radiusPixels\"");
    if (settings.Has("radius")) dynamics.radiusPixels = 0.0f;
    dynamics.radiusPixels = settings.NumberOr("radiusPixels", dynamics.radiusPixels);
}

float ScriptRunner::RadiusAt(const Vector& place) const {
    const SceneSettings& settings = document->Settings();
    const float pixels = settings.dynamics.radiusPixels;
    return pixels > 0.0f ? WorldLength(document->View(), pixels, place) : settings.radius;
}

std::vector<PathSample> ScriptRunner::PenOf(const FieldReader& pen) const {
    if (!pen.Json().is_string()) return PenSamples(pen);
    return ReadPenStream(std::filesystem::path(InputPath(pen)).lexically_normal().string());
}

PathShape ScriptRunner::ShapeOf(const FieldReader& given, std::size_t placeNumbers) const {
    PathShape shape;
    shape.line = given.FlagOr("line", false);
    shape.curve = given.FlagOr("curve", false);
    if (shape.line && shape.curve) given.Fail("a path is one of \"line\" and \"curve\"");
    if (!given.Has("snap")) return shape;
    const FieldReader snap = given.At("snap");
    shape.snapDistance = snap.At("distance").Number();
    shape.snapSmoothly = snap.FlagOr("smooth", false);
    const FieldReader curve = snap.At("curve");
    for (std::size_t i = 0; i < curve.Size(); ++i) {
        const FieldReader point = curve.At(i);
        if (point.Size() != placeNumbers)
            point.Fail("places of this stroke have " + std::to_string(placeNumbers) + " numbers");
        const float z = placeNumbers == 3 ? point.At(2).Number() : 0.0f;
        shape.snapTo.emplace_back(point.At(std::size_t{0}).Number(), point.At(1).Number(), z);
    }
    return shape;
}

void ScriptRunner::CheckPath(const FieldReader& stroke) const {
    for (const char* kind : kinds) {
        if (!stroke.Has(kind)) continue;
        const std::size_t numbers = kind == kinds[2] ? 3 : 2;
        if (kind == kinds[0])
            PenOf(stroke.At(kind));
        else
            Samples(stroke.At(kind), numbers);
        if (stroke.Has("path")) ShapeOf(stroke.At("path"), numbers);
    }
}

void ScriptRunner::LayPath(const FieldReader& stroke) {
    const char* kind = nullptr;
    for (const char* name : kinds)
        if (stroke.Has(name)) kind = name;
    if (kind == nullptr) {
        if (stroke.Has("path")) stroke.At("path").Fail("this stroke has no path");
        return;
    }
    const bool isPen = kind == kinds[0];
    const bool onSurface = kind == kinds[2];
    const FieldReader list = stroke.At(kind);
    const std::size_t numbers = onSurface ? 3 : 2;
    const std::vector<PathSample> samples = isPen ? PenOf(list) : Samples(list, numbers);
    if (onSurface) {
        std::vector<Vector> points;
        for (const PathSample& sample : samples) points.push_back(sample.place);
        WarnOfFarPoints("stroke/surface", points, RadiusAt(points.front()));
    }

    static const nlohmann::json none = nlohmann::json::object();
    const FieldReader given = stroke.Has("path") ? stroke.At("path") : FieldReader(none, path, "");
    if (given.Has("filter") && !isPen)
        given.At("filter").Fail("only a pen's samples are filtered; these places are exact");

    LevelGeometry& geometry = document->Geometry();
    PenStrokeOptions pen;
    pen.isFiltered = isPen && given.FlagOr("filter", true);
    pen.progress = DabProgress();
    pen.poll = [this] { StopIfAsked(); };
    // Places of scripts are exact, whatever the tool makes of a hand's.
    if (!isPen || given.Has("smoothing")) pen.smoothing = given.NumberOr("smoothing", 0.0f);
    if (!isPen || given.Has("steady")) pen.steady = given.NumberOr("steady", 0.0f);
    if (!IsImprint(document->Brush())) pen.shape = ShapeOf(given, numbers);
    try {
        LiveStrokeSettings settings = PenStrokeSettings(*document, pen);
        if (onSurface) settings.space = PathSpace::Surface;
        if (!isPen) settings.dynamics.airbrush = 0.0f;
        StrokeLoop& loop = document->Loop();
        const bool isPlain = settings.mode == DrawMode::AlongPath && !isPen &&
                             !stroke.Has("path") && !Shapes(settings.dynamics) &&
                             !document->Brush().strokeOptionD.Value();
        if (isPlain && onSurface) {
            StrokeAlongSurface(loop, geometry, document->Tree(), samples, settings.options);
        } else if (isPlain) {
            StrokeAlongView(
                loop, geometry, document->Tree(), settings.view, samples, settings.options);
        } else {
            LiveStroke live(loop, geometry, document->Tree(), settings);
            live.Take(samples);
            live.Release();
        }
    } catch (const PathRefused& refused) {
        if (list.Json().is_array()) list.At(refused.sample).Fail(refused.what());
        list.Fail("sample " + std::to_string(refused.sample) + ": " + refused.what());
    } catch (const HostError& error) {
        list.Fail(error.what());
    }
}

}  // namespace trovik
