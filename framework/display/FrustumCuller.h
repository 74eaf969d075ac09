// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Matrix.h"
#include "host/Vector.h"

#include <array>

namespace trovik {

/// Finds boxes that lie outside the view of a camera. The planes of the view are extracted from the
/// matrix; see Gribb, Hartmann: "Fast Extraction of Viewing Frustum Planes from the
/// World-View-Projection Matrix" (2001).
class TROVIK_API FrustumCuller {
public:
    /// The range of depths between the near and far planes in clip space, in multiples of w.
    enum class ClipDepth { MinusOneToOne, ZeroToOne };

    /// \param localToClip  maps mesh-local points (x, y, z, 1), as row vectors, to clip space,
    /// where the view frustum is -w <= x <= w, -w <= y <= w and the depth range is `depth`. A
    /// perspective projection without a far plane is allowed.
    explicit FrustumCuller(const Matrix& localToClip, ClipDepth depth = ClipDepth::MinusOneToOne);

    /// Returns whether the (mesh-local) box is certainly out of view, because it is empty or lies
    /// completely outside one plane. Returns false if this is uncertain, as for boxes with infinite
    /// limits. Boxes near a corner of the frustum may be kept even if they are outside. Cost: O(1).
    bool IsOutside(const AxisAlignedBoundingBox& box) const;

private:
    /// A point is inside if x a[0] + y a[1] + z a[2] + a[3] >= 0.
    std::array<std::array<double, 4>, 6> planes;
};

}  // namespace trovik
