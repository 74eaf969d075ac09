// SPDX-License-Identifier: Apache-2.0

/// \file Measures a lower bound for the cost of a dab: the time of loops that read and write the
/// bytes that a pushing dab must access, in the same order and through the same tables, without
/// computing anything.
#include "bench/stroke/DabScene.h"

#include <cstring>

namespace trovik::bench {
namespace {

/// Forces the compiler to assume that the value is used.
void Use(__m128i value) { asm volatile("" : : "x"(value)); }
__m128i Load(const void* from) { return _mm_loadu_si128(static_cast<const __m128i*>(from)); }

/// Accesses one patch: the work list, vertices, records, grid and normals.
void TouchPatch(
    SwiftStroke& brush, uint32_t patch, HWVector* grid, StoredVertexInfo* records, uint32_t mark) {
    LevelMesh& mesh = dynamic_cast<LevelMesh&>(*brush.mesh);
    const auto level = static_cast<uint32_t>(brush.patchLevel);
    const uint32_t side = 1u << level;
    const uint32_t points = side + 1;
    const uint32_t* slice = brush.PatchSlice(patch);
    const uint32_t* indexTable = SubdivisionLevel::QuadVertexIndexTable(level).array;
    const uint32_t* faces = SubdivisionLevel::QuadIndexTable(level).array;
    PatchVertexEntry* list = brush.patchVertexList;
    for (uint32_t row = 0, i = 0; row < points; ++row)
        for (uint32_t column = 0; column < points; ++column, ++i)
            list[i] = {slice[indexTable[i]],
                       faces[std::min(row, side - 1) * side + std::min(column, side - 1)],
                       (row + 1) * brush.gridStride + column + 1};
    const uint32_t count = points * points;
    for (uint32_t i = 0; i < count; ++i) {
        Vertex& vertex = mesh.vertices.array[list[i].vertex];
        StoredVertexInfo& record = records[vertex.changeLink];
        Use(Load(&record));
        Use(Load(&record.originalNormal));
        record.visitStampWord = mark;
        float buildUp;
        std::memcpy(&buildUp, &record.buildUp, sizeof buildUp);
        std::memcpy(&record.buildUp, &buildUp, sizeof buildUp);
        asm volatile("" : : : "memory");
        const __m128i position = Load(&vertex);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(&vertex), position);
        grid[list[i].cell] = HWVector(_mm_castsi128_ps(position));
        asm volatile("" : : : "memory");
    }
    PackedNormal* normals = mesh.vertexNormals.array;
    for (uint32_t row = 0, i = 0; row < points; ++row)
        for (uint32_t column = 0; column < points; ++column, ++i) {
            Use(_mm_castps_si128(grid[(row + 1) * brush.gridStride + column + 1].lanes));
            PackedNormal& normal = normals[slice[indexTable[i]]];
            normal.x = 0;
            normal.y = 0;
            normal.z = 32767;
        }
}

void Floor(benchmark::State& state) {
    PatchScene parts(Tool::Sculpt, Variation::Plain, state.range(0));
    SwiftStroke& brush = parts.scene.brush;
    StoredVertexInfo* records = brush.CurrentChange()->records->array;
    uint32_t mark = brush.dabStamp;
    for (auto _ : state) {
        ++mark;
        for (const uint32_t patch : parts.patches)
            TouchPatch(brush, patch, brush.positionGrid, records, mark);
    }
    parts.scene.Report(state);
}

/// Measures the first touch, which writes the record instead of reading it and also writes the
/// vertex's link word.
void FirstTouchFloor(benchmark::State& state) {
    PatchScene parts(Tool::Sculpt, Variation::Plain, state.range(0));
    SwiftStroke& brush = parts.scene.brush;
    const uint32_t count = *brush.CurrentChange()->recordCount;
    const StoredVertexInfo* present = brush.CurrentChange()->records->array;
    for (auto _ : state) {
        auto* fresh = static_cast<StoredVertexInfo*>(std::malloc(count * sizeof(StoredVertexInfo)));
        for (uint32_t i = 0; i < count; ++i) {
            Vertex& vertex = parts.scene.mesh.vertices.array[present[i].vertexIndex];
            StoredVertexInfo& record = fresh[i];
            std::memset(&record, 0, sizeof record);
            std::memcpy(record.originalPosition, &vertex, sizeof record.originalPosition);
            record.originalNormal = parts.scene.mesh.vertexNormals.array[present[i].vertexIndex];
            record.vertexIndex = present[i].vertexIndex;
            vertex.changeLink = i;
        }
        for (const uint32_t patch : parts.patches)
            TouchPatch(brush, patch, brush.positionGrid, fresh, brush.dabStamp);
        std::free(fresh);
    }
    parts.scene.Report(state);
}

/// Measures the maximum memory throughput: every byte of an array is read and written in order.
void Stream(benchmark::State& state) {
    std::vector<uint64_t> words(static_cast<std::size_t>(state.range(0)) / sizeof(uint64_t), 1);
    for (auto _ : state) {
        for (uint64_t& word : words) word += 1;
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(2 * state.range(0) * static_cast<int64_t>(state.iterations()));
    state.counters["bytes"] = 2.0 * static_cast<double>(state.range(0));
}

BENCHMARK(Stream)->Name("stream")->Arg(1 << 18)->Arg(1 << 23)->Arg(1 << 29);
BENCHMARK(Floor)->Name("floor")->Arg(10000)->Arg(100000)->Arg(1000000);
BENCHMARK(FirstTouchFloor)->Name("floor-first-touch")->Arg(10000)->Arg(100000)->Arg(1000000);

}  // namespace
}  // namespace trovik::bench
