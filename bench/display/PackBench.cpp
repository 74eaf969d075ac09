// SPDX-License-Identifier: Apache-2.0

/// \file Measures how long it takes to pack patches for display: the patches of a dab, and whole
/// levels. `copy` is the lower bound: it copies the same number of bytes that packing these patches
/// would write. Compare ratios within one run, not absolute times. The benchmarks of whole levels
/// measure wall-clock time because they use several threads.
#include "framework/display/DirtyPatches.h"
#include "framework/display/PatchBounds.h"
#include "framework/display/PatchPacker.h"
#include "framework/multires/LevelGeometry.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <memory>

namespace trovik::bench {
namespace {

/// Returns a torus with 64 quads.
PolygonMesh Ring() {
    constexpr unsigned around = 16;
    constexpr unsigned tube = 4;
    PolygonMesh mesh;
    for (unsigned i = 0; i < around; ++i) {
        for (unsigned j = 0; j < tube; ++j) {
            const float a = 6.2831853f * static_cast<float>(i) / around;
            const float b = 6.2831853f * static_cast<float>(j) / tube;
            const float r = 2.0f + std::cos(b);
            mesh.positions.push_back({r * std::cos(a), r * std::sin(a), std::sin(b)});
            mesh.faceSizes.push_back(4);
            const unsigned k = (i + 1) % around;
            const unsigned l = (j + 1) % tube;
            for (const unsigned corner : {i * tube + j, k * tube + j, k * tube + l, i * tube + l})
                mesh.faceVertices.push_back(corner);
        }
    }
    return mesh;
}

/// Returns a level with 64 x 4^levels quads, which is created once.
LevelMesh& Level(int64_t levels) {
    static std::map<int64_t, std::unique_ptr<LevelGeometry>> geometries;
    std::unique_ptr<LevelGeometry>& geometry = geometries[levels];
    if (geometry == nullptr) {
        geometry = std::make_unique<LevelGeometry>(Ring());
        for (int64_t i = 0; i < levels; ++i) geometry->Subdivide();
    }
    return *geometry->Bound();
}

/// The number of patches of 33 x 33 vertices that a dab visits if it covers 100 thousand vertices.
/// Together they have 160 thousand quads.
constexpr uint32_t patchesOfADab = 157;

/// Returns the patches around a point, nearest first.
std::vector<uint32_t> PatchesAround(const LevelMesh& level,
                                    const PatchLayout& layout,
                                    uint32_t centre) {
    const LevelMesh& patches = *level.Hierarchy().Level(layout.PatchLevel());
    const auto position = [&](uint32_t patch) {
        return patches.Position(patches.faceVertexIndices.array[patch * 4]);
    };
    std::vector<uint32_t> order(layout.PatchCount());
    for (uint32_t i = 0; i < order.size(); ++i) order[i] = i;
    const Vector middle = position(centre);
    std::sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
        return (position(a) - middle).Length() < (position(b) - middle).Length();
    });
    order.resize(std::min<std::size_t>(order.size(), patchesOfADab));
    return order;
}

void Report(benchmark::State& state, uint64_t vertices) {
    state.counters["vertices"] = static_cast<double>(vertices);
    const auto items = static_cast<int64_t>(vertices) * state.iterations();
    state.SetItemsProcessed(items);
    state.SetBytesProcessed(items * static_cast<int64_t>(sizeof(DisplayVertex)));
}

/// Packs the patches of successive dabs in a stroke. Nearly all of these patches are in the CPU
/// caches. With `scattered`, each dab is at a different position, so that no patch is cached.
void PackDab(benchmark::State& state, bool scattered) {
    LevelMesh& level = Level(state.range(0));
    const PatchLayout layout(level);
    std::vector<std::vector<uint32_t>> dabs;
    const uint32_t regions = scattered ? 24 : 1;
    for (uint32_t i = 0; i < regions; ++i)
        dabs.push_back(PatchesAround(level, layout, i * (layout.PatchCount() / regions)));
    PatchPacker packer(level, layout);
    std::vector<DisplayVertex> out(layout.VertexCount(dabs[0]));
    std::size_t dab = 0;
    for (auto _ : state) {
        packer.Pack(dabs[dab++ % dabs.size()], out, static_cast<unsigned>(state.range(1)));
        benchmark::ClobberMemory();
    }
    Report(state, out.size());
}

/// Measures the lower bound: copying the same number of bytes.
void Copy(benchmark::State& state, uint64_t vertices) {
    const std::vector<DisplayVertex> from(vertices);
    std::vector<DisplayVertex> to(vertices);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), vertices * sizeof(DisplayVertex));
        benchmark::ClobberMemory();
    }
    Report(state, vertices);
}

void CopyDab(benchmark::State& state) { Copy(state, uint64_t{patchesOfADab} * 33 * 33); }

void PackAll(benchmark::State& state) {
    LevelMesh& level = Level(state.range(0));
    const PatchLayout layout(level);
    PatchPacker packer(level, layout);
    std::vector<DisplayVertex> out(layout.TotalVertexCount());
    for (auto _ : state) {
        packer.PackAll(out, static_cast<unsigned>(state.range(1)));
        benchmark::ClobberMemory();
    }
    Report(state, out.size());
}

void CopyAll(benchmark::State& state) {
    Copy(state, PatchLayout(Level(state.range(0))).TotalVertexCount());
}

void CollectDirty(benchmark::State& state) {
    LevelMesh& level = Level(state.range(0));
    const PatchLayout layout(level);
    const std::vector<uint32_t> patches = PatchesAround(level, layout, 0);
    DirtyPatches dirty(layout);
    for (auto _ : state) {
        dirty.Add({layout.Level(), SurfaceChange::Positions, layout.PatchLevel(), patches, false});
        benchmark::DoNotOptimize(dirty.Patches().data());
        dirty.Clear();
    }
}

void NormalCones(benchmark::State& state) {
    LevelMesh& level = Level(state.range(0));
    const PatchLayout layout(level);
    const std::vector<uint32_t> patches = PatchesAround(level, layout, 0);
    std::vector<DisplayVertex> packed(layout.VertexCount(patches));
    PatchPacker(level, layout).Pack(patches, packed);
    const std::size_t perPatch = layout.VertexCount(0);
    for (auto _ : state)
        for (std::size_t i = 0; i < patches.size(); ++i)
            benchmark::DoNotOptimize(
                ConeOf(std::span(packed).subspan(i * perPatch, perPatch), layout.Triangles(0)));
    Report(state, packed.size());
}

// The arguments of pack-dab and pack-all are the number of subdivisions (8 for 4.2 million quads, 9
// for 16.8 million) and the number of threads.
BENCHMARK_CAPTURE(PackDab, warm, false)
    ->Name("pack-dab/warm")
    ->ArgsProduct({{8, 9}, {1, 2}})
    ->UseRealTime();
BENCHMARK_CAPTURE(PackDab, scattered, true)
    ->Name("pack-dab/scattered")
    ->ArgsProduct({{8, 9}, {1, 2}})
    ->UseRealTime();
BENCHMARK(CopyDab)->Name("copy-dab");
BENCHMARK(CollectDirty)->Name("collect-dirty")->Arg(9);
BENCHMARK(NormalCones)->Name("normal-cones")->Arg(9);
BENCHMARK(PackAll)
    ->Name("pack-all")
    ->Args({8, 1})
    ->Args({8, 2})
    ->Args({9, 1})
    ->Args({9, 2})
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK(CopyAll)->Name("copy-all")->Arg(8)->Arg(9)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace trovik::bench
