// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/StrokeLoop.h"

#include "framework/brushes/BrushSettings.h"
#include "framework/brushes/StampFiles.h"
#include "framework/brushes/ToolTraits.h"
#include "framework/edits/Symmetry.h"
#include "framework/errors/HostError.h"
#include "framework/images/StampImage.h"
#include "framework/mesh/VertexNeighbours.h"
#include "framework/multires/LevelChange.h"
#include "framework/strokes/ImprintStroke.h"
#include "framework/strokes/StrokeRevert.h"
#include "framework/strokes/TopologicalHit.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string>
#include <utility>

namespace trovik {

namespace {

constexpr int mirroredStampMask = 1;
constexpr uint8_t shapeChange = SurfaceChange::Positions | SurfaceChange::Normals;
/// Makes the random numbers for dab sizes independent of those for the stamp.
constexpr uint64_t sizeSalt = 0x94d1f3a76c20e5b3u;

/// Restores, until the end of the scope, the falloff that the brush had when its stroke began.
class FalloffOfStroke {
public:
    FalloffOfStroke(FalloffTable& table, FalloffTable::Samples ofStroke)
        : setting(table), chosen(table.Current()) {
        setting.Set(std::move(ofStroke));
    }
    ~FalloffOfStroke() { setting.Set(chosen); }
    FalloffOfStroke(const FalloffOfStroke&) = delete;
    FalloffOfStroke& operator=(const FalloffOfStroke&) = delete;

private:
    FalloffTable& setting;
    FalloffTable::Samples chosen;
};

/// The smallest edge length of a refined mesh, as a fraction of the radius of the dab. It limits
/// the faces under one dab to a few hundred thousand.
constexpr float minDetailOfRadius = 0.005f;

/// Makes the next undo step join the newest one if it is pushed within the scope.
class JoinedStep {
public:
    JoinedStep(UndoHistory& ofHistory, bool joins) : history(ofHistory) { history.JoinNext(joins); }
    ~JoinedStep() { history.JoinNext(false); }
    JoinedStep(const JoinedStep&) = delete;
    JoinedStep& operator=(const JoinedStep&) = delete;

private:
    UndoHistory& history;
};

const UndoStep* NewestStep(const UndoHistory& history) {
    return history.Position() == 0 ? nullptr : &history.Shell(history.Position() - 1);
}

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// The coordinate axis perpendicular to the plane in which the map reflects; -1 if the map is not a
/// reflection in a coordinate plane.
int PlaneAxis(const Matrix& map) {
    int axis = -1;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            const float value = map.m[row][column];
            if (row != column && value != 0.0f) return -1;
            if (row != column || value == 1.0f) continue;
            if (value != -1.0f || axis >= 0 || row == 3) return -1;
            axis = row;
        }
    }
    return axis;
}

}  // namespace

StrokeLoop::StrokeLoop(BrushOperation& strokeBrush,
                       LevelGeometry& strokeGeometry,
                       PatchTree& strokeTree)
    : brush(strokeBrush), geometry(strokeGeometry), tree(strokeTree) {}

void StrokeLoop::SetMirrors(int mode, std::vector<Matrix> pointMaps) {
    // An open stroke stores one previous hit for each of its mirrors.
    if (active) throw HostError("the mirrors cannot change while a stroke is open");
    brush.MirrorConfig().SetMirrorMode(mode);
    mirrors = std::move(pointMaps);
}

