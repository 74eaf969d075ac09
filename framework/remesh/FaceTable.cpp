// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/FaceTable.h"

#include <algorithm>
#include <numeric>

namespace trovik {

std::vector<FaceSide> SortedSides(const PolygonMesh& mesh) {
    const FaceTable faces(mesh);
    std::vector<FaceSide> sides;
    sides.reserve(mesh.faceVertices.size());
    for (std::size_t face = 0; face < faces.FaceCount(); ++face) {
        const auto v = faces.Vertices(face);
        for (uint32_t k = 0; k < v.size(); ++k) {
            const uint32_t a = v[k];
            const uint32_t b = v[(k + 1) % v.size()];
            sides.push_back(
                {std::min(a, b), std::max(a, b), static_cast<uint32_t>(face), k, a < b});
        }
    }
    std::sort(sides.begin(), sides.end(), [](const FaceSide& a, const FaceSide& b) {
        if (a.low != b.low) return a.low < b.low;
        if (a.high != b.high) return a.high < b.high;
        return a.face != b.face ? a.face < b.face : a.corner < b.corner;
    });
    return sides;
}

std::pair<std::vector<uint32_t>, uint32_t> ComponentsOf(const PolygonMesh& mesh) {
    std::vector<uint32_t> parent(mesh.positions.size());
    std::iota(parent.begin(), parent.end(), 0u);
    const auto root = [&](uint32_t v) {
        while (parent[v] != v) v = parent[v] = parent[parent[v]];
        return v;
    };
    const FaceTable faces(mesh);
    for (std::size_t face = 0; face < faces.FaceCount(); ++face)
        for (const uint32_t v : faces.Vertices(face)) {
            const uint32_t a = root(faces.Vertices(face)[0]);
            const uint32_t b = root(v);
            parent[std::max(a, b)] = std::min(a, b);
        }
    constexpr uint32_t unnumbered = 0xffffffffu;
    std::vector<uint32_t> numberOfRoot(mesh.positions.size(), unnumbered);
    std::vector<uint32_t> numbers(faces.FaceCount());
    uint32_t count = 0;
    for (std::size_t face = 0; face < faces.FaceCount(); ++face) {
        uint32_t& number = numberOfRoot[root(faces.Vertices(face)[0])];
        if (number == unnumbered) number = count++;
        numbers[face] = number;
    }
    return {std::move(numbers), count};
}

}  // namespace trovik
