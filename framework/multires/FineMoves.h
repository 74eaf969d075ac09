// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/math/FrameRotation.h"
#include "framework/mesh/LevelMesh.h"
#include "framework/multires/LevelSwitch.h"

#include <cstdint>
#include <vector>

namespace trovik {

/// A run of coarse faces whose fine vertices are moved together. A fine vertex is owned by the
/// lowest-numbered coarse face that uses it.
struct FineMoveRun {
    /// The faces of the run and all faces around them, in ascending order.
    std::vector<uint32_t> faces;
    /// The first and last face of the run.
    uint32_t firstOwner = 0;
    uint32_t lastOwner = openBorder;
};

/// The new positions of the fine vertices that a run of coarse faces owns.
struct FineMoves {
    /// The vertices, in ascending order, and their new positions, which may be equal to the current
    /// ones.
    std::vector<uint32_t> vertices;
    std::vector<Vector> positions;
    /// The motion of the surface at each vertex; empty if it was not requested.
    std::vector<SurfaceMove> surface;
    CarryCounts counts;
};

/// Computes the new positions of fine vertices after the coarse level has changed, by the rules of
/// DetailCarrier::Up. Does not modify either level; different runs may be computed on different
/// threads.
/// \param seen  the positions of the coarse level at the last synchronisation, sorted.
/// \param withSurface  whether to return the motion of the surface.
/// Cost: linear in the number of faces.
FineMoves FindFineMoves(LevelMesh& coarse,
                        const LevelMesh& fine,
                        const OlderValues<Vector>& seen,
                        const FineMoveRun& run,
                        bool withSurface);

}  // namespace trovik
