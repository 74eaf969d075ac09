// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/lanes/Xyz.h"
#include "stroke/BrushSpace.h"

namespace trovik {

/// Returns ((z r2 + r3) + y r1) + x r0, where r0 to r3 are the rows of a matrix or one column of
/// them.
template <class Row, class Number>
TROVIK_FORCE_INLINE Row TransformedPoint(
    const Row& r0, const Row& r1, const Row& r2, const Row& r3, const Xyz<Number>& point) {
    return ((r2 * point.z + r3) + r1 * point.y) + r0 * point.x;
}

/// Transforms mesh-local points to world space, component by component. The results are
/// bit-identical to those of ToWorld.
template <class F>
class WorldMatrix {
public:
    explicit WorldMatrix(const BrushSpace& space) {
        for (int row = 0; row < 4; ++row) {
            const HWVector& r = space.meshToWorld[row];
            rows[row] = {F::Splat(r.X()), F::Splat(r.Y()), F::Splat(r.Z())};
        }
    }
    TROVIK_FORCE_INLINE Xyz<F> operator()(const Xyz<F>& p) const {
        return {TransformedPoint(rows[0].x, rows[1].x, rows[2].x, rows[3].x, p),
                TransformedPoint(rows[0].y, rows[1].y, rows[2].y, rows[3].y, p),
                TransformedPoint(rows[0].z, rows[1].z, rows[2].z, rows[3].z, p)};
    }

private:
    Xyz<F> rows[4];
};

}  // namespace trovik
