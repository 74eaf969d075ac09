// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/history/StepArray.h"
#include "framework/mesh/LevelMesh.h"

#include <memory>
#include <string>
#include <vector>

namespace trovik {

/// A sculpt layer of one level: offsets, stored only for touched vertices. The composite position
/// of a vertex is rest + strength * offset, where rest is the position without this layer. The rest
/// position is stored along with the offset, so that changing the strength and then restoring it
/// gives bit-identical positions.
///
/// A vertex may also move independently of the layer: by a stroke on another layer or without an
/// active layer, or by a change propagated from a coarser level. On the next access, the layer
/// detects that the position differs from the one it wrote, and adds the difference to the rest
/// position.
///
/// If a level has several layers, they belong to a LayerStack, which composes them all. The
/// functions of this class treat all other layers as part of the rest position.
///
/// Memory: 40 bytes per touched vertex, and 4 KiB for each range of 1024 vertices that contains a
/// touched one.
class TROVIK_API SculptLayer : public trovik::Layer {
public:
    /// Borrows the level. A layer must not be used after its level is destroyed.
    SculptLayer(LevelMesh* level, const std::string& name);
    /// If this is the level's active layer, the level is left without an active layer. Positions do
    /// not change.
    ~SculptLayer() override;
    SculptLayer(const SculptLayer&) = delete;
    SculptLayer& operator=(const SculptLayer&) = delete;

    /// Returns the offset, or the zero vector if the slot does not exist.
    Vector* get(Vector* out, uint32_t layerSlot) const override;
    /// Stores the offset and computes rest + strength * offset per component, in that order. `out`
    /// receives that position regardless of `updateComposite`. If the slot does not exist, it is
    /// looked up by `vertex` and created if necessary. The caller must check Writable first.
    void set(Vector* out,
             uint32_t layerSlot,
             uint32_t vertex,
             const Vector* offset,
             bool updateComposite) override;
    /// True if the layer is neither locked nor hidden. Hidden layers are not sculpted.
    bool Writable() const override { return given.writable && given.visible; }

    /// Returns the slot of the vertex. A new slot has the current position of the vertex as its
    /// rest position and an offset of 0.
    uint32_t SlotOf(uint32_t vertex);
    /// Returns the slot of the vertex, or noSlot.
    uint32_t FindSlot(uint32_t vertex) const;
    static constexpr uint32_t noSlot = 0xffffffffu;

    uint32_t SlotCount() const { return static_cast<uint32_t>(entries.size()); }
    uint32_t VertexOfSlot(uint32_t slot) const { return entries[slot].vertex; }
    /// The position without this layer.
    Vector Rest(uint32_t vertex) const;
    Vector Offset(uint32_t vertex) const;

    /// The user-settable properties of a layer.
    struct Properties {
        std::string name;
        float strength = 1.0f;
        bool visible = true;
        /// False if the layer is locked against sculpting.
        bool writable = true;
    };
    const Properties& UserProperties() const { return given; }
    /// Sets the properties; does not update positions.
    void SetUserProperties(const Properties& properties) { given = properties; }

    float Strength() const { return given.strength; }
    /// The effective strength: 0 while the layer is hidden.
    float EffectiveStrength() const { return given.visible ? given.strength : 0.0f; }
    /// Sets the strength and updates the composite position of every vertex of the layer. The
    /// caller must update the normals.
    void SetStrength(float newStrength);
    void SetWritable(bool on) { given.writable = on; }
    const std::string& Name() const { return given.name; }
    /// Null after the level is destroyed; the content of the layer can then no longer be applied.
    LevelMesh* Level() const { return level; }
    /// Called by the level when it is destroyed.
    void OnLevelDestroyed() { level = nullptr; }
    /// Renumbers the vertices: vertex v of the level becomes vertex map[v].
    void Renumber(const std::vector<uint32_t>& map);

    /// All of the layer's data for one vertex.
    struct State {
        Vector rest;
        Vector offset;
        /// The position of the vertex at the last access of the layer.
        Vector seen;
    };
    const State& StateOfSlot(uint32_t slot) const { return entries[slot].state; }
    /// Exchanges the state of the slot with `state`; the mesh does not change.
    void SwapState(uint32_t slot, State& state);
    /// Computes the position from rest, effective strength and offset.
    Vector Composite(uint32_t slot) const;
    /// Updates the composite position of one vertex for the current strength.
    void Compose(uint32_t slot);
    /// A handle that points to this layer while it exists, and to null afterwards. Used by objects
    /// that may outlive the layer.
    const std::shared_ptr<SculptLayer*>& Handle() const { return handle; }
    /// Number of bytes allocated for the touched vertices.
    uint64_t Bytes() const;
    /// The layer's vertices and states, for code that compresses an unused layer. While this data
    /// is compressed, no other function of the layer may be called.
    StepArray Content() { return StepArray(entries); }

private:
    static constexpr uint32_t pageBits = 10;
    static constexpr uint32_t pageSize = 1u << pageBits;
    struct Entry {
        uint32_t vertex;
        State state;
    };
    /// Returns the entry that stores the slot of the vertex, and creates its page if necessary.
    uint32_t& SlotEntryOf(uint32_t vertex);
    Vector CurrentRest(const Entry& entry) const;
    void AbsorbForeignMove(Entry& entry);

    LevelMesh* level;
    Properties given;
    std::vector<Entry> entries;
    /// Maps vertices to slots, in pages that are created when one of their vertices is first
    /// touched.
    std::vector<std::unique_ptr<uint32_t[]>> slotPages;
    std::shared_ptr<SculptLayer*> handle;
};

}  // namespace trovik
