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
    const Matrix& toWorld = geometry.Place().ToWorld();
    std::vector<Vector> places(vertices);
    std::vector<Vector> normals(vertices);
    for (uint32_t v = 0; v < vertices; ++v) {
        places[v] = toWorld.AffineTransform(level.Position(v), 1.0f);
        normals[v] = WorldNormal(geometry.Place(), Unpacked(level.vertexNormals.array[v]));
    }
    return MeanCurvatures(level, places, normals, size, rings);
}

std::vector<float> WeightsByCurvature(const LevelGeometry& geometry, const CurvatureRange& range) {
    std::vector<float> shares = ScaledCurvatures(geometry, range.size, range.rings);
    for (float& share : shares) {
        float bend = share;
        if (range.sign == CurvatureSign::Ridge) bend = -bend;
        if (range.sign == CurvatureSign::Both) bend = std::abs(bend);
        const float outside = std::max({range.from - bend, bend - range.to, 0.0f});
        if (outside == 0.0f)
            share = 1.0f;
        else
            share = outside < range.softness ? 1.0f - outside / range.softness : 0.0f;
    }
    return shares;
}

}  // namespace trovik
