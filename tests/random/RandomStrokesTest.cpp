// SPDX-License-Identifier: Apache-2.0

/// \file Tests strokes with a random mesh, level, transform, mask, layer, tool, settings, stamp,
/// mirror and dabs. In every case, all numbers stay finite, and undo and redo restore bit-identical
/// states. The default run is short; TROVIK_RANDOM_STROKES sets the number of strokes.
#include "tests/random/RandomStroke.h"

#include <gtest/gtest.h>

#include <cmath>

namespace trovik::test {
namespace {

constexpr uint32_t strokesPerMesh = 3;

/// All data of a mesh and its layer that a stroke changes.
struct State {
    std::vector<VertexBits> vertices;
    std::vector<Vector> offsets;
    std::vector<Vector> rests;
    bool operator==(const State&) const = default;
};

State StateOf(StrokeFixture& bench) {
    State state;
    state.vertices = BitsOf(bench.Mesh());
    if (bench.layer == nullptr) return state;
    for (uint32_t v = 0; v < state.vertices.size(); ++v) {
        state.offsets.push_back(bench.layer->Offset(v));
        state.rests.push_back(bench.layer->Rest(v));
    }
    return state;
}

/// The first vertex with a NaN position or a normal longer than 1; -1 if there is none.
int64_t FirstBroken(const LevelMesh& mesh) {
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
        const Vector p = mesh.Position(v);
        if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z)) return v;
        const PackedNormal& n = mesh.vertexNormals.array[v];
        const double length = std::hypot(n.x, n.y, n.z);
        if (length > 32767.0 + 2.0) return v;
    }
    return -1;
}

void ExpectIdle(StrokeFixture& bench) {
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
    EXPECT_EQ(bench.Mesh().changeRecordCount, 0u);
    EXPECT_EQ(bench.brush->meshChanges.fill, 0u);
    EXPECT_EQ(bench.brush->deferredNormals.fill, 0u);
    EXPECT_FALSE(bench.brush->wholeMesh);
    EXPECT_TRUE(bench.brush->IsStrokeFree());
}

TEST(RandomStrokes, StayFiniteAndAreUndoneAndRedoneBitExactly) {
    HostSwitches switches;
    const uint32_t wanted = CountFromEnvironment("TROVIK_RANDOM_STROKES", 150);
    uint32_t changed = 0;
    for (uint32_t stroke = 0; stroke < wanted; stroke += strokesPerMesh) {
        // Each mesh has its own seed, so that a single case can be examined.
        RandomNumbers random(20260 + stroke);
        switches.Draw(random);
        RandomStrokeFixture drawn(random);
        StrokeFixture& bench = drawn.Bench();
        UndoHistory& history = bench.geometry->History();
        const State start = StateOf(bench);
        for (uint32_t i = 0; i < strokesPerMesh; ++i) {
            const State before = StateOf(bench);
            drawn.Stroke();
            SCOPED_TRACE("stroke " + std::to_string(stroke + i) + ": " + drawn.CaseDescription());
            ExpectIdle(bench);
            ASSERT_EQ(FirstBroken(bench.Mesh()), -1);
            changed += StateOf(bench) != before;
        }
        SCOPED_TRACE("stroke " + std::to_string(stroke) + ": " + drawn.CaseDescription());
        const State end = StateOf(bench);
        while (history.Undo(*bench.geometry)) {
        }
        ASSERT_TRUE(StateOf(bench) == start);
        while (history.Redo(*bench.geometry)) {
        }
        ASSERT_TRUE(StateOf(bench) == end);
    }
    // The test proves nothing if the strokes do nothing.
    EXPECT_GT(changed, wanted / 2);
}

}  // namespace
}  // namespace trovik::test
