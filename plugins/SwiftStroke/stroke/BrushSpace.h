// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/HWVector.h"

#include <type_traits>

namespace trovik {

/// The vectors and matrices that the kernels read for each vertex, in one aligned block.
struct BrushSpace {
    /// Dab centre in the space in which distances are measured: mesh-local, or world space if the
    /// mesh's scale is not uniform.
    HWVector center;
    /// Push direction or plane normal of this pass. Mesh-local.
    HWVector direction;
    /// Dirty box of the dab, mesh-local: contains the old and the new position of each written
    /// vertex.
    HWVector boundsMin;
    HWVector boundsMax;
    /// 1 / scale of the mesh's transform, per axis.
    HWVector inverseScale;
    /// Width and height of the whole stamp image, as vectors in the stamp's plane.
    HWVector stampAxisU;
    HWVector stampAxisV;
    /// Multiplying (x, y, z, 1) by this matrix and dividing by the fourth component yields a stamp
    /// pixel. Rows in memory order.
    float stampMatrix[4][4];
    /// Rows of the local-to-world matrix, as HWVectors. Adding the rows multiplied by a position's
    /// components yields the world position without shuffles. Set only if the scale of the mesh is
    /// not uniform.
    HWVector meshToWorld[4];
};
static_assert(std::is_trivial_v<BrushSpace>);
// The block starts at the first 16-byte boundary of a 255-byte allocation.
static_assert(sizeof(BrushSpace) == 240);

}  // namespace trovik
