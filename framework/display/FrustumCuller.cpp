// SPDX-License-Identifier: Apache-2.0
#include "framework/display/FrustumCuller.h"

#include <cmath>
#include <cstddef>

namespace trovik {

FrustumCuller::FrustumCuller(const Matrix& localToClip, ClipDepth depth) {
    const auto& m = localToClip.m;
    for (std::size_t row = 0; row < 4; ++row) {
        const auto w = static_cast<double>(m[row][3]);
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const auto value = static_cast<double>(m[row][axis]);
            planes[2 * axis][row] = w + value;
            planes[2 * axis + 1][row] = w - value;
        }
        if (depth == ClipDepth::ZeroToOne) planes[4][row] = static_cast<double>(m[row][2]);
    }
}

bool FrustumCuller::IsOutside(const AxisAlignedBoundingBox& box) const {
    if (box.IsEmpty()) return true;
    // The margin is much larger than the rounding errors of these sums and of a renderer's
    // single-precision clip coordinates, but much smaller than a pixel.
    constexpr double slack = 1e-5;
    const std::array<double, 3> low = {static_cast<double>(box.minX),
                                       static_cast<double>(box.minY),
                                       static_cast<double>(box.minZ)};
    const std::array<double, 3> high = {static_cast<double>(box.maxX),
                                        static_cast<double>(box.maxY),
                                        static_cast<double>(box.maxZ)};
    for (const std::array<double, 4>& plane : planes) {
        // The box corner that lies farthest inside the plane. See Assarsson, Möller: "Optimized
        // View Frustum Culling Algorithms for Bounding Boxes" (2000).
        double inside = plane[3];
        double size = std::abs(plane[3]);
        for (std::size_t axis = 0; axis < 3; ++axis) {
            if (plane[axis] == 0.0) continue;
            const double term = plane[axis] * (plane[axis] > 0.0 ? high[axis] : low[axis]);
            inside += term;
            size += std::abs(term);
        }
        // If the sum is NaN, the comparison is false, so the box is not culled.
        if (inside < -slack * size) return true;
    }
    return false;
}

}  // namespace trovik
