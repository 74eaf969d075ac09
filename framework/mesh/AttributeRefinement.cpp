// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/AttributeRefinement.h"

#include "framework/mesh/PolygonMesh.h"

#include <algorithm>

namespace trovik {

namespace {

constexpr std::uint32_t None = SurfaceAttributes::none;

template <std::size_t count>
std::array<float, count> MeanOfAll(const std::vector<std::array<float, count>>& values) {
    std::array<float, count> mean = values[0];
    const float share = 1.0f / static_cast<float>(values.size());
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t corner = 1; corner < values.size(); ++corner) {
            mean[i] += values[corner][i];
        }
        mean[i] *= share;
    }
    return mean;
}

std::vector<std::uint32_t> Repeated(const std::vector<std::uint32_t>& perFace,
                                    const std::vector<std::uint32_t>& faceSizes) {
    std::vector<std::uint32_t> list;
    for (std::size_t face = 0; face < perFace.size(); ++face) {
        list.insert(list.end(), faceSizes[face], perFace[face]);
    }
    return list;
}

/// Appends the UVs of the quads into which one face is split.
void SplitUvs(const SurfaceAttributes& before,
              std::size_t first,
              std::uint32_t n,
              SurfaceAttributes& after) {
    const std::uint32_t* corners = before.cornerUvs.data() + first;
    if (std::find(corners, corners + n, None) != corners + n) {
        after.cornerUvs.insert(after.cornerUvs.end(), std::size_t{n} * 4, None);
        return;
    }
    std::vector<std::array<float, 2>> values;
    for (std::uint32_t k = 0; k < n; ++k) {
        values.push_back(before.uvs[corners[k]]);
    }
    const auto edge = static_cast<std::uint32_t>(after.uvs.size());
    for (std::uint32_t k = 0; k < n; ++k) {
        after.uvs.push_back(MeanOfTwo(values[k], values[(k + 1) % n]));
    }
    const std::uint32_t centre = edge + n;
    after.uvs.push_back(MeanOfAll(values));
    for (std::uint32_t k = 0; k < n; ++k) {
        after.cornerUvs.insert(after.cornerUvs.end(),
                               {corners[k], edge + k, centre, edge + (k + n - 1) % n});
    }
}

/// Computes the colours of the new vertices of one face. The two faces that share an edge compute
/// the same value for its edge point.
void SplitColors(const PolygonMesh& polygons,
                 const PolygonMesh& quads,
                 std::size_t first,
                 std::uint32_t n,
                 std::vector<std::array<float, 4>>& colors) {
    std::vector<std::array<float, 4>> values;
    for (std::uint32_t k = 0; k < n; ++k) {
        values.push_back(polygons.attributes.colors[polygons.faceVertices[first + k]]);
    }
    for (std::uint32_t k = 0; k < n; ++k) {
        // Each corner became a quad: corner, next edge point, face point, previous edge point.
        const std::uint32_t* quad = quads.faceVertices.data() + (first + k) * 4;
        colors[quad[1]] = MeanOfTwo(values[k], values[(k + 1) % n]);
        colors[quad[2]] = MeanOfAll(values);
    }
}

}  // namespace

SurfaceAttributes SplitIntoQuads(const PolygonMesh& polygons, const PolygonMesh& quads) {
    const SurfaceAttributes& before = polygons.attributes;
    SurfaceAttributes after;
    after.space = before.space;
    after.hasAlpha = before.hasAlpha;
    after.groupNames = before.groupNames;
    after.materialNames = before.materialNames;
    after.materialFiles = before.materialFiles;
    after.faceGroups = Repeated(before.faceGroups, polygons.faceSizes);
    after.faceMaterials = Repeated(before.faceMaterials, polygons.faceSizes);
    after.faceSmoothing = Repeated(before.faceSmoothing, polygons.faceSizes);
    after.uvs = before.uvs;
    after.colors = before.colors;
    if (!after.colors.empty()) {
        after.colors.resize(quads.positions.size());
    }
    std::size_t first = 0;
    for (const std::uint32_t n : polygons.faceSizes) {
        if (!before.cornerUvs.empty()) {
            SplitUvs(before, first, n, after);
        }
        if (!before.colors.empty()) {
            SplitColors(polygons, quads, first, n, after.colors);
        }
        first += n;
    }
    return after;
}

}  // namespace trovik
