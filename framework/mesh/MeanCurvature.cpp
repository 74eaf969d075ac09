// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/MeanCurvature.h"

#include "framework/mesh/FaceSides.h"

namespace trovik {

namespace {

void Average(const LevelMesh& level,
             const std::vector<float>& counts,
             std::vector<float>& curvatures) {
    std::vector<float> sums(curvatures.size(), 0.0f);
    ForEachSide(level, [&](uint32_t a, uint32_t b) {
        sums[a] += curvatures[b];
        sums[b] += curvatures[a];
    });
    for (std::size_t v = 0; v < curvatures.size(); ++v)
        if (counts[v] > 0.0f) curvatures[v] = (curvatures[v] + sums[v] / counts[v]) * 0.5f;
}

}  // namespace

std::vector<float> MeanCurvatures(const LevelMesh& level,
                                  const std::vector<Vector>& positions,
                                  const std::vector<Vector>& normals,
                                  float size,
                                  uint32_t rings) {
    const uint32_t vertices = level.VertexCount();
    std::vector<float> curvatures(vertices, 0.0f);
    std::vector<float> counts(vertices, 0.0f);
    ForEachSide(level, [&](uint32_t a, uint32_t b) {
        const Vector difference = positions[b] - positions[a];
        const float square = (difference.x * difference.x + difference.y * difference.y) +
                             difference.z * difference.z;
        // Two vertices at the same position do not define a direction.
        if (!(square > 0.0f)) return;
        curvatures[a] += (difference | normals[a]) / square;
        curvatures[b] -= (difference | normals[b]) / square;
        counts[a] += 1.0f;
        counts[b] += 1.0f;
    });
    for (uint32_t v = 0; v < vertices; ++v)
        if (counts[v] > 0.0f) curvatures[v] = 2.0f * curvatures[v] / counts[v] * size;
    for (uint32_t ring = 0; ring < rings; ++ring) Average(level, counts, curvatures);
    return curvatures;
}

}  // namespace trovik
