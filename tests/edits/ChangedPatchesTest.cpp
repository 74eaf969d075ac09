// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/ChangedPatches.h"
#include "framework/multires/LevelGeometry.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/random/RandomNumbers.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace trovik::test {
namespace {

/// The patches that contain one of the vertices, found by checking every face.
std::vector<uint32_t> PatchesByEveryFace(const LevelGeometry& geometry,
                                         uint32_t index,
                                         uint32_t patchLevel,
                                         const std::vector<uint32_t>& vertices) {
    const LevelMesh& level = *geometry.Level(index);
    std::vector<bool> isAsked(level.VertexCount());
    for (const uint32_t vertex : vertices) isAsked[vertex] = true;
    const uint32_t faces = level.faceCount / geometry.Level(patchLevel)->faceCount;
    const uint32_t corners = level.CornersPerFace();
    std::vector<uint32_t> patches;
    for (uint32_t slot = 0; slot < level.faceCount * corners; ++slot) {
        const uint32_t patch = slot / corners / faces;
        if (isAsked[level.faceVertexIndices.array[slot]] &&
            (patches.empty() || patches.back() != patch))
            patches.push_back(patch);
    }
    return patches;
}

TEST(ChangedPatches, AreThoseOfAllFacesAroundTheVertices) {
    RandomNumbers random(5);
    for (const ZooMesh& zoo : AllMeshes()) {
        LevelGeometry geometry(zoo.mesh);
        while (geometry.LevelCount() < 5 && geometry.Bound()->faceCount < 2000)
            geometry.Subdivide();
        for (uint32_t index = 0; index < geometry.LevelCount(); ++index) {
            const uint32_t count = geometry.Level(index)->VertexCount();
            for (uint32_t patchLevel = 0; patchLevel <= index; ++patchLevel) {
                for (const uint32_t asked : {1u, 2u, 5u, 40u, count}) {
                    std::vector<uint32_t> vertices;
                    // Mixes runs of consecutive vertices, as in strokes, with individual vertices.
                    for (uint32_t i = 0; i < asked; ++i) {
                        const bool next = !vertices.empty() && random.Chance(0.7f);
                        vertices.push_back(next ? (vertices.back() + 1) % count
                                                : random.Below(count));
                    }
                    EXPECT_EQ(PatchesAt(*geometry.Level(index), patchLevel, vertices),
                              PatchesByEveryFace(geometry, index, patchLevel, vertices))
                        << zoo.name << ", level " << index << ", patches of level " << patchLevel
                        << ", " << asked << " vertices";
                }
            }
        }
    }
}

TEST(ChangedPatches, InnerVertexSelectsOnlyItsPatch) {
    LevelGeometry geometry(GridMesh(3, 3));
    for (int i = 0; i < 6; ++i) geometry.Subdivide();
    const LevelMesh& level = *geometry.Bound();
    // The face point of the first face of the level below.
    const uint32_t vertex = level.faceVertexIndices.array[2];
    EXPECT_EQ(PatchesAt(*geometry.Bound(), ReportedPatchLevel(6), {vertex}),
              std::vector<uint32_t>{0});
}

}  // namespace
}  // namespace trovik::test
