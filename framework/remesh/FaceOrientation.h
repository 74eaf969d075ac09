// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/PolygonMesh.h"

#include <cstddef>
#include <vector>

namespace trovik {

class JobControl;
struct NewSurface;

/// Returns which faces must be flipped so that neighbouring faces have the same orientation and
/// closed components enclose a positive volume.
///
/// - Orientation propagates across edges with exactly two faces. A surface that cannot be oriented,
///   such as a Möbius strip, keeps at least one edge with different orientations.
/// - A closed component inside an odd number of other closed components is the wall of a cavity,
/// and
///   is oriented towards it.
/// - An open component gets the orientation of the majority of its faces.
///
/// Cost: O(n log n), plus O(faces) for each pair of closed components one of which could contain
/// the other. \throw Cancelled.
std::vector<bool> FacesToFlip(const PolygonMesh& mesh, JobControl* job = nullptr);

/// Reverses the corners of the marked faces. \return the number of these faces.
std::size_t FlipFaces(NewSurface& surface, const std::vector<bool>& isFlipped);

}  // namespace trovik
