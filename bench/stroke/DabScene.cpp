// SPDX-License-Identifier: Apache-2.0
#include "bench/stroke/DabScene.h"

#include "tests/stamps/StampFixture.h"

#include <cmath>

namespace trovik::bench {

namespace {

constexpr unsigned gridSide = 12;
constexpr unsigned subdivisions = 7;
constexpr unsigned cellsPerUnit = 1u << subdivisions;

test::StrokeFixture& SharedBench() {
    static test::StrokeFixture bench(test::FlatGrid(gridSide), subdivisions);
    return bench;
}

/// Returns the radius of a disc that covers this many grid cells.
float RadiusFor(int64_t vertices) {
    return static_cast<float>(std::sqrt(static_cast<double>(vertices) / 3.14159265) / cellsPerUnit);
}

/// Returns the number of grid points within a radius around a grid point.
int64_t PointsWithin(float radius) {
    const double reach = static_cast<double>(radius) * cellsPerUnit;
    const auto whole = static_cast<int64_t>(reach);
    int64_t points = 0;
    for (int64_t row = -whole; row <= whole; ++row) {
        const double half = std::sqrt(reach * reach - static_cast<double>(row * row));
        points += 2 * static_cast<int64_t>(half) + 1;
    }
    return points;
}

}  // namespace

const char* NameOf(Variation variation) {
    switch (variation) {
        case Variation::Stamp:
            return "stamp";
        case Variation::Freeze:
            return "freeze";
        case Variation::Layer:
            return "layer";
        case Variation::InactiveLayer:
            return "inactive-layer";
        case Variation::WorldSpace:
            return "world-space";
        case Variation::Plain:
            break;
    }
    return "plain";
}

DabScene::DabScene(Tool tool, Variation itsVariation, int64_t vertices)
    : bench(SharedBench()),
      brush(*bench.brush),
      mesh(bench.Mesh()),
      radius(RadiusFor(vertices)),
      variation(itsVariation),
      covered(PointsWithin(radius)) {
    bench.Activate(tool, 2);
    const uint32_t middle = gridSide / 2;
    hit = bench.HitVertex(middle * (gridSide + 1) + middle);
    switch (variation) {
        case Variation::Stamp: {
            constexpr uint32_t side = 256;
            test::SetTestStamp(brush,
                               QStringLiteral("bench"),
                               side,
                               side,
                               std::vector<float>(std::size_t{side} * side, 0.75f));
            // The stamp covers the dab.
            Matrix& m = brush.Settings().stampMatrix;
            const float scale = static_cast<float>(side) / (2.0f * radius);
            m.m[0][0] = scale;
            m.m[1][1] = scale;
            m.m[3][0] = (radius - hit.position.x) * scale;
            m.m[3][1] = (radius - hit.position.y) * scale;
            break;
        }
        case Variation::Freeze:
            mesh.SetFreeze(0, 64);
            break;
        case Variation::Layer:
            bench.AddLayer();
            break;
        case Variation::InactiveLayer:
            bench.AddLayer();
            Begin();
            Dab();
            End();
            mesh.SetActiveLayer(nullptr);
            break;
        case Variation::WorldSpace:
            bench.geometry->Transform().Set({1.0f, 1.0f, 1.5f}, {}, {});
            break;
        case Variation::Plain:
            break;
    }
}

void DabScene::RevertStroke() {
    UndoHistory& history = bench.geometry->History();
    while (history.Undo(*bench.geometry)) continue;
    history.Clear();
}

DabScene::~DabScene() {
    RevertStroke();
    bench.geometry->Transform().Set({1.0f, 1.0f, 1.0f}, {}, {});
    mesh.SetFreeze(0, 0);
    mesh.SetActiveLayer(nullptr);
    bench.layer.reset();
    brush.SetStamp(false, QString());
}

std::vector<uint32_t> DabScene::Patches() const {
    std::vector<uint32_t> patches;
    for (const FaceVisit& visit : bench.geometry->Level(brush.patchMeshLevel)->LastFaceWalk())
        patches.push_back(visit.face);
    return patches;
}

const char* DabScene::FaultReason() const {
    const uint32_t records = *brush.CurrentChange()->recordCount;
    if (records < covered) return "fewer records than covered vertices";
    const Vector middle = mesh.Position(mesh.faceVertexIndices[hit.face * 4]);
    if (!std::isfinite(middle.x) || !std::isfinite(middle.z)) return "no finite surface";
    if (box.IsEmpty() || box.maxX - box.minX < 2.0f * radius) return "too small a dirty box";
    const bool raises = brush.DabSwitches().Index() % 2 == 0 && !brush.isSmooth && !brush.isPinch &&
                        !brush.isPlaneTool;
    if (raises && !(middle.z > 0.0f)) return "a push that raised nothing";
    return nullptr;
}

void DabScene::Report(benchmark::State& state) const {
    state.counters["vertices"] = static_cast<double>(covered);
    state.SetItemsProcessed(covered * static_cast<int64_t>(state.iterations()));
}

PatchScene::PatchScene(Tool tool, Variation variation, int64_t vertices)
    : scene(tool, variation, vertices) {
    scene.Begin();
    scene.Dab();
    patches = scene.Patches();
    SwiftStroke& brush = scene.brush;
    const std::size_t cells = std::size_t{brush.gridStride} * brush.gridStride;
    positions.assign(cells, HWVector::Zero());
    layerValues.assign(cells, HWVector::Zero());
    brush.positionGrid = positions.data();
    brush.layerGrid = layerValues.data();
    // Reads a complete grid of actual positions, so that the normals are valid.
    brush.ReadPatchPositions(brush.PatchSlice(patches.front()));
    brush.FillPatchHalo(brush.patchMesh, patches.front());
}

PatchScene::~PatchScene() {
    scene.brush.positionGrid = nullptr;
    scene.brush.layerGrid = nullptr;
    scene.End();
}

}  // namespace trovik::bench
