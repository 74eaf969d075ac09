// SPDX-License-Identifier: Apache-2.0

/// \file
/// How changes travel between the levels of a geometry when another one is bound.
///
/// Of a level that was or may have been changed two older states are kept: as the level above and
/// as the level below last saw it. Each is dropped when that neighbour has taken the change over,
/// or when there is none. Only the bound level can change, so going to another level passes every
/// pair of neighbours that has something to tell each other in the direction of the way.
#include "framework/layers/LayerStack.h"
#include "framework/math/SameBits.h"
#include "framework/mesh/LevelPositions.h"
#include "framework/mesh/VertexSwap.h"
#include "framework/multires/DetailCarrier.h"
#include "framework/multires/FreezeCarrying.h"
#include "framework/multires/HiddenFaces.h"
#include "framework/multires/LevelGeometry.h"
#include "framework/multires/Steps.h"
#include "framework/multires/TurnedLayers.h"

#include <utility>

namespace trovik {

namespace {

bool IsUnchanged(const LevelMesh& level, const std::vector<Vector>& positions) {
    for (uint32_t v = 0; v < level.VertexCount(); ++v)
        if (!SameBits(positions[v], level.Position(v))) return false;
    return true;
}

SeenDifferences DifferencesOf(const LevelMesh& level, const std::vector<Vector>& positions) {
    SeenDifferences differences;
    differences.kept = !positions.empty();
    if (!differences.kept) return differences;
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        if (SameBits(positions[v], level.Position(v))) continue;
        differences.vertices.push_back(v);
        differences.positions.push_back(positions[v]);
    }
    return differences;
}

bool IsUnchanged(const LevelMesh& level, const std::vector<uint8_t>& amounts) {
    for (uint32_t v = 0; v < level.VertexCount(); ++v)
        if (amounts[v] != level.Freeze(v)) return false;
    return true;
}

FreezeDifferences DifferencesOf(const LevelMesh& level, const std::vector<uint8_t>& amounts) {
    FreezeDifferences differences;
    differences.kept = !amounts.empty();
    if (!differences.kept) return differences;
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        if (amounts[v] == level.Freeze(v)) continue;
        differences.vertices.push_back(v);
        differences.amounts.push_back(amounts[v]);
    }
    return differences;
}

std::vector<uint8_t> Restored(const LevelMesh& level, const FreezeDifferences& differences) {
    if (!differences.kept) return {};
    std::vector<uint8_t> amounts = FreezeAmounts(level);
    for (std::size_t i = 0; i < differences.vertices.size(); ++i)
        amounts[differences.vertices[i]] = differences.amounts[i];
    return amounts;
}

std::vector<Vector> Restored(const LevelMesh& level, const SeenDifferences& differences) {
    if (!differences.kept) return {};
    std::vector<Vector> positions = PositionsOf(level);
    for (std::size_t i = 0; i < differences.vertices.size(); ++i)
        positions[differences.vertices[i]] = differences.positions[i];
    return positions;
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
    const LevelMesh& level = *levels[index];
    SeenLevel& one = seen[index];
    if (index + 1 < levels.size()) {
        if (one.fromAbove.empty()) one.fromAbove = PositionsOf(level);
        if (one.freezeFromAbove.empty()) one.freezeFromAbove = FreezeAmounts(level);
    }
    if (index > 0) {
        if (one.fromBelow.empty()) one.fromBelow = PositionsOf(level);
        if (one.freezeFromBelow.empty()) one.freezeFromBelow = FreezeAmounts(level);
    }
}

void LevelGeometry::DropUnchanged(uint32_t index) {
    for (std::vector<Vector>* one : {&seen[index].fromAbove, &seen[index].fromBelow})
        if (!one->empty() && IsUnchanged(*levels[index], *one)) std::vector<Vector>().swap(*one);
    for (std::vector<uint8_t>* one : {&seen[index].freezeFromAbove, &seen[index].freezeFromBelow})
        if (!one->empty() && IsUnchanged(*levels[index], *one)) std::vector<uint8_t>().swap(*one);
}

void LevelGeometry::CarryUp(uint32_t index, std::vector<CarriedLevel>& carried) {
    const std::vector<Vector> known = std::exchange(seen[index].fromAbove, {});
    if (known.empty() || IsUnchanged(*levels[index], known)) return;
    std::vector<Vector>& older = seen[index + 1].fromAbove;
    if (index + 2 < levels.size() && older.empty()) older = PositionsOf(*levels[index + 1]);
    LevelMesh& fine = *levels[index + 1];
    std::shared_ptr<TurnedLayers> turned;
    const LayerStack::Layers ofFine = layers->OfLevel(fine);
    if (!ofFine.empty())
        turned = std::make_shared<TurnedLayers>(fine, ofFine, layers->Ground(fine));
    CarriedLevel one = DetailCarrier(*levels[index], fine, carryWork).Up(known, turned.get());
    if (turned != nullptr && !turned->IsEmpty()) one.layers = std::move(turned);
    // The level below knows what it told itself.
    std::vector<Vector>().swap(seen[index + 1].fromBelow);
    if (!one.IsEmpty()) carried.push_back(std::move(one));
}

