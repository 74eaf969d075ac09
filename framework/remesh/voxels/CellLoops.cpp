// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/voxels/CellLoops.h"

namespace trovik {

namespace {

/// Returns the edge between two corners.
constexpr uint8_t EdgeBetween(uint32_t a, uint32_t b) {
    const uint32_t along = a ^ b;
    const uint32_t axis = along >> 1;
    const uint32_t u = a >> (axis + 1) % 3 & 1;
    const uint32_t v = a >> (axis + 2) % 3 & 1;
    return static_cast<uint8_t>(axis * 4 + (u | v << 1));
}

struct Side {
    std::array<uint8_t, 4> corners;
    /// Edge k is between corners k and k + 1.
    std::array<uint8_t, 4> edges;
};

constexpr std::array<Side, 6> MakeSides() {
    std::array<Side, 6> sides{};
    for (uint32_t side = 0; side < 6; ++side) {
        const uint32_t axis = side / 2;
        const uint32_t base = (side & 1) << axis;
        const uint32_t u = 1u << (axis + 1) % 3;
        const uint32_t v = 1u << (axis + 2) % 3;
        const uint32_t corners[4] = {base, base | u, base | u | v, base | v};
        for (uint32_t k = 0; k < 4; ++k) {
            sides[side].corners[k] = static_cast<uint8_t>(corners[k]);
            sides[side].edges[k] = EdgeBetween(corners[k], corners[(k + 1) % 4]);
        }
    }
    return sides;
}

constexpr std::array<Side, 6> sides = MakeSides();

bool IsInside(uint8_t code, uint8_t corner) { return (code >> corner & 1) != 0; }

/// The one or two other edges to which each crossing edge is connected.
class Links {
public:
    Links() { ends.fill({CellLoops::none, CellLoops::none}); }
    void Connect(uint8_t a, uint8_t b) {
        Add(a, b);
        Add(b, a);
    }
    /// Returns the edge that follows `edge` on the way from `previous`.
    uint8_t After(uint8_t edge, uint8_t previous) const {
        return ends[edge][0] == previous ? ends[edge][1] : ends[edge][0];
    }
    uint8_t First(uint8_t edge) const { return ends[edge][0]; }

private:
    void Add(uint8_t from, uint8_t to) {
        auto& pair = ends[from];
        pair[pair[0] == CellLoops::none ? 0 : 1] = to;
    }
    std::array<std::array<uint8_t, 2>, 12> ends;
};

Links LinksOf(uint8_t code, uint8_t joined) {
    Links links;
    for (uint32_t side = 0; side < 6; ++side) {
        const auto& [corners, edges] = sides[side];
        std::array<uint8_t, 4> crossing{};
        uint32_t count = 0;
        for (uint32_t k = 0; k < 4; ++k)
            if (IsInside(code, corners[k]) != IsInside(code, corners[(k + 1) % 4]))
                crossing[count++] = edges[k];
        if (count == 2) links.Connect(crossing[0], crossing[1]);
        if (count != 4) continue;
        // Edges k - 1 and k meet at corner k.
        const bool aroundFirst = IsInside(code, corners[0]) != ((joined >> side & 1) != 0);
        links.Connect(edges[0], edges[aroundFirst ? 3 : 1]);
        links.Connect(edges[2], edges[aroundFirst ? 1 : 3]);
    }
    return links;
}

}  // namespace

CellLoops::CellLoops(uint8_t code, uint8_t joined) {
    ofEdge.fill(none);
    const Links links = LinksOf(code, joined);
    for (uint8_t start = 0; start < 12; ++start) {
        if (links.First(start) == none || ofEdge[start] != none) continue;
        uint8_t previous = start;
        uint8_t edge = links.First(start);
        ofEdge[start] = static_cast<uint8_t>(count);
        while (edge != start) {
            ofEdge[edge] = static_cast<uint8_t>(count);
            const uint8_t next = links.After(edge, previous);
            previous = edge;
            edge = next;
        }
        ++count;
    }
}

bool CellLoops::PassesTwice(uint32_t side) const {
    // Edges 0 and 2 of an ambiguous side are never connected to each other on that side.
    return ofEdge[sides[side].edges[0]] == ofEdge[sides[side].edges[2]];
}

uint8_t CellLoops::AmbiguousSides(uint8_t code) {
    uint8_t ambiguous = 0;
    for (uint32_t side = 0; side < 6; ++side) {
        const auto& c = sides[side].corners;
        if (IsInside(code, c[0]) == IsInside(code, c[2]) &&
            IsInside(code, c[1]) == IsInside(code, c[3]) &&
            IsInside(code, c[0]) != IsInside(code, c[1]))
            ambiguous = static_cast<uint8_t>(ambiguous | 1u << side);
    }
    return ambiguous;
}

std::array<uint8_t, 4> CellLoops::CornersOf(uint32_t side) { return sides[side].corners; }

}  // namespace trovik
