// SPDX-License-Identifier: Apache-2.0
#include "framework/display/PatchPacker.h"

#include "framework/multires/LevelGeometry.h"
#include "framework/threads/WorkerThreads.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstring>
#include <vector>

namespace trovik {

namespace {

/// Maximum number of vertices in a row of a patch.
constexpr uint32_t maxRow = (1u << PatchLayout::maxDepth) + 1;

/// Minimum number of vertices per task: about 50 microseconds of work.
constexpr uint64_t verticesPerTask = 8192;

// The normal and the two bytes that follow it (freeze amount and flags) are written as one word.
static_assert(std::endian::native == std::endian::little);

void PackVertex(const Vertex& vertex,
                const PackedNormal& normal,
                uint8_t flags,
                DisplayVertex& out) {
    uint64_t word;
    std::memcpy(&word, &normal, sizeof word);
    constexpr unsigned freezeShift = 48;
    constexpr unsigned flagsShift = 56;
    word &= (uint64_t{1} << freezeShift) - 1;
    word |= uint64_t{static_cast<uint8_t>(vertex.freeze & freezeAmountMask)} << freezeShift;
    word |= uint64_t{flags} << flagsShift;
    auto* bytes = reinterpret_cast<unsigned char*>(&out);
    // A single 16-byte store is faster than two smaller ones. The last four of these bytes are then
    // overwritten by the word.
    std::memcpy(bytes, &vertex, 16);
    std::memcpy(bytes + offsetof(DisplayVertex, normalX), &word, sizeof word);
}

/// Returns whether all faces in the range are visible.
/// \param count  a multiple of 8.
bool NoneHidden(const uint8_t* faceFlags, uint32_t count) {
    constexpr uint64_t eightHidden = 0x0101010101010101u * faceIsHidden;
    uint64_t any = 0;
    for (uint32_t i = 0; i < count; i += 8) {
        uint64_t eight;
        std::memcpy(&eight, faceFlags + i, sizeof eight);
        any |= eight;
    }
    return (any & eightHidden) == 0;
}

/// Calls pack(i) for all i below `count`, on up to `threads` threads.
template <typename PackOne>
void ForEach(uint32_t count, uint64_t vertices, unsigned threads, PackOne pack) {
    const uint64_t tasks = std::max<uint64_t>(1, vertices / verticesPerTask);
    RunInParallel(
        count, static_cast<uint32_t>(std::max<uint64_t>(1, count / tasks)), pack, threads);
}

}  // namespace

PatchPacker::PatchPacker(const LevelMesh& ofLevel, const PatchLayout& ofLayout)
    : level(ofLevel), layout(ofLayout), faceGroups(GeometryOf(ofLevel).Attributes().faceGroups) {
    assert(static_cast<uint32_t>(level.Index()) == layout.Level());
    assert(level.vertexNormals.fill == level.VertexCount());
}

uint64_t PatchPacker::Pack(std::span<const uint32_t> patches,
                           std::span<DisplayVertex> out,
                           unsigned threads) {
    const uint64_t vertices = layout.VertexCount(patches);
    assert(out.size() >= vertices);
    std::vector<uint64_t> starts;
    starts.reserve(patches.size());
    uint64_t start = 0;
    for (const uint32_t patch : patches) {
        starts.push_back(start);
        start += layout.VertexCount(patch);
    }
    ForEach(static_cast<uint32_t>(patches.size()), vertices, threads, [&](uint32_t i) {
        PackPatch(patches[i], out.data() + starts[i]);
    });
    packed.patches += patches.size();
    packed.vertices += vertices;
    return vertices;
}

uint64_t PatchPacker::PackAll(std::span<DisplayVertex> out, unsigned threads) {
    const uint64_t vertices = layout.TotalVertexCount();
    assert(out.size() >= vertices);
    ForEach(layout.PatchCount(), vertices, threads, [&](uint32_t patch) {
        PackPatch(patch, out.data() + layout.FirstVertex(patch));
    });
    packed.patches += layout.PatchCount();
    packed.vertices += vertices;
    return vertices;
}

void PatchPacker::PackPatch(uint32_t patch, DisplayVertex* out) const {
    if (layout.IsGrid())
        PackGrid(patch, out);
    else
        PackBucket(patch, out);
}

void PatchPacker::PackGrid(uint32_t patch, DisplayVertex* out) const {
    const uint32_t depth = layout.Depth();
    const uint32_t side = 1u << depth;
    const uint32_t faces = side * side;
    const std::size_t firstFace = std::size_t{patch} * faces;
    const uint32_t* slice = level.faceVertexIndices.array + firstFace * 4;
    const uint32_t* slot = layout.GridSlots();
    const Vertex* vertices = level.vertices.array;
    const PackedNormal* normals = level.vertexNormals.array;
    // All faces of a patch descend from one level-0 face.
    const uint8_t group = GroupFlags(static_cast<uint32_t>(firstFace / layout.FacesUnder(0)));
    // The vertices of a row are scattered in memory, so they are looked up and prefetched one row
    // ahead.
    std::array<uint32_t, maxRow> current;
    std::array<uint32_t, maxRow> below;
    assert(side + 1 <= maxRow);
    const auto lookUp = [&] {
        for (uint32_t column = 0; column <= side; ++column) {
            const uint32_t vertex = slice[*slot++];
            below[column] = vertex;
            __builtin_prefetch(&vertices[vertex]);
            __builtin_prefetch(&normals[vertex]);
        }
    };
    const auto pack = [&](uint32_t vertex, uint8_t flags) {
        PackVertex(vertices[vertex], normals[vertex], flags, *out++);
    };
    DisplayVertex* const grid = out;
    lookUp();
    for (uint32_t line = 0; line < side; ++line) {
        current = below;
        lookUp();
        for (uint32_t column = 0; column < side; ++column) pack(current[column], group);
        pack(current[side], 0);
    }
    for (uint32_t column = 0; column <= side; ++column) pack(below[column], 0);

    const uint8_t* faceFlags = level.faceFlags + firstFace;
    if (NoneHidden(faceFlags, faces)) return;
    const uint32_t* cells = layout.GridCells();
    for (uint32_t face = 0; face < faces; ++face) {
        if ((faceFlags[face] & faceIsHidden) == 0) continue;
        const uint32_t row = cells[face] >> depth;
        grid[cells[face] + row].flags = group | displayFaceIsHidden;
    }
}

void PatchPacker::PackBucket(uint32_t bucket, DisplayVertex* out) const {
    const FaceBuckets& buckets = *layout.Buckets();
    const std::span<const uint32_t> vertices = buckets.Vertices(bucket);
    const std::span<const uint32_t> flagFaces = buckets.FlagFaces(bucket);
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        const uint8_t flags = flagFaces[i] == FaceBuckets::noFace ? 0 : FlagsOf(flagFaces[i]);
        PackVertex(level.vertices.array[vertices[i]],
                   level.vertexNormals.array[vertices[i]],
                   flags,
                   out[i]);
    }
}

uint8_t PatchPacker::FlagsOf(uint32_t face) const {
    const uint8_t hidden = level.IsFaceHidden(face) ? displayFaceIsHidden : 0;
    return hidden | GroupFlags(static_cast<uint32_t>(face / layout.FacesUnder(0)));
}

uint8_t PatchPacker::GroupFlags(uint32_t baseFace) const {
    if (faceGroups.empty() || faceGroups[baseFace] == SurfaceAttributes::none) return 0;
    return static_cast<uint8_t>(DisplayGroup(faceGroups[baseFace]) << displayGroupShift);
}

}  // namespace trovik
