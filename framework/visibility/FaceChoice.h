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

/// \file Face selections on a geometry's bound level, for hiding and showing faces.

/// One byte for each face: 1 if it is selected, 0 otherwise.
using FaceChoice = std::vector<uint8_t>;

/// Returns the visible faces that have at least this mask weight at every corner.
/// \param threshold  a freeze amount from 1 to 127. Cost: O(faces).
TROVIK_API FaceChoice FacesByMask(const LevelMesh& level, uint8_t threshold);

/// Returns all faces, visible or hidden, whose level-0 ancestor belongs to this group. Cost:
/// O(faces).
/// \param group  index into SurfaceAttributes::groupNames, or `none` for the faces without a group.
TROVIK_API FaceChoice FacesOfGroup(const LevelGeometry& geometry, uint32_t group);
/// Returns all faces, visible or hidden, whose level-0 ancestor has this material.
/// \param material  index into SurfaceAttributes::materialNames, or `none`.
TROVIK_API FaceChoice FacesOfMaterial(const LevelGeometry& geometry, uint32_t material);

/// Returns all faces, visible or hidden, of the connected component that contains this face of the
/// bound level. Cost: O(faces).
TROVIK_API FaceChoice FacesOfComponent(const LevelGeometry& geometry, uint32_t face);

/// Returns the visible faces whose corners are all within `reach` and satisfy `isInside`.
/// \param isInside  tests a position on the viewport; see WeightsInView, which also describes
/// `tree` and the cost.
TROVIK_API FaceChoice FacesInView(const LevelGeometry& geometry,
                                  const PatchTree& tree,
                                  const StrokeView& view,
                                  ViewReach reach,
                                  const std::function<bool(const ViewPoint&)>& isInside);

TROVIK_API FaceChoice HiddenFaces(const LevelMesh& level);

/// Repeatedly adds the faces that share a vertex with a selected one. Cost per repetition:
/// O(faces).
TROVIK_API FaceChoice GrownChoice(const LevelMesh& level, FaceChoice chosen, uint32_t rings);
/// Repeatedly removes the faces that share a vertex with one that is not selected.
TROVIK_API FaceChoice ShrunkChoice(const LevelMesh& level, FaceChoice chosen, uint32_t rings);

}  // namespace trovik
