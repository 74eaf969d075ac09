// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tests/fixture/StrokeBench.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

namespace trovik::bench {

/// What a dab does beside its family's plain path.
/// With InactiveLayer the mesh has a layer that holds offsets, and none records.
enum class Variation { Plain, Stamp, Freeze, Layer, InactiveLayer, WorldSpace };
const char* NameOf(Variation variation);

/// The tool that stands for a displacement family.
struct FamilyTool {
    const char* name;
    Tool tool;
};
inline constexpr FamilyTool families[] = {{"pushing", Tool::Sculpt},
                                          {"planing", Tool::Flatten},
                                          {"pulling", Tool::Pinch},
                                          {"averaging", Tool::Smooth}};

/// A flat grid of 2.4 million vertices, a tool on it and a dab in the middle that covers about
/// `vertices` of them. The mesh is made once and shared; a scene puts back what it set and did.
/// Dabs are so weak that the surface stays flat to the eye, so every dab finds the same work.
class DabScene {
public:
    DabScene(Tool tool, Variation variation, int64_t vertices);
    ~DabScene();
    DabScene(const DabScene&) = delete;
    DabScene& operator=(const DabScene&) = delete;

    void Begin() { bench.Begin(); }
    void Dab() { box = bench.Dab(hit, radius, strength); }
    void End() { bench.End(); }
    /// Makes the mesh flat again by undoing the strokes, and forgets them.
    void PutBack();

    /// Vertices within the radius.
    int64_t Covered() const { return covered; }
    /// Patches that the last dab handed to the brush, in order.
    std::vector<uint32_t> Patches() const;
    /// Why the last dab cannot have been right; null when it can.
    const char* WhatIsWrong() const;
    /// Rate and size for the table: items are covered vertices.
    void Report(benchmark::State& state) const;

    test::StrokeBench& bench;
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

/// The brush in the middle of a dab that has ended: grids of the dab's size, and every patch that
/// it handed out, for running single parts of a dab over them.
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
