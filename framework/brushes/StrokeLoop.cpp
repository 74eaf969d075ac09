// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/StrokeLoop.h"

#include "framework/brushes/BrushSettings.h"
#include "framework/brushes/StampFiles.h"
#include "framework/brushes/TopologicalHit.h"
#include "framework/edits/LevelChange.h"
#include "framework/images/StampImage.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace trovik {

namespace {

constexpr int stampMask = -1;
constexpr int mirroredStampMask = 1;
/// Tells the numbers for sizes from those that the stamp takes.
constexpr uint64_t sizeSalt = 0x94d1f3a76c20e5b3u;

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

}  // namespace

StrokeLoop::StrokeLoop(BrushOperation& strokeBrush,
                       LevelGeometry& strokeGeometry,
                       PatchTree& strokeTree)
    : brush(strokeBrush), geometry(strokeGeometry), tree(strokeTree) {}

void StrokeLoop::SetMirrors(int mode, std::vector<Matrix> pointMaps) {
    brush.MirrorConfig().SetMirrorMode(mode);
    mirrors = std::move(pointMaps);
}

void StrokeLoop::Begin(BrushOperation::Modifier modifier, uint64_t seed) {
    RefreshStamp(brush);
    // Across the topology a stamp is read where the vertex across lies, so that it looks alike on
    // halves in different poses. A vector stamp moves vertices along its own axes, which must be
    // mirrored themselves.
    if (brush.MirrorConfig().MirrorMode() == MirrorConfiguration::Topological)
        brush.Settings().mirroredStampRead =
            !IsVectorStampName(brush.MaskName(stampMask).toStdString());
    previousHits.assign(mirrors.size() + 2, Vector());
    dirtyBox = AxisAlignedBoundingBox();
    BrushCall call(BrushCall::BeginStroke, brush);
    call.mesh = geometry.Bound();
    call.modifier = modifier;
    Observed(observer, call, [&] {
        const Clock::time_point start = Clock::now();
        brush.BeginStroke(call.mesh, modifier, call.trigger);
        totals.seconds += SecondsSince(start);
    });
    // A modifier key can have brought another tool.
    stamps.Begin(brush, geometry, tree, seed);
    sizeRandom = StrokeRandom(seed ^ sizeSalt);
    active = true;
}

void StrokeLoop::Dab(const StrokeDab& pathDab) {
    try {
        StrokeDab dab = pathDab;
        stamps.Lay(dab);
        // Looked up before the dab moves the face under it.
        const auto across = AcrossTopology(dab);
        Apply(dab, 0);
        for (std::size_t side = 1; side <= mirrors.size(); ++side) {
            const Matrix& map = mirrors[side - 1];
            StrokeDab mirrored = dab;
            mirrored.hit.mirror = true;
            mirrored.hit.position = map.AffineTransform(dab.hit.position, 1.0f);
            mirrored.hit.normal = map.AffineTransform(dab.hit.normal, 0.0f);
            const auto nearest = tree.Nearest(mirrored.hit.position);
            if (!nearest) continue;
            mirrored.hit.face = nearest->face;
            mirrored.stampMatrix = StampPlacement::Mirrored(dab.stampMatrix, map);
            const Placement& place = geometry.Place();
            Vector local;
            place.WorldToLocal(&local, &dab.position, 1.0f);
            local = map.AffineTransform(local, 1.0f);
            place.LocalToWorld(&mirrored.position, &local, 1.0f);
            brush.MirrorConfig().SetPointMap(map);
            Apply(mirrored, side);
        }
        if (across) {
            brush.MirrorConfig().SetPointMap(across->pointMap);
            Apply(across->dab, mirrors.size() + 1);
        }
    } catch (...) {
        End();
        throw;
    }
}

std::optional<StrokeLoop::DabAcross> StrokeLoop::AcrossTopology(const StrokeDab& dab) const {
    if (brush.MirrorConfig().MirrorMode() != MirrorConfiguration::Topological) return std::nullopt;
    const auto across = AcrossTopologicalMirror(dab.hit);
    if (!across) return std::nullopt;
    DabAcross mirrored{dab, across->pointMap};
    mirrored.dab.hit = across->hit;
    const Placement& place = geometry.Place();
    Vector local;
    place.WorldToLocal(&local, &dab.position, 1.0f);
    local = across->pointMap.AffineTransform(local, 1.0f);
    place.LocalToWorld(&mirrored.dab.position, &local, 1.0f);
    if (!brush.IsMaskEnabled(mirroredStampMask))
        mirrored.dab.stampMatrix = StampPlacement::Mirrored(dab.stampMatrix, across->pointMap);
    return mirrored;
}

