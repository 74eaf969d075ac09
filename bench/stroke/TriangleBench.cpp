// SPDX-License-Identifier: Apache-2.0

/// \file Measures dabs on triangle meshes. Such meshes have no patches, so the step runs vertex by
/// vertex with run-time switches, and the normals are computed by a walk around each vertex.
#include "tests/fixture/StrokeFixture.h"
#include "tests/meshes/MeshZoo.h"

#include <benchmark/benchmark.h>

#include <cmath>

namespace trovik::bench {
namespace {

/// Returns a flat grid whose quads are split along a diagonal.
PolygonMesh Triangles(unsigned side) {
    const PolygonMesh quads = test::GridMesh(side, side);
    PolygonMesh mesh;
    mesh.positions = quads.positions;
    for (std::size_t i = 0; i < quads.faceVertices.size(); i += 4) {
        const uint32_t* corner = quads.faceVertices.data() + i;
        for (const int k : {0, 1, 2, 0, 2, 3}) mesh.faceVertices.push_back(corner[k]);
        mesh.faceSizes.insert(mesh.faceSizes.end(), 2, 3);
    }
    return mesh;
}

void TriangleDab(benchmark::State& state) {
    // The grid contains the disc and a margin around it.
    const unsigned side = state.range(0) > 100000 ? 1280 : 400;
    test::StrokeFixture bench(Triangles(side));
    bench.Activate(Tool::Sculpt, 2);
    const SurfacePoint hit = bench.HitVertex(side / 2 * (side + 1) + side / 2);
    const float radius = std::sqrt(static_cast<float>(state.range(0)) / 3.14159265f);
    bench.Begin();
    bench.Dab(hit, radius, 0.001f);
    for (auto _ : state) bench.Dab(hit, radius, 0.001f);
    if (*bench.brush->CurrentChange()->recordCount < state.range(0) * 9 / 10)
        state.SkipWithError("too few records");
    bench.End();
    state.counters["vertices"] = static_cast<double>(state.range(0));
    state.SetItemsProcessed(state.range(0) * static_cast<int64_t>(state.iterations()));
}

BENCHMARK(TriangleDab)->Name("dab/triangles")->Arg(10000)->Arg(100000)->Arg(1000000);

}  // namespace
}  // namespace trovik::bench
