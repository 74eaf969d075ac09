// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelChange.h"

#include <vector>

namespace trovik {

/// Brings the two sides of a mirrored stroke together: where a vertex and its image in a plane of
/// the mesh's axes lay symmetric to the bit before the stroke, both now go to the mean of the one's
/// place and the other's mirrored one; a vertex in the plane goes back into it. Twins that agree
/// keep their bits. A dab and its image reach over each other near the plane, one after the other,
/// and there alone the two sides would differ by more than rounding.
///
/// Twins that are frozen unlike each other stay as they are.
///
/// \param change  open on the level; the places become part of it. \param axes  planes, 0 x, 1 y,
/// 2 z, each once. \return what has another place or normal now, ascending. \throw Error* when
/// memory is refused; nothing has moved then.
/// Cost: by the vertices that the stroke touched.
TROVIK_API std::vector<uint32_t> SettleSymmetry(LevelMesh& level,
                                                LevelChange& change,
                                                const std::vector<int>& axes);

/// Which half of a mesh is the model of the other.
enum class SymmetrySide { Positive, Negative };

/// Makes the bound level symmetric in the plane through the mesh's origin across an axis, 0 x, 1 y,
/// 2 z: each vertex of the one half keeps its place, its image goes to the mirrored one, and what
/// lies in the plane goes into it. Who is whose image follows from how the faces of level 0 hang
/// together (TopologicalMirror), so that the halves may be of any shape. The vertices of a pair are
/// told apart by which of them lies farther on the side.
///
/// Frozen vertices stay, partly frozen ones go a part of the way. With an active layer the moves go
/// into it. One step of undo, pushed. \return the number of vertices that moved. \throw HostError
/// when the mesh has no such mirror; Cancelled, with nothing changed: the job is asked until the
/// first vertex moves.
/// Cost: O(vertices).
TROVIK_API uint32_t MakeSymmetric(LevelGeometry& geometry,
                                  int axis,
                                  SymmetrySide model,
                                  JobControl* job = nullptr);

}  // namespace trovik
