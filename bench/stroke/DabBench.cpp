// SPDX-License-Identifier: Apache-2.0

/// \file
/// Whole dabs on a flat grid refined to about a million quads, by tool family and dab size, beside
/// a floor that touches the same bytes without arithmetic. Read ratios within one run, not times.
#include "kernels/PatchKernelTable.h"
#include "kernels/VertexStep.h"
#include "tests/fixture/StrokeBench.h"

#include <benchmark/benchmark.h>

#include <cmath>

namespace trovik::test {
namespace {

constexpr unsigned gridSide = 16;
constexpr unsigned subdivisions = 6;  // 16 x 64 = 1024 quads a side

StrokeBench& SharedBench() {
    static StrokeBench bench(FlatGrid(gridSide), subdivisions);
    return bench;
}

/// Radius of a dab that covers about `vertices` vertices of the grid, whose cells measure 1/64.
float RadiusFor(double vertices) {
    return static_cast<float>(std::sqrt(vertices / 3.14159265) / 64.0);
}

/// Restores the flat grid, so that each benchmark starts alike.
void Flatten(LevelMesh& mesh) {
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) mesh.vertices.array[v].z = 0.0f;
    mesh.ComputeNormals();
}

void WholeDab(benchmark::State& state, Tool tool) {
    StrokeBench& bench = SharedBench();
    LevelMesh& mesh = bench.Mesh();
    Flatten(mesh);
    bench.Activate(tool, 2);
    const float radius = RadiusFor(static_cast<double>(state.range(0)));
    const SurfacePoint hit = bench.HitVertex(gridSide / 2 * (gridSide + 1) + gridSide / 2);
    bench.Begin();
    bench.Dab(hit, radius, 1.0f);
    for (auto _ : state) bench.Dab(hit, radius, 1.0f);
    uint64_t covered = 0;
    const MeshChange& change = *bench.brush->CurrentChange();
    for (uint32_t i = 0; i < *change.recordCount; ++i) {
        const float* p = change.records->array[i].originalPosition;
        const Vector way = Vector(p[0], p[1], p[2]) - hit.position;
        if ((way | way) <= radius * radius) ++covered;
    }
    const float height = mesh.Position(mesh.faceVertexIndices[hit.face * 4]).z;
    if (!std::isfinite(height)) state.SkipWithError("the dab left no finite surface");
    bench.End();
    state.counters["vertices"] = static_cast<double>(covered);
    state.SetItemsProcessed(static_cast<int64_t>(covered) * state.iterations());
}

void FirstDab(benchmark::State& state) {
    StrokeBench& bench = SharedBench();
    Flatten(bench.Mesh());
    bench.Activate(Tool::Sculpt, 2);
    const float radius = RadiusFor(static_cast<double>(state.range(0)));
    const SurfacePoint hit = bench.HitVertex(gridSide / 2 * (gridSide + 1) + gridSide / 2);
    for (auto _ : state) {
        state.PauseTiming();
        bench.Begin();
        state.ResumeTiming();
        bench.Dab(hit, radius, 1.0f);
        state.PauseTiming();
        bench.End();
        bench.geometry->History().Clear();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.range(0) * state.iterations());
}

/// Reads and writes what a later dab must touch: vertex, record, normal and grid cell.
void Floor(benchmark::State& state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    std::vector<Vertex> vertices(count);
    std::vector<StoredVertexInfo> records(count);
    std::vector<PackedNormal> normals(count);
    std::vector<HWVector> cells(count);
    uint32_t stamp = 0;
    for (auto _ : state) {
        ++stamp;
        for (std::size_t i = 0; i < count; ++i) {
            records[i].visitStampWord = stamp;
            vertices[i].x = records[i].originalPosition[0];
            vertices[i].y = records[i].originalPosition[1];
            vertices[i].z = records[i].originalPosition[2];
            cells[i] = HWVector(vertices[i].x, vertices[i].y, vertices[i].z, 0.0f);
            normals[i].x = static_cast<int16_t>(stamp);
        }
        benchmark::DoNotOptimize(cells.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.range(0) * state.iterations());
}

/// The kernel of a patch alone, specialised, and the same step with its switches as values.
void PatchStep(benchmark::State& state, bool specialised) {
    StrokeBench& bench = SharedBench();
    Flatten(bench.Mesh());
    bench.Activate(Tool::Sculpt, 2);
    bench.Begin();
    const SurfacePoint hit = bench.HitVertex(gridSide / 2 * (gridSide + 1) + gridSide / 2);
    SwiftStroke& brush = *bench.brush;
    bench.Dab(hit, 0.5f, 1.0f);
    const uint32_t patch = hit.face / brush.facesPerPatch;
    std::vector<HWVector> grid(brush.gridStride * brush.gridStride, HWVector::Zero());
    brush.positionGrid = grid.data();
    const uint32_t count = ((1u << brush.patchLevel) + 1) * ((1u << brush.patchLevel) + 1);
    for (auto _ : state) {
        ++brush.dabStamp;
        bool reached = false;
        if (specialised) {
            reached = (brush.*patchKernels[brush.PatchSwitches().Index()])(patch);
        } else {
            const RunTimeSwitches sw(brush.PatchSwitches(), true);
            brush.BuildWorkList(patch);
            DabConstants dab(brush, false);
            for (uint32_t i = 0; i < count; ++i)
                reached |= StepVertex(sw, dab, brush.patchVertexList[i]);
            dab.StoreBounds();
        }
        benchmark::DoNotOptimize(reached);
    }
    brush.positionGrid = nullptr;
    bench.End();
    state.SetItemsProcessed(static_cast<int64_t>(count) * state.iterations());
}

BENCHMARK(Floor)->Arg(10000)->Arg(100000)->Arg(600000);
BENCHMARK_CAPTURE(WholeDab, Sculpt, Tool::Sculpt)->Arg(10000)->Arg(100000)->Arg(600000);
BENCHMARK_CAPTURE(WholeDab, Flatten, Tool::Flatten)->Arg(10000)->Arg(100000);
BENCHMARK_CAPTURE(WholeDab, Pinch, Tool::Pinch)->Arg(10000)->Arg(100000);
BENCHMARK_CAPTURE(WholeDab, Smooth, Tool::Smooth)->Arg(10000)->Arg(100000);
BENCHMARK(FirstDab)->Arg(10000)->Arg(100000);
BENCHMARK_CAPTURE(PatchStep, Specialised, true);
BENCHMARK_CAPTURE(PatchStep, RunTimeSwitches, false);

}  // namespace
}  // namespace trovik::test
