// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/LevelMesh.h"

#include <array>

namespace trovik::test {

/// A position in double precision, for independent calculations in tests.
using Triple = std::array<double, 3>;

inline Triple PositionOf(const LevelMesh& mesh, uint32_t vertex) {
    const Vector p = mesh.Position(vertex);
    return {static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(p.z)};
}

}  // namespace trovik::test
