// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/LevelMesh.h"

#include <vector>

namespace trovik {

/// \file Filters that compute new freeze amounts from those of adjacent vertices. A vertex's
/// neighbours are the vertices at the other ends of its edges. Every step uses integers and reads
/// only amounts of the previous step, so that the result does not depend on the order of the faces.
/// A vertex without faces keeps its amount. Cost of a step: O(faces).

/// Returns 127 minus the freeze amount of each vertex.
TROVIK_API std::vector<uint8_t> InvertedFreeze(const LevelMesh& level);

/// In each step, every vertex gets the maximum of its own amount and its neighbours' amounts.
/// Frozen areas grow by one ring of vertices. This is the dilation in Vincent: "Graphs and
/// Mathematical Morphology" (1989).
TROVIK_API std::vector<uint8_t> GrownFreeze(const LevelMesh& level, uint32_t rings);

/// In each step, every vertex gets the minimum of its own amount and its neighbours' amounts. This
/// is the erosion in the paper that GrownFreeze cites.
TROVIK_API std::vector<uint8_t> ShrunkFreeze(const LevelMesh& level, uint32_t rings);

/// In each step, every vertex gets half its own amount plus half the mean of its neighbours'
/// amounts. A neighbour is counted once for each face at the shared edge: twice in the interior,
/// once on an open border. Between steps, amounts have 16 fractional bits. They are rounded to
/// nearest, with halves rounded up, after each step and at the end.
TROVIK_API std::vector<uint8_t> BlurredFreeze(const LevelMesh& level, uint32_t steps);

/// In each step, every vertex gets twice its own amount minus the mean of its neighbours' amounts,
/// clamped to 0 to 127. The mean, precision and rounding are those of BlurredFreeze. Soft borders
/// become steeper.
TROVIK_API std::vector<uint8_t> SharpenedFreeze(const LevelMesh& level, uint32_t steps);

}  // namespace trovik
