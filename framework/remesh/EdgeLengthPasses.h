// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/SurfaceRelaxation.h"
#include "framework/tessellation/EdgeOperations.h"

namespace trovik {

/// Which edits the passes make, and when they stop.
struct PassLimits {
    bool splits = true;
    bool collapses = true;
    /// Moves new vertices only, and flips only edges of faces with new vertices.
    bool keepsOldVertices = false;
    /// Splitting stops at this number of faces, and collapsing at that one.
    uint32_t maxFaces = 0xffffffffu;
    uint32_t minFaces = 0;
};

/// Number of steps by which RunPass advances a phase.
inline constexpr uint64_t stepsOfPass = 4;

/// Brings the edges of a mesh closer to the lengths: splits long edges, removes short ones, flips
/// edges, and relaxes the vertices once, all over the whole mesh and in the order of the indices.
/// \throw Cancelled; the mesh is then valid, but incomplete.
void RunPass(EditableMesh& mesh,
             const EdgeLengths& lengths,
             const PassLimits& limits,
             SurfaceRelaxation& relaxation,
             JobPhase& phase);

}  // namespace trovik
