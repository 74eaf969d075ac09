// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/jobs/JobPhase.h"
#include "host/Vector.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace trovik {

/// An older state of a level's values, one value per vertex. It stores the old values only of those
/// vertices that have been written since. All other vertices still have their old values in the
/// level.
///
/// Memory: the recorded values, plus one bit for each vertex up to the highest recorded vertex.
/// After Sort, another half bit is used for each of these vertices.
template <typename Value>
class OlderValues {
public:
    /// Whether a state is being recorded. If not, Note does nothing.
    bool IsKept() const { return kept; }
    /// Starts recording. The current values become the older state. Has no effect if a state is
    /// already being recorded.
    void Keep() { kept = true; }
    void Drop() { *this = OlderValues(); }

    /// Whether Note would store something for this vertex.
    bool Misses(uint32_t vertex) const {
        if (!kept) return false;
        const std::size_t word = vertex / wordBits;
        return word >= marks.size() || (marks[word] >> (vertex % wordBits) & 1u) == 0;
    }
    /// Records the value of a vertex that is about to be written. Only the first call for each
    /// vertex has an effect.
    void Note(uint32_t vertex, const Value& value) {
        if (Misses(vertex)) Append(vertex, value);
    }

    /// Sorts the lists by vertex. Cost: linear in the number of recorded vertices, plus one word
    /// per 64 vertices of the level.
    /// \param phase  polled for each vertex.
    /// \throw Cancelled; the lists are then unchanged.
    void Sort(JobPhase& phase);
    void Sort() {
        JobPhase unreported(nullptr, "", 0);
        Sort(unreported);
    }
    /// Returns the recorded value, or null if the vertex was not written. Sort must have been
    /// called since the last call to Note.
    const Value* Find(uint32_t vertex) const {
        const std::size_t word = vertex / wordBits;
        if (word >= marks.size()) return nullptr;
        const uint64_t bit = uint64_t{1} << (vertex % wordBits);
        if ((marks[word] & bit) == 0) return nullptr;
        return &values[firstOfWord[word] +
                       static_cast<uint32_t>(std::popcount(marks[word] & (bit - 1)))];
    }

    /// The recorded vertices, without duplicates, and their values.
    const std::vector<uint32_t>& Vertices() const { return vertices; }
    const std::vector<Value>& Values() const { return values; }
    /// Renumbers the vertices: vertex v becomes vertex map[v].
    void Renumber(const std::vector<uint32_t>& map);

private:
    static constexpr std::size_t wordBits = 64;
    void Append(uint32_t vertex, const Value& value);

    bool kept = false;
    bool isSorted = true;
    std::vector<uint64_t> marks;
    /// For each word of marks, the number of recorded vertices before it, as of the last Sort. The
    /// rank of a vertex is this number plus the number of marks below the vertex in its own word;
    /// see Jacobson: "Space-Efficient Static Trees and Graphs" (1989).
    std::vector<uint32_t> firstOfWord;
    std::vector<uint32_t> vertices;
    std::vector<Value> values;
};

template <typename Value>
void OlderValues<Value>::Append(uint32_t vertex, const Value& value) {
    const std::size_t word = vertex / wordBits;
    if (word >= marks.size()) marks.resize(word + 1);
    marks[word] |= uint64_t{1} << (vertex % wordBits);
    isSorted = false;
    vertices.push_back(vertex);
    values.push_back(value);
}

template <typename Value>
void OlderValues<Value>::Sort(JobPhase& phase) {
    if (isSorted) return;
    firstOfWord.resize(marks.size());
    uint32_t count = 0;
    std::vector<uint32_t> ascending;
    ascending.reserve(vertices.size());
    for (std::size_t word = 0; word < marks.size(); ++word) {
        phase.Poll();
        firstOfWord[word] = count;
        for (uint64_t rest = marks[word]; rest != 0; rest &= rest - 1, ++count) {
            const auto bit = static_cast<std::size_t>(std::countr_zero(rest));
            ascending.push_back(static_cast<uint32_t>(word * wordBits + bit));
        }
    }
    // The system allocates the pages of a large list when they are first written, so the list is
    // zeroed in chunks as it fills.
    constexpr std::size_t run = 4096;
    std::vector<Value> sorted;
    sorted.reserve(values.size());
    while (sorted.size() < values.size()) {
        phase.Poll();
        sorted.resize(std::min(values.size(), sorted.size() + run));
    }
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        phase.Poll();
        const std::size_t word = vertices[i] / wordBits;
        const uint64_t below = (uint64_t{1} << (vertices[i] % wordBits)) - 1;
        sorted[firstOfWord[word] + static_cast<uint32_t>(std::popcount(marks[word] & below))] =
            values[i];
    }
    vertices = std::move(ascending);
    values = std::move(sorted);
    isSorted = true;
}

template <typename Value>
void OlderValues<Value>::Renumber(const std::vector<uint32_t>& map) {
    OlderValues renumbered;
    renumbered.kept = kept;
    for (std::size_t i = 0; i < vertices.size(); ++i) renumbered.Note(map[vertices[i]], values[i]);
    *this = std::move(renumbered);
}

/// The states of a level with which its neighbours were last synchronised: mesh-local positions,
/// and freeze amounts.
struct OlderStates {
    OlderValues<Vector> fromAbove;
    OlderValues<Vector> fromBelow;
    OlderValues<uint8_t> freezeFromAbove;
    OlderValues<uint8_t> freezeFromBelow;

    /// The number of recorded vertices, summed over the four states.
    std::size_t NotedCount() const {
        return fromAbove.Vertices().size() + fromBelow.Vertices().size() +
               freezeFromAbove.Vertices().size() + freezeFromBelow.Vertices().size();
    }
    bool KeepsPositions() const { return fromAbove.IsKept() || fromBelow.IsKept(); }
    bool MissesPosition(uint32_t vertex) const {
        return fromAbove.Misses(vertex) || fromBelow.Misses(vertex);
    }
    void NotePosition(uint32_t vertex, const Vector& position) {
        fromAbove.Note(vertex, position);
        fromBelow.Note(vertex, position);
    }
    void NoteFreeze(uint32_t vertex, uint8_t amount) {
        freezeFromAbove.Note(vertex, amount);
        freezeFromBelow.Note(vertex, amount);
    }
};

}  // namespace trovik
