// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/LevelMesh.h"

#include <vector>

namespace trovik {

/// \file Filters that compute new freeze amounts from those of the neighbourhood. Neighbours are
/// the vertices at the other ends of a vertex's edges. Every step reads only amounts of the
/// previous step, in integers, so that the result does not depend on the order of the faces. A
/// vertex without faces keeps its amount. Cost of a step: O(faces).

/// 127 minus each amount.
TROVIK_API std::vector<uint8_t> InvertedFreeze(const LevelMesh& level);

/// Each step takes the maximum of a vertex's own amount and its neighbours' amounts. Frozen areas
/// grow by a ring of vertices.
TROVIK_API std::vector<uint8_t> GrownFreeze(const LevelMesh& level, uint32_t rings);

/// Each step takes the minimum of a vertex's own amount and its neighbours' amounts.
TROVIK_API std::vector<uint8_t> ShrunkFreeze(const LevelMesh& level, uint32_t rings);

/// Each step takes half the amount plus half the mean of the neighbours. A neighbour counts once
/// for each face at the edge to it: twice, or once on an open border. Amounts have 16 fractional
/// bits between the steps and are rounded to the nearest, halves up, after each step and at the
/// end.
TROVIK_API std::vector<uint8_t> BlurredFreeze(const LevelMesh& level, uint32_t steps);

/// Each step takes twice the amount minus the mean of BlurredFreeze, clamped to 0 to 127, with the
/// same precision and rounding. Soft borders become steeper.
TROVIK_API std::vector<uint8_t> SharpenedFreeze(const LevelMesh& level, uint32_t steps);

}  // namespace trovik
