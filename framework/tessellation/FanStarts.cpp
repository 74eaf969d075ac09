// SPDX-License-Identifier: Apache-2.0
#include "framework/tessellation/FanStarts.h"

#include <algorithm>
#include <utility>

namespace trovik {

namespace {

/// The edges of a mesh, as a linked list for the lower vertex of each edge.
class EdgeSet {
public:
    explicit EdgeSet(std::size_t vertexCount) : first(vertexCount, end) {}

    void Add(uint32_t a, uint32_t b) {
        const auto [low, high] = std::minmax(a, b);
        links.push_back({high, std::exchange(first[low], static_cast<uint32_t>(links.size()))});
    }
    bool Has(uint32_t a, uint32_t b) const {
        const auto [low, high] = std::minmax(a, b);
        for (uint32_t i = first[low]; i != end; i = links[i].next)
            if (links[i].high == high) return true;
        return false;
    }

private:
    static constexpr uint32_t end = 0xffffffffu;
    struct Link {
        uint32_t high;
        uint32_t next;
    };
    std::vector<uint32_t> first;
    std::vector<Link> links;
};

}  // namespace

std::vector<uint32_t> FanStarts(const PolygonMesh& mesh) {
    std::vector<uint32_t> starts(mesh.faceSizes.size());
    if (std::ranges::all_of(mesh.faceSizes, [](uint32_t size) { return size == 3; })) return starts;
    EdgeSet edges(mesh.positions.size());
    const uint32_t* v = mesh.faceVertices.data();
    for (const uint32_t size : mesh.faceSizes) {
        for (uint32_t k = 0; k < size; ++k) edges.Add(v[k], v[(k + 1) % size]);
        v += size;
    }
    v = mesh.faceVertices.data();
    for (std::size_t face = 0; face < starts.size(); ++face) {
        const uint32_t size = mesh.faceSizes[face];
        const auto isFree = [&](uint32_t start) {
            for (uint32_t k = 2; k + 1 < size; ++k)
                if (edges.Has(v[start], v[(start + k) % size])) return false;
            return true;
        };
        while (starts[face] < size && !isFree(starts[face])) ++starts[face];
        if (starts[face] == size) starts[face] = 0;
        for (uint32_t k = 2; k + 1 < size; ++k)
            edges.Add(v[starts[face]], v[(starts[face] + k) % size]);
        v += size;
    }
    return starts;
}

}  // namespace trovik