void StrokeLoop::Apply(const StrokeDab& dab, std::size_t side) {
    ForgetLastWalks();
    brush.SetPreviousPatchPosition(previousHits[side]);
    brush.Settings().stampMatrix = dab.stampMatrix;
    AxisAlignedBoundingBox box;
    BrushCall call(BrushCall::ApplyDab, brush);
    call.hit = &dab.hit;
    call.position = dab.position;
    call.size = dab.size;
    call.pressure = dab.pressure;
    call.strength = dab.strength;
    call.box = &box;
    Observed(observer, call, [&] {
        const Clock::time_point start = Clock::now();
        brush.ApplyDab(dab.hit, dab.position, dab.size, dab.pressure, dab.strength, box);
        totals.seconds += SecondsSince(start);
    });
    ++totals.dabs;
    previousHits[side] = dab.hit.position;
    if (!box.IsEmpty()) {
        dirtyBox.Extend({box.minX, box.minY, box.minZ});
        dirtyBox.Extend({box.maxX, box.maxY, box.maxZ});
    }
    Refit();
}

void StrokeLoop::WholeMesh(float strength, bool byFacing) {
    try {
        ForgetLastWalks();
        brush.Settings().stampMatrix = stamps.OverAll(tree.Bounds());
        BrushCall call(BrushCall::ApplyToWholeMesh, brush);
        call.mesh = geometry.Bound();
        call.strength = strength;
        call.byFacing = byFacing;
        Observed(observer, call, [&] {
            const Clock::time_point start = Clock::now();
            brush.ApplyToWholeMesh(call.mesh, strength, byFacing);
            totals.seconds += SecondsSince(start);
        });
        tree.RefitAll();
    } catch (...) {
        End();
        throw;
    }
}

void StrokeLoop::ForgetLastWalks() {
    for (uint32_t level = 0; level < geometry.LevelCount(); ++level)
        geometry.Level(level)->ForgetLastWalks();
}

// The level that was walked is the one whose faces were the patches of the dab.
void StrokeLoop::Refit() {
    for (uint32_t level = 0; level < geometry.LevelCount(); ++level) {
        const LevelMesh& mesh = *geometry.Level(level);
        if (!mesh.LastFaceWalk().empty()) tree.Refit(level, mesh.LastFaceWalk());
        if (mesh.LastVertexWalk().empty()) continue;
        std::vector<uint32_t> vertices;
        for (const FaceVisit& visit : mesh.LastVertexWalk()) vertices.push_back(visit.face);
        tree.RefitVertices(vertices);
    }
}

void StrokeLoop::PutBack() {
    LevelMesh& mesh = *geometry.Bound();
    LevelChange* change = mesh.OpenChange();
    if (!active || change == nullptr) return;
    const std::vector<uint32_t> vertices = change->PutBack();
    tree.RefitVertices(vertices);
    for (uint32_t i = 0;; ++i) {
        auto* renderer =
            dynamic_cast<MeshRenderer*>(mesh.ChildByClass(MeshRenderer::StaticClass(), i));
        if (renderer == nullptr) break;
        for (const uint32_t v : vertices) renderer->rendererVertexChanged(v, mesh.LowestFaceOf(v));
    }
    previousHits.assign(previousHits.size(), Vector());
    stamps.Restart();
}

uint64_t StrokeLoop::CountMoved() const {
    const LevelMesh& mesh = *geometry.Bound();
    uint64_t moved = 0;
    for (uint32_t i = 0; i < mesh.changeRecordCount; ++i) {
        const StoredVertexInfo& record = mesh.changeRecords[i];
        const float* p = record.originalPosition;
        if (mesh.Position(record.vertexIndex) != Vector(p[0], p[1], p[2])) ++moved;
    }
    return moved;
}

void StrokeLoop::End() {
    if (!active) return;
    active = false;
    totals.verticesMoved += CountMoved();
    Observed(observer, BrushCall(BrushCall::EndStroke, brush), [&] {
        const Clock::time_point start = Clock::now();
        brush.EndStroke();
        totals.seconds += SecondsSince(start);
    });
}

}  // namespace trovik
