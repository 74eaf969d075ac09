// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/WorkStopped.h"
#include "framework/script/ScriptRunner.h"
#include "framework/script/SessionStroke.h"
#include "framework/strokes/DabStrength.h"

#include <algorithm>

namespace trovik {

namespace {

BrushOperation::Modifier ModifierOf(const std::string& name) {
    if (name == "smooth") return BrushOperation::ModifierSmooth;
    return name == "invert" ? BrushOperation::ModifierInvert : BrushOperation::ModifierNone;
}

/// Steps that would pull the ground from under a stroke.
constexpr const char* notInStroke[] = {"tool",
                                       "undo",
                                       "redo",
                                       "subdivide",
                                       "unsubdivide",
                                       "deleteLevels",
                                       "applyToBase",
                                       "level",
                                       "layer",
                                       "hide",
                                       "show",
                                       "isolate",
                                       "invertVisibility",
                                       "bake",
                                       "displace",
                                       "transform",
                                       "mirror",
                                       "symmetrize",
                                       "reset",
                                       "save"};

}  // namespace

std::vector<PathSample> ScriptRunner::Samples(const FieldReader& list,
                                              std::size_t placeNumbers) const {
    std::vector<PathSample> samples;
    for (std::size_t i = 0; i < list.Size(); ++i) {
        const FieldReader numbers = list.At(i);
        PathSample sample;
        float* place[3] = {&sample.place.x, &sample.place.y, &sample.place.z};
        for (std::size_t k = 0; k < placeNumbers; ++k) *place[k] = numbers.At(k).Number();
        if (numbers.Size() > placeNumbers) {
            sample.pressure = numbers.At(placeNumbers).Number();
            if (sample.pressure < 0.0f || sample.pressure > 1.0f)
                numbers.At(placeNumbers).Fail("pressure lies between 0 and 1");
        }
        samples.push_back(sample);
    }
    return samples;
}

bool ScriptRunner::IsStrokeOpen() const {
    return isChecking ? leavesStrokeOpen : session->Loop().IsActive();
}

void ScriptRunner::CheckStrokeKinds(const FieldReader& stroke) const {
    const bool staysOpen = stroke.FlagOr("open", false);
    const bool goesOn = stroke.FlagOr("continue", false);
    const int kinds =
        static_cast<int>(stroke.Has("dabs")) + static_cast<int>(stroke.Has("surface")) +
        static_cast<int>(stroke.Has("pointer")) + static_cast<int>(stroke.Has("pen")) +
        static_cast<int>(stroke.Has("wholeMesh"));
    if (kinds > 1 || (kinds == 0 && !staysOpen && !goesOn)) {
        stroke.Fail(
            "a stroke needs one of \"dabs\", \"surface\", \"pointer\", \"pen\", \"wholeMesh\"");
    }
    if (goesOn && !IsStrokeOpen()) stroke.At("continue").Fail("no stroke is open");
    for (const char* name : {"modifier", "seed"}) {
        if (!goesOn || !stroke.Has(name)) continue;
        stroke.At(name).Fail(std::string("the ") + name + " of a stroke is told where it begins");
    }
    if (!goesOn && IsStrokeOpen())
        stroke.Fail("a stroke is open; go on with it by \"continue\", or end it so first");
    const bool hasPath = !stroke.Has("dabs") && !stroke.Has("wholeMesh");
    if (!hasPath && stroke.Has("path")) stroke.At("path").Fail("this stroke has no path");
}

void ScriptRunner::RunStroke(const FieldReader& stroke) {
    CheckStrokeKinds(stroke);
    StrokeLoop& loop = session->Loop();
    const bool staysOpen = stroke.FlagOr("open", false);
    const bool goesOn = stroke.FlagOr("continue", false);
    KeepBefore();
    const StrokeTotals before = session->Totals();
    if (!goesOn) {
        StartWatchingStroke();
        std::optional<uint64_t> seed;
        if (stroke.Has("seed")) seed = stroke.At("seed").Json().get<uint64_t>();
        BeginStroke(*session, ModifierOf(stroke.TextOr("modifier", "none")), seed);
    }
    try {
        LayDabs(stroke);
    } catch (const WorkStopped&) {
        loop.Break();
        throw;
    } catch (...) {
        loop.End([this] { StopIfAsked(); });
        throw;
    }
    if (!staysOpen) loop.End([this] { StopIfAsked(); });
    WarnOfIdleStroke(stroke, before);
}

void ScriptRunner::CheckOpenStroke(const FieldReader& step) const {
    if (!IsStrokeOpen()) return;
    for (const char* name : notInStroke) {
        if (!step.Has(name)) continue;
        step.At(name).Fail(
            "a stroke is open; end it first with {\"stroke\": {\"continue\": true}}");
    }
}

void ScriptRunner::LayDabs(const FieldReader& stroke) {
    if (stroke.Has("dabs")) {
        StrokeDabs(stroke.At("dabs"));
        return;
    }
    if (stroke.Has("wholeMesh")) {
        const FieldReader whole = stroke.At("wholeMesh");
        session->Loop().WholeMesh(whole.At("strength").Number(), whole.FlagOr("byFacing", false));
        DabProgress()();
        return;
    }
    LayPath(stroke);
}

void ScriptRunner::StrokeDabs(const FieldReader& dabs) {
    LevelMesh& mesh = *session->Geometry().Bound();
    const auto tell = DabProgress();
    for (std::size_t i = 0; i < dabs.Size(); ++i) {
        const FieldReader fields = dabs.At(i);
        const auto face = fields.At("face").Json().get<uint64_t>();
        if (face >= mesh.faceCount) {
            fields.At("face").Fail("there is no face " + std::to_string(face) + "; the level has " +
                                   std::to_string(mesh.faceCount));
        }
        StrokeDab dab;
        dab.hit = SurfacePoint(&mesh, 0, static_cast<uint32_t>(face));
        if (fields.Has("point")) {
            dab.hit.position = fields.At("point").ThreeNumbers();
        } else {
            // The middle of the face.
            const uint32_t corners = mesh.CornersPerFace();
            Vector sum;
            for (uint32_t k = 0; k < corners; ++k)
                sum += mesh.Position(mesh.faceVertexIndices.array[dab.hit.face * corners + k]);
            dab.hit.position = sum * (1.0f / static_cast<float>(corners));
        }
        if (fields.Has("normal")) {
            dab.hit.normal = fields.At("normal").ThreeNumbers().Normalized();
            if (dab.hit.normal == Vector()) fields.At("normal").Fail("the normal has no length");
        }
        session->Geometry().Place().LocalToWorld(&dab.position, &dab.hit.position, 1.0f);
        if (fields.Has("position")) dab.position = fields.At("position").ThreeNumbers();
        dab.keepPlace = true;
        dab.size = fields.NumberOr("radius", RadiusAt(dab.position));
        dab.pressure = fields.NumberOr("pressure", 1.0f);
        dab.strength =
            fields.NumberOr("strength", DabStrength(session->Brush(), dab.pressure, dab.size));
        session->Loop().Dab(dab);
        tell();
    }
}

}  // namespace trovik
