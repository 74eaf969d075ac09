// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"

#include <functional>
#include <string>
#include <vector>

namespace trovik {

/// An operation other than a brush stroke that moves the vertices of a level.
struct PositionEdit {
    /// Label of the undo step.
    std::string label;
    /// Returns the new mesh-local position of each vertex of the level. The function must respect
    /// the mask; see MoveWeights. May throw HostError and Cancelled.
    std::function<std::vector<Vector>(LevelGeometry& geometry, JobControl* job)> positions;
};

/// Returns an edit that moves each vertex to a given mesh-local position, one per vertex of the
/// bound level. The mask reduces the displacements; an unmasked vertex gets its position
/// bit-exactly. The edit throws HostError if the number of positions is wrong.
TROVIK_API PositionEdit GivenPositions(std::vector<Vector> positions, const std::string& label);

/// Returns, for each vertex of a level, the factor for displacements by operations on the whole
/// surface: 1 for unmasked vertices, and 0 for vertices that are completely masked or hidden.
std::vector<float> MoveWeights(const LevelMesh& level);

/// Moves the vertices of the bound level as one undo step. If a layer is active, the displacements
/// are recorded in it.
/// \return the number of vertices that moved; if it is 0, there is no undo step.
/// \throw HostError if the active layer is hidden or locked, or if a new position is not finite;
/// Cancelled. In each case, nothing has changed. Cost: that of `edit.positions`, plus O(vertices).
TROVIK_API uint32_t EditPositions(LevelGeometry& geometry,
                                  const PositionEdit& edit,
                                  JobControl* job = nullptr);

}  // namespace trovik
