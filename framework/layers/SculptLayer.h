// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/history/StepArray.h"
#include "framework/mesh/LevelMesh.h"

#include <memory>
#include <string>
#include <vector>

namespace trovik {

/// A sculpt layer of one level: offsets for touched vertices only. The composite position of a
/// vertex is rest + strength x offset, rest being the position without this layer; it is kept
/// beside the offset, so that turning the layer away and back gives the same bits.
///
/// A vertex may also be moved past its layer: by a stroke without or with another active layer, or
/// by a change carried up from a coarser level. The layer notices at its next access (the position
/// is not the one that it wrote) and takes the difference into the rest.
///
/// A layer of several on its level belongs to a LayerStack, which composes them all; what this
/// class composes by itself sees the other layers as part of the rest.
///
/// Memory follows the touched vertices: 40 bytes each, and 4 KiB for each run of 1024 vertices that
/// holds one.
class TROVIK_API SculptLayer : public trovik::Layer {
public:
    /// Borrows the level. A layer that outlives it must not be used any more.
    SculptLayer(LevelMesh* level, const std::string& name);
    /// The level then has no active layer if it was this one. Positions stay.
    ~SculptLayer() override;
    SculptLayer(const SculptLayer&) = delete;
    SculptLayer& operator=(const SculptLayer&) = delete;

    /// The zero vector for a slot that is not there.
    Vector* get(Vector* out, uint32_t layerSlot) const override;
    /// Per component rest + strength * offset, in that order. `out` receives that position with or
    /// without `updateComposite`. A slot that is not there is looked up by `vertex`, and made at
    /// need. Writable is for the caller to ask.
    void set(Vector* out,
             uint32_t layerSlot,
             uint32_t vertex,
             const Vector* offset,
             bool updateComposite) override;
    /// Neither locked nor hidden: what cannot be seen is not sculpted.
    bool Writable() const override { return given.writable && given.visible; }

    /// Slot of the vertex; a new one takes the vertex's present position as its rest and offset 0.
    uint32_t SlotOf(uint32_t vertex);
    /// Slot of the vertex or noSlot.
    uint32_t FindSlot(uint32_t vertex) const;
    static constexpr uint32_t noSlot = 0xffffffffu;

    uint32_t SlotCount() const { return static_cast<uint32_t>(entries.size()); }
    uint32_t VertexOfSlot(uint32_t slot) const { return entries[slot].vertex; }
    /// Position without this layer.
    Vector Rest(uint32_t vertex) const;
    Vector Offset(uint32_t vertex) const;

    /// What the user gives a layer.
    struct Properties {
        std::string name;
        float strength = 1.0f;
        bool visible = true;
        /// False: locked against sculpting.
        bool writable = true;
    };
    const Properties& Given() const { return given; }
    /// Positions stay as they are.
    void Give(const Properties& properties) { given = properties; }

    float Strength() const { return given.strength; }
    /// The strength that counts: 0 while the layer is hidden.
    float PresentStrength() const { return given.visible ? given.strength : 0.0f; }
    /// Brings the composite of every vertex of the layer up to date. Normals are the caller's.
    void SetStrength(float newStrength);
    void SetWritable(bool on) { given.writable = on; }
    const std::string& Name() const { return given.name; }
    /// Null when the level is gone: the layer then holds nothing that could be shown again.
    LevelMesh* Level() const { return level; }
    /// For the level, when it goes.
    void ForgetLevel() { level = nullptr; }
    /// Vertex v of the level has become vertex map[v].
    void Renumber(const std::vector<uint32_t>& map);

    /// All that the layer knows of a vertex.
    struct State {
        Vector rest;
        Vector offset;
        /// The vertex's position when the layer last saw it.
        Vector seen;
    };
    const State& StateOfSlot(uint32_t slot) const { return entries[slot].state; }
    /// Exchanges the slot's state with `state`; the mesh stays as it is.
    void SwapState(uint32_t slot, State& state);
    /// Where rest, present strength and offset put the vertex.
    Vector Composite(uint32_t slot) const;
    /// Brings the composite of one vertex up to date with the strength.
    void Compose(uint32_t slot);
    /// Points at this layer while it lives, and at null afterwards: for who may outlive it.
    const std::shared_ptr<SculptLayer*>& Handle() const { return handle; }
    /// Bytes held for the touched vertices.
    uint64_t Bytes() const;
    /// Vertices and states, for who keeps a layer that is out of use in compressed form. While they
    /// are not there, nothing else may be asked of the layer.
    StepArray Content() { return StepArray(entries); }

private:
    static constexpr uint32_t pageBits = 10;
    static constexpr uint32_t pageSize = 1u << pageBits;
    struct Entry {
        uint32_t vertex;
        State state;
    };
    /// Where the slot of the vertex is told; its page is made at need.
    uint32_t& PlaceFor(uint32_t vertex);
    Vector PresentRest(const Entry& entry) const;
    void TakeForeignMove(Entry& entry);

    LevelMesh* level;
    Properties given;
    std::vector<Entry> entries;
    /// Slot by vertex, in pages that are made when a vertex of theirs is touched.
    std::vector<std::unique_ptr<uint32_t[]>> slotPages;
    std::shared_ptr<SculptLayer*> handle;
};

}  // namespace trovik
