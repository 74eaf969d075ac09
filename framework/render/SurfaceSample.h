// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/render/RenderImage.h"

namespace trovik {

/// The point where a ray hits a mesh, in world space.
struct SurfaceSample {
    /// Index of the mesh, and index of the face in the mesh.
    uint32_t mesh;
    uint32_t face;
    /// Weights of the corners of the face; their sum is 1.
    float weights[4];
    float distance;
    Vector position;
    /// Geometric normal of the face, facing the origin of the ray.
    Vector faceNormal;
    /// Interpolated from the vertex normals, on the side of the face that the ray hits.
    Vector shadingNormal;
    /// The position, moved from the flat face to the smooth surface that the vertex normals imply.
    /// Rays that start here avoid self-shadowing artefacts on coarse faces. See Hanika: "Hacking
    /// the Shadow Terminator" (2021).
    Vector rayStart;
};

/// Returns the linear colour at the hit, tinted where the mesh is frozen.
/// \param base  the colour without freeze.
Vector FrozenTint(const RenderMesh& mesh, const SurfaceSample& sample, const Vector& base);

/// Returns the mean curvature at the hit, positive in cavities; 0 if the mesh has no curvature
/// array.
float CurvatureAt(const RenderMesh& mesh, const SurfaceSample& sample);

/// Returns the interpolated vertex colour at the hit, sRGB; mid grey if the mesh has no vertex
/// colours.
Vector VertexColorAt(const RenderMesh& mesh, const SurfaceSample& sample);

/// Computes the texture coordinates at the hit.
/// \return false if there are none.
bool UvAt(const RenderMesh& mesh, const SurfaceSample& sample, float& u, float& v);

}  // namespace trovik
