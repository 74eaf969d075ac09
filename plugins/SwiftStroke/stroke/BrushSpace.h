// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/HWVector.h"

#include <type_traits>

namespace trovik {

/// The vectors and matrices that the kernels read for each vertex, in one aligned block.
struct BrushSpace {
    /// Dab centre in the space in which distances are measured: mesh-local, or world when the
    /// mesh's scale is not uniform.
    HWVector center;
    /// Direction of push, or plane normal, of this pass. Mesh-local.
    HWVector direction;
    /// Dirty box of the dab, mesh-local: encloses the old and new place of each written vertex.
    HWVector boundsMin;
    HWVector boundsMax;
    /// 1 / scale of the mesh's transformation, per axis.
    HWVector inverseScale;
    /// Full width and height of the stamp image as vectors in the stamp's plane.
    HWVector stampAxisU;
    HWVector stampAxisV;
    /// (x, y, z, 1) times this, divided by the fourth component, is a stamp pixel. Plain order.
    float stampMatrix[4][4];
    /// Rows of the local-to-world matrix as HWVectors, so that rows times components give the world
    /// position with no shuffle. Set only while the mesh's scale is not uniform.
    HWVector meshToWorld[4];
};
static_assert(std::is_trivial_v<BrushSpace>);
// The block is carved out of a 255-byte allocation at its first 16-byte boundary.
static_assert(sizeof(BrushSpace) == 240);

}  // namespace trovik