void StrokeLoop::Begin(BrushOperation::Modifier strokeModifier, uint64_t seed) {
    if (active) throw HostError("a stroke is already open");
    const bool wantsDetail = detail.IsOn() && TraitsOf(brush).refinesMesh &&
                             brush.MirrorConfig().MirrorMode() != MirrorConfiguration::Topological;
    const std::string whyFixed = wantsDetail ? geometry.WhyTopologyIsFixed() : std::string();
    brush.Settings().detail.isOn = wantsDetail && whyFixed.empty();
    if (observer != nullptr && brush.Settings().detail.isOn)
        throw HostError(
            "traces cannot record strokes that change the topology; turn the detail off");
    modifier = strokeModifier;
    RefreshStamp(brush);
    // With topological mirroring, the stamp of a mirrored dab is read at the mirrored vertex, so
    // that it looks the same on halves in different poses. A vector stamp moves vertices along its
    // own axes, so its axes are mirrored, and it is read at the vertex itself.
    if (brush.MirrorConfig().MirrorMode() == MirrorConfiguration::Topological)
        brush.Settings().mirroredStampRead =
            !IsVectorStampName(brush.MaskName(stampMask).toStdString());
    previousHits.assign(mirrors.size() + 2, Vector());
    dirtyBox = AxisAlignedBoundingBox();
    mainDabs.clear();
    heldSides.clear();
    falloff = brush.Settings().falloff.Current();
    brush.CheckValidity();
    if (!whyFixed.empty()) {
        g_pKernel->Interface()->HUDMessageShow(
            QStringLiteral("Strokes do not change the detail of this mesh, because it %1.")
                .arg(QString::fromStdString(whyFixed)),
            HUDMessageWarning);
    }
    BeginStroke();
    // A modifier key may have changed the tool.
    stamps.Begin(brush, geometry, tree, seed);
    sizeRandom = StrokeRandom(seed ^ sizeSalt);
    inPairs = mirrors.size() > 1 && KeepsPlane();
    static uint64_t strokes = 0;
    number = ++strokes;
    active = true;
    if (listener != nullptr) listener->OnStrokeBegun(modifier, seed);
}

void StrokeLoop::BeginStroke() {
    BrushCall call(BrushCall::BeginStroke, brush);
    call.mesh = geometry.Bound();
    call.modifier = modifier;
    Observed(observer, call, [&] {
        const Clock::time_point start = Clock::now();
        brush.BeginStroke(call.mesh, modifier, call.trigger);
        totals.seconds += SecondsSince(start);
    });
    // A StrokeRevert brush does not change normals under such a layer.
    if (dynamic_cast<StrokeRevert*>(&brush) == nullptr) normalBackup.Begin(*geometry.Bound());
}

void StrokeLoop::Dab(const StrokeDab& pathDab) {
    if (!active) throw HostError("a dab needs an open stroke");
    bool isDone = false;
    try {
        StrokeDab dab = pathDab;
        stamps.PlaceStamp(dab);
        if (brush.StrokeDrawMode() == static_cast<int>(DrawMode::Drag))
            ApplyHeld(dab);
        else
            ApplySides(dab);
        isDone = true;
        if (listener != nullptr) listener->OnDab(pathDab, false);
    } catch (...) {
        if (!isDone && listener != nullptr) listener->OnDab(pathDab, true);
        Break();
        throw;
    }
}

void StrokeLoop::ApplySides(const StrokeDab& dab) {
    // The topological mirror image must be looked up before the dab moves the face under it.
    const auto across = AcrossTopology(dab);
    Apply(dab, 0);
    const std::size_t sides = inPairs ? 1 : mirrors.size();
    for (std::size_t side = 1; side <= sides; ++side) {
        const auto mirrored = Mapped(dab, mirrors[side - 1], true);
        if (!mirrored) continue;
        brush.MirrorConfig().SetPointMap(mirrors[side - 1]);
        Apply(*mirrored, side);
    }
    if (inPairs) mainDabs.push_back(dab);
    if (across) {
        brush.MirrorConfig().SetPointMap(across->pointMap);
        Apply(across->dab, mirrors.size() + 1);
    }
}

std::optional<StrokeDab> StrokeLoop::Mapped(const StrokeDab& dab,
                                            const Matrix& map,
                                            bool asMirror) const {
    StrokeDab mapped = dab;
    mapped.hit.mirror = asMirror;
    mapped.hit.position = map.AffineTransform(dab.hit.position, 1.0f);
    mapped.hit.normal = map.AffineTransform(dab.hit.normal, 0.0f);
    const auto nearest = tree.Nearest(mapped.hit.position);
    if (!nearest) return std::nullopt;
    mapped.hit.face = nearest->face;
    mapped.stampMatrix = StampPlacement::Mirrored(dab.stampMatrix, map);
    const MatrixTransform& transform = geometry.Transform();
    Vector local;
    transform.WorldToLocal(&local, &dab.position, 1.0f);
    local = map.AffineTransform(local, 1.0f);
    transform.LocalToWorld(&mapped.position, &local, 1.0f);
    return mapped;
}

