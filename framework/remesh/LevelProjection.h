// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/SourceSurface.h"

namespace trovik {

/// Moves the vertices of a level to the nearest points of another surface, if they are within a
/// distance and face the same way. There is no undo step, and observers are not notified. The mask
/// and hidden faces have no effect.
/// \param reach  mesh-local. \throw Cancelled; nothing has then changed.
void ProjectLevel(LevelMesh& level, SourceSurface& surface, float reach, JobControl* job);

}  // namespace trovik
