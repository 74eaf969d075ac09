// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelChange.h"

#include <vector>

namespace trovik {

/// Makes the two sides of a mirrored stroke exactly symmetric. The function adjusts each pair of
/// vertices that were exact mirror images in a coordinate plane of the mesh before the stroke. One
/// moves to the mean of its position and the mirrored position of the other; the other moves to the
/// mirror image of that mean. A vertex that was in the plane returns to it. Pairs that are still
/// symmetric stay bit-identical. Without this adjustment, the two sides could differ near the plane
/// by more than rounding errors, because a dab and its image overlap there and are applied one
/// after the other.
///
/// Pairs with different freeze amounts are not changed.
///
/// \param change  open on the level; the moves become part of it.
/// \param axes  axes perpendicular to the planes (0 is x, 1 is y, 2 is z), without duplicates.
/// \return the vertices whose position or normal has changed, in ascending order.
/// \throw Error* if an allocation fails; in that case, no vertex has moved.
/// Cost: proportional to the number of vertices that the stroke touched.
TROVIK_API std::vector<uint32_t> SettleSymmetry(LevelMesh& level,
                                                LevelChange& change,
                                                const std::vector<int>& axes);

/// The half of a mesh that is copied to the other half.
enum class SymmetrySide { Positive, Negative };

/// Makes the bound level symmetric about the plane through the mesh's origin perpendicular to an
/// axis (0 is x, 1 is y, 2 is z). Vertices on the model side keep their positions, their
/// counterparts move to the mirrored positions, and vertices on the plane are projected onto it.
/// Mirror images are found from the connectivity of level 0 (TopologicalMirror), so the halves may
/// have any shape. In each pair, the vertex that lies farther towards the `model` side is copied.
///
/// Frozen vertices do not move; partly frozen ones move part of the way. If a layer is active, the
/// moves are recorded in it. Pushes one undo step.
/// \return the number of vertices that moved.
/// \throw HostError if the mesh has no such mirror; Cancelled, with the mesh unchanged. The
/// operation cannot be cancelled once it has moved the first vertex.
/// Cost: O(vertices).
TROVIK_API uint32_t MakeSymmetric(LevelGeometry& geometry,
                                  int axis,
                                  SymmetrySide model,
                                  JobControl* job = nullptr);

}  // namespace trovik
