// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/LevelMesh.h"
#include "framework/multires/LevelSwitch.h"

#include <vector>

namespace trovik {

/// \file
/// How freeze amounts travel between a level and the one above it.
///
/// Upwards a vertex of the coarse level gives its amount to the same vertex of the fine level, a
/// point on an edge takes the mean of the edge's two ends, and the point of a face the mean of its
/// corners, both rounded to the nearest, halves up. Downwards a coarse vertex takes the amount of
/// the same fine vertex; amounts of the fine vertices in between are not looked at.
///
/// Only changes travel. Upwards those fine vertices take new amounts that belong to a coarse vertex
/// whose amount changed, to an edge with such an end or to a face with such a corner; the others
/// keep theirs. So going down and up again without a change leaves every amount as it was.

/// All amounts of `fine`, which has none yet, by those of `coarse`.
/// \throw Cancelled.
void CarryAllFreeze(const LevelMesh& coarse, LevelMesh& fine, JobControl* job = nullptr);

/// \param seen  amounts of the coarse level as the fine one knows them, sorted.
/// \param carried  receives what happened to the fine level, also when it throws. \throw Cancelled.
/// Cost: the vertices in `seen`, and what lies around those that changed.
void CarryFreezeUp(LevelMesh& coarse,
                   LevelMesh& fine,
                   const OlderValues<uint8_t>& seen,
                   CarriedLevel& carried,
                   JobControl* job = nullptr);

/// \param seen  amounts of the fine level as the coarse one knows them, sorted.
/// \param carried  receives what happened to the coarse level, also when it throws.
/// \throw Cancelled. Cost: the vertices in `seen`.
void CarryFreezeDown(LevelMesh& coarse,
                     LevelMesh& fine,
                     const OlderValues<uint8_t>& seen,
                     CarriedLevel& carried,
                     JobControl* job = nullptr);

}  // namespace trovik
