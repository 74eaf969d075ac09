// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/ToolTraits.h"
#include "framework/errors/Cancelled.h"
#include "framework/multires/Steps.h"
#include "framework/script/commands/InitialSurface.h"
#include "framework/script/commands/StrokeParameters.h"
#include "framework/strokes/DabStrength.h"
#include "framework/strokes/ImprintStroke.h"

namespace trovik {

namespace {

/// State at the beginning of the open stroke, for warnings at its end.
struct StrokeStart {
    uint64_t dabs = 0;
    bool wholeMesh = false;
    /// Mask weights; stored only for the freeze brush.
    std::vector<uint8_t> frozen;
};

/// Checks that a stroke has all required fields and no forbidden ones.
void CheckKinds(const CommandContext& context, const StrokeParameters& stroke) {
    const bool staysOpen = stroke.open.value_or(false);
    const bool goesOn = stroke.goesOn.value_or(false);
    const int kinds =
        static_cast<int>(stroke.dabs.has_value()) + static_cast<int>(stroke.surface.has_value()) +
        static_cast<int>(stroke.points.has_value()) + static_cast<int>(stroke.pointer.has_value()) +
        static_cast<int>(stroke.pen.has_value()) + static_cast<int>(stroke.wholeMesh.has_value());
    if (kinds > 1 || (kinds == 0 && !staysOpen && !goesOn)) {
        throw FieldFault(
            "",
            "a stroke needs one of \"dabs\", \"surface\", \"points\", \"pointer\", \"pen\", "
            "\"wholeMesh\"");
    }
    if (goesOn && !context.IsStrokeOpen()) throw FieldFault("/continue", "no stroke is open");
    if (goesOn && stroke.modifier)
        throw FieldFault("/modifier", "the modifier must be given at the beginning of the stroke");
    if (goesOn && stroke.seed)
        throw FieldFault("/seed", "the seed must be given at the beginning of the stroke");
    if (!goesOn && context.IsStrokeOpen()) {
        throw FieldFault("", "a stroke is open; to continue or end it, use \"continue\"");
    }
    const bool hasPath = !stroke.dabs && !stroke.wholeMesh;
    if (!hasPath && stroke.path) throw FieldFault("/path", "this stroke has no path");
}

/// The centre of a face, mesh-local.
Vector Centre(const LevelMesh& mesh, uint32_t face) {
    const uint32_t corners = mesh.CornersPerFace();
    Vector sum;
    for (uint32_t k = 0; k < corners; ++k)
        sum += mesh.Position(mesh.faceVertexIndices.array[face * corners + k]);
    return sum * (1.0f / static_cast<float>(corners));
}

StrokeDab DabOf(CommandContext& context, const DabParameters& given, const std::string& pointer) {
    Document& document = context.document;
    LevelMesh& mesh = *document.Geometry().Bound();
    if (given.face >= mesh.faceCount) {
        throw FieldFault(pointer + "/face",
                         "there is no face " + std::to_string(given.face) + "; the level has " +
                             std::to_string(mesh.faceCount));
    }
    StrokeDab dab;
    dab.hit = SurfacePoint(&mesh, 0, static_cast<uint32_t>(given.face));
    dab.hit.position = given.point ? *given.point : Centre(mesh, dab.hit.face);
    if (given.normal) {
        dab.hit.normal = given.normal->Normalized();
        if (dab.hit.normal == Vector())
            throw FieldFault(pointer + "/normal", "the normal must not be zero");
    }
    document.Geometry().Transform().LocalToWorld(&dab.position, &dab.hit.position, 1.0f);
    if (given.position) dab.position = *given.position;
    dab.keepPosition = true;
    dab.size = given.radius ? *given.radius : context.RadiusAt(dab.position);
    dab.pressure = given.pressure.value_or(1.0f);
    dab.strength =
        given.strength ? *given.strength : DabStrength(document.Brush(), dab.pressure, dab.size);
    return dab;
}

void ApplyDabs(CommandContext& context, const StrokeParameters& stroke) {
    StrokeLoop& loop = context.document.Loop();
    const auto report = context.DabProgress();
    if (stroke.dabs) {
        for (std::size_t i = 0; i < stroke.dabs->size(); ++i) {
            loop.Dab(DabOf(context, (*stroke.dabs)[i], "/dabs/" + std::to_string(i)));
            report();
        }
    } else if (stroke.wholeMesh) {
        loop.WholeMesh(stroke.wholeMesh->strength, stroke.wholeMesh->byFacing.value_or(false));
        report();
    } else {
        ApplyPath(context, stroke);
    }
}

void WarnIfStrokeHadNoEffect(CommandContext& context,
                             const StrokeParameters& stroke,
                             const StrokeTotals& before) {
    Document& document = context.document;
    auto& start = context.Kept<StrokeStart>();
    const StrokeTotals now = document.Totals();
    start.wholeMesh = start.wholeMesh || stroke.wholeMesh;
    if (stroke.HasPath() && now.dabs == before.dabs)
        context.Warn("the stroke misses the mesh: no dab was applied");
    const bool hadWork = now.dabs != start.dabs || start.wholeMesh;
    if (document.Loop().IsActive() || !hadWork) return;
    if (document.IsFreezing()) {
        if (FreezeAmounts(*document.Geometry().Bound()) == start.frozen)
            context.Warn("the stroke changed no freeze amount");
    } else if (now.verticesMoved == before.verticesMoved) {
        context.Warn("the stroke moved no vertex");
    }
}

void CheckTool(Document& document, const StrokeParameters& stroke) {
    const BrushOperation& brush = document.Brush();
    const std::string tool = "the tool " + document.State()->tool.name;
    if (stroke.modifier == BrushOperation::ModifierSmooth && !TraitsOf(brush).canSmooth)
        throw FieldFault("/modifier", tool + " cannot smooth; use the tool Smooth instead");
    if (stroke.wholeMesh && LeavesSurface(static_cast<DrawMode>(brush.StrokeDrawMode())))
        throw FieldFault("/wholeMesh", tool + " needs a pointer to follow");
}

void Stroke(CommandContext& context, const StrokeParameters& stroke) {
    CheckKinds(context, stroke);
    Document& document = context.document;
    StrokeLoop& loop = document.Loop();
    const auto poll = [&context] { context.ThrowIfCancelled(); };
    CheckTool(document, stroke);
    context.Kept<InitialSurface>().Store(document);
    const StrokeTotals before = document.Totals();
    if (!stroke.goesOn.value_or(false)) {
        auto& start = context.Kept<StrokeStart>();
        start = {before.dabs, false, {}};
        if (document.IsFreezing()) start.frozen = FreezeAmounts(*document.Geometry().Bound());
        BeginStroke(document, stroke.modifier.value_or(BrushOperation::ModifierNone), stroke.seed);
    }
    try {
        ApplyDabs(context, stroke);
    } catch (const Cancelled&) {
        loop.Break();
        throw;
    } catch (...) {
        loop.End(poll);
        throw;
    }
    if (!stroke.open.value_or(false)) loop.End(poll);
    WarnIfStrokeHadNoEffect(context, stroke, before);
}

// The check of later steps depends on whether this stroke stays open, even if its samples are
// invalid.
void CheckStroke(CommandContext& context,
                 const FieldReader& from,
                 const CommandEntry::Report& report) {
    report([&] {
        StrokeParameters stroke;
        try {
            stroke = ReadField<StrokeParameters>(from);
        } catch (const HostError&) {
            context.leavesStrokeOpen = from.FlagOr("open", false);
            throw;
        }
        AtParameters(from, [&] {
            CheckKinds(context, stroke);
            context.leavesStrokeOpen = stroke.open.value_or(false);
            CheckPath(context, stroke);
        });
    });
}

const CommandRegistration<StrokeParameters> strokeCommand({.name = "stroke",
                                                           .duringStroke = DuringStroke::Allowed,
                                                           .callsBrush = true,
                                                           .inputs = {{"/pen"}}},
                                                          Stroke,
                                                          CheckStroke);

}  // namespace

}  // namespace trovik