bool StrokeLoop::KeepsPlane() const {
    if (!TraitsOf(brush).worksOnPlane) return false;
    const Attribute* global = brush.AttributeByName(QStringLiteral("globalplane"));
    const Attribute* update = brush.AttributeByName(QStringLiteral("updateplane"));
    const auto isOn = [](const Attribute* attribute) {
        const auto* flag = dynamic_cast<const AttributeInstance<bool>*>(attribute);
        return flag != nullptr && flag->Value();
    };
    return update != nullptr && (isOn(global) || !isOn(update));
}

// The remaining sides form pairs: one side is the image of the other under a map, just like the
// mirrored side and the main side.
void StrokeLoop::ApplyOtherPairs(const UndoStep* newestBefore, const std::function<void()>& poll) {
    UndoHistory& history = geometry.History();
    // For the user, this is a single stroke, so a falloff chosen during it applies only to the next
    // stroke.
    const FalloffOfStroke ofStroke(brush.Settings().falloff, falloff);
    const std::vector<StrokeDab> dabs = std::exchange(mainDabs, {});
    // If a side changes nothing, for example because it is masked, it has no step to join.
    bool hasStep = false;
    for (std::size_t first = 1; first < mirrors.size(); first += 2) {
        const bool isPair = first + 1 < mirrors.size();
        Matrix between;
        if (isPair) {
            Matrix back = mirrors[first];
            back.Invert(nullptr);
            between = back * mirrors[first + 1];
        }
        hasStep = hasStep || NewestStep(history) != newestBefore;
        const JoinedStep joined(history, hasStep);
        BeginStroke();
        try {
            for (const StrokeDab& dab : dabs) {
                if (poll) poll();
                if (const auto main = Mapped(dab, mirrors[first], false)) Apply(*main, first + 1);
                if (!isPair) continue;
                const auto other = Mapped(dab, mirrors[first + 1], true);
                if (!other) continue;
                brush.MirrorConfig().SetPointMap(between);
                Apply(*other, first + 2);
            }
        } catch (...) {
            EndStroke();
            throw;
        }
        EndStroke();
    }
}

void StrokeLoop::RestoreHidden() {
    LevelChange* change = geometry.Bound()->OpenChange();
    if (change == nullptr) return;
    const std::vector<uint32_t> moved = change->MovedHidden();
    if (moved.empty()) return;
    if (observer != nullptr) observer->BeforeCommand(brush, "restoreHidden");
    change->RestoreHidden(moved);
}

void StrokeLoop::RestoreNormals() {
    LevelMesh& mesh = *geometry.Bound();
    if (normalBackup.AppliesTo(mesh)) {
        const std::vector<uint32_t> changed = normalBackup.Changed(mesh);
        if (observer != nullptr && !changed.empty())
            observer->BeforeCommand(brush, "restoreNormals");
        normalBackup.Restore(mesh, changed);
        Announce(changed);
    }
    normalBackup.End();
}

void StrokeLoop::SettleSides() {
    // Dabs that depend on the camera are meant to differ between the sides.
    LevelChange* change = geometry.Bound()->OpenChange();
    if (change == nullptr || CheckableFloatArray::s_bActive || change->EditsTopology()) return;
    std::vector<int> axes;
    for (const Matrix& map : mirrors)
        if (const int axis = PlaneAxis(map); axis >= 0) axes.push_back(axis);
    try {
        LevelMesh& mesh = *geometry.Bound();
        const std::vector<uint32_t> vertices = SettleSymmetry(mesh, *change, axes);
        if (observer != nullptr && !vertices.empty())
            observer->AfterSettling(brush, mesh, vertices);
        Announce(vertices);
    } catch (Error* error) {
        // If memory runs out, both sides keep the brush's results, which are equal up to rounding.
        Error::Dispose(error);
    }
}

