// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/SurfaceReplacement.h"

namespace trovik {

/// Copies the colours, groups, materials, smoothing groups and space of the old surface to the
/// mesh. \throw Cancelled.
void TransferAttributes(SourceSurface& source, NewSurface& made, JobControl* job);

/// Copies the mask of the old surface to the bound level of the new geometry.
/// \param vertexSources  see NewSurface. \throw Cancelled.
void TransferMask(SourceSurface& source,
                  const std::vector<uint32_t>& vertexSources,
                  LevelGeometry& target,
                  JobControl* job);

/// Copies the layers of the old surface's level to the bound level of the new geometry. The
/// positions of the target do not change.
/// \throw Cancelled.
void TransferLayers(SourceSurface& source,
                    const std::vector<uint32_t>& vertexSources,
                    LevelGeometry& target,
                    JobControl* job);

}  // namespace trovik
