// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tests/fixture/StrokeFixture.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

namespace trovik::bench {

/// What a dab does in addition to the plain path of its family. With InactiveLayer the mesh has a
/// layer with offsets that does not record.
enum class Variation { Plain, Stamp, Freeze, Layer, InactiveLayer, WorldSpace };
const char* NameOf(Variation variation);

/// The tool that represents a displacement family.
struct FamilyTool {
    const char* name;
    Tool tool;
};
inline constexpr FamilyTool families[] = {{"pushing", Tool::Sculpt},
                                          {"planing", Tool::Flatten},
                                          {"pulling", Tool::Pinch},
                                          {"averaging", Tool::Smooth}};

/// A flat grid of 2.4 million vertices, a tool on it, and a dab at the centre that covers about
/// `vertices` of them. The mesh is created once and shared; a scene reverts its own changes. Dabs
/// are so weak that the surface stays almost flat, so every dab finds the same work.
class DabScene {
public:
    DabScene(Tool tool, Variation variation, int64_t vertices);
    ~DabScene();
    DabScene(const DabScene&) = delete;
    DabScene& operator=(const DabScene&) = delete;

    void Begin() { bench.Begin(); }
    void Dab() { box = bench.Dab(hit, radius, strength); }
    void End() { bench.End(); }
    /// Flattens the mesh again by undoing the strokes, and clears the history.
    void RevertStroke();

    /// The number of vertices within the radius.
    int64_t Covered() const { return covered; }
    /// The patches that the last dab passed to the brush, in order.
    std::vector<uint32_t> Patches() const;
    /// The reason why the last dab is invalid, or null if it is valid.
    const char* FaultReason() const;
    /// Reports rate and size for the table; items are covered vertices.
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

/// The state of the brush halfway through a dab, after the dab has ended: grids of the dab's size
/// and every patch that was passed to the brush. Single parts of a dab can be run over them.
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
