// SPDX-License-Identifier: Apache-2.0
#include "framework/freeze/FreezeCurvature.h"

#include "framework/freeze/FaceSides.h"
#include "framework/levels/SurfaceNormal.h"

#include <algorithm>
#include <cmath>

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

std::vector<float> Bends(const LevelGeometry& geometry, float size, uint32_t rings) {
    const LevelMesh& level = *geometry.Bound();
    const uint32_t vertices = level.VertexCount();
    const Matrix& toWorld = geometry.Place().ToWorld();
    std::vector<Vector> places(vertices);
    std::vector<Vector> normals(vertices);
    for (uint32_t v = 0; v < vertices; ++v) {
        places[v] = toWorld.AffineTransform(level.Position(v), 1.0f);
        normals[v] = WorldNormal(geometry.Place(), Unpacked(level.vertexNormals.array[v]));
    }
    return Bends(level, places, normals, size, rings);
}

std::vector<float> Bends(const LevelMesh& level,
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
        // Two vertices at one place say nothing.
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

std::vector<float> SharesByCurvature(const LevelGeometry& geometry, const CurvatureRange& range) {
    std::vector<float> shares = Bends(geometry, range.size, range.rings);
    for (float& share : shares) {
        float bend = share;
        if (range.sign == BendSign::Ridge) bend = -bend;
        if (range.sign == BendSign::Both) bend = std::abs(bend);
        const float outside = std::max({range.from - bend, bend - range.to, 0.0f});
        if (outside == 0.0f)
            share = 1.0f;
        else
            share = outside < range.softness ? 1.0f - outside / range.softness : 0.0f;
    }
    return shares;
}

}  // namespace trovik
