// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tests/fixture/StrokeFixture.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

namespace trovik::bench {

/// The features that a dab uses in addition to the plain path of its family. With InactiveLayer,
/// the mesh has a layer with offsets that does not record the dab.
enum class Variation { Plain, Stamp, Freeze, Layer, InactiveLayer, WorldSpace };
const char* NameOf(Variation variation);

/// A displacement family and the tool that represents it.
struct FamilyTool {
    const char* name;
    Tool tool;
};
inline constexpr FamilyTool families[] = {{"pushing", Tool::Sculpt},
                                          {"planing", Tool::Flatten},
                                          {"pulling", Tool::Pinch},
                                          {"averaging", Tool::Smooth}};

/// A flat grid of 2.4 million vertices, a tool, and a dab at the centre that covers about
/// `vertices` of them. The mesh is created once and shared; each scene reverts its own changes.
/// Dabs are so weak that the surface stays almost flat, so the work is the same for every dab.
class DabScene {
public:
    DabScene(Tool tool, Variation variation, int64_t vertices);
    ~DabScene();
    DabScene(const DabScene&) = delete;
    DabScene& operator=(const DabScene&) = delete;

    void Begin() { bench.Begin(); }
    void Dab() { box = bench.Dab(hit, radius, strength); }
    void End() { bench.End(); }
    /// Undoes the strokes, so that the mesh is flat again, and clears the history.
    void RevertStroke();

    /// Returns the number of vertices within the radius.
    int64_t Covered() const { return covered; }
    /// Returns the patches that were passed to the brush in the last dab, in order.
    std::vector<uint32_t> Patches() const;
    /// Returns the reason why the last dab is invalid, or null if it is valid.
    const char* FaultReason() const;
    /// Reports the rate and the size for the results table; items are covered vertices.
    void Report(benchmark::State& state) const;

    test::StrokeFixture& bench;
    SwiftStroke& brush;
    LevelMesh& mesh;
    SurfacePoint hit;
    float radius;

private:
    static constexpr float strength = 0.001f;

    Variation variation;
    int64_t covered;
    AxisAlignedBoundingBox box;
};

/// The state of the brush in the middle of a dab, kept after the dab has ended: grids of the dab's
/// size, and every patch that was passed to the brush. Individual parts of a dab can be run on
/// them.
class PatchScene {
public:
    PatchScene(Tool tool, Variation variation, int64_t vertices);
    ~PatchScene();

    DabScene scene;
    std::vector<uint32_t> patches;

private:
    std::vector<HWVector> positions;
    std::vector<HWVector> layerValues;
};

}  // namespace trovik::bench
