// SPDX-License-Identifier: Apache-2.0

/// \file Measures edits of an EditableMesh, in edits per second: the edits alone, and with their
/// tests of the geometry. The argument is the number of quads per side of a torus, so the number of
/// triangles is twice its square. The cost of an edit must not depend on it, apart from cache
/// misses.
#include "framework/tessellation/EdgeOperations.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace trovik::bench {
namespace {

PolygonMesh TorusOf(uint32_t side) {
    PolygonMesh mesh;
    for (uint32_t i = 0; i < side; ++i) {
        for (uint32_t j = 0; j < side; ++j) {
            const float step = 6.2831853f / static_cast<float>(side);
            const float a = step * static_cast<float>(i);
            const float b = step * static_cast<float>(j);
            const float r = 2.0f + std::cos(b);
            mesh.positions.push_back({r * std::cos(a), r * std::sin(a), std::sin(b)});
            mesh.faceSizes.push_back(4);
            const uint32_t k = (i + 1) % side;
            const uint32_t l = (j + 1) % side;
            for (const uint32_t corner : {i * side + j, k * side + j, k * side + l, i * side + l})
                mesh.faceVertices.push_back(corner);
        }
    }
    return mesh;
}

/// Half-edges of a region of about 20 thousand triangles, in random order, as a dab would visit
/// them.
std::vector<uint32_t> RegionOf(const EditableMesh& mesh) {
    const uint32_t end = std::min(mesh.FaceLimit(), 20000u) * 3;
    std::vector<uint32_t> region(end);
    for (uint32_t h = 0; h < end; ++h) region[h] = h;
    std::shuffle(region.begin(), region.end(), std::mt19937(1));
    return region;
}

/// Flips edges that can be flipped.
void Flip(benchmark::State& state) {
    EditableMesh mesh(TorusOf(static_cast<uint32_t>(state.range(0))));
    const std::vector<uint32_t> region = RegionOf(mesh);
    std::size_t i = 0;
    int64_t edits = 0;
    for (auto _ : state) {
        const uint32_t h = region[i++ % region.size()];
        if (!mesh.CanFlip(h)) continue;
        mesh.FlipEdge(h);
        ++edits;
    }
    state.SetItemsProcessed(edits);
}

/// Splits an edge and collapses one of the new edges, in turn.
void SplitAndCollapse(benchmark::State& state) {
    EditableMesh mesh(TorusOf(static_cast<uint32_t>(state.range(0))));
    const std::vector<uint32_t> region = RegionOf(mesh);
    std::size_t i = 0;
    int64_t edits = 0;
    for (auto _ : state) {
        const uint32_t h = region[i++ % region.size()];
        if (!mesh.HasFace(EditableMesh::FaceOf(h))) continue;
        const uint32_t made =
            mesh.SplitEdge(h, (mesh.Position(mesh.From(h)) + mesh.Position(mesh.To(h))) * 0.5f);
        ++edits;
        if (!mesh.CanCollapse(h, made)) continue;
        mesh.CollapseEdge(h, made, mesh.Position(mesh.From(h)));
        ++edits;
    }
    state.SetItemsProcessed(edits);
}

/// Refines a region to a third of its edge length and coarsens it again, with all tests, flips and
/// relaxation. Counts edges that were split, removed or flipped, and vertices that were moved.
void Retessellate(benchmark::State& state) {
    EditableMesh mesh(TorusOf(static_cast<uint32_t>(state.range(0))));
    const std::vector<uint32_t> region = RegionOf(mesh);
    const float length = EdgeLength(mesh, 0);
    int64_t edits = 0;
    bool refines = true;
    for (auto _ : state) {
        const EdgeLengths lengths(refines ? length / 3.0f : length);
        refines = !refines;
        for (const uint32_t h : region) {
            if (!mesh.HasFace(EditableMesh::FaceOf(h))) continue;
            if (SplitLongEdge(mesh, h, lengths) != EditableMesh::none) ++edits;
            if (CollapseShortEdge(mesh, h, lengths)) {
                ++edits;
                continue;
            }
            if (FlipToImprove(mesh, h)) ++edits;
            const uint32_t v = mesh.From(h);
            if (mesh.KindOf(v) != EditableMesh::VertexKind::Free) continue;
            if (MoveFreeVertex(mesh, v, RelaxedPosition(mesh, v))) ++edits;
        }
    }
    state.SetItemsProcessed(edits);
}

BENCHMARK(Flip)->Arg(100)->Arg(700);
BENCHMARK(SplitAndCollapse)->Arg(100)->Arg(700);
BENCHMARK(Retessellate)->Arg(100)->Arg(700)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace trovik::bench
