// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "brush/SwiftStroke.h"

/// \file Displacements and moves, as templates over lanes (see lanes/Xyz.h). V holds one or more
/// vectors; N holds numbers or, if vectors are processed in one register, the number of a vector in
/// each of its lanes.
namespace trovik {

/// The plane of a plane tool and the limits of the move towards it.
template <class N>
struct PlaneTerms {
    explicit PlaneTerms(const SwiftStroke& brush)
        : offset(N::Splat(brush.planeOffset * brush.strokePlaneSign)),
          distance(N::Splat(brush.planeDistance)),
          sign(N::Splat(brush.planeDirectionSign)),
          clampMin(N::Splat(brush.planeClampMin)),
          clampMax(N::Splat(brush.planeClampMax)) {}

    N offset;
    N distance;
    N sign;
    N clampMin;
    N clampMax;
};

/// Returns the signed move along the plane normal of a vertex at `height`. The upper clamp is
/// applied first.
template <class N>
TROVIK_FORCE_INLINE N PlaneMove(const PlaneTerms<N>& plane, const N& height) {
    const N move = (plane.offset + (plane.distance - height)) * plane.sign;
    // If the operands are equal or either is NaN, the result is the second operand, which is the
    // unclamped move.
    return N::Maximum(plane.clampMin, N::Minimum(plane.clampMax, move));
}

/// Returns the displacement of a pulling tool, before it is multiplied by the weight.
template <class V>
TROVIK_FORCE_INLINE V TowardsCenter(const V& center, const V& position) {
    return (center - position) * V::Splat(0.1f);
}

/// Returns the mean of a vertex and its four neighbours. The order of the additions affects the
/// result.
template <class V>
TROVIK_FORCE_INLINE V
MeanOfFive(const V& middle, const V& left, const V& right, const V& below, const V& above) {
    return ((((middle + left) + right) + below) + above) * V::Splat(0.2f);
}

/// Returns a displacement in mesh-local space. If distances are measured in world space, so are
/// displacements until here.
template <class V>
TROVIK_FORCE_INLINE V ToMeshSpace(const V& displacement, const V& inverseScale, bool inWorldSpace) {
    return inWorldSpace ? displacement * inverseScale : displacement;
}

}  // namespace trovik
