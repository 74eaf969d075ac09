// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/LevelMesh.h"

#include <array>

namespace trovik {

/// The three components of a packed normal that belong to the mesh; the fourth is left unchanged.
using NormalWords = std::array<int16_t, 3>;

inline void SwapPosition(LevelMesh& mesh, uint32_t vertex, Vector& other) {
    const Vector present = mesh.Position(vertex);
    mesh.SetPosition(vertex, other);
    other = present;
}

inline void SwapNormal(PackedNormal& normal, NormalWords& other) {
    const NormalWords present = {normal.x, normal.y, normal.z};
    normal.x = other[0];
    normal.y = other[1];
    normal.z = other[2];
    other = present;
}

}  // namespace trovik
