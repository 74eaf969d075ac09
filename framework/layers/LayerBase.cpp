// SPDX-License-Identifier: Apache-2.0
#include "framework/layers/LayerBase.h"

#include "framework/math/IsFinite.h"
#include "framework/math/SameBits.h"
#include "framework/mesh/VertexNeighbours.h"

#include <algorithm>
#include <cstring>

namespace trovik {

namespace {

/// The current offset of the layer.
template <typename Touch>
const Vector& OffsetOf(const LayerBase::Layers& layers, const Touch& touch) {
    return layers[touch.layer]->StateOfSlot(touch.slot).offset;
}

/// The recorded offset.
const Vector& OffsetOf(const LayerBase::Layers&, const LayerBase::VertexLayers::Entry& entry) {
    return entry.state.offset;
}

/// Returns the layer base plus all layers except `without`. `first` to `last` are the layers that
/// touch the vertex, lowest first.
template <typename Touch>
Vector Sum(const Vector& base,
           const LayerBase::Layers& layers,
           const Touch* first,
           const Touch* last,
           const Touch* without = nullptr) {
    Vector sum = base;
    for (const Touch* touch = first; touch != last; ++touch) {
        if (touch == without) continue;
        const float strength = layers[touch->layer]->EffectiveStrength();
        const Vector& offset = OffsetOf(layers, *touch);
        // Adding zero could change -0 to +0.
        if (strength == 0.0f || offset == Vector()) continue;
        sum = {
            sum.x + strength * offset.x, sum.y + strength * offset.y, sum.z + strength * offset.z};
    }
    return sum;
}

Vector PositionOf(const LayerBase::LayeredVertex& layeredVertex, const Vector& sum) {
    return SameBits(sum, layeredVertex.sum) ? layeredVertex.position : sum;
}

void Note(LayerBase::LayeredVertex& layeredVertex, const Vector& sum, const Vector& position) {
    layeredVertex.sum = sum;
    layeredVertex.position = position;
}

/// The multiplier is 2^64 divided by the golden ratio; see Knuth: "The Art of Computer Programming,
/// Volume 3: Sorting and Searching" (1998), section 6.4.
uint64_t Mix(uint64_t hash, float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    hash = (hash ^ bits) * 0x9e3779b97f4a7c15u;
    return hash ^ (hash >> 29);
}

/// Returns a hash of the corner positions of all faces around the vertex.
uint64_t RingHash(LevelMesh& level, uint32_t vertex, std::vector<uint32_t>& faces) {
    faces.clear();
    const uint32_t lowest = level.LowestFaceOf(vertex);
    if (lowest != openBorder) level.FacesAround(vertex, lowest, faces);
    const uint32_t corners = level.CornersPerFace();
    uint64_t hash = 0;
    for (const uint32_t face : faces) {
        for (uint32_t k = 0; k < corners; ++k) {
            const Vector p = level.Position(level.faceVertexIndices.array[face * corners + k]);
            hash = Mix(Mix(Mix(hash, p.x), p.y), p.z);
        }
    }
    return hash;
}

bool SameWords(const LayerBase::StoredNormal& noted, const PackedNormal& normal) {
    return noted.words[0] == normal.x && noted.words[1] == normal.y && noted.words[2] == normal.z;
}

}  // namespace

std::vector<LayerBase::Touched> LayerBase::TouchedBy(const Layers& layers) {
    std::vector<Touched> touched;
    std::size_t count = 0;
    for (const auto& layer : layers) count += layer->SlotCount();
    touched.reserve(count);
    for (uint32_t i = 0; i < layers.size(); ++i)
        for (uint32_t slot = 0; slot < layers[i]->SlotCount(); ++slot)
            touched.push_back({layers[i]->VertexOfSlot(slot), i, slot});
    std::sort(touched.begin(), touched.end(), [](const Touched& a, const Touched& b) {
        return a.vertex != b.vertex ? a.vertex < b.vertex : a.layer < b.layer;
    });
    return touched;
}

void LayerBase::AbsorbMove(LayeredVertex& layeredVertex,
                           const Layers& layers,
                           const Touched* first,
                           const Touched* last,
                           const Vector& present,
                           const Vector& expected) {
    for (const Touched* touch = first; touch != last; ++touch) {
        const SculptLayer& layer = *layers[touch->layer];
        const SculptLayer::State& state = layer.StateOfSlot(touch->slot);
        if (!SameBits(state.seen, present) ||
            !SameBits(state.rest, Sum(layeredVertex.base, layers, first, last, touch)))
            continue;
        // The last stroke that moved the vertex was recorded in this layer, so the base is
        // unchanged. The stroke may have rounded the sum differently, or it may have deferred
        // computing the position.
        if (SameBits(present, layer.Composite(touch->slot)))
            Note(layeredVertex, Sum(layeredVertex.base, layers, first, last), present);
        return;
    }
    layeredVertex.base = last - first == 1 ? layers[first->layer]->Rest(layeredVertex.vertex)
                                           : layeredVertex.base + (present - expected);
    Note(layeredVertex, Sum(layeredVertex.base, layers, first, last), present);
}

LayerBase::LayeredVertex LayerBase::Settled(const LayeredVertex* known,
                                            const LevelMesh& level,
                                            const Layers& layers,
                                            const Touched* first,
                                            const Touched* last) {
    const Vector present = level.Position(first->vertex);
    LayeredVertex layeredVertex;
    layeredVertex.vertex = first->vertex;
    if (known != nullptr) {
        layeredVertex = *known;
        const Vector expected =
            PositionOf(layeredVertex, Sum(layeredVertex.base, layers, first, last));
        if (!SameBits(expected, present))
            AbsorbMove(layeredVertex, layers, first, last, present, expected);
        return layeredVertex;
    }
    layeredVertex.base = present;
    if (last - first == 1) {
        layeredVertex.base = layers[first->layer]->Rest(layeredVertex.vertex);
    } else {
        layeredVertex.base = present + (present - Sum(present, layers, first, last));
    }
    Note(layeredVertex, Sum(layeredVertex.base, layers, first, last), present);
    return layeredVertex;
}

void LayerBase::Settle(const LevelMesh& level, const Layers& layers) {
    const std::vector<Touched> touched = TouchedBy(layers);
    std::vector<LayeredVertex> settled;
    const Touched* const end = touched.data() + touched.size();
    std::size_t old = 0;
    for (const Touched* first = touched.data(); first != end;) {
        const Touched* last = first + 1;
        while (last != end && last->vertex == first->vertex) ++last;
        while (old < layeredVertices.size() && layeredVertices[old].vertex < first->vertex) ++old;
        const bool isKnown =
            old < layeredVertices.size() && layeredVertices[old].vertex == first->vertex;
        settled.push_back(
            Settled(isKnown ? &layeredVertices[old] : nullptr, level, layers, first, last));
        first = last;
    }
    settled.shrink_to_fit();
    layeredVertices = std::move(settled);
}

LayerBase::VertexLayers LayerBase::VertexLayersOf(const LevelMesh& level,
                                                  const Layers& layers,
                                                  uint32_t vertex) const {
    VertexLayers held;
    std::vector<Touched> touched;
    for (uint32_t i = 0; i < layers.size(); ++i) {
        const uint32_t slot = layers[i]->FindSlot(vertex);
        if (slot == SculptLayer::noSlot) continue;
        touched.push_back({vertex, i, slot});
        held.entries.push_back({i, slot, layers[i]->StateOfSlot(slot)});
    }
    if (touched.empty()) return held;
    const auto known = std::lower_bound(
        layeredVertices.begin(),
        layeredVertices.end(),
        vertex,
        [](const LayeredVertex& layeredVertex, uint32_t v) { return layeredVertex.vertex < v; });
    const bool isKnown = known != layeredVertices.end() && known->vertex == vertex;
    held.layeredVertex = Settled(isKnown ? &*known : nullptr,
                                 level,
                                 layers,
                                 touched.data(),
                                 touched.data() + touched.size());
    return held;
}

LayerBase::VertexLayers LayerBase::Carried(const VertexLayers& held,
                                           const Layers& layers,
                                           const Vector& present,
                                           const Vector& position,
                                           const SurfaceMove& move) {
    const VertexLayers::Entry* const heldEnd = held.entries.data() + held.entries.size();
    const Vector sum = Sum(held.layeredVertex.base, layers, held.entries.data(), heldEnd);
    // If the position is not the composed one, a layer has deferred the position update.
    const bool isComposed = SameBits(PositionOf(held.layeredVertex, sum), present);
    VertexLayers carried = held;
    carried.layeredVertex.base = move.Carried(held.layeredVertex.base);
    bool isNumber = IsFinite(position) && IsFinite(carried.layeredVertex.base);
    for (VertexLayers::Entry& entry : carried.entries) {
        SculptLayer::State& state = entry.state;
        if (!(state.offset == Vector())) state.offset = move.turn.Turned(state.offset);
        state.seen =
            isComposed || SameBits(state.seen, present) ? position : move.Carried(state.seen);
        isNumber = isNumber && IsFinite(state.offset) && IsFinite(state.seen);
    }
    const VertexLayers::Entry* const first = carried.entries.data();
    const VertexLayers::Entry* const last = first + carried.entries.size();
    for (VertexLayers::Entry& entry : carried.entries) {
        entry.state.rest = Sum(carried.layeredVertex.base, layers, first, last, &entry);
        isNumber = isNumber && IsFinite(entry.state.rest);
    }
    if (!isNumber) return held;
    if (isComposed)
        Note(carried.layeredVertex, Sum(carried.layeredVertex.base, layers, first, last), position);
    else
        Note(carried.layeredVertex, carried.layeredVertex.base, carried.layeredVertex.base);
    return carried;
}

bool LayerBase::SameLayeredVertex(const LayeredVertex& a, const LayeredVertex& b) {
    return SameBits(a.base, b.base) && SameBits(a.sum, b.sum) && SameBits(a.position, b.position);
}

std::vector<LayerBase::OtherLayeredVertex> LayerBase::DifferencesTo(
    const std::vector<LayeredVertex>& before) const {
    std::vector<OtherLayeredVertex> others;
    const auto made = [&others](const LayeredVertex& layeredVertex) {
        OtherLayeredVertex unknown;
        unknown.layeredVertex.vertex = layeredVertex.vertex;
        others.push_back(unknown);
    };
    auto now = layeredVertices.begin();
    for (const LayeredVertex& old : before) {
        while (now != layeredVertices.end() && now->vertex < old.vertex) made(*now++);
        const bool isThere = now != layeredVertices.end() && now->vertex == old.vertex;
        if (!isThere || !SameLayeredVertex(*now, old)) others.push_back({old, true});
        if (isThere) ++now;
    }
    while (now != layeredVertices.end()) made(*now++);
    return others;
}

void LayerBase::Exchange(std::vector<OtherLayeredVertex>& others) {
    if (others.empty()) return;
    std::vector<LayeredVertex> all;
    all.reserve(layeredVertices.size() + others.size());
    auto now = layeredVertices.begin();
    for (OtherLayeredVertex& other : others) {
        while (now != layeredVertices.end() && now->vertex < other.layeredVertex.vertex)
            all.push_back(*now++);
        if (other.isKnown) all.push_back(other.layeredVertex);
        other.isKnown = now != layeredVertices.end() && now->vertex == other.layeredVertex.vertex;
        if (other.isKnown) other.layeredVertex = *now++;
    }
    all.insert(all.end(), now, layeredVertices.end());
    all.shrink_to_fit();
    layeredVertices = std::move(all);
}

LayerBase::Replaced LayerBase::Compose(LevelMesh& level, const Layers& layers) {
    const std::vector<Touched> touched = TouchedBy(layers);
    std::vector<std::pair<uint32_t, Vector>> moves;
    std::vector<LayeredVertex> composed;
    const Touched* const end = touched.data() + touched.size();
    const Touched* first = touched.data();
    const auto compose = [&](LayeredVertex& layeredVertex, const Touched* last) {
        const Vector position =
            PositionOf(layeredVertex, Sum(layeredVertex.base, layers, first, last));
        if (!SameBits(position, level.Position(layeredVertex.vertex)))
            moves.emplace_back(layeredVertex.vertex, position);
        for (const Touched* touch = first; touch != last; ++touch) {
            SculptLayer& layer = *layers[touch->layer];
            SculptLayer::State state = layer.StateOfSlot(touch->slot);
            state.rest = Sum(layeredVertex.base, layers, first, last, touch);
            state.seen = position;
            layer.SwapState(touch->slot, state);
        }
    };
    std::size_t next = 0;
    while (first != end || next < layeredVertices.size()) {
        if (next < layeredVertices.size() &&
            (first == end || layeredVertices[next].vertex < first->vertex)) {
            // No remaining layer touches this vertex, so it is at the base position.
            compose(layeredVertices[next], first);
            composed.push_back(layeredVertices[next++]);
            continue;
        }
        const Touched* last = first + 1;
        while (last != end && last->vertex == first->vertex) ++last;
        LayeredVertex layeredVertex;
        if (next < layeredVertices.size() && layeredVertices[next].vertex == first->vertex) {
            layeredVertex = layeredVertices[next++];
        } else {
            layeredVertex.vertex = first->vertex;
            layeredVertex.base = layeredVertex.sum = layeredVertex.position =
                level.Position(first->vertex);
        }
        compose(layeredVertex, last);
        composed.push_back(layeredVertex);
        first = last;
    }
    layeredVertices = std::move(composed);

    std::vector<uint32_t> vertices;
    vertices.reserve(moves.size());
    for (const auto& [vertex, position] : moves) vertices.push_back(vertex);
    Replaced replaced;
    replaced.vertices = WithNeighbours(level, vertices);
    const std::vector<uint32_t>& around = replaced.vertices;
    for (const uint32_t vertex : around) {
        replaced.positions.push_back(level.Position(vertex));
        replaced.normals.push_back(level.vertexNormals.array[vertex]);
    }
    StoreNormals(level, around);
    for (const auto& [vertex, position] : moves) level.SetPosition(vertex, position);
    level.ComputeNormalsOf(around);
    ApplyStoredNormals(level, around);
    return replaced;
}

void LayerBase::Keep(const LevelMesh& level, const Layers& layers) {
    const std::vector<Touched> touched = TouchedBy(layers);
    const Touched* const end = touched.data() + touched.size();
    std::vector<LayeredVertex> kept;
    std::size_t next = 0;
    for (const Touched* first = touched.data(); first != end;) {
        const Touched* last = first + 1;
        while (last != end && last->vertex == first->vertex) ++last;
        const Vector present = level.Position(first->vertex);
        while (next < layeredVertices.size() && layeredVertices[next].vertex < first->vertex)
            ++next;
        LayeredVertex layeredVertex;
        layeredVertex.vertex = first->vertex;
        layeredVertex.base = present;
        if (next < layeredVertices.size() && layeredVertices[next].vertex == first->vertex)
            layeredVertex = layeredVertices[next];
        Note(layeredVertex, Sum(layeredVertex.base, layers, first, last), present);
        for (const Touched* touch = first; touch != last; ++touch) {
            SculptLayer& layer = *layers[touch->layer];
            SculptLayer::State state = layer.StateOfSlot(touch->slot);
            state.rest = Sum(layeredVertex.base, layers, first, last, touch);
            state.seen = present;
            layer.SwapState(touch->slot, state);
        }
        kept.push_back(layeredVertex);
        first = last;
    }
    layeredVertices = std::move(kept);
}

void LayerBase::StoreNormals(LevelMesh& level, const std::vector<uint32_t>& around) {
    std::vector<PackedNormal> present;
    present.reserve(around.size());
    for (const uint32_t vertex : around) present.push_back(level.vertexNormals.array[vertex]);
    level.ComputeNormalsOf(around);
    std::vector<StoredNormal> noted;
    std::vector<uint32_t> faces;
    std::size_t old = 0;
    for (std::size_t i = 0; i < around.size(); ++i) {
        const uint32_t vertex = around[i];
        while (old < normals.size() && normals[old].vertex < vertex)
            noted.push_back(normals[old++]);
        const StoredNormal* before =
            old < normals.size() && normals[old].vertex == vertex ? &normals[old++] : nullptr;
        StoredNormal now;
        now.vertex = vertex;
        now.words[0] = present[i].x;
        now.words[1] = present[i].y;
        now.words[2] = present[i].z;
        if (!SameWords(now, level.vertexNormals.array[vertex])) {
            now.ring = RingHash(level, vertex, faces);
            noted.push_back(now);
        } else if (before != nullptr && before->ring != RingHash(level, vertex, faces)) {
            noted.push_back(*before);
        }
    }
    noted.insert(noted.end(), normals.begin() + static_cast<std::ptrdiff_t>(old), normals.end());
    noted.shrink_to_fit();
    normals = std::move(noted);
}

void LayerBase::ApplyStoredNormals(LevelMesh& level, const std::vector<uint32_t>& around) const {
    std::vector<uint32_t> faces;
    auto noted = normals.begin();
    for (const uint32_t vertex : around) {
        while (noted != normals.end() && noted->vertex < vertex) ++noted;
        if (noted == normals.end()) return;
        if (noted->vertex != vertex || noted->ring != RingHash(level, vertex, faces)) continue;
        PackedNormal& normal = level.vertexNormals.array[vertex];
        normal.x = noted->words[0];
        normal.y = noted->words[1];
        normal.z = noted->words[2];
    }
}

void LayerBase::Renumber(const std::vector<uint32_t>& map) {
    for (LayeredVertex& layeredVertex : layeredVertices)
        layeredVertex.vertex = map[layeredVertex.vertex];
    std::sort(layeredVertices.begin(),
              layeredVertices.end(),
              [](const LayeredVertex& a, const LayeredVertex& b) { return a.vertex < b.vertex; });
    normals.clear();
}

void LayerBase::Restore(std::vector<LayeredVertex> newLayeredVertices,
                        std::vector<StoredNormal> newNormals) {
    layeredVertices = std::move(newLayeredVertices);
    normals = std::move(newNormals);
}

uint64_t LayerBase::Bytes() const {
    return layeredVertices.capacity() * sizeof(LayeredVertex) +
           normals.capacity() * sizeof(StoredNormal);
}

}  // namespace trovik
