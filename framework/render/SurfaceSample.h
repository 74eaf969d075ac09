// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/render/Picture.h"

namespace trovik {

/// The point where a ray hits a mesh. World space.
struct SurfaceSample {
    /// Number of the mesh, and of its face.
    uint32_t mesh;
    uint32_t face;
    /// Of the face's corners; they add up to 1.
    float weights[4];
    float distance;
    Vector position;
    /// Of the face itself, turned towards the ray's origin.
    Vector faceNormal;
    /// Interpolated from the vertex normals, on the side of the face that the ray hits.
    Vector shadingNormal;
    /// The position moved off the flat face to the smooth surface that the vertex normals suggest:
    /// rays that start here cast no faceted shadows of a coarse face on itself. J. Hanika, "Hacking
    /// the Shadow Terminator", Ray Tracing Gems II, 2021.
    Vector rayStart;
};

/// Linear colour of the mesh where it is hit, tinted where it is frozen. \param base  its colour
/// where it is not.
Vector FrozenTint(const PictureMesh& mesh, const SurfaceSample& sample, const Vector& base);

/// The bend where the mesh is hit, positive in cavities; 0 without bends.
float BendAt(const PictureMesh& mesh, const SurfaceSample& sample);

/// Texture coordinates where the mesh is hit. \return false where it has none.
bool UvAt(const PictureMesh& mesh, const SurfaceSample& sample, float& u, float& v);

}  // namespace trovik
