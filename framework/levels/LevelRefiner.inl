// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <unordered_map>

namespace trovik {

template <typename Place>
void LevelRefiner::RefinePositions(const LevelMesh& fine, Place place) {
    RefinePositionsOf([this](uint32_t vertex) { return coarse.Position(vertex); }, fine, place);
}

template <typename At, typename Place>
void LevelRefiner::RefinePositionsOf(At at, const LevelMesh& fine, Place place) {
    struct Sum {
        float x, y, z;
        uint32_t faces;
    };
    struct Border {
        Vector ends;
    };
    // Face points and next corners of each vertex, added in face order; border vertices go by
    // their border alone.
    std::vector<Sum> sums(coarse.VertexCount(), Sum{0.0f, 0.0f, 0.0f, 0});
    std::unordered_map<uint32_t, Border> borders;
    const float share = 1.0f / static_cast<float>(corners);
    const auto centreOf = [this, share, &at](uint32_t face) {
        const uint32_t* v = coarse.faceVertexIndices.array + face * corners;
        Vector centre = at(v[0]);
        for (uint32_t k = 1; k < corners; ++k) centre += at(v[k]);
        return centre * share;
    };
    for (uint32_t face = 0; face < coarse.faceCount; ++face) {
        AskStop(face);
        const uint32_t* v = coarse.faceVertexIndices.array + face * corners;
        const Vector centre = centreOf(face);
        const uint32_t* children = fine.faceVertexIndices.array + face * corners * 4;
        place(children[2], centre);
        for (uint32_t side = 0; side < corners; ++side) {
            const uint32_t a = v[side];
            const uint32_t b = v[(side + 1) % corners];
            const Vector pa = at(a);
            const Vector pb = at(b);
            Sum& sum = sums[a];
            sum.x += centre.x + pb.x;
            sum.y += centre.y + pb.y;
            sum.z += centre.z + pb.z;
            ++sum.faces;

            const uint32_t neighbour = coarse.QuadEdgeNeighbour(face, side);
            if (!OwnsEdge(face, side, neighbour)) continue;
            const uint32_t edgePoint = children[side * 4 + (corners == 4 ? (side + 1) & 3u : 1u)];
            if (neighbour == openBorder) {
                borders[a].ends += pb;
                borders[b].ends += pa;
                place(edgePoint, (pa + pb) * 0.5f);
            } else {
                place(edgePoint, ((pa + pb) + (centre + centreOf(neighbour >> 2))) * 0.25f);
            }
        }
    }
    for (uint32_t vertex = 0; vertex < coarse.VertexCount(); ++vertex) {
        AskStop(vertex);
        const Sum& sum = sums[vertex];
        const Vector p = at(vertex);
        if (sum.faces == 0) {
            place(vertex, p);
            continue;
        }
        if (!borders.empty()) {
            const auto border = borders.find(vertex);
            if (border != borders.end()) {
                place(vertex, sum.faces == 1 ? p : p * 0.75f + border->second.ends * 0.125f);
                continue;
            }
        }
        const auto n = static_cast<float>(sum.faces);
        place(vertex, p * ((n - 2.0f) / n) + Vector(sum.x, sum.y, sum.z) * (1.0f / (n * n)));
    }
}

}  // namespace trovik
