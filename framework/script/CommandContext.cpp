// SPDX-License-Identifier: Apache-2.0
#include "framework/script/CommandContext.h"

#include "framework/jobs/JobControl.h"
#include "framework/script/FieldFault.h"
#include "framework/strokes/DabAtHit.h"
#include "framework/strokes/PathDabs.h"

#include <algorithm>
#include <cstdio>

namespace trovik {

namespace {

/// A point in a script is considered far from the surface if its distance exceeds this fraction of
/// the mesh's bounding-box diagonal. Points are often taken from the mesh file, and a refined
/// surface lies inside the original one, by 8 percent for a cube.
constexpr float farFraction = 0.1f;

std::string Short(float number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3g", static_cast<double>(number));
    return text;
}

}  // namespace

CommandContext::CommandContext(Document& ofDocument,
                               ScriptFiles& scriptFiles,
                               ScriptProgress listener)
    : document(ofDocument), files(scriptFiles), progress(std::move(listener)) {}

bool CommandContext::IsStrokeOpen() const {
    return isChecking ? leavesStrokeOpen : document.Loop().IsActive();
}

void CommandContext::ThrowIfCancelled() const {
    ReportOrThrow(progress.job, 0, 0, "Running steps");
}

std::function<void()> CommandContext::DabProgress() const {
    return [this] {
        if (progress.dab) progress.dab();
        ThrowIfCancelled();
    };
}

void CommandContext::ReportNotes(const std::string& file,
                                 const std::vector<std::string>& notes) const {
    if (!progress.message) return;
    const std::string prefix = file + ": ";
    for (const std::string& note : notes) progress.message(prefix + note);
}

std::string CommandContext::InputPath(const std::string& name, const std::string& pointer) const {
    return AtField(pointer, [&] { return files.Find(name); });
}

std::string CommandContext::OutputPath(const std::string& name, const std::string& pointer) const {
    return AtField(pointer,
                   [&] { return isChecking ? files.Target(name) : files.MakeTarget(name); });
}

void CommandContext::NoteWritten(const std::string& file) {
    if (!isChecking) written.push_back(file);
    files.NoteWritten(file);
}

float CommandContext::Diagonal() const {
    const AxisAlignedBoundingBox box = document.Tree().Bounds();
    return document.Geometry()
        .Transform()
        .ToWorld()
        .AffineTransform({box.maxX - box.minX, box.maxY - box.minY, box.maxZ - box.minZ}, 0.0f)
        .Length();
}

float CommandContext::RadiusAt(const Vector& point) const {
    const SceneSettings& settings = document.Settings();
    return DabRadius(document.View(), settings.dynamics, settings.radius, point);
}

void CommandContext::WarnOfFarPoints(const std::string& name,
                                     const std::vector<Vector>& points,
                                     float reach) {
    const LevelGeometry& geometry = document.Geometry();
    const float limit = std::max(reach, Diagonal() * farFraction);
    std::size_t count = 0, farthest = 0;
    float distance = 0.0f;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const auto hit = HitNear(geometry, document.Tree(), points[i]);
        if (!hit) continue;
        const float away = (WorldPositionOf(geometry, *hit) - points[i]).Length();
        if (!(away > limit)) continue;
        ++count;
        if (away > distance) farthest = i;
        distance = std::max(distance, away);
    }
    if (count == 0) return;
    if (points.size() == 1) {
        Warn(name + " is " + Short(distance) + " away from the surface");
        return;
    }
    Warn(std::to_string(count) + " of " + std::to_string(points.size()) + " points of " + name +
         " are far from the surface; point " + std::to_string(farthest) + " is " + Short(distance) +
         " away");
}

}  // namespace trovik
