// SPDX-License-Identifier: Apache-2.0
#include "framework/layers/LayerGround.h"

#include "framework/math/IsFinite.h"
#include "framework/math/SameBits.h"
#include "framework/mesh/VertexNeighbours.h"

#include <algorithm>
#include <cstring>

namespace trovik {

namespace {

/// The current offset of the layer.
template <typename Touch>
const Vector& OffsetOf(const LayerGround::Layers& layers, const Touch& touch) {
    return layers[touch.layer]->StateOfSlot(touch.slot).offset;
}

/// The recorded offset.
const Vector& OffsetOf(const LayerGround::Layers&, const LayerGround::Held::Entry& entry) {
    return entry.state.offset;
}

/// Returns the layer base plus the layers, except `without`. `first` to `last` are the layers that
/// touch the vertex, lowest first.
template <typename Touch>
Vector Sum(const Vector& base,
           const LayerGround::Layers& layers,
           const Touch* first,
           const Touch* last,
           const Touch* without = nullptr) {
    Vector sum = base;
    for (const Touch* touch = first; touch != last; ++touch) {
        if (touch == without) continue;
        const float strength = layers[touch->layer]->PresentStrength();
        const Vector& offset = OffsetOf(layers, *touch);
        // Adding zero could change -0 to +0.
        if (strength == 0.0f || offset == Vector()) continue;
        sum = {
            sum.x + strength * offset.x, sum.y + strength * offset.y, sum.z + strength * offset.z};
    }
    return sum;
}

Vector PlaceOf(const LayerGround::Knot& knot, const Vector& sum) {
    return SameBits(sum, knot.sum) ? knot.place : sum;
}

void Note(LayerGround::Knot& knot, const Vector& sum, const Vector& place) {
    knot.sum = sum;
    knot.place = place;
}

uint64_t Mix(uint64_t hash, float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    hash = (hash ^ bits) * 0x9e3779b97f4a7c15u;
    return hash ^ (hash >> 29);
}

/// Hashes the positions of all faces around the vertex.
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

bool SameWords(const LayerGround::NotedNormal& noted, const PackedNormal& normal) {
    return noted.words[0] == normal.x && noted.words[1] == normal.y && noted.words[2] == normal.z;
}

}  // namespace

std::vector<LayerGround::Touched> LayerGround::TouchedBy(const Layers& layers) {
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

void LayerGround::TakeMove(Knot& knot,
                           const Layers& layers,
                           const Touched* first,
                           const Touched* last,
                           const Vector& present,
                           const Vector& expected) {
    for (const Touched* touch = first; touch != last; ++touch) {
        const SculptLayer& layer = *layers[touch->layer];
        const SculptLayer::State& state = layer.StateOfSlot(touch->slot);
        if (!SameBits(state.seen, present) ||
            !SameBits(state.rest, Sum(knot.base, layers, first, last, touch)))
            continue;
        // A stroke in this layer moved the vertex last, so the base is unchanged. The stroke may
        // have rounded the sum differently. It may also have deferred the position, which then does
        // not exist yet.
        if (SameBits(present, layer.Composite(touch->slot)))
            Note(knot, Sum(knot.base, layers, first, last), present);
        return;
    }
    knot.base = last - first == 1 ? layers[first->layer]->Rest(knot.vertex)
                                  : knot.base + (present - expected);
    Note(knot, Sum(knot.base, layers, first, last), present);
}

LayerGround::Knot LayerGround::Settled(const Knot* known,
                                       const LevelMesh& level,
                                       const Layers& layers,
                                       const Touched* first,
                                       const Touched* last) {
    const Vector present = level.Position(first->vertex);
    Knot knot;
    knot.vertex = first->vertex;
    if (known != nullptr) {
        knot = *known;
        const Vector expected = PlaceOf(knot, Sum(knot.base, layers, first, last));
        if (!SameBits(expected, present)) TakeMove(knot, layers, first, last, present, expected);
        return knot;
    }
    knot.base = present;
    if (last - first == 1) {
        knot.base = layers[first->layer]->Rest(knot.vertex);
    } else {
        knot.base = present + (present - Sum(present, layers, first, last));
    }
    Note(knot, Sum(knot.base, layers, first, last), present);
    return knot;
}

void LayerGround::Settle(const LevelMesh& level, const Layers& layers) {
    const std::vector<Touched> touched = TouchedBy(layers);
    std::vector<Knot> settled;
    const Touched* const end = touched.data() + touched.size();
    std::size_t old = 0;
    for (const Touched* first = touched.data(); first != end;) {
        const Touched* last = first + 1;
        while (last != end && last->vertex == first->vertex) ++last;
        while (old < knots.size() && knots[old].vertex < first->vertex) ++old;
        const bool isKnown = old < knots.size() && knots[old].vertex == first->vertex;
        settled.push_back(Settled(isKnown ? &knots[old] : nullptr, level, layers, first, last));
        first = last;
    }
    settled.shrink_to_fit();
    knots = std::move(settled);
}

LayerGround::Held LayerGround::HeldOf(const LevelMesh& level,
                                      const Layers& layers,
                                      uint32_t vertex) const {
    Held held;
    std::vector<Touched> touched;
    for (uint32_t i = 0; i < layers.size(); ++i) {
        const uint32_t slot = layers[i]->FindSlot(vertex);
        if (slot == SculptLayer::noSlot) continue;
        touched.push_back({vertex, i, slot});
        held.entries.push_back({i, slot, layers[i]->StateOfSlot(slot)});
    }
    if (touched.empty()) return held;
    const auto known =
        std::lower_bound(knots.begin(), knots.end(), vertex, [](const Knot& knot, uint32_t v) {
            return knot.vertex < v;
        });
    const bool isKnown = known != knots.end() && known->vertex == vertex;
    held.knot = Settled(isKnown ? &*known : nullptr,
                        level,
                        layers,
                        touched.data(),
                        touched.data() + touched.size());
    return held;
}

LayerGround::Held LayerGround::Carried(const Held& held,
                                       const Layers& layers,
                                       const Vector& present,
                                       const Vector& place,
                                       const SurfaceMove& move) {
    const Held::Entry* const heldEnd = held.entries.data() + held.entries.size();
    const Vector sum = Sum(held.knot.base, layers, held.entries.data(), heldEnd);
    // If not, a layer has deferred the position.
    const bool isComposed = SameBits(PlaceOf(held.knot, sum), present);
    Held carried = held;
    carried.knot.base = move.Carried(held.knot.base);
    bool isNumber = IsFinite(place) && IsFinite(carried.knot.base);
    for (Held::Entry& entry : carried.entries) {
        SculptLayer::State& state = entry.state;
        if (!(state.offset == Vector())) state.offset = move.turn.Turned(state.offset);
        state.seen = isComposed || SameBits(state.seen, present) ? place : move.Carried(state.seen);
        isNumber = isNumber && IsFinite(state.offset) && IsFinite(state.seen);
    }
    const Held::Entry* const first = carried.entries.data();
    const Held::Entry* const last = first + carried.entries.size();
    for (Held::Entry& entry : carried.entries) {
        entry.state.rest = Sum(carried.knot.base, layers, first, last, &entry);
        isNumber = isNumber && IsFinite(entry.state.rest);
    }
    if (!isNumber) return held;
    if (isComposed)
        Note(carried.knot, Sum(carried.knot.base, layers, first, last), place);
    else
        Note(carried.knot, carried.knot.base, carried.knot.base);
    return carried;
}

bool LayerGround::SameKnot(const Knot& a, const Knot& b) {
    return SameBits(a.base, b.base) && SameBits(a.sum, b.sum) && SameBits(a.place, b.place);
}

std::vector<LayerGround::OtherKnot> LayerGround::Otherwise(const std::vector<Knot>& before) const {
    std::vector<OtherKnot> others;
    const auto made = [&others](const Knot& knot) {
        OtherKnot unknown;
        unknown.knot.vertex = knot.vertex;
        others.push_back(unknown);
    };
    auto now = knots.begin();
    for (const Knot& old : before) {
        while (now != knots.end() && now->vertex < old.vertex) made(*now++);
        const bool isThere = now != knots.end() && now->vertex == old.vertex;
        if (!isThere || !SameKnot(*now, old)) others.push_back({old, true});
        if (isThere) ++now;
    }
    while (now != knots.end()) made(*now++);
    return others;
}

void LayerGround::Exchange(std::vector<OtherKnot>& others) {
    if (others.empty()) return;
    std::vector<Knot> all;
    all.reserve(knots.size() + others.size());
    auto now = knots.begin();
    for (OtherKnot& other : others) {
        while (now != knots.end() && now->vertex < other.knot.vertex) all.push_back(*now++);
        if (other.isKnown) all.push_back(other.knot);
        other.isKnown = now != knots.end() && now->vertex == other.knot.vertex;
        if (other.isKnown) other.knot = *now++;
    }
    all.insert(all.end(), now, knots.end());
    all.shrink_to_fit();
    knots = std::move(all);
}

LayerGround::Replaced LayerGround::Compose(LevelMesh& level, const Layers& layers) {
    const std::vector<Touched> touched = TouchedBy(layers);
    std::vector<std::pair<uint32_t, Vector>> moves;
    std::vector<Knot> composed;
    const Touched* const end = touched.data() + touched.size();
    const Touched* first = touched.data();
    const auto compose = [&](Knot& knot, const Touched* last) {
        const Vector place = PlaceOf(knot, Sum(knot.base, layers, first, last));
        if (!SameBits(place, level.Position(knot.vertex))) moves.emplace_back(knot.vertex, place);
        for (const Touched* touch = first; touch != last; ++touch) {
            SculptLayer& layer = *layers[touch->layer];
            SculptLayer::State state = layer.StateOfSlot(touch->slot);
            state.rest = Sum(knot.base, layers, first, last, touch);
            state.seen = place;
            layer.SwapState(touch->slot, state);
        }
    };
    std::size_t next = 0;
    while (first != end || next < knots.size()) {
        if (next < knots.size() && (first == end || knots[next].vertex < first->vertex)) {
            // None of the remaining layers touches this vertex, so it is at the base position.
            compose(knots[next], first);
            composed.push_back(knots[next++]);
            continue;
        }
        const Touched* last = first + 1;
        while (last != end && last->vertex == first->vertex) ++last;
        Knot knot;
        if (next < knots.size() && knots[next].vertex == first->vertex) {
            knot = knots[next++];
        } else {
            knot.vertex = first->vertex;
            knot.base = knot.sum = knot.place = level.Position(first->vertex);
        }
        compose(knot, last);
        composed.push_back(knot);
        first = last;
    }
    knots = std::move(composed);

    std::vector<uint32_t> vertices;
    vertices.reserve(moves.size());
    for (const auto& [vertex, place] : moves) vertices.push_back(vertex);
    Replaced replaced;
    replaced.vertices = WithNeighbours(level, vertices);
    const std::vector<uint32_t>& around = replaced.vertices;
    for (const uint32_t vertex : around) {
        replaced.positions.push_back(level.Position(vertex));
        replaced.normals.push_back(level.vertexNormals.array[vertex]);
    }
    NoteNormals(level, around);
    for (const auto& [vertex, place] : moves) level.SetPosition(vertex, place);
    level.ComputeNormalsOf(around);
    TakeNotedNormals(level, around);
    return replaced;
}

void LayerGround::Keep(const LevelMesh& level, const Layers& layers) {
    const std::vector<Touched> touched = TouchedBy(layers);
    const Touched* const end = touched.data() + touched.size();
    std::vector<Knot> kept;
    std::size_t next = 0;
    for (const Touched* first = touched.data(); first != end;) {
        const Touched* last = first + 1;
        while (last != end && last->vertex == first->vertex) ++last;
        const Vector present = level.Position(first->vertex);
        while (next < knots.size() && knots[next].vertex < first->vertex) ++next;
        Knot knot;
        knot.vertex = first->vertex;
        knot.base = present;
        if (next < knots.size() && knots[next].vertex == first->vertex) knot = knots[next];
        Note(knot, Sum(knot.base, layers, first, last), present);
        for (const Touched* touch = first; touch != last; ++touch) {
            SculptLayer& layer = *layers[touch->layer];
            SculptLayer::State state = layer.StateOfSlot(touch->slot);
            state.rest = Sum(knot.base, layers, first, last, touch);
            state.seen = present;
            layer.SwapState(touch->slot, state);
        }
        kept.push_back(knot);
        first = last;
    }
    knots = std::move(kept);
}

void LayerGround::NoteNormals(LevelMesh& level, const std::vector<uint32_t>& around) {
    std::vector<PackedNormal> present;
    present.reserve(around.size());
    for (const uint32_t vertex : around) present.push_back(level.vertexNormals.array[vertex]);
    level.ComputeNormalsOf(around);
    std::vector<NotedNormal> noted;
    std::vector<uint32_t> faces;
    std::size_t old = 0;
    for (std::size_t i = 0; i < around.size(); ++i) {
        const uint32_t vertex = around[i];
        while (old < normals.size() && normals[old].vertex < vertex)
            noted.push_back(normals[old++]);
        const NotedNormal* before =
            old < normals.size() && normals[old].vertex == vertex ? &normals[old++] : nullptr;
        NotedNormal now;
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

void LayerGround::TakeNotedNormals(LevelMesh& level, const std::vector<uint32_t>& around) const {
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

void LayerGround::Renumber(const std::vector<uint32_t>& map) {
    for (Knot& knot : knots) knot.vertex = map[knot.vertex];
    std::sort(knots.begin(), knots.end(), [](const Knot& a, const Knot& b) {
        return a.vertex < b.vertex;
    });
    normals.clear();
}

void LayerGround::Restore(std::vector<Knot> newKnots, std::vector<NotedNormal> newNormals) {
    knots = std::move(newKnots);
    normals = std::move(newNormals);
}

uint64_t LayerGround::Bytes() const {
    return knots.capacity() * sizeof(Knot) + normals.capacity() * sizeof(NotedNormal);
}

}  // namespace trovik
