// SPDX-License-Identifier: Apache-2.0

/// \file Stroke paths: pointer, pen and surface samples, and the shaping of paths.
#include "framework/brushes/BrushSettings.h"
#include "framework/script/commands/StrokeParameters.h"
#include "framework/strokes/LiveStroke.h"

#include <filesystem>

namespace trovik {

namespace {

/// Whether the dynamics affect the dabs of a path.
bool Shapes(const DabDynamics& dynamics) {
    return !dynamics.strengthCurve.IsIdentity() || !dynamics.sizeCurve.IsIdentity() ||
           dynamics.randomSize > 0.0f || dynamics.radiusPixels > 0.0f;
}

DrawMode ModeOf(const BrushOperation& brush) {
    return static_cast<DrawMode>(brush.StrokeDrawMode());
}

const char* PointerOf(const StrokeParameters& stroke) {
    if (stroke.surface) return "/surface";
    if (stroke.points) return "/points";
    return stroke.pointer ? "/pointer" : "/pen";
}

std::vector<PathSample> SamplesOf(const CommandContext& context, const StrokeParameters& stroke) {
    if (stroke.surface) return stroke.surface->list;
    if (stroke.points) return stroke.points->list;
    if (stroke.pointer) return stroke.pointer->list;
    const auto* file = std::get_if<std::string>(&*stroke.pen);
    if (file == nullptr) return std::get<PenSampleList>(*stroke.pen).list;
    return ReadPenStream(
        std::filesystem::path(context.InputPath(*file, "/pen")).lexically_normal().string());
}

PathShape ShapeOf(const StrokeParameters& stroke) {
    PathShape shape;
    if (!stroke.path) return shape;
    const PathParameters& path = *stroke.path;
    const std::size_t numbers = stroke.IsInWorldSpace() ? 3 : 2;
    shape.line = path.line.value_or(false);
    shape.curve = path.curve.value_or(false);
    if (shape.line && shape.curve)
        throw FieldFault("/path", "\"line\" and \"curve\" cannot be combined");
    if (!path.snap) return shape;
    shape.snapDistance = path.snap->distance;
    shape.snapSmoothly = path.snap->smooth.value_or(false);
    for (std::size_t i = 0; i < path.snap->curve.size(); ++i) {
        const std::vector<float>& point = path.snap->curve[i];
        if (point.size() != numbers) {
            throw FieldFault(
                "/path/snap/curve/" + std::to_string(i),
                "positions of this stroke must have " + std::to_string(numbers) + " numbers");
        }
        shape.snapTo.emplace_back(point[0], point[1], numbers == 3 ? point[2] : 0.0f);
    }
    return shape;
}

PenStrokeOptions PenOf(CommandContext& context, const StrokeParameters& stroke) {
    const bool isPen = stroke.pen.has_value();
    const PathParameters path = stroke.path.value_or(PathParameters());
    PenStrokeOptions pen;
    if (path.interactive.value_or(false)) pen = PenStrokeOptions::Interactive();
    pen.isFiltered = isPen && path.filter.value_or(true);
    pen.progress = context.DabProgress();
    pen.poll = [&context] { context.ThrowIfCancelled(); };
    // Script samples are exact, so the tool's smoothing and stabiliser apply only to pen input.
    if (!isPen || path.smoothing) pen.smoothing = path.smoothing.value_or(0.0f);
    if (!isPen || path.stabiliser) pen.steady = path.stabiliser.value_or(0.0f);
    if (FollowsPath(ModeOf(context.document.Brush()))) pen.shape = ShapeOf(stroke);
    return pen;
}

void ApplySamples(CommandContext& context,
                  const StrokeParameters& stroke,
                  const PenStrokeOptions& pen,
                  const std::vector<PathSample>& samples) {
    Document& document = context.document;
    LevelGeometry& geometry = document.Geometry();
    const bool isPen = stroke.pen.has_value();
    const bool onSurface = stroke.IsInWorldSpace();
    LiveStrokeSettings settings = PenStrokeSettings(document, pen);
    if (onSurface) settings.space = PathSpace::Surface;
    if (!isPen) settings.dynamics.airbrush = 0.0f;
    StrokeLoop& loop = document.Loop();
    const bool isPlain = settings.mode == DrawMode::AlongPath && !isPen && !stroke.path &&
                         !Shapes(settings.dynamics) && !document.Brush().strokeOptionD.Value();
    if (isPlain && onSurface) {
        StrokeAlongSurface(loop, geometry, document.Tree(), samples, settings.options);
    } else if (isPlain) {
        StrokeAlongView(loop, geometry, document.Tree(), settings.view, samples, settings.options);
    } else {
        LiveStroke live(loop, geometry, document.Tree(), settings);
        live.Take(samples);
        live.Release();
    }
}

}  // namespace

void CheckPath(const CommandContext& context, const StrokeParameters& stroke) {
    if (!stroke.HasPath()) return;
    SamplesOf(context, stroke);
    ShapeOf(stroke);
}

void ApplyPath(CommandContext& context, const StrokeParameters& stroke) {
    if (!stroke.HasPath()) {
        if (stroke.path) throw FieldFault("/path", "this stroke has no path");
        return;
    }
    const std::string pointer = PointerOf(stroke);
    const std::string& tool = context.document.State()->tool.name;
    if (stroke.surface && LeavesSurface(ModeOf(context.document.Brush())))
        throw FieldFault("/surface",
                         "a stroke of the tool " + tool +
                             " leaves the surface; give the pointer's positions as \"points\"");
    if (stroke.points && !LeavesSurface(ModeOf(context.document.Brush())))
        throw FieldFault(
            "/points",
            "a stroke of the tool " + tool + " stays on the surface; use \"surface\" instead");
    const std::vector<PathSample> samples = SamplesOf(context, stroke);
    if (stroke.IsInWorldSpace()) {
        std::vector<Vector> points;
        points.reserve(samples.size());
        for (const PathSample& sample : samples) points.push_back(sample.position);
        if (stroke.points) points.resize(1);
        context.WarnOfFarPoints("stroke" + pointer, points, context.RadiusAt(points.front()));
    }
    if (stroke.path && stroke.path->filter && !stroke.pen) {
        throw FieldFault("/path/filter", "only pen samples can be filtered");
    }
    if (stroke.path && stroke.path->interactive && !stroke.pen) {
        throw FieldFault("/path/interactive", "only pen samples can be interactive");
    }
    const PenStrokeOptions pen = PenOf(context, stroke);
    AtField(pointer, [&] {
        try {
            ApplySamples(context, stroke, pen, samples);
        } catch (const PathRefused& refused) {
            const bool isFile = stroke.pen && std::holds_alternative<std::string>(*stroke.pen);
            const std::string number = std::to_string(refused.sample);
            if (!isFile) throw FieldFault(pointer + "/" + number, refused.what());
            throw FieldFault(pointer, "sample " + number + ": " + refused.what());
        }
    });
}

}  // namespace trovik