void LevelGeometry::CarryDown(uint32_t index, std::vector<CarriedLevel>& carried) {
    const std::vector<Vector> known = std::exchange(seen[index].fromBelow, {});
    if (known.empty() || IsUnchanged(*levels[index], known)) return;
    std::vector<Vector>& older = seen[index - 1].fromBelow;
    if (index > 1 && older.empty()) older = PositionsOf(*levels[index - 1]);
    CarriedLevel one = DetailCarrier(*levels[index - 1], *levels[index], carryWork).Down(known);
    std::vector<Vector>().swap(seen[index - 1].fromAbove);
    if (!one.IsEmpty()) carried.push_back(std::move(one));
}

void LevelGeometry::CarryFreezeUp(uint32_t index, std::vector<CarriedLevel>& carried) {
    const std::vector<uint8_t> known = std::exchange(seen[index].freezeFromAbove, {});
    if (known.empty() || IsUnchanged(*levels[index], known)) return;
    std::vector<uint8_t>& older = seen[index + 1].freezeFromAbove;
    if (index + 2 < levels.size() && older.empty()) older = FreezeAmounts(*levels[index + 1]);
    CarriedLevel one = trovik::CarryFreezeUp(*levels[index], *levels[index + 1], known);
    std::vector<uint8_t>().swap(seen[index + 1].freezeFromBelow);
    if (!one.IsEmpty()) carried.push_back(std::move(one));
}

void LevelGeometry::CarryFreezeDown(uint32_t index, std::vector<CarriedLevel>& carried) {
    const std::vector<uint8_t> known = std::exchange(seen[index].freezeFromBelow, {});
    if (known.empty() || IsUnchanged(*levels[index], known)) return;
    std::vector<uint8_t>& older = seen[index - 1].freezeFromBelow;
    if (index > 1 && older.empty()) older = FreezeAmounts(*levels[index - 1]);
    CarriedLevel one = trovik::CarryFreezeDown(*levels[index - 1], *levels[index], known);
    std::vector<uint8_t>().swap(seen[index - 1].freezeFromAbove);
    if (!one.IsEmpty()) carried.push_back(std::move(one));
}

std::vector<CarriedLevel> LevelGeometry::BindLevel(uint32_t index) {
    std::vector<CarriedLevel> carried;
    const uint32_t before = bound;
    for (uint32_t level = before; level < index; ++level) {
        CarryUp(level, carried);
        CarryFreezeUp(level, carried);
    }
    for (uint32_t level = before; level > index; --level) {
        CarryDown(level, carried);
        CarryFreezeDown(level, carried);
    }
    bound = index;
    if (index != before) DropUnchanged(before);
    KeepSeen(index);
    return carried;
}

LevelSwitch LevelGeometry::StateOfSwitch() const {
    LevelSwitch state;
    state.bound = bound;
    for (uint32_t i = 0; i < LevelCount(); ++i) {
        state.seen.push_back({DifferencesOf(*levels[i], seen[i].fromAbove),
                              DifferencesOf(*levels[i], seen[i].fromBelow),
                              DifferencesOf(*levels[i], seen[i].freezeFromAbove),
                              DifferencesOf(*levels[i], seen[i].freezeFromBelow)});
    }
    return state;
}

LevelSwitch LevelGeometry::SwitchLevel(uint32_t index) {
    LevelSwitch before = StateOfSwitch();
    before.carried = BindLevel(index);
    return before;
}

LevelSwitch LevelGeometry::ApplyToLowerLevels() {
    LevelSwitch before = StateOfSwitch();
    const LevelMesh& shape = *levels[bound];
    for (uint32_t index = 0; index < bound; ++index) {
        LevelMesh& level = *levels[index];
        CarriedLevel carried;
        carried.level = index;
        for (uint32_t v = 0; v < level.VertexCount(); ++v) {
            const Vector present = level.Position(v);
            const Vector place = shape.Position(v);
            if (SameBits(present, place)) continue;
            carried.vertices.push_back(v);
            carried.positionsBefore.push_back(present);
            level.SetPosition(v, place);
        }
        DetailCarrier::RefreshNormals(level, carried);
        // From level 0 to the bound one all agree now where they lie.
        std::vector<Vector>().swap(seen[index].fromAbove);
        std::vector<Vector>().swap(seen[index].fromBelow);
        if (!carried.vertices.empty()) before.carried.push_back(std::move(carried));
    }
    seen[bound].fromBelow.clear();
    KeepSeen(bound);
    return before;
}

void LevelGeometry::Exchange(LevelSwitch& other) {
    LevelSwitch present = StateOfSwitch();
    present.carried = std::move(other.carried);
    for (CarriedLevel& one : present.carried) {
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
        if (one.layers != nullptr) one.layers->Exchange(layers->Ground(level));
    }
    for (std::size_t i = 0; i < other.seen.size() && i < levels.size(); ++i) {
        seen[i] = {Restored(*levels[i], other.seen[i].fromAbove),
                   Restored(*levels[i], other.seen[i].fromBelow),
                   Restored(*levels[i], other.seen[i].freezeFromAbove),
                   Restored(*levels[i], other.seen[i].freezeFromBelow)};
    }
    bound = other.bound;
    KeepSeen(bound);
    other = std::move(present);
}

void LevelGeometry::Restore(uint32_t boundIndex, std::vector<SeenLevel> seenLevels) {
    bound = boundIndex;
    seen = std::move(seenLevels);
    seen.resize(levels.size());
    AgreeOnHidden(*this);
    KeepSeen(bound);
}

}  // namespace trovik
