// SPDX-License-Identifier: Apache-2.0

/// \file
/// Propagation of changes between the levels of a geometry when a different level is bound.
///
/// For a level that has or may have changed, two older states are kept: one with which the level
/// above was last synchronised, and one for the level below (OlderStates). Each state is dropped
/// when its neighbour has received the changes, or if that neighbour does not exist. Only the bound
/// level can change, so switching to another level visits every pair of adjacent levels that has
/// changes to propagate in that direction.
#include "framework/jobs/JobPhase.h"
#include "framework/layers/LayerStack.h"
#include "framework/math/SameBits.h"
#include "framework/mesh/VertexSwap.h"
#include "framework/multires/DetailCarrier.h"
#include "framework/multires/FreezeCarrying.h"
#include "framework/multires/HiddenFaces.h"
#include "framework/multires/LevelChange.h"
#include "framework/multires/LevelGeometry.h"
#include "framework/multires/RotatedLayers.h"

#include <utility>

namespace trovik {

namespace {

bool IsPresent(const LevelMesh& level, uint32_t vertex, const Vector& position) {
    return SameBits(position, level.Position(vertex));
}

bool IsPresent(const LevelMesh& level, uint32_t vertex, uint8_t amount) {
    return amount == level.Freeze(vertex);
}

template <typename Value>
bool IsUnchanged(const LevelMesh& level, const OlderValues<Value>& older) {
    for (std::size_t i = 0; i < older.Vertices().size(); ++i)
        if (!IsPresent(level, older.Vertices()[i], older.Values()[i])) return false;
    return true;
}

template <typename Value>
void DropIfUnchanged(const LevelMesh& level, OlderValues<Value>& older) {
    if (older.IsKept() && IsUnchanged(level, older)) older.Drop();
}

/// Removes and returns the older state, or an empty one if no value differs.
template <typename Value>
OlderValues<Value> TakeChanged(const LevelMesh& level, OlderValues<Value>& older) {
    DropIfUnchanged(level, older);
    OlderValues<Value> taken = std::exchange(older, {});
    taken.Sort();
    return taken;
}

/// Fills lists with the vertices that differ from an older state, in ascending order, and their
/// older values.
template <typename Value>
bool FillDifferences(const LevelMesh& level,
                     OlderValues<Value>& older,
                     std::vector<uint32_t>& vertices,
                     std::vector<Value>& values,
                     JobPhase& phase) {
    older.Sort(phase);
    for (std::size_t i = 0; i < older.Vertices().size(); ++i) {
        phase.Add();
        const uint32_t vertex = older.Vertices()[i];
        const Value& value = older.Values()[i];
        if (IsPresent(level, vertex, value)) continue;
        vertices.push_back(vertex);
        values.push_back(value);
    }
    return older.IsKept();
}

/// Returns the differences from the older states, and sorts these states.
SeenByNeighbours DifferencesOf(const LevelMesh& level, OlderStates& older, JobPhase& phase) {
    SeenByNeighbours seen;
    const auto fill = [&](auto& from, auto& into, auto& values) {
        into.kept = FillDifferences(level, from, into.vertices, values, phase);
    };
    fill(older.fromAbove, seen.fromAbove, seen.fromAbove.positions);
    fill(older.fromBelow, seen.fromBelow, seen.fromBelow.positions);
    fill(older.freezeFromAbove, seen.freezeFromAbove, seen.freezeFromAbove.amounts);
    fill(older.freezeFromBelow, seen.freezeFromBelow, seen.freezeFromBelow.amounts);
    return seen;
}

template <typename Value>
OlderValues<Value> Restored(bool kept,
                            const std::vector<uint32_t>& vertices,
                            const std::vector<Value>& values) {
    OlderValues<Value> older;
    if (!kept) return older;
    older.Keep();
    for (std::size_t i = 0; i < vertices.size(); ++i) older.Note(vertices[i], values[i]);
    return older;
}

OlderStates Restored(const SeenByNeighbours& seen) {
    const auto positions = [](const SeenDifferences& one) {
        return Restored(one.kept, one.vertices, one.positions);
    };
    const auto amounts = [](const FreezeDifferences& one) {
        return Restored(one.kept, one.vertices, one.amounts);
    };
    return {positions(seen.fromAbove),
            positions(seen.fromBelow),
            amounts(seen.freezeFromAbove),
            amounts(seen.freezeFromBelow)};
}

}  // namespace

uint64_t CarriedLevel::Bytes() const {
    return sizeof(CarriedLevel) + vertices.capacity() * sizeof(uint32_t) +
           positionsBefore.capacity() * sizeof(Vector) +
           normalVertices.capacity() * sizeof(uint32_t) +
           normalsBefore.capacity() * sizeof(PackedNormal) +
           freezeVertices.capacity() * sizeof(uint32_t) + freezeBefore.capacity() +
           (layers == nullptr ? 0 : layers->Bytes());
}

void LevelGeometry::KeepSeen(uint32_t index) {
    LevelMesh& level = *levels[index];
    OlderStates& older = level.Older();
    LevelChange* open = level.OpenChange();
    if (open != nullptr) open->NoteOlderPositions();
    if (index + 1 < levels.size()) {
        older.fromAbove.Keep();
        older.freezeFromAbove.Keep();
    }
    if (index > 0) {
        older.fromBelow.Keep();
        older.freezeFromBelow.Keep();
    }
    if (open == nullptr) return;
    // The neighbours are synchronised with the current positions of the unfinished stroke.
    for (uint32_t i = 0; i < open->Records().fill; ++i) {
        const uint32_t vertex = open->Records().array[i].vertexIndex;
        older.NotePosition(vertex, level.Position(vertex));
    }
}

void LevelGeometry::DropUnchanged(uint32_t index) {
    LevelMesh& level = *levels[index];
    OlderStates& older = level.Older();
    DropIfUnchanged(level, older.fromAbove);
    DropIfUnchanged(level, older.fromBelow);
    DropIfUnchanged(level, older.freezeFromAbove);
    DropIfUnchanged(level, older.freezeFromBelow);
}

void LevelGeometry::CarryUp(uint32_t index, std::vector<CarriedLevel>& carried, JobControl* job) {
    const OlderValues<Vector> known = TakeChanged(*levels[index], levels[index]->Older().fromAbove);
    if (!known.IsKept()) return;
    LevelMesh& fine = *levels[index + 1];
    if (index + 2 < levels.size()) fine.Older().fromAbove.Keep();
    std::shared_ptr<RotatedLayers> turned;
    const LayerStack::Layers ofFine = layers->OfLevel(fine);
    if (!ofFine.empty())
        turned = std::make_shared<RotatedLayers>(fine, ofFine, layers->LayerBaseOf(fine));
    // The changes come from the level below, so that level needs no record of them.
    fine.Older().fromBelow.Drop();
    CarriedLevel& one = carried.emplace_back();
    try {
        DetailCarrier(*levels[index], fine, carryWork, job).Up(known, turned.get(), one);
    } catch (...) {
        if (turned != nullptr) turned->Finish();
        one.layers = std::move(turned);
        throw;
    }
    if (turned != nullptr && !turned->IsEmpty()) one.layers = std::move(turned);
    if (one.IsEmpty()) carried.pop_back();
}

void LevelGeometry::CarryDown(uint32_t index, std::vector<CarriedLevel>& carried, JobControl* job) {
    const OlderValues<Vector> known = TakeChanged(*levels[index], levels[index]->Older().fromBelow);
    if (!known.IsKept()) return;
    OlderStates& older = levels[index - 1]->Older();
    if (index > 1) older.fromBelow.Keep();
    older.fromAbove.Drop();
    CarriedLevel& one = carried.emplace_back();
    DetailCarrier(*levels[index - 1], *levels[index], carryWork, job).Down(known, one);
    if (one.IsEmpty()) carried.pop_back();
}

void LevelGeometry::CarryFreezeUp(uint32_t index,
                                  std::vector<CarriedLevel>& carried,
                                  JobControl* job) {
    const OlderValues<uint8_t> known =
        TakeChanged(*levels[index], levels[index]->Older().freezeFromAbove);
    if (!known.IsKept()) return;
    OlderStates& older = levels[index + 1]->Older();
    if (index + 2 < levels.size()) older.freezeFromAbove.Keep();
    older.freezeFromBelow.Drop();
    CarriedLevel& one = carried.emplace_back();
    trovik::CarryFreezeUp(*levels[index], *levels[index + 1], known, one, job);
    if (one.IsEmpty()) carried.pop_back();
}

void LevelGeometry::CarryFreezeDown(uint32_t index,
                                    std::vector<CarriedLevel>& carried,
                                    JobControl* job) {
    const OlderValues<uint8_t> known =
        TakeChanged(*levels[index], levels[index]->Older().freezeFromBelow);
    if (!known.IsKept()) return;
    OlderStates& older = levels[index - 1]->Older();
    if (index > 1) older.freezeFromBelow.Keep();
    older.freezeFromAbove.Drop();
    CarriedLevel& one = carried.emplace_back();
    trovik::CarryFreezeDown(*levels[index - 1], *levels[index], known, one, job);
    if (one.IsEmpty()) carried.pop_back();
}

std::vector<CarriedLevel> LevelGeometry::BindLevel(uint32_t index) {
    const uint32_t before = bound;
    std::vector<CarriedLevel> carried;
    CarryTo(index, carried, nullptr);
    ReportSwitch(before, carried);
    return carried;
}

void LevelGeometry::CarryTo(uint32_t index, std::vector<CarriedLevel>& carried, JobControl* job) {
    const uint32_t before = bound;
    if (LevelChange* open = levels[before]->OpenChange()) open->NoteOlderPositions();
    for (uint32_t level = before; level < index; ++level) {
        CarryUp(level, carried, job);
        CarryFreezeUp(level, carried, job);
    }
    for (uint32_t level = before; level > index; --level) {
        CarryDown(level, carried, job);
        CarryFreezeDown(level, carried, job);
    }
    bound = index;
    if (index != before) DropUnchanged(before);
    KeepSeen(index);
}

SeenByNeighbours LevelGeometry::Seen(uint32_t index, JobControl* job) const {
    OlderStates older = levels[index]->Older();
    JobPhase phase(job, "Comparing levels", older.NotedCount());
    SeenByNeighbours seen = DifferencesOf(*levels[index], older, phase);
    phase.Finish();
    return seen;
}

LevelSwitch LevelGeometry::StateOfSwitch(JobControl* job) {
    LevelSwitch state;
    state.bound = bound;
    uint64_t total = 0;
    for (const auto& level : levels) {
        if (LevelChange* open = level->OpenChange()) open->NoteOlderPositions();
        OlderStates& older = level->Older();
        // Sorting does not report progress, so that a switch that is repeated after being cancelled
        // produces the same reports.
        older.fromAbove.Sort();
        older.fromBelow.Sort();
        older.freezeFromAbove.Sort();
        older.freezeFromBelow.Sort();
        total += older.NotedCount();
    }
    JobPhase phase(job, "Comparing levels", total);
    for (const auto& level : levels)
        state.seen.push_back(DifferencesOf(*level, level->Older(), phase));
    phase.Finish();
    return state;
}

LevelSwitch LevelGeometry::SwitchLevel(uint32_t index, JobControl* job) {
    LevelSwitch before = StateOfSwitch(job);
    try {
        CarryTo(index, before.carried, job);
    } catch (...) {
        Revert(before);
        throw;
    }
    ReportSwitch(before.bound, before.carried);
    return before;
}

LevelSwitch LevelGeometry::ApplyToLowerLevels(JobControl* job) {
    LevelSwitch before = StateOfSwitch(job);
    try {
        ShapeLowerLevels(before.carried, job);
    } catch (...) {
        Revert(before);
        throw;
    }
    ReportSwitch(bound, before.carried);
    return before;
}

void LevelGeometry::ShapeLowerLevels(std::vector<CarriedLevel>& changed, JobControl* job) {
    const LevelMesh& shape = *levels[bound];
    for (uint32_t index = 0; index < bound; ++index) {
        LevelMesh& level = *levels[index];
        // From level 0 to the bound level, all levels have the same positions afterwards.
        level.Older().fromAbove.Drop();
        level.Older().fromBelow.Drop();
        CarriedLevel& carried = changed.emplace_back();
        carried.level = index;
        JobPhase phase(job, "Moving vertices", level.VertexCount());
        for (uint32_t v = 0; v < level.VertexCount(); ++v) {
            phase.Add();
            const Vector present = level.Position(v);
            const Vector newPosition = shape.Position(v);
            if (SameBits(present, newPosition)) continue;
            carried.vertices.push_back(v);
            carried.positionsBefore.push_back(present);
            level.SetPosition(v, newPosition);
        }
        phase.Finish();
        DetailCarrier::RefreshNormals(level, carried, job);
        if (carried.vertices.empty()) changed.pop_back();
    }
    levels[bound]->Older().fromBelow.Drop();
    KeepSeen(bound);
}

void LevelGeometry::Exchange(LevelSwitch& other) {
    LevelSwitch present = StateOfSwitch();
    present.carried = std::move(other.carried);
    SwapCarried(present.carried);
    RestoreSeen(other);
    other = std::move(present);
    ReportSwitch(other.bound, other.carried);
}

void LevelGeometry::Revert(LevelSwitch& before) {
    SwapCarried(before.carried);
    RestoreSeen(before);
}

void LevelGeometry::SwapCarried(std::vector<CarriedLevel>& carried) {
    for (CarriedLevel& one : carried) {
        LevelMesh& level = *levels[one.level];
        for (std::size_t i = 0; i < one.vertices.size(); ++i)
            SwapPosition(level, one.vertices[i], one.positionsBefore[i]);
        for (std::size_t i = 0; i < one.normalVertices.size(); ++i)
            std::swap(level.vertexNormals.array[one.normalVertices[i]], one.normalsBefore[i]);
        for (std::size_t i = 0; i < one.freezeVertices.size(); ++i) {
            const uint8_t amount = level.Freeze(one.freezeVertices[i]);
            level.SetFreeze(one.freezeVertices[i], one.freezeBefore[i]);
            one.freezeBefore[i] = amount;
        }
        if (one.layers != nullptr) one.layers->Exchange(layers->LayerBaseOf(level));
    }
}

void LevelGeometry::RestoreSeen(const LevelSwitch& state) {
    for (std::size_t i = 0; i < state.seen.size() && i < levels.size(); ++i)
        levels[i]->Older() = Restored(state.seen[i]);
    bound = state.bound;
    KeepSeen(bound);
}

void LevelGeometry::Restore(uint32_t boundIndex, const std::vector<SeenByNeighbours>& seenLevels) {
    bound = boundIndex;
    for (uint32_t i = 0; i < LevelCount(); ++i)
        levels[i]->Older() = i < seenLevels.size() ? Restored(seenLevels[i]) : OlderStates();
    UpdateHiddenFromHighest(*this);
    KeepSeen(bound);
    ReportAll(bound, SurfaceChange::Topology);
}

void LevelGeometry::ReportCarried(const CarriedLevel& carried) {
    ReportVertices(carried.level, SurfaceChange::Positions, carried.vertices);
    ReportVertices(carried.level, SurfaceChange::Normals, carried.normalVertices);
    ReportVertices(carried.level, SurfaceChange::Mask, carried.freezeVertices);
}

void LevelGeometry::ReportSwitch(uint32_t boundBefore, const std::vector<CarriedLevel>& carried) {
    if (Observers().empty()) return;
    for (const CarriedLevel& one : carried) ReportCarried(one);
    if (bound != boundBefore) ReportAll(bound, SurfaceChange::Topology);
}

}  // namespace trovik