std::optional<StrokeLoop::MirroredDab> StrokeLoop::AcrossTopology(const StrokeDab& dab) const {
    if (brush.MirrorConfig().MirrorMode() != MirrorConfiguration::Topological) return std::nullopt;
    const auto across = AcrossTopologicalMirror(dab.hit);
    if (!across) return std::nullopt;
    MirroredDab mirrored{dab, across->pointMap};
    mirrored.dab.hit = across->hit;
    const MatrixTransform& transform = geometry.Transform();
    Vector local;
    transform.WorldToLocal(&local, &dab.position, 1.0f);
    local = across->pointMap.AffineTransform(local, 1.0f);
    transform.LocalToWorld(&mirrored.dab.position, &local, 1.0f);
    if (!brush.IsMaskEnabled(mirroredStampMask))
        mirrored.dab.stampMatrix = StampPlacement::Mirrored(dab.stampMatrix, across->pointMap);
    return mirrored;
}

void StrokeLoop::Apply(const StrokeDab& dab, std::size_t side) {
    ClearLastWalks();
    brush.SetPreviousPatchPosition(previousHits[side]);
    brush.Settings().stampMatrix = dab.stampMatrix;
    AxisAlignedBoundingBox box;
    SurfacePoint hit = dab.hit;
    if (brush.Settings().detail.isOn) {
        SetDabDetail(dab);
        // Earlier dabs may have changed the face that was hit when the path was projected.
        if (const auto nearest = tree.Nearest(hit.position)) hit.face = nearest->face;
    }
    BrushCall call(BrushCall::ApplyDab, brush);
    call.hit = &hit;
    call.position = dab.position;
    call.size = dab.size;
    call.pressure = dab.pressure;
    call.strength = dab.strength;
    call.box = &box;
    try {
        Observed(observer, call, [&] {
            const Clock::time_point start = Clock::now();
            brush.ApplyDab(hit, dab.position, dab.size, dab.pressure, dab.strength, box);
            totals.seconds += SecondsSince(start);
        });
    } catch (...) {
        // The dab may have been applied partially.
        ReportDab();
        throw;
    }
    ++totals.dabs;
    previousHits[side] = dab.hit.position;
    if (!box.IsEmpty()) {
        dirtyBox.Extend({box.minX, box.minY, box.minZ});
        dirtyBox.Extend({box.maxX, box.maxY, box.maxZ});
    }
    ReportDab();
}

void StrokeLoop::SetDabDetail(const StrokeDab& dab) {
    // With a non-uniform scale, the region contains the dab, and edges have the length on average.
    float largest = 0.0f;
    float product = 1.0f;
    for (const Vector& axis : {Vector(1, 0, 0), Vector(0, 1, 0), Vector(0, 0, 1)}) {
        Vector local;
        geometry.Transform().WorldToLocal(&local, &axis, 0.0f);
        largest = std::max(largest, local.Length());
        product *= local.Length();
    }
    const float mean = std::cbrt(product);
    float length = detail.length;
    if (detail.measure == DetailSettings::Measure::Radius) length *= dab.size;
    if (detail.measure == DetailSettings::Measure::Pixels)
        length *= pixelSize ? pixelSize(dab.position) : 0.0f;
    DabDetail& ofDab = brush.Settings().detail;
    ofDab.splits = detail.splits;
    ofDab.collapses = detail.collapses;
    ofDab.creaseAngle = detail.creaseAngle;
    ofDab.radius = largest * dab.size;
    ofDab.length = std::max(mean * length, ofDab.radius * minDetailOfRadius);
}

void StrokeLoop::WholeMesh(float strength, bool byFacing) {
    if (!active) throw HostError("a dab needs an open stroke");
    try {
        ClearLastWalks();
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
        // A StrokeRevert brush changes other data than positions, and reports these changes itself.
        if (dynamic_cast<StrokeRevert*>(&brush) == nullptr)
            geometry.ReportAll(geometry.BoundIndex(), shapeChange);
        if (listener != nullptr) listener->OnWholeMesh(strength, byFacing);
    } catch (...) {
        geometry.ReportAll(geometry.BoundIndex(), shapeChange);
        Break();
        throw;
    }
}

