// SPDX-License-Identifier: Apache-2.0

/// \file
/// What is said of each step: its name while it runs, what it did, and work without effect.
#include "framework/multires/Steps.h"
#include "framework/script/ScriptRunner.h"
#include "framework/strokes/DabAtHit.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace trovik {

namespace {

/// A point of a script is far from the surface when it lies farther away than this fraction of the
/// mesh's diagonal. Points are often taken from the mesh file, and a refined surface lies inside of
/// it: by 8 percent for a cube.
constexpr float farFraction = 0.1f;

std::string Short(float number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3g", static_cast<double>(number));
    return text;
}

bool BeginsStroke(const nlohmann::json& step) {
    const auto stroke = step.find("stroke");
    return stroke != step.end() && !stroke->value("continue", false);
}

}  // namespace

void ScriptRunner::CountStrokes(const FieldReader& steps) {
    const auto& all = steps.Json();
    strokeCount = static_cast<std::size_t>(std::count_if(all.begin(), all.end(), BeginsStroke));
    strokesBegun = 0;
}

std::string ScriptRunner::NextStepLabel(const FieldReader& step) {
    if (BeginsStroke(step.Json())) ++strokesBegun;
    if (step.Has("tool")) return "tool " + step.At("tool").Text();
    if (!step.Has("stroke")) return step.Json().begin().key();
    return document->Brush().ActiveConfiguration()->Name().toStdString() + ", stroke " +
           std::to_string(strokesBegun) + " of " + std::to_string(strokeCount);
}

void ScriptRunner::RunAndReport(const FieldReader& step) {
    using Clock = std::chrono::steady_clock;
    const StrokeTotals before = document->Totals();
    const Clock::time_point start = Clock::now();
    Do(step);
    const StrokeTotals after = document->Totals();
    StepReport report;
    report.pointer = step.Pointer();
    report.step = step.Has("tool") ? "tool" : step.Json().begin().key();
    report.dabs = after.dabs - before.dabs;
    report.verticesMoved = after.verticesMoved - before.verticesMoved;
    report.milliseconds = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    report.warnings = stepWarnings;
    result.steps.push_back(std::move(report));
    if (stepWarnings.empty()) return;
    std::string reasons;
    for (const std::string& reason : stepWarnings)
        reasons += (reasons.empty() ? "" : "; ") + reason;
    if (strict) step.Fail(reasons);
    if (progress.warning) progress.warning(path + ": " + step.Pointer() + ": " + reasons);
}

void ScriptRunner::StartWatchingStroke() {
    strokeStart.dabs = document->Totals().dabs;
    strokeStart.wholeMesh = false;
    strokeStart.frozen.clear();
    if (document->IsFreezing()) strokeStart.frozen = FreezeAmounts(*document->Geometry().Bound());
}

void ScriptRunner::WarnOfIdleStroke(const FieldReader& stroke, const StrokeTotals& before) {
    const StrokeTotals now = document->Totals();
    strokeStart.wholeMesh = strokeStart.wholeMesh || stroke.Has("wholeMesh");
    const bool hasPath = stroke.Has("surface") || stroke.Has("pointer") || stroke.Has("pen");
    if (hasPath && now.dabs == before.dabs) Warn("the stroke misses the mesh: it has no dab");
    const bool hadWork = now.dabs != strokeStart.dabs || strokeStart.wholeMesh;
    if (document->Loop().IsActive() || !hadWork) return;
    if (document->IsFreezing()) {
        if (FreezeAmounts(*document->Geometry().Bound()) == strokeStart.frozen)
            Warn("the stroke changed no freeze amount");
    } else if (now.verticesMoved == before.verticesMoved) {
        Warn("the stroke moved no vertex");
    }
}

float ScriptRunner::Diagonal() const {
    const AxisAlignedBoundingBox box = document->Tree().Bounds();
    return document->Geometry()
        .Place()
        .ToWorld()
        .AffineTransform({box.maxX - box.minX, box.maxY - box.minY, box.maxZ - box.minZ}, 0.0f)
        .Length();
}

void ScriptRunner::WarnOfFarPoints(const std::string& name,
                                   const std::vector<Vector>& points,
                                   float reach) {
    const LevelGeometry& geometry = document->Geometry();
    const float limit = std::max(reach, Diagonal() * farFraction);
    std::size_t count = 0, farthest = 0;
    float distance = 0.0f;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const auto hit = HitNear(geometry, document->Tree(), points[i]);
        if (!hit) continue;
        const float away = (WorldPlace(geometry, *hit) - points[i]).Length();
        if (!(away > limit)) continue;
        ++count;
        if (away > distance) farthest = i;
        distance = std::max(distance, away);
    }
    if (count == 0) return;
    if (points.size() == 1) {
        Warn(name + " lies " + Short(distance) + " away from the surface");
        return;
    }
    Warn(std::to_string(count) + " of " + std::to_string(points.size()) + " points of " + name +
         " lie far from the surface; number " + std::to_string(farthest) + " is " +
         Short(distance) + " away");
}

}  // namespace trovik
