// SPDX-License-Identifier: Apache-2.0
#include "framework/freeze/FreezeCurvature.h"

#include "framework/mesh/MeanCurvature.h"
#include "framework/mesh/SurfaceNormal.h"

#include <algorithm>
#include <cmath>

namespace trovik {

std::vector<float> ScaledCurvatures(const LevelGeometry& geometry, float size, uint32_t rings) {
    const LevelMesh& level = *geometry.Bound();
    const uint32_t vertices = level.VertexCount();
    const Matrix& toWorld = geometry.Transform().ToWorld();
    std::vector<Vector> positions(vertices);
    std::vector<Vector> normals(vertices);
    for (uint32_t v = 0; v < vertices; ++v) {
        positions[v] = toWorld.AffineTransform(level.Position(v), 1.0f);
        normals[v] = WorldNormal(geometry.Transform(), Unpacked(level.vertexNormals.array[v]));
    }
    return MeanCurvatures(level, positions, normals, size, rings);
}

std::vector<float> WeightsByCurvature(const LevelGeometry& geometry, const CurvatureRange& range) {
    std::vector<float> weights = ScaledCurvatures(geometry, range.size, range.rings);
    for (float& weight : weights) {
        float curvature = weight;
        if (range.sign == CurvatureSign::Ridge) curvature = -curvature;
        if (range.sign == CurvatureSign::Both) curvature = std::abs(curvature);
        const float outside = std::max({range.from - curvature, curvature - range.to, 0.0f});
        if (outside == 0.0f)
            weight = 1.0f;
        else
            weight = outside < range.softness ? 1.0f - outside / range.softness : 0.0f;
    }
    return weights;
}

}  // namespace trovik
