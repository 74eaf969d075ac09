// SPDX-License-Identifier: Apache-2.0
#include "framework/edits/Symmetry.h"

#include "framework/edits/SurfaceMoves.h"
#include "framework/errors/HostError.h"
#include "framework/jobs/JobPhase.h"
#include "framework/math/SameBits.h"
#include "framework/mesh/UnfrozenFraction.h"
#include "framework/multires/LevelGeometry.h"

#include <bit>
#include <cstring>

namespace trovik {

namespace {

constexpr uint32_t none = 0xffffffffu;

float& Component(Vector& v, int axis) { return axis == 0 ? v.x : axis == 1 ? v.y : v.z; }
float Component(const Vector& v, int axis) { return axis == 0 ? v.x : axis == 1 ? v.y : v.z; }

Vector Mirrored(Vector v, int axis) {
    Component(v, axis) = -Component(v, axis);
    return v;
}

/// Returns the mean of a position and the mirrored position of its twin. The twin then gets the
/// mirror image of the mean.
Vector Mean(const Vector& a, const Vector& b, int axis) {
    const Vector other = Mirrored(b, axis);
    return {0.5f * (a.x + other.x), 0.5f * (a.y + other.y), 0.5f * (a.z + other.z)};
}

/// The records of a change, indexed by the original positions of their vertices. Zeros of both
/// signs count as equal.
class RecordsByPosition {
public:
    explicit RecordsByPosition(const Store<StoredVertexInfo>& changed)
        : records(changed), slots(std::bit_ceil(std::size_t{2} * changed.fill + 1), none) {
        for (uint32_t i = 0; i < records.fill; ++i) {
            std::size_t slot = SlotOf(OriginalPosition(i));
            // If several vertices have the same position, only the first is stored and has a twin.
            if (slots[slot] == none) slots[slot] = i;
        }
    }

    Vector OriginalPosition(uint32_t record) const {
        const float* p = records.array[record].originalPosition;
        return {p[0], p[1], p[2]};
    }
    /// The record whose original position was the mirror image of that of `record`, if the two are
    /// each other's twins; otherwise `none`.
    uint32_t TwinOf(uint32_t record, int axis) const {
        const uint32_t twin = slots[SlotOf(Mirrored(OriginalPosition(record), axis))];
        if (twin == none) return none;
        return slots[SlotOf(Mirrored(OriginalPosition(twin), axis))] == record ? twin : none;
    }

private:
    /// The slot that contains or would contain a record of this position.
    std::size_t SlotOf(const Vector& position) const {
        std::size_t slot = Hash(position) & (slots.size() - 1);
        while (slots[slot] != none && OriginalPosition(slots[slot]) != position)
            slot = (slot + 1) & (slots.size() - 1);
        return slot;
    }
    /// The multiplier is 2^64 divided by the golden ratio; see Knuth: "The Art of Computer
    /// Programming, Volume 3: Sorting and Searching" (1998), section 6.4.
    static std::size_t Hash(const Vector& position) {
        uint64_t hash = 0;
        for (const float value : {position.x, position.y, position.z}) {
            // Converts -0 to +0.
            const float same = value + 0.0f;
            hash = (hash ^ std::bit_cast<uint32_t>(same)) * 0x9e3779b97f4a7c15u;
            hash ^= hash >> 32;
        }
        return static_cast<std::size_t>(hash);
    }

    const Store<StoredVertexInfo>& records;
    std::vector<uint32_t> slots;
};

}  // namespace

std::vector<uint32_t> SettleSymmetry(LevelMesh& level,
                                     LevelChange& change,
                                     const std::vector<int>& axes) {
    const Store<StoredVertexInfo>& records = change.Records();
    if (records.fill == 0 || axes.empty()) return {};
    const RecordsByPosition byPosition(records);
    const uint32_t count = records.fill;
    std::vector<Vector> positions(count);
    for (uint32_t i = 0; i < count; ++i)
        positions[i] = level.Position(records.array[i].vertexIndex);
    // The planes are processed one after the other. Symmetry about earlier planes is preserved: a
    // vertex's twin across an earlier plane also has a twin across this plane, and receives the
    // mirrored mean.
    for (const int axis : axes) {
        for (uint32_t i = 0; i < count; ++i) {
            const uint32_t twin = byPosition.TwinOf(i, axis);
            if (twin == none || twin < i) continue;
            if (positions[i] == Mirrored(positions[twin], axis)) continue;
            const uint32_t vertex = records.array[i].vertexIndex;
            const uint32_t across = records.array[twin].vertexIndex;
            if (level.IsVertexHidden(vertex) || level.IsVertexHidden(across)) continue;
            if (level.Freeze(vertex) != level.Freeze(across)) continue;
            positions[i] = Mean(positions[i], positions[twin], axis);
            if (twin != i) positions[twin] = Mirrored(positions[i], axis);
        }
    }
    SurfaceMoves moves(level);
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t vertex = records.array[i].vertexIndex;
        if (!SameBits(positions[i], level.Position(vertex))) moves.Add(vertex, positions[i]);
    }
    return moves.IsEmpty() ? std::vector<uint32_t>() : moves.Apply(change);
}

uint32_t MakeSymmetric(LevelGeometry& geometry, int axis, SymmetrySide model, JobControl* job) {
    const auto mirror = TopologicalMirror::Find(*geometry.Level(0), axis, job);
    if (mirror == nullptr) {
        throw HostError(std::string("the mesh has no mirror across ") + "xyz"[axis] +
                        ": the connectivity of the two sides differs");
    }
    LevelMesh& level = *geometry.Bound();
    const uint32_t number = geometry.BoundIndex();
    const uint32_t corners = level.CornersPerFace();
    const float sign = model == SymmetrySide::Positive ? 1.0f : -1.0f;
    std::vector<bool> seen(level.VertexCount());
    SurfaceMoves moves(level);
    const auto move = [&](uint32_t vertex, const Vector& goal) {
        const Vector present = level.Position(vertex);
        const uint8_t amount = level.FreezeOfTools(vertex);
        if (amount == freezeAmountMask || SameBits(present, goal)) return;
        moves.Add(vertex,
                  amount == 0 ? goal : present + (goal - present) * UnfrozenFraction(amount));
    };
    JobPhase phase(job, "Pairing vertices", uint64_t{level.faceCount} * corners);
    for (uint32_t slot = 0; slot < level.faceCount * corners; ++slot) {
        phase.Add();
        const uint32_t vertex = level.faceVertexIndices.array[slot];
        if (seen[vertex]) continue;
        const auto across = mirror->Across(number, slot / corners, slot % corners);
        if (!across) continue;
        const uint32_t twin =
            level.faceVertexIndices.array[across->face * corners + across->corner];
        seen[vertex] = seen[twin] = true;
        const Vector position = level.Position(vertex);
        if (twin == vertex) {
            Vector inPlane = position;
            if (Component(inPlane, axis) != 0.0f) Component(inPlane, axis) = 0.0f;
            move(vertex, inPlane);
            continue;
        }
        const Vector other = level.Position(twin);
        const bool isModel = sign * Component(position, axis) >= sign * Component(other, axis);
        move(isModel ? twin : vertex, Mirrored(isModel ? position : other, axis));
    }
    phase.Finish();
    return moves.ApplyAsStep(geometry, "Make Symmetric");
}

}  // namespace trovik
