// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/SourceSurface.h"

namespace trovik {

/// Returns, for each point, the intersection of a surface with the line through the point that is
/// nearest to the point; see SourceSurface::FirstHits.
std::vector<NearestPoint> NearestAlong(SourceSurface& surface,
                                       const std::vector<Vector>& points,
                                       const std::vector<Vector>& directions,
                                       float reach,
                                       JobControl* job);

/// Moves the vertices of a level to the nearest points of another surface, if they are within a
/// distance, face the same way, and are not inside the surface. There is no undo step, and
/// observers are not notified. The mask and hidden faces have no effect. \param reach  mesh-local.
/// \throw Cancelled; nothing has then changed.
TROVIK_API void ProjectLevel(LevelMesh& level,
                             SourceSurface& surface,
                             float reach,
                             JobControl* job);

}  // namespace trovik
