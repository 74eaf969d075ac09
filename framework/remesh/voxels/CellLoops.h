// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace trovik {

/// The intersection of a surface with a cell: a cube whose corners are the sample points of eight
/// voxels. Corner c is at (c & 1, c >> 1 & 1, c >> 2 & 1). Bit c of a corner code is set if the
/// corner is inside.
///
/// An edge crosses the surface if exactly one of its ends is inside. On each side of the cell,
/// crossing edges are connected in pairs; the pairs form closed loops. On an ambiguous side, which
/// has two diagonally opposite corners inside, there are two ways to connect its four edges: around
/// the outside corners, which joins the inside corners, or around the inside corners.
///
/// Edge `axis * 4 + (u | v << 1)` runs along an axis, at coordinates u and v of the next two axes.
/// Side `axis * 2 + s` is at coordinate s of an axis.
struct TROVIK_API CellLoops {
    static constexpr uint8_t none = 0xff;
    /// For each edge, the number of its loop, or `none`. Loops are numbered by their lowest edges.
    std::array<uint8_t, 12> ofEdge;
    uint32_t count = 0;

    /// \param code  corner code.
    /// \param joined  bit s is set if the inside corners of the ambiguous side s are joined.
    CellLoops(uint8_t code, uint8_t joined);

    /// Whether both connections on an ambiguous side belong to the same loop. In that case, joining
    /// its inside corners if they are separate, or separating them, splits the loop into two.
    bool PassesTwice(uint32_t side) const;

    /// Returns a bit for each ambiguous side.
    static uint8_t AmbiguousSides(uint8_t code);
    /// Returns the four corners of a side, in cyclic order.
    static std::array<uint8_t, 4> CornersOf(uint32_t side);
};

}  // namespace trovik
