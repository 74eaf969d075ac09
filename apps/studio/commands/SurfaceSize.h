// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/ActionContext.h"
#include "commands/ViewModel.h"

#include <algorithm>

namespace trovik::studio {

/// World-space bounding box of the current surface, which may have changed since it was opened.
inline AxisAlignedBoundingBox SurfaceBounds(const ActionContext& context) {
    return context.view.bounds ? context.view.bounds() : context.engine.Document().bounds;
}

/// The longest side of a box; at least a value that is usable as a unit.
inline double LongestSide(const AxisAlignedBoundingBox& box) {
    return std::max({static_cast<double>(box.maxX) - box.minX,
                     static_cast<double>(box.maxY) - box.minY,
                     static_cast<double>(box.maxZ) - box.minZ,
                     1e-6});
}

}  // namespace trovik::studio