void StrokeLoop::ClearLastWalks() {
    for (uint32_t level = 0; level < geometry.LevelCount(); ++level)
        geometry.Level(level)->ClearLastWalks();
}

// The traversed level is the one whose patches the dab visited. A visit to a patch writes normals
// even if no vertex of the patch was reached. A patch shares its border vertices with the patches
// around it, so those patches are reported as well.
void StrokeLoop::ReportDab() {
    if (geometry.Observers().empty()) return;
    const uint32_t bound = geometry.BoundIndex();
    for (uint32_t level = 0; level < geometry.LevelCount(); ++level) {
        LevelMesh& mesh = *geometry.Level(level);
        std::vector<uint32_t> visited;
        std::vector<uint32_t> reached;
        for (const FaceVisit& visit : mesh.LastFaceWalk()) {
            visited.push_back(visit.face);
            if (visit.answer) reached.push_back(visit.face);
        }
        geometry.ReportPatches(
            bound, SurfaceChange::Positions, level, WithFacesAround(mesh, std::move(reached)));
        geometry.ReportPatches(
            bound, SurfaceChange::Normals, level, WithFacesAround(mesh, std::move(visited)));
        std::vector<uint32_t> vertices;
        for (const FaceVisit& visit : mesh.LastVertexWalk()) vertices.push_back(visit.face);
        geometry.ReportVertices(bound, shapeChange, vertices);
    }
}

void StrokeLoop::RevertStroke() {
    LevelMesh& mesh = *geometry.Bound();
    LevelChange* change = mesh.OpenChange();
    auto* own = dynamic_cast<StrokeRevert*>(&brush);
    if (!active || (change == nullptr && own == nullptr)) return;
    if (observer != nullptr) observer->BeforeCommand(brush, "putBack");
    if (own != nullptr) own->RevertBrushStroke();
    if (change != nullptr) Announce(change->RevertStroke());
    mainDabs.clear();
    heldSides.clear();
    previousHits.assign(previousHits.size(), Vector());
    stamps.Restart();
    if (listener != nullptr) listener->OnReverted();
}

void StrokeLoop::Announce(const std::vector<uint32_t>& vertices) {
    if (vertices.empty()) return;
    LevelMesh& mesh = *geometry.Bound();
    geometry.ReportVertices(geometry.BoundIndex(), shapeChange, vertices);
    for (uint32_t i = 0;; ++i) {
        auto* renderer =
            dynamic_cast<MeshRenderer*>(mesh.ChildByClass(MeshRenderer::StaticClass(), i));
        if (renderer == nullptr) break;
        for (const uint32_t v : vertices) renderer->rendererVertexChanged(v, mesh.LowestFaceOf(v));
    }
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

void StrokeLoop::EndStroke() {
    RestoreHidden();
    RestoreNormals();
    totals.verticesMoved += CountMoved();
    Observed(observer, BrushCall(BrushCall::EndStroke, brush), [&] {
        const Clock::time_point start = Clock::now();
        brush.EndStroke();
        totals.seconds += SecondsSince(start);
    });
}

void StrokeLoop::Break() {
    const bool leavesOutSides = !mainDabs.empty();
    mainDabs.clear();
    Finish(leavesOutSides, {});
}

void StrokeLoop::End(const std::function<void()>& poll) { Finish(false, poll); }

void StrokeLoop::Finish(bool brokenOff, const std::function<void()>& poll) {
    if (!active) return;
    active = false;
    number = 0;
    try {
        if (!inPairs) SettleSides();
        const UndoStep* const newestBefore = NewestStep(geometry.History());
        EndStroke();
        if (inPairs) ApplyOtherPairs(newestBefore, poll);
    } catch (...) {
        mainDabs.clear();
        if (listener != nullptr) listener->OnStrokeEnded(true);
        throw;
    }
    if (listener != nullptr) listener->OnStrokeEnded(brokenOff);
}

}  // namespace trovik
