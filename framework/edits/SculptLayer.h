// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/levels/LevelMesh.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace trovik {

/// A sculpt layer of one level: offsets for touched vertices only. The composite position of a
/// vertex is rest + strength x offset, rest being the position without this layer; it is kept
/// beside the offset, so that turning the layer away and back gives the same bits.
class TROVIK_API SculptLayer : public trovik::Layer {
public:
    SculptLayer(LevelMesh* level, const std::string& name);
    ~SculptLayer() override;

    Vector* get(Vector* out, uint32_t layerSlot) const override;
    void set(Vector* out, uint32_t layerSlot, uint32_t vertex, const Vector* offset,
             bool updateComposite) override;
    bool Writable() const override { return writable; }

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

    float Strength() const { return strength; }
    /// Brings the composite of every vertex of the layer up to date. Normals are the caller's.
    void SetStrength(float newStrength);
    void SetWritable(bool on) { writable = on; }
    const std::string& Name() const { return name; }
    LevelMesh* Level() const { return level; }

private:
    struct Entry {
        uint32_t vertex;
        Vector rest;
        Vector offset;
    };
    LevelMesh* level;
    std::string name;
    float strength = 1.0f;
    bool writable = true;
    std::vector<Entry> entries;
    std::unordered_map<uint32_t, uint32_t> slotOfVertex;
};

}  // namespace trovik
