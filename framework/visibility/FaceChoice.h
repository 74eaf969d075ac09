// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/freeze/FreezeInView.h"
#include "framework/multires/LevelGeometry.h"
#include "framework/picking/PatchTree.h"
#include "framework/strokes/StrokePath.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace trovik {

/// \file
/// Choices of faces of a geometry's bound level, for hiding and showing them.

/// One byte for each face: 1 for a chosen one, 0 for the others.
using FaceChoice = std::vector<uint8_t>;

/// The visible faces of which each corner has at least this mask weight.
/// \param threshold  as a freeze amount, 1 to 127. Cost: O(faces).
TROVIK_API FaceChoice FacesByMask(const LevelMesh& level, uint8_t threshold);

/// The faces in faces of level 0 of this group, hidden ones included. Cost: O(faces).
/// \param group  number into SurfaceAttributes::groupNames, or `none` for the faces of no group.
TROVIK_API FaceChoice FacesOfGroup(const LevelGeometry& geometry, uint32_t group);
/// The same by material. \param material  number into SurfaceAttributes::materialNames, or `none`.
TROVIK_API FaceChoice FacesOfMaterial(const LevelGeometry& geometry, uint32_t material);

/// The connected component that holds a face of the bound level, hidden faces included.
/// Cost: O(faces).
TROVIK_API FaceChoice FacesOfComponent(const LevelGeometry& geometry, uint32_t face);

/// The visible faces of which each corner is reached and shown where `isInside` says.
/// \param isInside  by the position on the viewport; see SharesInView, also for `tree` and cost.
TROVIK_API FaceChoice FacesInView(const LevelGeometry& geometry,
                                  const PatchTree& tree,
                                  const StrokeView& view,
                                  ViewReach reach,
                                  const std::function<bool(const ViewPlace&)>& isInside);

TROVIK_API FaceChoice HiddenFaces(const LevelMesh& level);

/// Each step adds the faces that share a vertex with a chosen one. Cost of a step: O(faces).
TROVIK_API FaceChoice GrownChoice(const LevelMesh& level, FaceChoice chosen, uint32_t rings);
/// Each step removes the faces that share a vertex with one that is not chosen.
TROVIK_API FaceChoice ShrunkChoice(const LevelMesh& level, FaceChoice chosen, uint32_t rings);

}  // namespace trovik
