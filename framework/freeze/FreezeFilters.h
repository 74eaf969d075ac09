// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/LevelMesh.h"

#include <vector>

namespace trovik {

/// \file
/// Freeze amounts made from those of a level by what lies around each vertex. Neighbours are the
/// vertices at the other ends of a vertex's edges. Every step takes all its amounts from the step
/// before, in whole numbers, so that the order of the faces is no part of the result. A vertex of
/// no face keeps its amount. Cost of a step: O(faces).

/// 127 less each amount.
TROVIK_API std::vector<uint8_t> InvertedFreeze(const LevelMesh& level);

/// Each step: the largest of a vertex's own amount and its neighbours'. Frozen areas grow by a ring
/// of vertices.
TROVIK_API std::vector<uint8_t> GrownFreeze(const LevelMesh& level, uint32_t rings);

/// Each step: the smallest of a vertex's own amount and its neighbours'.
TROVIK_API std::vector<uint8_t> ShrunkFreeze(const LevelMesh& level, uint32_t rings);

/// Each step: half the amount and half the mean of the neighbours, in which a neighbour counts once
/// for each face at the edge to it: twice, or once along an open border. Amounts have 16 binary
/// places between the steps, are rounded to the nearest there, halves up, and so at the end.
TROVIK_API std::vector<uint8_t> BlurredFreeze(const LevelMesh& level, uint32_t steps);

/// Each step: twice the amount less that mean, within 0 to 127; places and rounding as for
/// BlurredFreeze. Soft borders become steeper.
TROVIK_API std::vector<uint8_t> SharpenedFreeze(const LevelMesh& level, uint32_t steps);

}  // namespace trovik
