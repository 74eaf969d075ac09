// SPDX-License-Identifier: Apache-2.0
#include "framework/layers/SculptLayer.h"

#include "framework/math/SameBits.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace trovik {

namespace {

/// Returns whether the layer has no offset for the vertex and the vertex is at its rest position.
bool IsAtRest(const SculptLayer::State& state) {
    return state.offset == Vector() && state.seen == state.rest;
}

Vector Composed(const Vector& rest, float strength, const Vector& offset) {
    return {
        rest.x + strength * offset.x, rest.y + strength * offset.y, rest.z + strength * offset.z};
}

}  // namespace

SculptLayer::SculptLayer(LevelMesh* ofLevel, const std::string& layerName)
    : level(ofLevel),
      given{layerName, 1.0f, true, true},
      handle(std::make_shared<SculptLayer*>(this)) {
    level->Layers().push_back(this);
}

SculptLayer::~SculptLayer() {
    *handle = nullptr;
    if (level == nullptr) return;
    std::erase(level->Layers(), this);
    if (level->ActiveLayer() == this) level->SetActiveLayer(nullptr);
}

Vector* SculptLayer::get(Vector* out, uint32_t layerSlot) const {
    *out = layerSlot < entries.size() ? entries[layerSlot].state.offset : Vector();
    return out;
}

void SculptLayer::set(
    Vector* out, uint32_t layerSlot, uint32_t vertex, const Vector* offset, bool updateComposite) {
    if (layerSlot >= entries.size()) layerSlot = SlotOf(vertex);
    Entry& entry = entries[layerSlot];
    assert(entry.vertex == vertex);
    AbsorbForeignMove(entry);
    entry.state.offset = *offset;
    const Vector composite = Composed(entry.state.rest, EffectiveStrength(), entry.state.offset);
    if (updateComposite) {
        level->StorePosition(vertex, composite);
        entry.state.seen = composite;
    }
    if (out != nullptr) *out = composite;
}

uint32_t& SculptLayer::SlotEntryOf(uint32_t vertex) {
    const uint32_t page = vertex >> pageBits;
    if (page >= slotPages.size()) slotPages.resize(page + 1);
    if (slotPages[page] == nullptr) {
        slotPages[page] = std::make_unique_for_overwrite<uint32_t[]>(pageSize);
        std::fill_n(slotPages[page].get(), pageSize, noSlot);
    }
    return slotPages[page][vertex & (pageSize - 1)];
}

uint32_t SculptLayer::SlotOf(uint32_t vertex) {
    uint32_t& slot = SlotEntryOf(vertex);
    if (slot == noSlot) {
        const Vector position = level->Position(vertex);
        entries.push_back({vertex, {position, Vector(), position}});
        slot = static_cast<uint32_t>(entries.size() - 1);
    }
    return slot;
}

uint32_t SculptLayer::FindSlot(uint32_t vertex) const {
    const uint32_t page = vertex >> pageBits;
    if (page >= slotPages.size() || slotPages[page] == nullptr) return noSlot;
    return slotPages[page][vertex & (pageSize - 1)];
}

Vector SculptLayer::Rest(uint32_t vertex) const {
    const uint32_t slot = FindSlot(vertex);
    return slot == noSlot ? level->Position(vertex) : CurrentRest(entries[slot]);
}

Vector SculptLayer::Offset(uint32_t vertex) const {
    const uint32_t slot = FindSlot(vertex);
    return slot == noSlot ? Vector() : entries[slot].state.offset;
}

void SculptLayer::SetStrength(float newStrength) {
    for (Entry& entry : entries) AbsorbForeignMove(entry);
    given.strength = newStrength;
    for (uint32_t slot = 0; slot < SlotCount(); ++slot) Compose(slot);
}

void SculptLayer::Renumber(const std::vector<uint32_t>& map) {
    slotPages.clear();
    for (uint32_t slot = 0; slot < SlotCount(); ++slot) {
        entries[slot].vertex = map[entries[slot].vertex];
        SlotEntryOf(entries[slot].vertex) = slot;
    }
}

void SculptLayer::SwapState(uint32_t slot, State& state) { std::swap(entries[slot].state, state); }

Vector SculptLayer::Composite(uint32_t slot) const {
    const State& state = entries[slot].state;
    return Composed(state.rest, EffectiveStrength(), state.offset);
}

void SculptLayer::Compose(uint32_t slot) {
    Entry& entry = entries[slot];
    AbsorbForeignMove(entry);
    // Without an offset, the strength has no effect, and adding zero could change -0 to +0.
    if (IsAtRest(entry.state)) return;
    const Vector composite = Composed(entry.state.rest, EffectiveStrength(), entry.state.offset);
    level->SetPosition(entry.vertex, composite);
    entry.state.seen = composite;
}

uint64_t SculptLayer::Bytes() const {
    uint64_t bytes = entries.capacity() * sizeof(Entry);
    for (const auto& page : slotPages)
        if (page != nullptr) bytes += pageSize * sizeof(uint32_t);
    return bytes;
}

Vector SculptLayer::CurrentRest(const Entry& entry) const {
    const Vector present = level->Position(entry.vertex);
    if (SameBits(present, entry.state.seen)) return entry.state.rest;
    // If the layer does not displace the vertex, its rest position is exactly its position.
    if (IsAtRest(entry.state)) return present;
    return entry.state.rest + (present - entry.state.seen);
}

void SculptLayer::AbsorbForeignMove(Entry& entry) {
    const Vector present = level->Position(entry.vertex);
    // During a stroke, usually only this layer moves the vertex.
    if (SameBits(present, entry.state.seen)) [[likely]]
        return;
    entry.state.rest = CurrentRest(entry);
    entry.state.seen = present;
}

}  // namespace trovik
