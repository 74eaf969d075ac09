// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/LevelMesh.h"
#include "framework/multires/LevelSwitch.h"

#include <vector>

namespace trovik {

/// \file
/// Propagation of freeze amounts between a level and the level above.
///
/// Upwards, a coarse vertex passes its amount to the same vertex of the fine level. An edge point
/// gets the mean amount of the two ends of the edge, and a face point gets the mean amount of the
/// corners of the face. Both means are rounded to the nearest integer, with halves rounded up.
/// Downwards, a coarse vertex gets the amount of the same fine vertex; the fine vertices in between
/// are ignored.
///
/// Only changes are propagated. Upwards, a fine vertex gets a new amount only if the amount of its
/// coarse vertex, of an end of its edge, or of a corner of its face has changed. Switching down and
/// up again without an edit therefore leaves every amount unchanged.

/// Computes all amounts of `fine`, which has none yet, from those of `coarse`.
/// \throw Cancelled.
void CarryAllFreeze(const LevelMesh& coarse, LevelMesh& fine, JobControl* job = nullptr);

/// Propagates changed amounts to the fine level.
/// \param seen  the amounts of the coarse level at the last synchronisation, sorted.
/// \param carried  receives the changes of the fine level, even if the function throws.
/// \throw Cancelled.
/// Cost: linear in the number of vertices in `seen`, plus the number of points around those that
/// changed.
void CarryFreezeUp(LevelMesh& coarse,
                   LevelMesh& fine,
                   const OlderValues<uint8_t>& seen,
                   CarriedLevel& carried,
                   JobControl* job = nullptr);

/// Propagates changed amounts to the coarse level.
/// \param seen  the amounts of the fine level at the last synchronisation, sorted.
/// \param carried  receives the changes of the coarse level, even if the function throws.
/// \throw Cancelled.
/// Cost: linear in the number of vertices in `seen`.
void CarryFreezeDown(LevelMesh& coarse,
                     LevelMesh& fine,
                     const OlderValues<uint8_t>& seen,
                     CarriedLevel& carried,
                     JobControl* job = nullptr);

}  // namespace trovik
