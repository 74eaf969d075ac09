// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/MeanCurvature.h"

#include "framework/mesh/FaceSides.h"

namespace trovik {

namespace {

void Average(const LevelMesh& level, const std::vector<float>& counts, std::vector<float>& bends) {
    std::vector<float> sums(bends.size(), 0.0f);
    ForEachSide(level, [&](uint32_t a, uint32_t b) {
        sums[a] += bends[b];
        sums[b] += bends[a];
    });
    for (std::size_t v = 0; v < bends.size(); ++v)
        if (counts[v] > 0.0f) bends[v] = (bends[v] + sums[v] / counts[v]) * 0.5f;
}

}  // namespace

std::vector<float> MeanCurvatures(const LevelMesh& level,
                                  const std::vector<Vector>& positions,
                                  const std::vector<Vector>& normals,
                                  float size,
                                  uint32_t rings) {
    const uint32_t vertices = level.VertexCount();
    std::vector<float> bends(vertices, 0.0f);
    std::vector<float> counts(vertices, 0.0f);
    ForEachSide(level, [&](uint32_t a, uint32_t b) {
        const Vector way = positions[b] - positions[a];
        const float square = (way.x * way.x + way.y * way.y) + way.z * way.z;
        // Two vertices at the same position define no direction.
        if (!(square > 0.0f)) return;
        bends[a] += (way | normals[a]) / square;
        bends[b] -= (way | normals[b]) / square;
        counts[a] += 1.0f;
        counts[b] += 1.0f;
    });
    for (uint32_t v = 0; v < vertices; ++v)
        if (counts[v] > 0.0f) bends[v] = 2.0f * bends[v] / counts[v] * size;
    for (uint32_t ring = 0; ring < rings; ++ring) Average(level, counts, bends);
    return bends;
}

}  // namespace trovik
