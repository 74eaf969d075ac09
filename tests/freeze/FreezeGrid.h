// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/Steps.h"
#include "tests/meshes/MeshZoo.h"

#include <string>
#include <vector>

namespace trovik::test {

/// Unit quads in the plane z = 0, from the origin; vertices are addressed by position.
class FreezeGrid {
public:
    explicit FreezeGrid(unsigned size)
        : side(static_cast<int>(size) + 1), geometry(GridMesh(size, size)) {}

    LevelMesh& Level() { return *geometry.Level(0); }
    uint32_t At(int x, int y) {
        for (uint32_t v = 0; v < Level().VertexCount(); ++v)
            if (Level().Position(v) == Vector(static_cast<float>(x), static_cast<float>(y), 0.0f))
                return v;
        return openBorder;
    }
    void Set(int x, int y, uint8_t amount) { Level().SetFreeze(At(x, y), amount); }
    /// The amounts of a row, in order of x.
    std::vector<int> Row(int y, const std::vector<uint8_t>& amounts) {
        std::vector<int> row;
        row.reserve(static_cast<std::size_t>(side));
        for (int x = 0; x < side; ++x) row.push_back(amounts[At(x, y)]);
        return row;
    }
    std::vector<int> Row(int y) { return Row(y, FreezeAmounts(Level())); }

    int side;
    LevelGeometry geometry;
};

}  // namespace trovik::test
